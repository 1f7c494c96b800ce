#include "digitfilt/realtime/rtf_biquad_kernel.h"

namespace digitfilt {
namespace {

// A float conversion is a NaN exactly when the double is one, so the test needs no conversion.
inline double zeroIfNan(double y) { return y == y ? y : 0.0; }

inline double stepDf1(Df1Section& s, double x) {
  const double y = s.b0 * x + s.b1 * s.x1 + s.b2 * s.x2 - s.a1 * s.y1 - s.a2 * s.y2;
  s.x3 = s.x2;
  s.x2 = s.x1;
  s.x1 = x;
  s.y3 = s.y2;
  s.y2 = s.y1;
  s.y1 = y;
  return y;
}

inline double stepTdf2(Tdf2Section& s, double x) {
  const double out = x * s.a0 + s.z1;
  s.z1 = x * s.a1 + s.z2 - s.b1 * out;
  s.z2 = x * s.a2 - s.b2 * out;
  return out;
}

// One or two sections over the block with their state in locals. Two recurrences in one loop
// run side by side in the pipeline instead of back to back.
template <class Section, double (*step)(Section&, double)>
void runOne(Section& section, double* data, std::int64_t first, std::int64_t last) {
  Section s = section;
  for (std::int64_t i = first; i <= last; ++i) data[i] = zeroIfNan(step(s, data[i]));
  section = s;
}

template <class Section, double (*step)(Section&, double)>
void runTwo(Section& section0, Section& section1, double* data, std::int64_t first,
            std::int64_t last) {
  Section s0 = section0, s1 = section1;
  for (std::int64_t i = first; i <= last; ++i) {
    const double x = zeroIfNan(step(s0, data[i]));
    data[i] = zeroIfNan(step(s1, x));
  }
  section0 = s0;
  section1 = s1;
}

template <class Section, double (*step)(Section&, double)>
void runCascade(Section* sections, int count, double* data, std::int64_t first,
                std::int64_t last) {
  if (first > last) return;
  int k = 0;
  for (; k + 2 <= count; k += 2)
    runTwo<Section, step>(sections[k], sections[k + 1], data, first, last);
  if (k < count) runOne<Section, step>(sections[k], data, first, last);
}

}  // namespace

void filterDf1Cascade(Df1Section* sections, int count, double* data, std::int64_t first,
                      std::int64_t last) {
  runCascade<Df1Section, stepDf1>(sections, count, data, first, last);
}

void filterTdf2Cascade(Tdf2Section* sections, int count, double* data, std::int64_t first,
                       std::int64_t last) {
  runCascade<Tdf2Section, stepTdf2>(sections, count, data, first, last);
}

}  // namespace digitfilt
