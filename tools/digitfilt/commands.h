#pragma once
// The tool's commands. Each returns the process exit status and throws ToolError for bad input.
#include <cstdint>
#include <string>
#include <vector>

namespace digitfilt::tool {

struct DemoOptions {
  std::string bank = "butterworth";
  std::string outDir = ".";
  bool json = false;
  double seconds = 20.0;
  int channels = 8;
  double rate = 1000.0;
  std::int64_t block = 100;
};
int runDemo(const DemoOptions& opt);

struct FilterOptions {
  std::string settingsPath;
  std::string inPath;
  std::string outPath;
  std::string bank = "butterworth";
  std::int64_t block = 100;  // 0: the whole record in one call
  bool zeroPhase = false;
  std::string format;        // empty: from the input's extension
  double rate = 0.0;         // 0: from the settings (CSV, raw) or the file (EDF)
  int channels = 0;          // raw input only
  bool quiet = false;
};
int runFilter(const FilterOptions& opt);

struct ResponseOptions {
  std::string settingsPath;
  std::string bank = "butterworth";
  std::string svgPath;
  std::string csvPath;
  double rate = 0.0;  // 0: the settings' acqSampleRate
  int points = 600;
  bool json = false;
};
int runResponse(const ResponseOptions& opt);

struct DesignOptions {
  std::string method;  // butterworth, chebyshev, kaiser, remez
  std::string type = "lowpass";
  int order = 4;
  double rate = 0.0;
  double cutoff = 0.0;
  double low = 0.0;
  double high = 0.0;
  double rippleDb = 0.5;       // chebyshev
  double epsilon = 0.0;        // chebyshev; 0: from rippleDb
  double attenDb = 60.0;       // kaiser
  double transition = 0.0;     // kaiser, remez (Hz)
  double stopWeight = 1.0;     // remez
  std::vector<double> at;      // extra response frequencies
  bool json = false;
};
int runDesign(const DesignOptions& opt);

int runSettingsTemplate();

}  // namespace digitfilt::tool
