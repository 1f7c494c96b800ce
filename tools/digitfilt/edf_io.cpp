#include "edf_io.h"

#include <edflib.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <memory>

#include "tool_error.h"

namespace digitfilt::tool {
namespace {

std::string edfOpenError(int code) {
  switch (code) {
    case EDFLIB_MALLOC_ERROR: return "out of memory";
    case EDFLIB_NO_SUCH_FILE_OR_DIRECTORY: return "cannot open";
    case EDFLIB_FILE_CONTAINS_FORMAT_ERRORS:
      return "not a valid EDF/EDF+/BDF file (format error in the header, or the file is "
             "truncated)";
    case EDFLIB_MAXFILES_REACHED: return "too many open EDF files";
    case EDFLIB_FILE_READ_ERROR: return "cannot read the EDF header (file too short?)";
    case EDFLIB_FILE_ALREADY_OPENED: return "already open";
    case EDFLIB_FILE_IS_DISCONTINUOUS: return "discontinuous EDF+D/BDF+D files are not supported";
    default: return "cannot read as EDF (edflib error " + std::to_string(code) + ")";
  }
}

class EdfHandle {
 public:
  explicit EdfHandle(int h) : h_(h) {}
  ~EdfHandle() { edfclose_file(h_); }
  int get() const { return h_; }

