// digitfilt filter: every channel of a CSV, raw or EDF file through an acquisition bank.
#include <algorithm>
#include <cmath>
#include <iostream>
#include <map>

#include "bank_runner.h"
#include "commands.h"
#include "edf_io.h"
#include "library_messages.h"
#include "progress.h"
#include "settings_json.h"
#include "signal_io.h"
#include "tool_error.h"

namespace digitfilt::tool {
namespace {

void checkRate(double rate, const std::string& what) {
  if (!(rate > 0.0) || !std::isfinite(rate))
    throw ToolError(what + ": the sample rate must be positive (got " + formatNumber(rate) + ")");
}

// "250" or, for an EDF file with signals at several rates, "250/125".
std::string ratesText(const std::vector<double>& rates) {
  std::vector<double> distinct;
  for (double r : rates)
    if (std::find(distinct.begin(), distinct.end(), r) == distinct.end()) distinct.push_back(r);
  std::string text;
  for (double r : distinct) text += (text.empty() ? "" : "/") + formatNumber(r);
  return text;
}

}  // namespace

int runFilter(const FilterOptions& opt) {
  const BankKind kind = parseBankKind(opt.bank);
  if (opt.block < 0) throw ToolError("--block: must be 0 (whole record) or more");
  const FileFormat format = opt.format.empty() ? formatFromPath(opt.inPath)
                                               : parseFormat(opt.format);
  const CFilterDcLtSetAcqqv requested = loadSettingsFile(opt.settingsPath);
  LibraryMessages messages(true);

  // The rate: EDF files carry their own; otherwise --rate, else the settings' acqSampleRate.
  double rate = opt.rate;
  if (opt.rate != 0.0) checkRate(opt.rate, "--rate");
  if (format != FileFormat::kEdf && rate == 0.0) {
    rate = requested.acqSampleRate;
    if (rate == 0.0)
      throw ToolError("--rate: needed for " + std::string(formatName(format)) +
                      " input (or set acqSampleRate in " + opt.settingsPath + ")");
    checkRate(rate, opt.settingsPath + ": field \"acqSampleRate\"");
  }
  if (format == FileFormat::kRaw && opt.channels < 1)
    throw ToolError("--channels: needed for raw input, at least 1");

  Recording rec;
  switch (format) {
    case FileFormat::kCsv: rec = readCsv(opt.inPath, rate); break;
    case FileFormat::kRaw: rec = readRaw(opt.inPath, opt.channels, rate); break;
    case FileFormat::kEdf:
      rec = readEdf(opt.inPath);
      if (opt.rate != 0.0)
        throw ToolError("--rate: an EDF file carries its own sample rate; leave --rate out");
      for (double r : rec.rates) checkRate(r, opt.inPath);
      break;
  }

  const std::int64_t samples = static_cast<std::int64_t>(rec.channels[0].size());
  std::int64_t total = 0;
  for (const auto& ch : rec.channels) total += static_cast<std::int64_t>(ch.size());
  BankRun run;
  {
    Progress progress("filtering", total, !opt.quiet);
    run = runBank(kind, requested, rec.channels, rec.rates, opt.block, opt.zeroPhase, &progress);
  }
  const std::int64_t clipped = writeRecording(opt.outPath, rec);

  if (!opt.quiet) {
    std::cout << "Filtered " << rec.channelCount() << " channel(s) x " << samples
              << " samples at " << ratesText(rec.rates) << " Hz (" << formatName(format)
              << ") through " << bankName(kind) << " (" << bankClassName(kind) << "), "
              << (opt.zeroPhase ? std::string("forward and backward")
                                : opt.block == 0 ? std::string("whole record in one block")
                                                 : std::to_string(opt.block) + "-sample blocks")
              << ".\n";
    std::cout << "Stages:";
    for (const std::string& s : run.stageLabels) std::cout << "\n  " << s;
    std::cout << "\n";
    for (const SettingChange& c : settingChanges(settingsForData(requested, rec.rates[0],
                                                                 rec.channelCount()),
                                                 run.corrected))
      std::cout << "The bank corrected " << c.field << ": " << c.requested << " -> "
                << c.corrected << "\n";
    std::cout << "Wrote " << opt.outPath << "\n";
  }
  if (clipped > 0)
    std::cerr << "digitfilt: warning: " << clipped
              << " filtered samples lay outside their signal's EDF range and were clipped\n";
  return 0;
}

}  // namespace digitfilt::tool
