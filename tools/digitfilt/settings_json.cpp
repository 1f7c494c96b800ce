#include "settings_json.h"

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <limits>
#include <sstream>

#include "tool_error.h"

namespace digitfilt::tool {
namespace {

using Rec = CFilterDcLtSetAcqqv;
constexpr int kArrayLen = 6;

enum class Kind { kSwitch, kInt, kDouble, kSwitchArray, kDoubleArray };

struct Field {
  const char* name;
  Kind kind;
  std::int32_t Rec::*i32 = nullptr;
  double Rec::*f64 = nullptr;
  std::int32_t (Rec::*i32a)[kArrayLen] = nullptr;
  double (Rec::*f64a)[kArrayLen] = nullptr;
  const char* note = "";
};

Field sw(const char* n, std::int32_t Rec::*m, const char* note) {
  return {n, Kind::kSwitch, m, nullptr, nullptr, nullptr, note};
}
Field integer(const char* n, std::int32_t Rec::*m, const char* note) {
  return {n, Kind::kInt, m, nullptr, nullptr, nullptr, note};
}
Field real(const char* n, double Rec::*m, const char* note) {
  return {n, Kind::kDouble, nullptr, m, nullptr, nullptr, note};
}
Field swArray(const char* n, std::int32_t (Rec::*m)[kArrayLen], const char* note) {
  return {n, Kind::kSwitchArray, nullptr, nullptr, m, nullptr, note};
}
Field realArray(const char* n, double (Rec::*m)[kArrayLen], const char* note) {
  return {n, Kind::kDoubleArray, nullptr, nullptr, nullptr, m, note};
}

// Record order; the host words (hostWord0..2, hostData) are the host's and never read.
const std::vector<Field>& fields() {
  static const std::vector<Field> table = {
      sw("highPassOn", &Rec::highPassOn, "0 = off, 1 = on"),
      real("highPassFreq", &Rec::highPassFreq, "Hz, cut-off"),
      sw("lowPassOn", &Rec::lowPassOn, "0 = off, 1 = on"),
      real("lowPassFreq", &Rec::lowPassFreq, "Hz, cut-off"),
      swArray("notchOn", &Rec::notchOn, "six band-stops; the Butterworth bank uses the first four"),
      realArray("notchFreqLow", &Rec::notchFreqLow, "Hz, lower edges"),
      realArray("notchFreqHigh", &Rec::notchFreqHigh,
                "Hz, upper edges (clamped into the width range [0.0005, 0.5] x rate)"),
      sw("powerLineOn", &Rec::powerLineOn, "remove mains and its harmonics"),
      real("powerLineFreq", &Rec::powerLineFreq, "Hz, used when powerLineType is 2"),
      real("powerLineWidth", &Rec::powerLineWidth, "Hz, full stop-band width per harmonic"),
      integer("powerLineType", &Rec::powerLineType, "0 = 60 Hz, 1 = 50 Hz, 2 = powerLineFreq"),
      integer("powerLineHarmonics", &Rec::powerLineHarmonics,
              "count, 1st = the mains itself; 1..60, below rate / 2"),
      sw("bqBandPassOn", &Rec::bqBandPassOn, "biquad banks only"),
      real("bqBandPassFreq1", &Rec::bqBandPassFreq1, "Hz, band edge"),
      real("bqBandPassFreq2", &Rec::bqBandPassFreq2, "Hz, band edge"),
      sw("bqBandPass2On", &Rec::bqBandPass2On, "biquad banks only"),
      real("bqBandPass2Freq1", &Rec::bqBandPass2Freq1, "Hz, band edge"),
      real("bqBandPass2Freq2", &Rec::bqBandPass2Freq2, "Hz, band edge"),
      sw("bqPeakOn", &Rec::bqPeakOn, "biquad banks only"),
      sw("bqType5On", &Rec::bqType5On, "biquad banks only"),
      real("bqPeakFreq", &Rec::bqPeakFreq, "Hz, centre of the peak and type-5 stages"),
      sw("bqLowShelfOn", &Rec::bqLowShelfOn, "biquad banks only"),
      real("bqLowShelfFreq", &Rec::bqLowShelfFreq, "Hz, corner"),
      sw("bqHighShelfOn", &Rec::bqHighShelfOn, "biquad banks only"),
      real("bqHighShelfFreq", &Rec::bqHighShelfFreq, "Hz, corner"),
      real("bqQ", &Rec::bqQ, "quality factor of every biquad stage"),
      real("bqPeakGainDb", &Rec::bqPeakGainDb, "dB, gain of peak and shelf stages"),
      real("bqParam3", &Rec::bqParam3, "shelf slope S (biquad class 1 only)"),
      real("acqSampleRate", &Rec::acqSampleRate,
           "Hz, > 0; EDF input has its own rate, --rate overrides this"),
      integer("channelCount", &Rec::channelCount,
              ">= 1; filter sets it to the input's channel count"),
  };
  return table;
}

const char* typeName(const nlohmann::json& v) {
  if (v.is_boolean()) return "a boolean";
  if (v.is_number_integer() || v.is_number_unsigned()) return "an integer";
  if (v.is_number()) return "a number";
  if (v.is_string()) return "a string";
  if (v.is_array()) return "an array";
  if (v.is_object()) return "an object";
  return "null";
}

[[noreturn]] void fieldError(const std::string& source, const std::string& field,
                             const std::string& what) {
  throw ToolError(source + ": field \"" + field + "\" " + what);
}

std::int32_t toInt32(const nlohmann::json& v, bool switchValue, const std::string& source,
                     const std::string& field) {
  if (switchValue && v.is_boolean()) return v.get<bool>() ? 1 : 0;
  if (v.is_number_unsigned()) {
    const auto u = v.get<std::uint64_t>();
    if (u > static_cast<std::uint64_t>(std::numeric_limits<std::int32_t>::max()))
      fieldError(source, field, "is out of the 32-bit integer range");
    return static_cast<std::int32_t>(u);
  }
  if (v.is_number_integer()) {
    const auto i = v.get<std::int64_t>();
    if (i < std::numeric_limits<std::int32_t>::min() ||
        i > std::numeric_limits<std::int32_t>::max())
      fieldError(source, field, "is out of the 32-bit integer range");
    return static_cast<std::int32_t>(i);
  }
  fieldError(source, field,
             std::string(switchValue ? "must be 0, 1, true or false" : "must be an integer") +
                 ", not " + typeName(v));
}

double toDouble(const nlohmann::json& v, const std::string& source, const std::string& field) {
  if (!v.is_number()) fieldError(source, field, std::string("must be a number, not ") + typeName(v));
  return v.get<double>();
}

const nlohmann::json& arrayOf(const nlohmann::json& v, const std::string& source,
                              const std::string& field) {
  if (!v.is_array() || v.size() > kArrayLen)
    fieldError(source, field, "must be an array of at most 6 values");
  return v;
}

}  // namespace

CFilterDcLtSetAcqqv settingsFromJson(const nlohmann::json& j, const std::string& source) {
  if (!j.is_object()) throw ToolError(source + ": settings must be a JSON object");
  CFilterDcLtSetAcqqv s;
  for (auto it = j.begin(); it != j.end(); ++it) {
    const std::string& key = it.key();
    const Field* f = nullptr;
    for (const Field& cand : fields())
      if (key == cand.name) f = &cand;
    if (!f) throw ToolError(source + ": unknown field \"" + key + "\"");
    const nlohmann::json& v = it.value();
    switch (f->kind) {
      case Kind::kSwitch:
        s.*(f->i32) = toInt32(v, true, source, key);
        break;
      case Kind::kInt:
        s.*(f->i32) = toInt32(v, false, source, key);
        break;
      case Kind::kDouble:
        s.*(f->f64) = toDouble(v, source, key);
        break;
      case Kind::kSwitchArray: {
        const auto& a = arrayOf(v, source, key);
        for (std::size_t i = 0; i < a.size(); ++i)
          (s.*(f->i32a))[i] = toInt32(a[i], true, source, key + "[" + std::to_string(i) + "]");
        break;
      }
      case Kind::kDoubleArray: {
        const auto& a = arrayOf(v, source, key);
        for (std::size_t i = 0; i < a.size(); ++i)
          (s.*(f->f64a))[i] = toDouble(a[i], source, key + "[" + std::to_string(i) + "]");
        break;
      }
    }
  }
  return s;
}

CFilterDcLtSetAcqqv settingsFromJsonText(const std::string& text, const std::string& source) {
  nlohmann::json j;
  try {
    j = nlohmann::json::parse(text, nullptr, true, true);
  } catch (const nlohmann::json::parse_error& e) {
    std::string what = e.what();
    const auto cut = what.find("] ");
    if (cut != std::string::npos) what = what.substr(cut + 2);
    throw ToolError(source + ": malformed JSON: " + what);
  }
  return settingsFromJson(j, source);
}

CFilterDcLtSetAcqqv loadSettingsFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) throw ToolError(path + ": cannot open settings file");
  std::ostringstream text;
  text << in.rdbuf();
  if (in.bad()) throw ToolError(path + ": cannot read settings file");
  return settingsFromJsonText(text.str(), path);
}