 private:
  int h_;
};

struct FileCloser {
  void operator()(std::FILE* f) const { std::fclose(f); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

std::string field(const std::string& header, std::size_t offset, std::size_t len) {
  std::string s = header.substr(offset, len);
  const auto e = s.find_last_not_of(' ');
  return e == std::string::npos ? "" : s.substr(0, e + 1);
}

}  // namespace

Recording readEdf(const std::string& path) {
  File raw(std::fopen(path.c_str(), "rb"));
  if (!raw) throw ToolError(path + ": cannot open (" + std::strerror(errno) + ")");

  auto hdr = std::make_unique<edf_hdr_struct>();
  if (edfopen_file_readonly(path.c_str(), hdr.get(), EDFLIB_DO_NOT_READ_ANNOTATIONS) != 0)
    throw ToolError(path + ": " + edfOpenError(hdr->filetype));
  EdfHandle handle(hdr->handle);

  auto layout = std::make_shared<EdfLayout>();
  layout->bytesPerSample = (hdr->filetype == EDFLIB_FILETYPE_BDF ||
                            hdr->filetype == EDFLIB_FILETYPE_BDFPLUS) ? 3 : 2;
  layout->records = hdr->datarecords_in_file;
  const bool plus =
      hdr->filetype == EDFLIB_FILETYPE_EDFPLUS || hdr->filetype == EDFLIB_FILETYPE_BDFPLUS;

  // edflib has checked the header; read it again as bytes to write it back unchanged and to see
  // where the annotation signals lie in a data record.
  std::string head(256, '\0');
  if (std::fread(head.data(), 1, 256, raw.get()) != 256)
    throw ToolError(path + ": cannot read the EDF header");
  const int ns = std::atoi(field(head, 252, 4).c_str());
  const std::size_t headerBytes = 256 * (static_cast<std::size_t>(ns) + 1);
  head.resize(headerBytes);
  if (ns < 1 || std::fread(head.data() + 256, 1, headerBytes - 256, raw.get()) != headerBytes - 256)
    throw ToolError(path + ": cannot read the EDF header");
  layout->header = head;

  const std::size_t labelAt = 256, sprAt = 256 + ns * (16 + 80 + 8 + 8 + 8 + 8 + 8 + 80);
  int dataSignals = 0;
  std::size_t recordBytes = 0;
  for (int s = 0; s < ns; ++s) {
    EdfLayout::Signal sig;
    sig.samplesPerRecord = std::atoi(field(head, sprAt + 8 * s, 8).c_str());
    const std::string label = field(head, labelAt + 16 * s, 16);
    sig.annotation = plus && (label == "EDF Annotations" || label == "BDF Annotations");
    if (!sig.annotation) {
      if (dataSignals >= hdr->edfsignals ||
          hdr->signalparam[dataSignals].smp_in_datarecord != sig.samplesPerRecord)
        throw ToolError(path + ": inconsistent EDF header");
      const edf_param_struct& p = hdr->signalparam[dataSignals];
      sig.channel = dataSignals++;
      sig.digMin = p.dig_min;
      sig.digMax = p.dig_max;
      sig.bitValue = (p.phys_max - p.phys_min) / (p.dig_max - p.dig_min);
      sig.offset = p.phys_max / sig.bitValue - p.dig_max;
    }
    recordBytes += static_cast<std::size_t>(sig.samplesPerRecord) * layout->bytesPerSample;
    layout->signals.push_back(sig);
  }
  if (dataSignals != hdr->edfsignals || dataSignals == 0)
    throw ToolError(path + ": the EDF file has no signals to filter");

  Recording rec;
  rec.format = FileFormat::kEdf;
  const double recordSeconds = static_cast<double>(hdr->datarecord_duration) / EDFLIB_TIME_DIMENSION;
  for (int c = 0; c < dataSignals; ++c) {
    const edf_param_struct& p = hdr->signalparam[c];
    std::vector<double> x(static_cast<std::size_t>(p.smp_in_file));
    std::size_t done = 0;
    while (done < x.size()) {
      const int chunk = static_cast<int>(std::min<std::size_t>(x.size() - done, 1 << 20));
      if (edfread_physical_samples(handle.get(), c, chunk, x.data() + done) != chunk)
        throw ToolError(path + ": cannot read the samples of signal " + std::to_string(c + 1));
      done += chunk;
    }
    rec.channels.push_back(std::move(x));
    rec.rates.push_back(p.smp_in_datarecord / recordSeconds);
    std::string label = p.label;
    label.erase(label.find_last_not_of(' ') + 1);
    rec.names.push_back(label);
  }

  // Annotation bytes are kept as they are, record after record.
  std::string record(recordBytes, '\0');
  for (std::int64_t r = 0; r < layout->records && recordBytes; ++r) {
    if (std::fread(record.data(), 1, recordBytes, raw.get()) != recordBytes)
      throw ToolError(path + ": truncated EDF data record " + std::to_string(r + 1));
    std::size_t at = 0;
    for (const EdfLayout::Signal& sig : layout->signals) {
      const std::size_t len = static_cast<std::size_t>(sig.samplesPerRecord) * layout->bytesPerSample;
      if (sig.annotation) layout->annotationBytes.append(record, at, len);
      at += len;
    }
  }
  rec.edf = layout;
  return rec;
}

std::int64_t writeEdf(const std::string& path, const Recording& rec) {
  if (!rec.edf) throw ToolError(path + ": EDF output needs an EDF input");
  const EdfLayout& L = *rec.edf;
  AtomicOutput out(path);
  out.write(L.header);
  std::int64_t clipped = 0;
  std::size_t annotationAt = 0;
  std::string record;
  for (std::int64_t r = 0; r < L.records; ++r) {
    record.clear();
    for (const EdfLayout::Signal& sig : L.signals) {
      const std::size_t n = static_cast<std::size_t>(sig.samplesPerRecord);
      if (sig.annotation) {
        record.append(L.annotationBytes, annotationAt, n * L.bytesPerSample);
        annotationAt += n * L.bytesPerSample;
        continue;
      }
      const std::vector<double>& x = rec.channels[sig.channel];
      for (std::size_t i = 0; i < n; ++i) {
        const double v = x[static_cast<std::size_t>(r) * n + i];
        double d = std::nearbyint(v / sig.bitValue - sig.offset);
        if (std::isnan(d)) d = 0.0, ++clipped;
        if (d < sig.digMin) d = sig.digMin, ++clipped;
        if (d > sig.digMax) d = sig.digMax, ++clipped;
        const auto bits = static_cast<std::uint32_t>(static_cast<std::int32_t>(d));
        for (int b = 0; b < L.bytesPerSample; ++b)
          record.push_back(static_cast<char>((bits >> (8 * b)) & 0xFF));
      }
    }
    out.write(record);
  }
  out.commit();
  return clipped;
}

}  // namespace digitfilt::tool
