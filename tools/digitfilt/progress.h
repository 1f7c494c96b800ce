#pragma once
// A progress bar on stderr for work that takes more than a second; silent otherwise, and
// silent when stderr is not a terminal, so logs and error lines stay clean.
#include <chrono>
#include <cstdint>
#include <string>

namespace digitfilt::tool {

class Progress {
 public:
  Progress(std::string label, std::int64_t total, bool enabled);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  void advance(std::int64_t done);

 private:
  void draw();

  std::string label_;
  std::int64_t total_;
  std::int64_t done_ = 0;
  bool enabled_;
  bool shown_ = false;
  std::chrono::steady_clock::time_point start_;
  std::chrono::steady_clock::time_point lastDraw_;
};

}  // namespace digitfilt::tool
