#pragma once
// The acquisition settings record as JSON: fields named as in the record, checked strictly, so a
// misspelt or mistyped field is reported instead of silently left at 0.
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include <digitfilt/digitfilt.h>

namespace digitfilt::tool {

// Reads settings from JSON text; `source` names the file in error texts. Comments (// and /* */)
// are allowed, so the template can be edited in place. Fields left out stay 0. Throws ToolError.
CFilterDcLtSetAcqqv settingsFromJsonText(const std::string& text, const std::string& source);
CFilterDcLtSetAcqqv settingsFromJson(const nlohmann::json& j, const std::string& source);
CFilterDcLtSetAcqqv loadSettingsFile(const std::string& path);

// Every field the library reads, in record order (the host's own words are left out).
nlohmann::ordered_json settingsToJson(const CFilterDcLtSetAcqqv& s);

// A commented template with the demo's values.
std::string settingsTemplate();

// The settings the demo runs: 0.5 Hz high-pass, 70 Hz low-pass, 50 Hz mains with 3 harmonics
// and a 4 Hz stop band.
CFilterDcLtSetAcqqv demoSettings(double sampleRate, int channels);

// One field the bank changed: its name (with [i] for array entries) and both values as text.
struct SettingChange {
  std::string field;
  std::string requested;
  std::string corrected;
};
std::vector<SettingChange> settingChanges(const CFilterDcLtSetAcqqv& requested,
                                          const CFilterDcLtSetAcqqv& corrected);

// Shortest text that reads back to the same double.
std::string formatNumber(double v);

}  // namespace digitfilt::tool