nlohmann::ordered_json settingsToJson(const CFilterDcLtSetAcqqv& s) {
  nlohmann::ordered_json j = nlohmann::ordered_json::object();
  for (const Field& f : fields()) {
    switch (f.kind) {
      case Kind::kSwitch:
      case Kind::kInt:
        j[f.name] = s.*(f.i32);
        break;
      case Kind::kDouble:
        j[f.name] = s.*(f.f64);
        break;
      case Kind::kSwitchArray:
        j[f.name] = std::vector<std::int32_t>(std::begin(s.*(f.i32a)), std::end(s.*(f.i32a)));
        break;
      case Kind::kDoubleArray:
        j[f.name] = std::vector<double>(std::begin(s.*(f.f64a)), std::end(s.*(f.f64a)));
        break;
    }
  }
  return j;
}

CFilterDcLtSetAcqqv demoSettings(double sampleRate, int channels) {
  CFilterDcLtSetAcqqv s;
  s.acqSampleRate = sampleRate;
  s.channelCount = channels;
  s.highPassOn = 1;
  s.highPassFreq = 0.5;
  s.lowPassOn = 1;
  s.lowPassFreq = 70.0;
  s.powerLineOn = 1;
  s.powerLineType = 1;
  s.powerLineFreq = 50.0;
  s.powerLineWidth = 4.0;
  s.powerLineHarmonics = 3;
  s.bqQ = 0.707;
  return s;
}

