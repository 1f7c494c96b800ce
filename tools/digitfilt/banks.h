#pragma once
// The library's acquisition filter banks behind one small interface, each driven as a host
// drives it: setCheckCoefs on the host's settings, the coefficients, then block after block.
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <digitfilt/digitfilt.h>

namespace digitfilt::tool {

enum class BankKind { kButterworth, kDirectButterworth, kBiquad0, kBiquad1, kBiquad2 };

BankKind parseBankKind(const std::string& name);
std::string bankName(BankKind kind);       // as given to --bank
std::string bankClassName(BankKind kind);  // the library class doing the work
// One line per bank name with its library class, for --help.
std::string bankChoicesHelp();
std::vector<std::string> bankNames();

// One channel's bank.
class ChannelBank {
 public:
  virtual ~ChannelBank() = default;

  // setCheckCoefs (which corrects `settings` in place) and the coefficients. Returns the
  // library's stage count; 0 means the bank refused the settings.
  virtual int configure(CFilterDcLtSetAcqqv& settings) = 0;
  // The stages that filter, in filtering order.
  virtual std::vector<std::string> stageLabels() = 0;
  // Starts a run: block bookkeeping and the state carried between blocks are cleared.
  virtual void start() = 0;
  // Filters data[first, last) in place. `data` is the whole channel; samples before `first`
  // have already been filtered by earlier calls.
  virtual void filterBlock(double* data, std::int64_t length, std::int64_t first,
                           std::int64_t last) = 0;
  // Forward-backward filtering of a whole record; false when the bank has none.
  virtual bool supportsZeroPhase() const { return false; }
  virtual void filterZeroPhase(double* data, std::int64_t n);
  // Magnitude of one stage (index into stageLabels) and of the whole bank at `freqs` (Hz).
  virtual std::vector<double> stageMagnitude(std::size_t stage,
                                             const std::vector<double>& freqs) = 0;
  virtual std::vector<double> bankMagnitude(const std::vector<double>& freqs) = 0;
  // The library's own text dump of the bank (empty for banks that keep none).
  virtual std::string filterInfo() = 0;
};

std::unique_ptr<ChannelBank> makeBank(BankKind kind);

}  // namespace digitfilt::tool
