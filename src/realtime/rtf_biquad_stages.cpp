#include "digitfilt/realtime/rtf_biquad_stages.h"

#include <algorithm>

namespace digitfilt {

bool cookbookTerms(int type, double A, double c, double alpha, double beta, CookbookTerms& t) {
  switch (type) {
    case 0:
      t = {(1 - c) / 2, 1 - c, (1 - c) / 2, 1 + alpha, -2 * c, 1 - alpha};
      return true;
    case 1:
      t = {(1 + c) / 2, -(1 + c), (1 + c) / 2, 1 + alpha, -2 * c, 1 - alpha};
      return true;
    case 3:
      t = {alpha, 0, -alpha, 1 + alpha, -2 * c, 1 - alpha};
      return true;
    case 4:
      t = {1, -2 * c, 1, 1 + alpha, -2 * c, 1 - alpha};
      return true;
    case 6:
      t = {1 + alpha * A, -2 * c, 1 - alpha * A, 1 + alpha / A, -2 * c, 1 - alpha / A};
      return true;
    case 7:
      t = {A * ((A + 1) - (A - 1) * c + beta), 2 * A * ((A - 1) - (A + 1) * c),
           A * ((A + 1) - (A - 1) * c - beta), (A + 1) + (A - 1) * c + beta,
           -2 * ((A - 1) + (A + 1) * c),       (A + 1) + (A - 1) * c - beta};
      return true;
    case 8:
      t = {A * ((A + 1) + (A - 1) * c + beta), -2 * A * ((A - 1) + (A + 1) * c),
           A * ((A + 1) + (A - 1) * c - beta), (A + 1) - (A - 1) * c + beta,
           2 * ((A - 1) - (A + 1) * c),        (A + 1) - (A - 1) * c - beta};
      return true;
    default:
      return false;
  }
}

SampleSpan spanInArray(std::int64_t length, std::int64_t start, std::int64_t end) {
  return {std::max<std::int64_t>(start, 0), length <= 0 ? -1 : std::min(end, length - 1)};
}

}  // namespace digitfilt
