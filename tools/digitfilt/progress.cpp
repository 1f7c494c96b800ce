#include "progress.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>

namespace digitfilt::tool {

Progress::Progress(std::string label, std::int64_t total, bool enabled)
    : label_(std::move(label)),
      total_(std::max<std::int64_t>(total, 1)),
      enabled_(enabled && isatty(STDERR_FILENO)),
      start_(std::chrono::steady_clock::now()),
      lastDraw_(start_) {}

Progress::~Progress() {
  if (!shown_) return;
  done_ = total_;
  draw();
  std::fputc('\n', stderr);
}

void Progress::advance(std::int64_t done) {
  done_ += done;
  if (!enabled_) return;
  const auto now = std::chrono::steady_clock::now();
  if (!shown_ && now - start_ < std::chrono::seconds(1)) return;
  if (shown_ && now - lastDraw_ < std::chrono::milliseconds(100)) return;
  shown_ = true;
  lastDraw_ = now;
  draw();
}

void Progress::draw() {
  constexpr int kWidth = 40;
  const double frac = std::min(1.0, static_cast<double>(done_) / static_cast<double>(total_));
  const int filled = static_cast<int>(frac * kWidth);
  std::string bar(filled, '#');
  bar.resize(kWidth, '.');
  std::fprintf(stderr, "\r%s [%s] %3d%%", label_.c_str(), bar.c_str(),
               static_cast<int>(frac * 100.0));
  std::fflush(stderr);
}

}  // namespace digitfilt::tool