std::string settingsTemplate() {
  const CFilterDcLtSetAcqqv s = demoSettings(1000.0, 8);
  const nlohmann::ordered_json j = settingsToJson(s);
  std::ostringstream out;
  out << "// Acquisition filter settings for digitfilt: the fields of CFilterDcLtSetAcqqv.\n"
         "// Frequencies in Hz. Every bank clamps them into [0.0001, 0.5] x acqSampleRate and\n"
         "// writes the corrected values back; `digitfilt response` shows what it changed.\n"
         "// Fields left out are 0. Comments like these are allowed.\n"
         "{\n";
  std::size_t i = 0;
  for (const Field& f : fields()) {
    std::string line = "  \"" + std::string(f.name) + "\": " + j[f.name].dump();
    if (++i < fields().size()) line += ",";
    if (line.size() < 44) line.resize(44, ' ');
    out << line << " // " << f.note << "\n";
  }
  out << "}\n";
  return out.str();
}

std::string formatNumber(double v) {
  char buf[40];
  for (int prec = 6; prec <= 17; ++prec) {
    std::snprintf(buf, sizeof buf, "%.*g", prec, v);
    if (std::strtod(buf, nullptr) == v) break;
  }
  return buf;
}

std::vector<SettingChange> settingChanges(const CFilterDcLtSetAcqqv& requested,
                                          const CFilterDcLtSetAcqqv& corrected) {
  std::vector<SettingChange> changes;
  auto addInt = [&](const std::string& name, std::int32_t a, std::int32_t b) {
    if (a != b) changes.push_back({name, std::to_string(a), std::to_string(b)});
  };
  auto addReal = [&](const std::string& name, double a, double b) {
    if (!(a == b)) changes.push_back({name, formatNumber(a), formatNumber(b)});
  };
  for (const Field& f : fields()) {
    switch (f.kind) {
      case Kind::kSwitch:
      case Kind::kInt:
        addInt(f.name, requested.*(f.i32), corrected.*(f.i32));
        break;
      case Kind::kDouble:
        addReal(f.name, requested.*(f.f64), corrected.*(f.f64));
        break;
      case Kind::kSwitchArray:
        for (int i = 0; i < kArrayLen; ++i)
          addInt(std::string(f.name) + "[" + std::to_string(i) + "]", (requested.*(f.i32a))[i],
                 (corrected.*(f.i32a))[i]);
        break;
      case Kind::kDoubleArray:
        for (int i = 0; i < kArrayLen; ++i)
          addReal(std::string(f.name) + "[" + std::to_string(i) + "]", (requested.*(f.f64a))[i],
                  (corrected.*(f.f64a))[i]);
        break;
    }
  }
  return changes;
}

}  // namespace digitfilt::tool
