#pragma once
// Turns fuzzer bytes into the values the library's entries take, biased towards the values that
// break filters: NaN, infinities, zero, negatives, denormals, huge and tiny magnitudes.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

namespace digitfilt::fuzz {

class Input {
 public:
  Input(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}

  bool empty() const { return pos_ >= size_; }

  std::uint8_t byte() { return pos_ < size_ ? data_[pos_++] : 0; }

  std::uint32_t u32() {
    std::uint32_t v = 0;
    for (int i = 0; i < 4; ++i) v = (v << 8) | byte();
    return v;
  }

  // An integer in [lo, hi].
  std::int64_t range(std::int64_t lo, std::int64_t hi) {
    const std::uint64_t span = static_cast<std::uint64_t>(hi - lo) + 1u;
    return lo + static_cast<std::int64_t>(u32() % (span == 0 ? 1 : span));
  }

  // An integer in [lo, hi], sometimes the extremes of int.
  int wildInt(int lo, int hi) {
    switch (byte() % 8) {
      case 0: return std::numeric_limits<int>::min();
      case 1: return std::numeric_limits<int>::max();
      default: return static_cast<int>(range(lo, hi));
    }
  }

  // A double: mostly a plain value scaled into [-scale, 2 scale], sometimes a special one.
  double real(double scale) {
    const std::uint8_t kind = byte();
    switch (kind % 16) {
      case 0: return std::numeric_limits<double>::quiet_NaN();
      case 1: return std::numeric_limits<double>::infinity();
      case 2: return -std::numeric_limits<double>::infinity();
      case 3: return 0.0;
      case 4: return std::numeric_limits<double>::denorm_min() * (1 + byte());
      case 5: return -scale * (byte() / 255.0);
      case 6: return 1e300;
      case 7: {
        double v;
        std::uint64_t bits = (static_cast<std::uint64_t>(u32()) << 32) | u32();
        std::memcpy(&v, &bits, sizeof v);
        return v;
      }
      default: return scale * (static_cast<double>(u32()) / 4294967295.0) * 3.0 - scale;
    }
  }

  // A double in [lo, hi] with no special values.
  double finite(double lo, double hi) {
    return lo + (hi - lo) * (static_cast<double>(u32()) / 4294967295.0);
  }

  // Samples for a record: the rest of the input as scaled values, at most maxCount of them.
  std::vector<double> samples(std::size_t maxCount) {
    std::vector<double> out;
    while (!empty() && out.size() < maxCount) out.push_back(real(1000.0));
    return out;
  }

 private:
  const std::uint8_t* data_;
  std::size_t size_;
  std::size_t pos_ = 0;
};

}  // namespace digitfilt::fuzz
