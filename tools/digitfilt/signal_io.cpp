#include "signal_io.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstring>
#include <fstream>
#include <sstream>

#include "edf_io.h"
#include "tool_error.h"

namespace digitfilt::tool {
namespace {

std::string lowerExtension(const std::string& path) {
  const auto slash = path.find_last_of('/');
  const auto dot = path.find_last_of('.');
  if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) return "";
  std::string ext = path.substr(dot + 1);
  std::transform(ext.begin(), ext.end(), ext.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return ext;
}

std::string readWholeFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) throw ToolError(path + ": cannot open (" + std::strerror(errno) + ")");
  std::ostringstream text;
  text << in.rdbuf();
  if (in.bad()) throw ToolError(path + ": cannot read");
  return text.str();
}

std::string trim(const std::string& s) {
  const auto b = s.find_first_not_of(" \t");
  if (b == std::string::npos) return "";
  const auto e = s.find_last_not_of(" \t");
  return s.substr(b, e - b + 1);
}

bool parseNumber(const std::string& field, double& v) {
  const char* b = field.data();
  const char* e = b + field.size();
  if (b != e && *b == '+') ++b;
  if (b == e) return false;
  const auto res = std::from_chars(b, e, v);
  return res.ec == std::errc() && res.ptr == e;
}

std::vector<std::string> splitFields(const std::string& line) {
  std::vector<std::string> out;
  std::size_t start = 0;
  while (true) {
    const auto comma = line.find(',', start);
    out.push_back(trim(line.substr(start, comma - start)));
    if (comma == std::string::npos) break;
    start = comma + 1;
  }
  return out;
}

std::string shortest(double v) {
  char buf[32];
  const auto res = std::to_chars(buf, buf + sizeof buf, v);
  return std::string(buf, res.ptr);
}

void writeCsv(const std::string& path, const Recording& rec) {
  AtomicOutput out(path);
  std::string text;
  if (rec.csvHeader) {
    for (std::size_t c = 0; c < rec.channelCount(); ++c) {
      if (c) text += ',';
      text += c < rec.names.size() ? rec.names[c] : "";
    }
    text += '\n';
  }
  const std::size_t n = rec.channels.empty() ? 0 : rec.channels[0].size();
  for (std::size_t i = 0; i < n; ++i) {
    for (std::size_t c = 0; c < rec.channelCount(); ++c) {
      if (c) text += ',';
      text += shortest(rec.channels[c][i]);
    }
    text += '\n';
    if (text.size() > (1u << 20)) {
      out.write(text);
      text.clear();
    }
  }
  out.write(text);
  out.commit();
}

void writeRaw(const std::string& path, const Recording& rec) {
  AtomicOutput out(path);
  const std::size_t n = rec.channels.empty() ? 0 : rec.channels[0].size();
  std::vector<unsigned char> frame(8 * rec.channelCount());
  for (std::size_t i = 0; i < n; ++i) {
    for (std::size_t c = 0; c < rec.channelCount(); ++c) {
      std::uint64_t bits;
      std::memcpy(&bits, &rec.channels[c][i], 8);
      for (int b = 0; b < 8; ++b) frame[8 * c + b] = static_cast<unsigned char>(bits >> (8 * b));
    }
    out.write(frame.data(), frame.size());
  }
  out.commit();
}

}  // namespace

FileFormat formatFromPath(const std::string& path) {
  const std::string ext = lowerExtension(path);
  if (ext == "csv" || ext == "txt") return FileFormat::kCsv;
  if (ext == "f64" || ext == "raw" || ext == "bin" || ext == "dat") return FileFormat::kRaw;
  if (ext == "edf" || ext == "bdf" || ext == "rec") return FileFormat::kEdf;
  throw ToolError(path + ": unknown file type; name it .csv, .f64 or .edf/.bdf, or give --format");
}

FileFormat parseFormat(const std::string& name) {
  if (name == "csv") return FileFormat::kCsv;
  if (name == "raw") return FileFormat::kRaw;
  if (name == "edf") return FileFormat::kEdf;
  throw ToolError("--format: unknown format \"" + name + "\" (csv, raw or edf)");
}

const char* formatName(FileFormat f) {
  switch (f) {
    case FileFormat::kCsv: return "CSV";
    case FileFormat::kRaw: return "raw float64";
    case FileFormat::kEdf: return "EDF";
  }
  return "?";
}

