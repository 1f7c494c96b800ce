// digitfilt design: one filter from one of the library's designers, its coefficients and its
// gain at a few named frequencies.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iostream>
#include <sstream>

#include <nlohmann/json.hpp>

#include <digitfilt/digitfilt.h>

#include "commands.h"
#include "library_messages.h"
#include "settings_json.h"
#include "spectrum.h"
#include "tool_error.h"

namespace digitfilt::tool {
namespace {

struct NamedFrequency {
  std::string name;
  double hz;
};

// What every design prints: a headline, coefficient tables and the response.
struct DesignReport {
  std::string headline;
  nlohmann::ordered_json fields = nlohmann::ordered_json::object();
  std::vector<std::pair<std::string, std::vector<std::pair<std::string, std::vector<double>>>>>
      tables;  // title, columns
  std::vector<NamedFrequency> at;
  std::vector<double> magnitude;
  std::vector<std::string> warnings;
};

int typeCode(const std::string& type, bool allowBandStop) {
  if (type == "lowpass") return 0;
  if (type == "highpass") return 1;
  if (type == "bandpass") return 2;
  if (type == "bandstop" && allowBandStop) return 3;
  throw ToolError("--type: \"" + type + "\" is not one of lowpass, highpass, bandpass" +
                  (allowBandStop ? ", bandstop" : ""));
}

const char* typeWord(int code) {
  static const char* words[] = {"low-pass", "high-pass", "band-pass", "band-stop"};
  return words[code];
}

void checkFrequency(double f, double rate, const std::string& option) {
  if (!(f > 0.0) || !(f < rate / 2))
    throw ToolError(option + ": must lie between 0 and half the sample rate (" +
                    formatNumber(rate / 2) + " Hz), got " + formatNumber(f));
}

// Edges of the requested type: the cut-off for low- and high-pass, --low/--high for bands.
void checkEdges(const DesignOptions& o, int code) {
  if (code <= 1) {
    checkFrequency(o.cutoff, o.rate, "--cutoff");
  } else {
    checkFrequency(o.low, o.rate, "--low");
    checkFrequency(o.high, o.rate, "--high");
    if (!(o.low < o.high)) throw ToolError("--low: must be below --high");
  }
}

std::vector<NamedFrequency> namedFrequencies(const DesignOptions& o, int code) {
  std::vector<NamedFrequency> at = {{"DC", 0.0}};
  if (code <= 1) {
    at.push_back({"cut-off", o.cutoff});
    if (code == 0 && 2 * o.cutoff < o.rate / 2) at.push_back({"2 x cut-off", 2 * o.cutoff});
    if (code == 1) at.push_back({"cut-off / 2", o.cutoff / 2});
  } else {
    at.push_back({"low edge", o.low});
    at.push_back({"centre", std::sqrt(o.low * o.high)});
    at.push_back({"high edge", o.high});
  }
  at.push_back({"Nyquist", o.rate / 2});
  for (double f : o.at) {
    if (!(f >= 0.0) || f > o.rate / 2)
      throw ToolError("--at: " + formatNumber(f) + " Hz is outside 0 .. half the sample rate");
    at.push_back({"requested", f});
  }
  std::stable_sort(at.begin(), at.end(),
                   [](const NamedFrequency& a, const NamedFrequency& b) { return a.hz < b.hz; });
  return at;
}

std::vector<double> hzOf(const std::vector<NamedFrequency>& at) {
  std::vector<double> f;
  for (const auto& n : at) f.push_back(n.hz);
  return f;
}

// Impulse response of a filter run in place over a record, as a host runs it.
template <class Run>
std::vector<double> impulse(std::size_t n, Run run) {
  std::vector<double> x(n, 0.0);
  x[0] = 1.0;
  run(x);
  return x;
}

DesignReport designButterworth(const DesignOptions& o) {
  const int code = typeCode(o.type, true);
  checkEdges(o, code);
  filter_iirspec s;
  s.enabled = 1;
  s.filterType = code;
  s.order = o.order;
  s.sampleRate = o.rate;
  s.freqLow = code == 1 ? o.cutoff : code >= 2 ? o.low : o.rate * 1e-4;
  s.freqHigh = code == 0 ? o.cutoff : code >= 2 ? o.high : o.rate / 2;
  CDigitFiltCoefMak01Butterworth designer;
  designer.initCtfButterworthFilter4SmplRate(o.rate);
  if (!designer.ctfButterworthIirFilterCoef(&s))
    throw ToolError("butterworth: the designer refused this stage (order 1..20, edges within "
                    "[0.0001, 0.5] x rate, bands at least 0.0005 x rate wide)");
  DesignReport r;
  r.headline = std::string("Butterworth ") + typeWord(code) + ", order " +
               std::to_string(o.order) + ", " +
               (code <= 1 ? "cut-off " + formatNumber(o.cutoff) + " Hz"
                          : formatNumber(o.low) + "-" + formatNumber(o.high) + " Hz") +
               ", at " + formatNumber(o.rate) + " Hz (CDigitFiltCoefMak01Butterworth)";
  r.fields["numCoefs"] = s.numCoefs;
  if (s.numCoefs > 20)
    r.warnings.push_back("numCoefs " + std::to_string(s.numCoefs) +
                         " exceeds the 20 places of each polynomial in filter_iirspec: the two "
                         "halves overlap and the stage is not usable (keep the order at most 19 "
                         "for low/high-pass, 9 for bands)");
  std::vector<double> b, a;
  for (int k = 0; k < std::min(s.numCoefs, 20); ++k) {
    b.push_back(s.coefs[k]);
    a.push_back(s.coefs[20 + k]);
  }
  r.tables.push_back({"coefficients", {{"b", b}, {"a", a}}});
  r.at = namedFrequencies(o, code);
  for (const auto& n : r.at) r.magnitude.push_back(CMFilterFaceqv::freqResponse(&s, o.rate, n.hz));
  return r;
}

DesignReport designChebyshev(const DesignOptions& o) {
  const int code = typeCode(o.type, true);
  checkEdges(o, code);
  if (o.epsilon < 0.0 || !(o.rippleDb > 0.0))
    throw ToolError("--ripple-db: must be positive (or give --epsilon)");
  const double eps = o.epsilon > 0.0 ? o.epsilon : std::sqrt(std::pow(10.0, o.rippleDb / 10.0) - 1.0);
  // The high-pass and band-pass makers leave their stage switched off; a host switches it on.
  auto make = [&](CMeFilterChebyshevqv& c) {
    if (code == 0) c.makeCoefLopsHips(o.order, o.rate, 1, o.cutoff, 0, 0.0, eps);
    if (code == 1) c.makeCoefLopsHips(o.order, o.rate, 0, 0.0, 1, o.cutoff, eps);
    if (code >= 2) c.makeCoefBndpasBndstp(o.order, o.rate, o.high, o.low, code == 2, eps);
    if (c.stageList.size() < 1 || !c.stageList.at(0))
      throw ToolError("chebyshev: the designer made no stage");
    c.stageList.at(0)->enabled = 1;
    return c.stageList.at(0);
  };
  CMeFilterChebyshevqv cheb;
  const MeFilterChebyshevx* st = make(cheb);
  DesignReport r;
  r.headline = std::string("Chebyshev type I ") + typeWord(code) + ", order " +
               std::to_string(o.order) + ", epsilon " + formatNumber(eps) + ", " +
               (code <= 1 ? "cut-off " + formatNumber(o.cutoff) + " Hz"
                          : formatNumber(o.low) + "-" + formatNumber(o.high) + " Hz") +
               ", at " + formatNumber(o.rate) + " Hz (CMeFilterChebyshevqv)";
  r.fields["order"] = st->order;
  r.fields["numSections"] = st->numSections;
  r.fields["gain"] = st->gain;
  if (code == 3) {
    r.fields["stopR"] = st->stopR;
    r.fields["stopS"] = st->stopS;
  }
  const int shown = std::clamp(code == 1 ? st->order : st->numSections, 0,
                               MeFilterChebyshevx::kMaxSections);
  std::vector<double> A, d1, d2, d3, d4;
  for (int i = 0; i < shown; ++i) {
    A.push_back(st->A[i]);
    d1.push_back(st->d1[i]);
    d2.push_back(st->d2[i]);
    d3.push_back(st->d3[i]);
    d4.push_back(st->d4[i]);
  }
  if (code <= 1)
    r.tables.push_back({"sections", {{"A", A}, {"d1", d1}, {"d2", d2}}});
  else
    r.tables.push_back({"sections", {{"A", A}, {"d1", d1}, {"d2", d2}, {"d3", d3}, {"d4", d4}}});
  r.at = namedFrequencies(o, code);
  // Measured on a fresh object with its section states cleared: a new stage starts with some
  // states at 1.0, and that start-up transient is not part of the response.
  const std::vector<double> h =
      impulse(std::size_t(1) << 17, [&](std::vector<double>& x) {
        CMeFilterChebyshevqv fresh;
        MeFilterChebyshevx* fs = make(fresh);
        std::fill(std::begin(fs->w0), std::end(fs->w0), 0.0);
        std::fill(std::begin(fs->w1), std::end(fs->w1), 0.0);
        std::fill(std::begin(fs->w2), std::end(fs->w2), 0.0);
        std::fill(std::begin(fs->w3), std::end(fs->w3), 0.0);
        std::fill(std::begin(fs->w4), std::end(fs->w4), 0.0);
        fresh.filtData(x.data(), static_cast<std::int64_t>(x.size()));
      });
  r.magnitude = dtftMagnitude(h, o.rate, hzOf(r.at));
  return r;
}

DesignReport designKaiser(const DesignOptions& o) {
  const int code = typeCode(o.type, false);
  checkEdges(o, code);
  if (!(o.transition > 0.0)) throw ToolError("--transition: must be a positive width in Hz");
  if (!(o.attenDb > 0.0)) throw ToolError("--atten: must be positive (dB)");
  CDigitFiltCoefMak03KaiserWnd k;
  k.setFilterType(code);
  k.setRate(o.rate);
  k.setAtten(o.attenDb);
  k.setTrBand(o.transition);
  // setFreq1/setFreq2 keep nothing; the edges go straight into the public fields.
  if (code == 0) k.freq2 = o.cutoff;
  if (code == 1) k.freq1 = o.cutoff;
  if (code == 2) k.freq1 = o.low, k.freq2 = o.high;
  const int order = k.estimatedOrder();
  if (order < 2 || order > 100000)
    throw ToolError("kaiser: the estimated order " + std::to_string(order) +
                    " is outside 2..100000; widen --transition or lower --atten");
  if (!k.design()) throw ToolError("kaiser: the design failed");
  DesignReport r;
  r.headline = std::string("Kaiser-window FIR ") + typeWord(code) + ", " +
               (code <= 1 ? "edge " + formatNumber(o.cutoff) + " Hz"
                          : formatNumber(o.low) + "-" + formatNumber(o.high) + " Hz") +
               ", " + formatNumber(o.attenDb) + " dB, transition " + formatNumber(o.transition) +
               " Hz, at " + formatNumber(o.rate) + " Hz (CDigitFiltCoefMak03KaiserWnd)";
  r.fields["order"] = k.order;
  r.fields["beta"] = k.beta;
  std::vector<double> taps;
  for (int i = 0; i <= k.order; ++i) taps.push_back(k.getCoeff(i));
  r.tables.push_back({"taps", {{"h", taps}}});
  r.at = namedFrequencies(o, code);
  const std::vector<double> h = impulse(static_cast<std::size_t>(k.order) + 64,
                                        [&](std::vector<double>& x) {
                                          k.filterX(x.data(), x.size());
                                        });
  r.magnitude = dtftMagnitude(h, o.rate, hzOf(r.at));
  return r;
}

DesignReport designRemez(const DesignOptions& o) {
  const int code = typeCode(o.type, false);
  checkEdges(o, code);
  if (!(o.transition > 0.0)) throw ToolError("--transition: must be a positive width in Hz");
  if (o.order < 3 || o.order > 1000) throw ToolError("--order: must be between 3 and 1000 taps");
  const double nyq = o.rate / 2, tw = o.transition;
  CDigitFiltCoefMak06Remezqv remez;
  Filter_Remez* f = remez.getFilterCoefficients(0);
  f->enabled = 1;
  f->remezType = 1;
  f->gridDensity = 16;
  f->order = o.order;
  std::vector<double> edges, des, weight;
  if (code == 0) {
    edges = {0, o.cutoff, o.cutoff + tw, nyq};
    des = {1, 1, 0, 0};
    weight = {1, o.stopWeight};
  } else if (code == 1) {
    edges = {0, o.cutoff - tw, o.cutoff, nyq};
    des = {0, 0, 1, 1};
    weight = {o.stopWeight, 1};
  } else {
    edges = {0, o.low - tw, o.low, o.high, o.high + tw, nyq};
    des = {0, 0, 1, 1, 0, 0};
    weight = {o.stopWeight, 1, o.stopWeight};
  }
  for (std::size_t i = 1; i < edges.size(); ++i)
    if (!(edges[i] > edges[i - 1]))
      throw ToolError("--transition: the bands overlap or leave 0 .. half the rate");
  f->numBands = static_cast<std::int64_t>(weight.size());
  for (std::size_t i = 0; i < edges.size(); ++i) {
    f->bands[i] = edges[i] / o.rate;
    f->des[i] = des[i];
  }
  for (std::size_t i = 0; i < weight.size(); ++i) f->weight[i] = weight[i];
  // makeAllCoef keeps the established exchange, which stops at the zero-weight tail of its
  // doubled grid arrays and designs nothing; remez00 runs the same steps over the filled grid.
  std::string engine = "makeAllCoef";
  if (remez.makeAllCoef() < 1 || !f->coefs || f->tapCount < 1) {
    engine = "remez00";
    const std::int64_t taps = f->numTaps;  // the even length makeAllCoef settled on
    if (!f->allocCoefs(taps) || CDigitFiltCoefMak06Remez03::remez00(f) != 1)
      throw ToolError("remez: the exchange did not converge for " + std::to_string(taps) +
                      " taps; try another --order or a wider --transition");
    f->tapCount = taps;
  }
  DesignReport r;
  r.headline = std::string("Equiripple (Remez) FIR ") + typeWord(code) + ", " +
               std::to_string(f->tapCount) + " taps, " +
               (code <= 1 ? "edge " + formatNumber(o.cutoff) + " Hz"
                          : formatNumber(o.low) + "-" + formatNumber(o.high) + " Hz") +
               ", transition " + formatNumber(tw) + " Hz, at " + formatNumber(o.rate) +
               " Hz (CDigitFiltCoefMak06Remezqv, " + engine + ")";
  r.fields["taps"] = f->tapCount;
  std::vector<double> taps(f->coefs, f->coefs + f->tapCount);
  r.tables.push_back({"taps", {{"h", taps}}});
  r.at = namedFrequencies(o, code);
  if (code <= 1) r.at.push_back({"stop edge", code == 0 ? o.cutoff + tw : o.cutoff - tw});
  std::stable_sort(r.at.begin(), r.at.end(),
                   [](const NamedFrequency& a, const NamedFrequency& b) { return a.hz < b.hz; });
  // The filter runs circularly over the record; the record is long enough that the wrap only
  // reorders the taps, which leaves the magnitude as it is.
  const std::size_t n = static_cast<std::size_t>(f->tapCount) * 4 + 64;
  std::vector<double> x(n, 0.0), y(n, 0.0);
  x[0] = 1.0;
  remez.filter(x.data(), y.data(), static_cast<std::int64_t>(n));
  r.magnitude = dtftMagnitude(y, o.rate, hzOf(r.at));
  return r;
}

}  // namespace

int runDesign(const DesignOptions& o) {
  if (!(o.rate > 0.0) || !std::isfinite(o.rate))
    throw ToolError("--rate: the sample rate must be positive (got " + formatNumber(o.rate) + ")");
  LibraryMessages messages(!o.json);
  DesignReport r;
  if (o.method == "butterworth") r = designButterworth(o);
  else if (o.method == "chebyshev") r = designChebyshev(o);
  else if (o.method == "kaiser") r = designKaiser(o);
  else if (o.method == "remez") r = designRemez(o);
  else throw ToolError("design: unknown method \"" + o.method + "\"");

  if (o.json) {
    nlohmann::ordered_json j;
    j["method"] = o.method;
    j["description"] = r.headline;
    j["type"] = o.type;
    j["rate"] = o.rate;
    for (auto it = r.fields.begin(); it != r.fields.end(); ++it) j[it.key()] = it.value();
    for (const auto& t : r.tables)
      for (const auto& col : t.second) j[col.first] = col.second;
    nlohmann::ordered_json resp = nlohmann::ordered_json::array();
    for (std::size_t i = 0; i < r.at.size(); ++i)
      resp.push_back({{"name", r.at[i].name},
                      {"hz", r.at[i].hz},
                      {"magnitude", r.magnitude[i]},
                      {"db", toDb(r.magnitude[i])}});
    j["response"] = resp;
    j["warnings"] = r.warnings;
    j["messages"] = messages.texts();
    std::cout << j.dump(2) << "\n";
    return 0;
  }
  std::ostringstream out;
  out << r.headline << "\n";
  for (auto it = r.fields.begin(); it != r.fields.end(); ++it)
    out << "  " << it.key() << " = " << it.value().dump() << "\n";
  char buf[128];
  for (const auto& t : r.tables) {
    out << t.first << ":\n" << "  " << std::string(4, ' ');
    for (const auto& col : t.second) {
      std::snprintf(buf, sizeof buf, " %24s", (col.first + "[k]").c_str());
      out << buf;
    }
    out << "\n";
    const std::size_t rows = t.second.empty() ? 0 : t.second[0].second.size();
    for (std::size_t k = 0; k < rows; ++k) {
      std::snprintf(buf, sizeof buf, "  %4zu", k);
      out << buf;
      for (const auto& col : t.second) {
        std::snprintf(buf, sizeof buf, " %24.17g", col.second[k]);
        out << buf;
      }
      out << "\n";
    }
  }
  out << "response:\n";
  for (std::size_t i = 0; i < r.at.size(); ++i) {
    std::snprintf(buf, sizeof buf, "  %-12s %10g Hz  %12.6g  %s\n", r.at[i].name.c_str(),
                  r.at[i].hz, r.magnitude[i], formatDb(r.magnitude[i], 9).c_str());
    out << buf;
  }
  for (const std::string& w : r.warnings) std::cerr << "digitfilt: warning: " << w << "\n";
  std::cout << out.str();
  return 0;
}

int runSettingsTemplate() {
  std::cout << settingsTemplate();
  return 0;
}

}  // namespace digitfilt::tool
