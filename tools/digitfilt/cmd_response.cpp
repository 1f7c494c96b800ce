// digitfilt response: the magnitude response of every stage and of the whole bank, with the
// settings as the bank corrected them.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iostream>
#include <set>

#include <nlohmann/json.hpp>

#include "bank_runner.h"
#include "commands.h"
#include "library_messages.h"
#include "settings_json.h"
#include "signal_io.h"
#include "spectrum.h"
#include "svg_plot.h"
#include "tool_error.h"

namespace digitfilt::tool {
namespace {

// Rounded to the printed precision, so a tiny negative value does not print as "-0.0000".
double tidy(double db) { return std::round(db * 1e4) / 1e4 + 0.0; }

}  // namespace

int runResponse(const ResponseOptions& opt) {
  const BankKind kind = parseBankKind(opt.bank);
  if (opt.svgPath.empty() && opt.csvPath.empty() && !opt.json)
    throw ToolError("response: give --svg FILE, --csv FILE or --json");
  if (opt.points < 16 || opt.points > 100000)
    throw ToolError("--points: must be between 16 and 100000");
  CFilterDcLtSetAcqqv requested = loadSettingsFile(opt.settingsPath);
  if (opt.rate != 0.0) {
    if (!(opt.rate > 0.0) || !std::isfinite(opt.rate))
      throw ToolError("--rate: the sample rate must be positive (got " + formatNumber(opt.rate) +
                      ")");
    requested.acqSampleRate = opt.rate;
  } else if (!(requested.acqSampleRate > 0.0) || !std::isfinite(requested.acqSampleRate)) {
    throw ToolError(opt.settingsPath + ": field \"acqSampleRate\" must be a positive rate (got " +
                    formatNumber(requested.acqSampleRate) + "), or give --rate");
  }
  // A host always has at least one channel; the settings need not say.
  if (requested.channelCount < 1) requested.channelCount = 1;
  const double rate = requested.acqSampleRate;

  LibraryMessages messages(!opt.json);
  CFilterDcLtSetAcqqv corrected = requested;
  auto bank = configuredBank(kind, corrected);
  const std::vector<std::string> labels = bank->stageLabels();
  const std::vector<SettingChange> changes = settingChanges(requested, corrected);

  // A few frequencies worth reading off: the settings' own edges and centres, and the extremes.
  std::set<double> named = {std::max(rate * 1e-4, 0.01), rate / 2};
  const CFilterDcLtSetAcqqv& s = corrected;
  if (s.highPassOn) named.insert(s.highPassFreq);
  if (s.lowPassOn) named.insert(s.lowPassFreq);
  if (s.powerLineOn) {
    const double f0 = s.powerLineType == 0 ? 60.0 : s.powerLineType == 1 ? 50.0 : s.powerLineFreq;
    for (int k = 1; k <= s.powerLineHarmonics && k * f0 < rate / 2; ++k) named.insert(k * f0);
  }
  for (int i = 0; i < 6; ++i)
    if (s.notchOn[i]) named.insert(std::sqrt(s.notchFreqLow[i] * std::max(s.notchFreqHigh[i], 0.0)));
  std::vector<double> namedFreqs(named.begin(), named.end());
  namedFreqs.erase(std::remove_if(namedFreqs.begin(), namedFreqs.end(),
                                  [&](double f) { return !(f > 0) || f > rate / 2; }),
                   namedFreqs.end());
  // The named frequencies join the curves' grid, so notches show their real depth.
  std::vector<double> freqs =
      logSpacedFrequencies(std::max(rate * 1e-4, 0.01), rate / 2, static_cast<std::size_t>(opt.points));
  freqs.insert(freqs.end(), namedFreqs.begin(), namedFreqs.end());
  std::sort(freqs.begin(), freqs.end());
  freqs.erase(std::unique(freqs.begin(), freqs.end()), freqs.end());
  std::vector<std::vector<double>> stageDb;
  for (std::size_t i = 0; i < labels.size(); ++i) {
    std::vector<double> db;
    for (double m : bank->stageMagnitude(i, freqs)) db.push_back(toDb(m));
    stageDb.push_back(db);
  }
  std::vector<double> bankDb;
  for (double m : bank->bankMagnitude(freqs)) bankDb.push_back(toDb(m));

  const std::vector<double> namedMag = bank->bankMagnitude(namedFreqs);

  if (!opt.svgPath.empty()) {
    PlotPanel p;
    p.title = bankName(kind) + " (" + bankClassName(kind) + ") at " + formatNumber(rate) + " Hz";
    p.xLabel = "Frequency (Hz)";
    p.yLabel = "Gain (dB)";
    p.xMin = freqs.front();
    p.xMax = freqs.back();
    p.yMin = -100;
    double top = 0.0;
    for (const auto& db : stageDb) top = std::max(top, *std::max_element(db.begin(), db.end()));
    top = std::max(top, *std::max_element(bankDb.begin(), bankDb.end()));
    // Room above 0 dB only for banks that amplify somewhere.
    p.yMax = top > 5.0 ? std::ceil(top / 10.0) * 10.0 + 10.0 : 10.0;
    for (std::size_t i = 0; i < labels.size(); ++i)
      p.curves.push_back(Curve{labels[i], freqs, stageDb[i], curveColor(i), 1.5, false, 0.75});
    p.curves.push_back(Curve{"whole bank", freqs, bankDb, "#000000", 2.0});
    writeTextFile(opt.svgPath, renderSvg("Magnitude response of every stage and of the bank", {p}));
  }
  if (!opt.csvPath.empty()) {
    std::string text = "frequency_hz,bank_db";
    for (std::size_t i = 0; i < labels.size(); ++i) text += ",stage" + std::to_string(i + 1) + "_db";
    text += "\n";
    char buf[64];
    for (std::size_t k = 0; k < freqs.size(); ++k) {
      std::snprintf(buf, sizeof buf, "%.6g,%.4f", freqs[k], tidy(bankDb[k]));
      text += buf;
      for (const auto& db : stageDb) {
        std::snprintf(buf, sizeof buf, ",%.4f", tidy(db[k]));
        text += buf;
      }
      text += "\n";
    }
    writeTextFile(opt.csvPath, text);
  }

  if (opt.json) {
    nlohmann::ordered_json j;
    j["bank"] = bankName(kind);
    j["class"] = bankClassName(kind);
    j["rate"] = rate;
    j["settings"] = settingsToJson(corrected);
    nlohmann::ordered_json ch = nlohmann::ordered_json::array();
    for (const SettingChange& c : changes)
      ch.push_back({{"field", c.field}, {"requested", c.requested}, {"corrected", c.corrected}});
    j["corrections"] = ch;
    j["messages"] = messages.texts();
    j["stages"] = labels;
    nlohmann::ordered_json at = nlohmann::ordered_json::array();
    for (std::size_t k = 0; k < namedFreqs.size(); ++k)
      at.push_back({{"hz", namedFreqs[k]}, {"db", toDb(namedMag[k])}});
    j["bankGainAt"] = at;
    std::cout << j.dump(2) << "\n";
    return 0;
  }

  std::cout << "Bank: " << bankName(kind) << " (" << bankClassName(kind) << ") at "
            << formatNumber(rate) << " Hz\n";
  if (changes.empty()) {
    std::cout << "Settings: accepted as given.\n";
  } else {
    std::cout << "Settings corrected by the bank:\n";
    for (const SettingChange& c : changes)
      std::cout << "  " << c.field << ": " << c.requested << " -> " << c.corrected << "\n";
  }
  std::cout << "Stages (" << labels.size() << "):\n";
  for (std::size_t i = 0; i < labels.size(); ++i)
    std::cout << "  " << i + 1 << "  " << labels[i] << "\n";
  std::cout << "Gain of the whole bank:\n";
  char line[96];
  for (std::size_t k = 0; k < namedFreqs.size(); ++k) {
    std::snprintf(line, sizeof line, "  %10g Hz  %s\n", namedFreqs[k], formatDb(namedMag[k]).c_str());
    std::cout << line;
  }
  if (!opt.svgPath.empty()) std::cout << "Wrote " << opt.svgPath << "\n";
  if (!opt.csvPath.empty()) std::cout << "Wrote " << opt.csvPath << "\n";
  return 0;
}

}  // namespace digitfilt::tool
