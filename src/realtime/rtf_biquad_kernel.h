#pragma once
// Block kernels of the biquad cascades: a section is copied into one of these small records, runs
// over the block with its state in locals, and is copied back.
#include <cstdint>

namespace digitfilt {

// Direct form I: y = b0 x + b1 x1 + b2 x2 - a1 y1 - a2 y2, summed in that order. x3 and y3 are
// the values one step older than x2 and y2, kept so a history ring can be restored exactly.
struct Df1Section {
  double b0 = 0, b1 = 0, b2 = 0, a1 = 0, a2 = 0;
  double x1 = 0, x2 = 0, x3 = 0;
  double y1 = 0, y2 = 0, y3 = 0;
};

// Transposed direct form II with numerator a0..a2 and denominator 1, b1, b2:
// out = x a0 + z1; z1 = x a1 + z2 - b1 out; z2 = x a2 - b2 out.
struct Tdf2Section {
  double a0 = 1, a1 = 0, a2 = 0, b1 = 0, b2 = 0;
  double z1 = 0, z2 = 0;
};

// Filters data[first..last] in place through `count` sections in order. Every section's output
// that is a NaN is passed on (and written) as 0, while the section keeps the NaN in its state.
// The result equals running each section over the whole block before the next one; sections are
// interleaved two at a time only so that their recurrences overlap in the pipeline.
void filterDf1Cascade(Df1Section* sections, int count, double* data, std::int64_t first,
                      std::int64_t last);
void filterTdf2Cascade(Tdf2Section* sections, int count, double* data, std::int64_t first,
                       std::int64_t last);

}  // namespace digitfilt
