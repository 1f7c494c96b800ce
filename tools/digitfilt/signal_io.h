#pragma once
// Multichannel sample files: CSV (one column per channel, optional header), raw little-endian
// float64 (interleaved frames), and EDF/EDF+/BDF (edf_io.h). Output goes to a temporary file that
// is renamed over the target only once it is complete.
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace digitfilt::tool {

enum class FileFormat { kCsv, kRaw, kEdf };

// Chosen by extension: .csv/.txt, .f64/.raw/.bin/.dat, .edf/.bdf/.rec; throws for others.
FileFormat formatFromPath(const std::string& path);
FileFormat parseFormat(const std::string& name);  // "csv", "raw" or "edf"
const char* formatName(FileFormat f);

struct EdfLayout;  // the raw layout of an EDF input, kept to write the same file back

struct Recording {
  FileFormat format = FileFormat::kCsv;
  std::vector<std::vector<double>> channels;
  std::vector<double> rates;       // Hz, per channel
  std::vector<std::string> names;  // per channel; empty names when the file has none
  bool csvHeader = false;
  std::shared_ptr<const EdfLayout> edf;

  std::size_t channelCount() const { return channels.size(); }
};

// CSV: fields separated by commas (blanks around them ignored); the first line is a header when
// any of its fields is not a number. Every row must have the same number of fields.
Recording readCsv(const std::string& path, double rate);
Recording parseCsv(const std::string& text, const std::string& source, double rate);
// Raw: little-endian float64, frame by frame (all channels of sample 0, then of sample 1, ...).
Recording readRaw(const std::string& path, int channels, double rate);

// Writes `rec` in its own format (for EDF: the input's header and annotations, unchanged).
// Returns the number of samples clipped to the EDF digital range (0 for the other formats).
std::int64_t writeRecording(const std::string& path, const Recording& rec);

// A file written under a temporary name in the target's directory and renamed over the target by
// commit(); destroyed without commit, it removes the temporary file and leaves the target as it
// was.
class AtomicOutput {
 public:
  explicit AtomicOutput(std::string path);
  ~AtomicOutput();
  AtomicOutput(const AtomicOutput&) = delete;
  AtomicOutput& operator=(const AtomicOutput&) = delete;

  std::FILE* file() { return file_; }
  void write(const void* data, std::size_t bytes);
  void write(const std::string& text) { write(text.data(), text.size()); }
  void commit();

 private:
  std::string path_;
  std::string tempPath_;
  std::FILE* file_ = nullptr;
  bool committed_ = false;
};

// Writes a whole text file atomically.
void writeTextFile(const std::string& path, const std::string& text);

}  // namespace digitfilt::tool