Recording parseCsv(const std::string& textIn, const std::string& source, double rate) {
  std::string text = textIn;
  if (text.compare(0, 3, "\xEF\xBB\xBF") == 0) text.erase(0, 3);
  std::vector<std::string> lines;
  {
    std::size_t start = 0;
    while (start < text.size()) {
      auto nl = text.find('\n', start);
      if (nl == std::string::npos) nl = text.size();
      std::string line = text.substr(start, nl - start);
      if (!line.empty() && line.back() == '\r') line.pop_back();
      lines.push_back(line);
      start = nl + 1;
    }
  }
  while (!lines.empty() && trim(lines.back()).empty()) lines.pop_back();
  if (lines.empty()) throw ToolError(source + ": no samples");

  Recording rec;
  rec.format = FileFormat::kCsv;
  std::size_t first = 0;
  std::vector<std::string> head = splitFields(lines[0]);
  for (const std::string& f : head) {
    double v;
    if (!parseNumber(f, v)) rec.csvHeader = true;
  }
  const std::size_t width = head.size();
  if (rec.csvHeader) {
    rec.names = head;
    first = 1;
  } else {
    rec.names.assign(width, "");
  }
  rec.channels.assign(width, {});
  for (auto& ch : rec.channels) ch.reserve(lines.size() - first);
  for (std::size_t li = first; li < lines.size(); ++li) {
    const std::string where = source + ": line " + std::to_string(li + 1);
    if (trim(lines[li]).empty()) throw ToolError(where + " is empty");
    const std::vector<std::string> fields = splitFields(lines[li]);
    if (fields.size() != width)
      throw ToolError(where + " has " + std::to_string(fields.size()) + " fields, expected " +
                      std::to_string(width));
    for (std::size_t c = 0; c < width; ++c) {
      double v;
      if (!parseNumber(fields[c], v) || !std::isfinite(v))
        throw ToolError(where + ", field " + std::to_string(c + 1) + ": \"" + fields[c] +
                        "\" is not a finite number");
      rec.channels[c].push_back(v);
    }
  }
  if (rec.channels[0].empty()) throw ToolError(source + ": no samples");
  rec.rates.assign(width, rate);
  return rec;
}

Recording readCsv(const std::string& path, double rate) {
  return parseCsv(readWholeFile(path), path, rate);
}

Recording readRaw(const std::string& path, int channels, double rate) {
  if (channels < 1) throw ToolError("--channels: must be at least 1 for raw input");
  const std::string bytes = readWholeFile(path);
  const std::size_t frame = 8 * static_cast<std::size_t>(channels);
  if (bytes.empty()) throw ToolError(path + ": no samples");
  if (bytes.size() % frame != 0)
    throw ToolError(path + ": " + std::to_string(bytes.size()) +
                    " bytes is not a whole number of " + std::to_string(channels) +
                    "-channel float64 frames");
  Recording rec;
  rec.format = FileFormat::kRaw;
  const std::size_t n = bytes.size() / frame;
  rec.channels.assign(channels, std::vector<double>(n));
  rec.names.assign(channels, "");
  rec.rates.assign(channels, rate);
  const auto* p = reinterpret_cast<const unsigned char*>(bytes.data());
  for (std::size_t i = 0; i < n; ++i)
    for (int c = 0; c < channels; ++c) {
      std::uint64_t bits = 0;
      for (int b = 7; b >= 0; --b) bits = (bits << 8) | p[(i * channels + c) * 8 + b];
      double v;
      std::memcpy(&v, &bits, 8);
      if (!std::isfinite(v))
        throw ToolError(path + ": sample " + std::to_string(i) + " of channel " +
                        std::to_string(c + 1) + " is not a finite number");
      rec.channels[c][i] = v;
    }
  return rec;
}

std::int64_t writeRecording(const std::string& path, const Recording& rec) {
  switch (rec.format) {
    case FileFormat::kCsv: writeCsv(path, rec); return 0;
    case FileFormat::kRaw: writeRaw(path, rec); return 0;
    case FileFormat::kEdf: return writeEdf(path, rec);
  }
  return 0;
}

AtomicOutput::AtomicOutput(std::string path) : path_(std::move(path)) {
  const auto slash = path_.find_last_of('/');
  const std::string dir = slash == std::string::npos ? "" : path_.substr(0, slash + 1);
  const std::string base = slash == std::string::npos ? path_ : path_.substr(slash + 1);
  std::string tmpl = dir + "." + base + ".tmp-XXXXXX";
  std::vector<char> buf(tmpl.begin(), tmpl.end());
  buf.push_back('\0');
  const int fd = mkstemp(buf.data());
  if (fd < 0) throw ToolError(path_ + ": cannot create output file (" + std::strerror(errno) + ")");
  tempPath_ = buf.data();
  // mkstemp makes the file private; give it the permissions a plain create would.
  const mode_t mask = umask(0);
  umask(mask);
  fchmod(fd, 0666 & ~mask);
  file_ = fdopen(fd, "wb");
  if (!file_) {
    close(fd);
    std::remove(tempPath_.c_str());
    throw ToolError(path_ + ": cannot create output file");
  }
}

AtomicOutput::~AtomicOutput() {
  if (committed_) return;
  if (file_) std::fclose(file_);
  std::remove(tempPath_.c_str());
}

void AtomicOutput::write(const void* data, std::size_t bytes) {
  if (bytes && std::fwrite(data, 1, bytes, file_) != bytes)
    throw ToolError(path_ + ": cannot write (" + std::strerror(errno) + ")");
}

void AtomicOutput::commit() {
  const bool flushed = std::fflush(file_) == 0 && fsync(fileno(file_)) == 0;
  const int err = errno;
  const bool closed = std::fclose(file_) == 0;
  file_ = nullptr;
  if (!flushed || !closed)
    throw ToolError(path_ + ": cannot write (" + std::strerror(flushed ? errno : err) + ")");
  if (std::rename(tempPath_.c_str(), path_.c_str()) != 0)
    throw ToolError(path_ + ": cannot replace the output file (" + std::strerror(errno) + ")");
  committed_ = true;
}

void writeTextFile(const std::string& path, const std::string& text) {
  AtomicOutput out(path);
  out.write(text);
  out.commit();
}

}  // namespace digitfilt::tool
