#include "bank_runner.h"

#include <chrono>

#include "progress.h"
#include "settings_json.h"
#include "tool_error.h"

namespace digitfilt::tool {

CFilterDcLtSetAcqqv settingsForData(const CFilterDcLtSetAcqqv& requested, double rate,
                                    std::size_t channels) {
  CFilterDcLtSetAcqqv s = requested;
  s.acqSampleRate = rate;
  s.channelCount = static_cast<std::int32_t>(channels);
  return s;
}

std::unique_ptr<ChannelBank> configuredBank(BankKind kind, CFilterDcLtSetAcqqv& settings) {
  auto bank = makeBank(kind);
  if (bank->configure(settings) <= 0)
    throw ToolError("settings: the " + bankName(kind) + " bank built no stage from them at " +
                    formatNumber(settings.acqSampleRate) +
                    " Hz (is any filter switched on, and within the rate?)");
  return bank;
}

BankRun runBank(BankKind kind, const CFilterDcLtSetAcqqv& requested,
                std::vector<std::vector<double>>& channels, const std::vector<double>& rates,
                std::int64_t block, bool zeroPhase, Progress* progress) {
  BankRun run;
  std::chrono::steady_clock::duration spent{};
  for (std::size_t c = 0; c < channels.size(); ++c) {
    CFilterDcLtSetAcqqv s = settingsForData(requested, rates[c], channels.size());
    auto bank = configuredBank(kind, s);
    if (c == 0) {
      run.corrected = s;
      run.stageLabels = bank->stageLabels();
      run.stageCount = static_cast<int>(run.stageLabels.size());
    }
    if (zeroPhase && !bank->supportsZeroPhase())
      throw ToolError("--zero-phase: the " + bankName(kind) +
                      " bank has no forward-backward filtering (use butterworth or "
                      "direct-butterworth)");
    std::vector<double>& x = channels[c];
    const auto n = static_cast<std::int64_t>(x.size());
    const auto t0 = std::chrono::steady_clock::now();
    if (zeroPhase) {
      bank->filterZeroPhase(x.data(), n);
      if (progress) progress->advance(n);
    } else {
      bank->start();
      const std::int64_t step = block > 0 ? block : std::max<std::int64_t>(n, 1);
      for (std::int64_t first = 0; first < n; first += step) {
        const std::int64_t last = std::min(n, first + step);
        bank->filterBlock(x.data(), n, first, last);
        if (progress) progress->advance(last - first);
      }
    }
    spent += std::chrono::steady_clock::now() - t0;
  }
  run.filterSeconds = std::chrono::duration<double>(spent).count();
  return run;
}

}  // namespace digitfilt::tool
