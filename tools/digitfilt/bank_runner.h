#pragma once
// Runs one bank per channel over whole records held in memory, block by block as an
// acquisition host feeds it, or forward-backward over the whole record.
#include <cstdint>
#include <string>
#include <vector>

#include <digitfilt/digitfilt.h>

#include "banks.h"

namespace digitfilt::tool {

class Progress;

struct BankRun {
  CFilterDcLtSetAcqqv corrected;        // the settings as the first channel's bank left them
  std::vector<std::string> stageLabels;  // the first channel's stages
  int stageCount = 0;                    // what setCheckCoefs returned for the first channel
  double filterSeconds = 0.0;            // time spent filtering, configuration excluded
};

// The settings a bank sees for one channel: the requested ones with the data's rate and
// channel count filled in, as a host fills them.
CFilterDcLtSetAcqqv settingsForData(const CFilterDcLtSetAcqqv& requested, double rate,
                                    std::size_t channels);

// Filters every channel in place with its own bank. block = 0 filters each record in one call.
// Throws ToolError when the bank accepts no stage.
BankRun runBank(BankKind kind, const CFilterDcLtSetAcqqv& requested,
                std::vector<std::vector<double>>& channels, const std::vector<double>& rates,
                std::int64_t block, bool zeroPhase, Progress* progress);

// The first channel's bank, configured, for responses and descriptions.
std::unique_ptr<ChannelBank> configuredBank(BankKind kind, CFilterDcLtSetAcqqv& settings);

}  // namespace digitfilt::tool
