// digitfilt demo: synthetic EEG through an acquisition bank, block by block, with the numbers a
// person evaluating the library wants to see and a picture.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iostream>
#include <sstream>

#include <nlohmann/json.hpp>

#include "bank_runner.h"
#include "commands.h"
#include "library_messages.h"
#include "settings_json.h"
#include "signal_io.h"
#include "spectrum.h"
#include "svg_plot.h"
#include "synth.h"
#include "tool_error.h"

namespace digitfilt::tool {
namespace {

constexpr std::uint64_t kSeed = 20240611;

double powerDb(double p) { return 10.0 * std::log10(std::max(p, 1e-30)); }

// Three decimals, or three significant digits once a bank's gain makes the value huge.
std::string microvolts(double v) {
  char buf[32];
  std::snprintf(buf, sizeof buf, v < 1e4 ? "%.3f" : "%.3g", v);
  return buf;
}

struct ChannelReport {
  double mainsBefore = 0, mainsAfter = 0;  // mean-square power, uV^2
  double driftBefore = 0, driftAfter = 0;
  double residualRms = 0, cleanRms = 0;  // output against the clean EEG
  double artefactRms = 0;  // output against the clean EEG through the same bank: what is left
                           // of offset, drift and mains, without the bank's own phase shift
};

ChannelReport measure(const SyntheticEeg& sig, std::size_t c, const std::vector<double>& out,
                      const std::vector<double>& cleanOut, std::size_t from) {
  const std::size_t n = out.size() - from;
  const Periodogram before(sig.total[c].data() + from, n, sig.rate);
  const Periodogram after(out.data() + from, n, sig.rate);
  ChannelReport r;
  // Bands wide enough to hold the window's main lobe, so a tone counts whole.
  const double halfBand = std::max(0.5, 1.5 * before.resolutionHz());
  for (int h = 1; h <= sig.mainsHarmonics; ++h) {
    const double f = h * sig.mainsHz;
    r.mainsBefore += before.bandPower(f - halfBand, f + halfBand);
    r.mainsAfter += after.bandPower(f - halfBand, f + halfBand);
  }
  const double driftTop = std::max(0.3, 2.0 * before.resolutionHz());
  r.driftBefore = before.bandPower(0.0, driftTop);
  r.driftAfter = after.bandPower(0.0, driftTop);
  double ss = 0, cs = 0, as = 0;
  for (std::size_t i = from; i < out.size(); ++i) {
    const double d = out[i] - sig.clean[c][i];
    const double a = out[i] - cleanOut[i];
    ss += d * d;
    as += a * a;
    cs += sig.clean[c][i] * sig.clean[c][i];
  }
  r.residualRms = std::sqrt(ss / n);
  r.artefactRms = std::sqrt(as / n);
  r.cleanRms = std::sqrt(cs / n);
  return r;
}

std::vector<double> psdDb(const std::vector<double>& x, std::size_t from, double rate,
                          std::vector<double>& freqs) {
  const Spectrum s = welchPsd(x.data() + from, x.size() - from, rate,
                              nextPowerOfTwo(static_cast<std::size_t>(4.0 * rate)));
  freqs = s.freqs;
  std::vector<double> db;
  for (double p : s.psd) db.push_back(powerDb(p));
  return db;
}

std::string demoSvg(const SyntheticEeg& sig, const std::vector<double>& out, std::size_t from,
                    ChannelBank& bank, const std::string& bankLabel) {
  PlotPanel spectrum;
  spectrum.title = "Channel 1 power spectrum (after the first " +
               formatNumber(static_cast<double>(from) / sig.rate) + " s)";
  spectrum.xLabel = "Frequency (Hz)";
  spectrum.yLabel = "Power density (dB re 1 \u00b5V\u00b2/Hz)";
  std::vector<double> f;
  Curve before{"before: EEG + offset, drift, mains", {}, psdDb(sig.total[0], from, sig.rate, f),
               "#d62728", 1.2};
  before.x = f;
  Curve after{"after the bank", f, psdDb(out, from, sig.rate, f), "#1f77b4", 1.6};
  Curve clean{"clean EEG (reference)", f, psdDb(sig.clean[0], from, sig.rate, f), "#7f7f7f", 1.0,
              true};
  spectrum.xMin = 0.2;
  spectrum.xMax = sig.rate / 2;
  // 160 dB below the highest curve, but always low enough to show the input: a bank with a
  // huge gain must not push the input out of the picture.
  double top = -1e9, topBefore = -1e9;
  for (const Curve* c : {&before, &after})
    for (double v : c->y) top = std::max(top, v);
  for (double v : before.y) topBefore = std::max(topBefore, v);
  spectrum.yMax = std::ceil(top / 10.0) * 10.0 + 10.0;
  spectrum.yMin = std::min(spectrum.yMax - 160.0, std::floor(topBefore / 10.0) * 10.0 - 100.0);
  spectrum.curves = {before, clean, after};

  PlotPanel resp;
  resp.title = "Magnitude response of the bank: " + bankLabel;
  resp.xLabel = "Frequency (Hz)";
  resp.yLabel = "Gain (dB)";
  resp.xMin = spectrum.xMin;
  resp.xMax = sig.rate / 2;
  // The harmonic centres join the grid so the plot shows how deep the notches really go.
  std::vector<double> rf = logSpacedFrequencies(resp.xMin, resp.xMax, 800);
  for (int h = 1; h <= sig.mainsHarmonics; ++h) rf.push_back(h * sig.mainsHz);
  std::sort(rf.begin(), rf.end());
  std::vector<double> rdb;
  for (double m : bank.bankMagnitude(rf)) rdb.push_back(toDb(m));
  resp.yMin = -100.0;
  const double gainTop = *std::max_element(rdb.begin(), rdb.end());
  resp.yMax = gainTop > 5.0 ? std::ceil(gainTop / 10.0) * 10.0 + 10.0 : 10.0;
  resp.curves = {Curve{"bank", rf, rdb, "#000000", 1.8}};
  return renderSvg("digitfilt demo: synthetic EEG through an acquisition filter bank",
                   {spectrum, resp});
}

}  // namespace

int runDemo(const DemoOptions& opt) {
  const BankKind kind = parseBankKind(opt.bank);
  if (!(opt.seconds >= 1.0 && opt.seconds <= 3600.0))
    throw ToolError("--seconds: must be between 1 and 3600");
  if (opt.block < 1) throw ToolError("--block: must be at least 1");
  LibraryMessages messages(!opt.json);

  const SyntheticEeg sig = synthesizeEeg(opt.channels, opt.seconds, opt.rate, 50.0, kSeed);
  const CFilterDcLtSetAcqqv requested = demoSettings(opt.rate, opt.channels);
  std::vector<std::vector<double>> out = sig.total;
  const BankRun run = runBank(kind, requested, out, std::vector<double>(out.size(), opt.rate),
                              opt.block, false, nullptr);

  // The high-pass needs a few seconds to settle from the offset; measure after that.
  const std::size_t from =
      static_cast<std::size_t>(std::min(5.0, 0.25 * opt.seconds) * opt.rate);
  std::vector<std::vector<double>> cleanOut = sig.clean;
  {
    LibraryMessages quiet(false);
    runBank(kind, requested, cleanOut, std::vector<double>(out.size(), opt.rate), opt.block, false,
            nullptr);
  }
  std::vector<ChannelReport> reports;
  for (std::size_t c = 0; c < out.size(); ++c)
    reports.push_back(measure(sig, c, out[c], cleanOut[c], from));

  CFilterDcLtSetAcqqv forPlot = run.corrected;
  auto bank = configuredBank(kind, forPlot);
  const std::string svgPath =
      (opt.outDir.empty() ? std::string(".") : opt.outDir) + "/digitfilt-demo.svg";
  writeTextFile(svgPath, demoSvg(sig, out[0], from, *bank, bankName(kind)));

  const double samples = static_cast<double>(out.size()) * static_cast<double>(out[0].size());
  const double secs = std::max(run.filterSeconds, 1e-9);
  const double perSecond = samples / secs;
  const double realTime = opt.seconds / secs;

  if (opt.json) {
    nlohmann::ordered_json j;
    j["bank"] = bankName(kind);
    j["class"] = bankClassName(kind);
    j["rate"] = opt.rate;
    j["channels"] = opt.channels;
    j["seconds"] = opt.seconds;
    j["blockSize"] = opt.block;
    j["settings"] = settingsToJson(run.corrected);
    j["stageCount"] = run.stageCount;
    j["stages"] = run.stageLabels;
    j["measuredFromSeconds"] = static_cast<double>(from) / opt.rate;
    nlohmann::ordered_json chans = nlohmann::ordered_json::array();
    for (std::size_t c = 0; c < reports.size(); ++c) {
      const ChannelReport& r = reports[c];
      nlohmann::ordered_json jc;
      jc["channel"] = c + 1;
      jc["mainsBeforeDb"] = powerDb(r.mainsBefore);
      jc["mainsAfterDb"] = powerDb(r.mainsAfter);
      jc["mainsReductionDb"] = powerDb(r.mainsBefore) - powerDb(r.mainsAfter);
      jc["driftBeforeDb"] = powerDb(r.driftBefore);
      jc["driftAfterDb"] = powerDb(r.driftAfter);
      jc["driftReductionDb"] = powerDb(r.driftBefore) - powerDb(r.driftAfter);
      jc["residualRms"] = r.residualRms;
      jc["residualDb"] = 20.0 * std::log10(std::max(r.residualRms, 1e-30) / r.cleanRms);
      jc["artefactResidualRms"] = r.artefactRms;
      chans.push_back(jc);
    }
    j["channelResults"] = chans;
    j["throughput"] = {{"samples", samples},
                       {"filterSeconds", run.filterSeconds},
                       {"samplesPerSecond", perSecond},
                       {"realTimeFactor", realTime}};
    j["svg"] = svgPath;
    j["messages"] = messages.texts();
    std::cout << j.dump(2) << "\n";
    return 0;
  }

  std::ostringstream o;
  char line[256];
  std::snprintf(line, sizeof line,
                "Synthetic EEG: %d channels x %g s at %g Hz (1/f background, 10 Hz alpha)\n"
                "  plus a DC offset, a slow drift and 50 Hz mains with %d harmonics.\n",
                opt.channels, opt.seconds, opt.rate, sig.mainsHarmonics);
  o << line;
  o << "Settings: high-pass 0.5 Hz, low-pass 70 Hz, 50 Hz mains with 3 harmonics, 4 Hz wide.\n";
  o << "Bank: " << bankName(kind) << " (" << bankClassName(kind) << "), " << opt.block
    << "-sample blocks, state carried between blocks.\n";
  o << "Stages (" << run.stageLabels.size() << "):\n";
  for (std::size_t i = 0; i < run.stageLabels.size(); ++i)
    o << "  " << i + 1 << "  " << run.stageLabels[i] << "\n";
  std::snprintf(line, sizeof line,
                "\nPowers in dB re 1 uV^2, measured after the first %g s (high-pass settling):\n",
                static_cast<double>(from) / opt.rate);
  o << line;
  o << "         ------ mains (dB) ------   - drift (dB) -   ----------- uV rms -----------\n"
       "channel  before  after  reduction   before  after       clean  residual  artefacts\n";
  for (std::size_t c = 0; c < reports.size(); ++c) {
    const ChannelReport& r = reports[c];
    std::snprintf(line, sizeof line, "%5zu   %7.1f %6.1f %8.1f    %7.1f %6.1f   %9s %9s %10s\n",
                  c + 1, powerDb(r.mainsBefore), powerDb(r.mainsAfter),
                  powerDb(r.mainsBefore) - powerDb(r.mainsAfter), powerDb(r.driftBefore),
                  powerDb(r.driftAfter), microvolts(r.cleanRms).c_str(),
                  microvolts(r.residualRms).c_str(), microvolts(r.artefactRms).c_str());
    o << line;
  }
  o << "residual: output minus the clean EEG (includes the bank's own phase shift and band\n"
       "limits on the EEG); artefacts: output minus the clean EEG through the same bank.\n";
  std::snprintf(line, sizeof line,
                "\nThroughput: %.0f samples in %.2f ms: %.1f M samples/s, %.0fx real time.\n",
                samples, 1e3 * run.filterSeconds, perSecond / 1e6, realTime);
  o << line;
  o << "Wrote " << svgPath
    << " (channel 1 spectrum before and after, magnitude response of the bank).\n";
  std::cout << o.str();
  return 0;
}

}  // namespace digitfilt::tool
