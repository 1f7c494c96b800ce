// Runs the built digitfilt program on files written here and compares its output with the
// library called directly.
#include <sys/wait.h>
#include <unistd.h>

#include <edflib.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <digitfilt/digitfilt.h>

namespace {

namespace fs = std::filesystem;

class TempDir {
 public:
  TempDir() {
    char tmpl[] = "/tmp/digitfilt-tool-test-XXXXXX";
    path_ = mkdtemp(tmpl);
  }
  ~TempDir() { fs::remove_all(path_); }
  std::string operator/(const std::string& name) const { return path_ + "/" + name; }
  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

std::string readFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream s;
  s << in.rdbuf();
  return s.str();
}

void writeFile(const std::string& path, const std::string& text) {
  std::ofstream(path, std::ios::binary) << text;
}

std::string quote(const std::string& s) {
  std::string q = "'";
  for (char c : s) q += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return q + "'";
}

struct ToolRun {
  int status = -1;
  std::string out, err;
};

// Runs the tool in `dir` with stdout and stderr captured.
ToolRun runTool(const TempDir& dir, const std::vector<std::string>& args) {
  std::string cmd = "cd " + quote(dir.path()) + " && " + quote(DIGITFILT_CLI);
  for (const auto& a : args) cmd += " " + quote(a);
  cmd += " > " + quote(dir / ".stdout") + " 2> " + quote(dir / ".stderr");
  const int rc = std::system(cmd.c_str());
  ToolRun r;
  r.status = WIFEXITED(rc) ? WEXITSTATUS(rc) : -1;
  r.out = readFile(dir / ".stdout");
  r.err = readFile(dir / ".stderr");
  fs::remove(dir / ".stdout");
  fs::remove(dir / ".stderr");
  return r;
}

// Settings for the file tests: low-pass, high-pass, one notch and two mains harmonics.
CFilterDcLtSetAcqqv fileSettings() {
  CFilterDcLtSetAcqqv s;
  s.lowPassOn = 1;
  s.lowPassFreq = 40.0;
  s.highPassOn = 1;
  s.highPassFreq = 1.0;
  s.notchOn[0] = 1;
  s.notchFreqLow[0] = 20.0;
  s.notchFreqHigh[0] = 24.0;
  s.powerLineOn = 1;
  s.powerLineType = 1;
  s.powerLineWidth = 4.0;
  s.powerLineHarmonics = 2;
  return s;
}

const char* kSettingsJson = R"({
  "lowPassOn": 1, "lowPassFreq": 40, "highPassOn": true, "highPassFreq": 1,
  "notchOn": [1], "notchFreqLow": [20], "notchFreqHigh": [24],
  "powerLineOn": 1, "powerLineType": 1, "powerLineWidth": 4, "powerLineHarmonics": 2
})";

std::vector<std::vector<double>> testSignals(int channels, int n, double rate) {
  std::vector<std::vector<double>> x(channels, std::vector<double>(n));
  for (int c = 0; c < channels; ++c)
    for (int i = 0; i < n; ++i) {
      const double t = i / rate;
      x[c][i] = 30.0 * (c + 1) + 20 * std::sin(2 * M_PI * 7 * t + c) +
                15 * std::sin(2 * M_PI * 50 * t) + 5 * std::sin(2 * M_PI * 22 * t) +
                (i > n / 2 ? 10.0 : 0.0);
    }
  return x;
}

CDigitFiltCoefMak01ButterworthAcqqv designedBank(double rate, int channels) {
  CDigitFiltCoefMak01ButterworthAcqqv bank;
  CFilterDcLtSetAcqqv s = fileSettings();
  s.acqSampleRate = rate;
  s.channelCount = channels;
  EXPECT_GT(bank.setCheckCoefs(s), 0);
  bank.makeAllButterworthCoeffs(true);
  return bank;
}

// The library on its own: the whole record through the bank's stretch filter in one call.
std::vector<double> libraryBlocks(std::vector<double> x, double rate, int channels) {
  CDigitFiltCoefMak01ButterworthAcqqv bank = designedBank(rate, channels);
  const auto n = static_cast<std::int64_t>(x.size());
  x.push_back(0.0);  // fastFilterInC copies one sample past the stretch
  std::vector<double> tmp(x.size(), 0.0);
  bank.reset4RunTimeFilter();
  bank.fastFilterInC(x.data(), tmp.data(), n, 0, n, 0);
  x.pop_back();
  return x;
}

// The library's own forward-backward filter over the same bank.
std::vector<double> libraryZeroPhase(std::vector<double> x, double rate, int channels) {
  CDigitFiltCoefMak01ButterworthAcqqv bank = designedBank(rate, channels);
  std::vector<double> tmp(x.size()), work(x.size());
  bank.fastFilterIn(x.data(), tmp.data(), work.data(), static_cast<std::int64_t>(x.size()));
  return x;
}

std::vector<std::vector<double>> readCsvColumns(const std::string& path, bool header) {
  std::istringstream in(readFile(path));
  std::string line;
  std::vector<std::vector<double>> cols;
  if (header) std::getline(in, line);
  while (std::getline(in, line)) {
    std::istringstream row(line);
    std::string f;
    for (std::size_t c = 0; std::getline(row, f, ','); ++c) {
      if (cols.size() <= c) cols.resize(c + 1);
      cols[c].push_back(std::strtod(f.c_str(), nullptr));
    }
  }
  return cols;
}

// ---------------------------------------------------------------------------------------------

TEST(ToolDemo, RemovesMainsByAtLeast40DbOnEveryChannel) {
  TempDir dir;
  const ToolRun r = runTool(dir, {"demo", "--json", "--out", dir.path()});
  ASSERT_EQ(r.status, 0) << r.err;
  const auto j = nlohmann::json::parse(r.out);
  EXPECT_EQ(j["channels"], 8);
  EXPECT_EQ(j["seconds"], 20.0);
  EXPECT_EQ(j["rate"], 1000.0);
  ASSERT_EQ(j["channelResults"].size(), 8u);
  for (const auto& c : j["channelResults"]) {
    SCOPED_TRACE(c.dump());
    EXPECT_GE(c["mainsReductionDb"].get<double>(), 40.0);
    EXPECT_GE(c["driftReductionDb"].get<double>(), 40.0);
  }
  EXPECT_TRUE(fs::exists(dir / "digitfilt-demo.svg"));
}

TEST(ToolDemo, EveryBankRuns) {
  TempDir dir;
  for (const char* bank : {"butterworth", "direct-butterworth", "biquad0", "biquad1", "biquad2"}) {
    SCOPED_TRACE(bank);
    const ToolRun r = runTool(dir, {"demo", "--bank", bank, "--seconds", "3", "--json"});
    ASSERT_EQ(r.status, 0) << r.err;
    const auto j = nlohmann::json::parse(r.out);
    EXPECT_EQ(j["bank"], bank);
    EXPECT_EQ(j["channelResults"].size(), 8u);
  }
}

TEST(ToolDemo, TextOutputNamesStagesAndWritesThePicture) {
  TempDir dir;
  const ToolRun r = runTool(dir, {"demo"});
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_NE(r.out.find("mains harmonic 3, band-stop 148-152 Hz"), std::string::npos) << r.out;
  EXPECT_NE(r.out.find("real time"), std::string::npos);
  EXPECT_EQ(std::system((std::string(DIGITFILT_PYTHON) + " " + quote(DIGITFILT_CHECK_SVG) + " " +
                         quote(dir / "digitfilt-demo.svg") +
                         " 'before: EEG + offset, drift, mains' 'after the bank' "
                         "'clean EEG (reference)' bank")
                            .c_str()),
            0);
}

class ToolFilterBlocks : public testing::TestWithParam<const char*> {};

TEST_P(ToolFilterBlocks, CsvMatchesTheLibrary) {
  TempDir dir;
  const double rate = 250.0;
  const auto x = testSignals(3, 1500, rate);
  std::string csv = "Fz,Cz,Pz\n";
  char buf[128];
  for (std::size_t i = 0; i < x[0].size(); ++i) {
    std::snprintf(buf, sizeof buf, "%.17g, %.17g,%.17g\n", x[0][i], x[1][i], x[2][i]);
    csv += buf;
  }
  writeFile(dir / "in.csv", csv);
  writeFile(dir / "s.json", kSettingsJson);
  const ToolRun r = runTool(dir, {"filter", "--settings", "s.json", "--in", "in.csv", "--out",
                              "out.csv", "--rate", "250", "--block", GetParam()});
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(readFile(dir / "out.csv").substr(0, 9), "Fz,Cz,Pz\n");
  const auto y = readCsvColumns(dir / "out.csv", true);
  ASSERT_EQ(y.size(), 3u);
  for (int c = 0; c < 3; ++c) {
    const auto ref = libraryBlocks(x[c], rate, 3);
    ASSERT_EQ(y[c].size(), ref.size());
    for (std::size_t i = 0; i < ref.size(); ++i) ASSERT_EQ(y[c][i], ref[i]) << "channel " << c << " sample " << i;
  }
}

TEST_P(ToolFilterBlocks, RawMatchesTheLibrary) {
  TempDir dir;
  const double rate = 250.0;
  const auto x = testSignals(2, 1200, rate);
  std::string raw;
  for (std::size_t i = 0; i < x[0].size(); ++i)
    for (int c = 0; c < 2; ++c) raw.append(reinterpret_cast<const char*>(&x[c][i]), 8);
  writeFile(dir / "in.f64", raw);
  // The rate comes from the settings here.
  writeFile(dir / "s.json", std::string(kSettingsJson).replace(1, 0, "\"acqSampleRate\": 250,"));
  const ToolRun r = runTool(dir, {"filter", "--settings", "s.json", "--in", "in.f64", "--out",
                              "out.f64", "--channels", "2", "--block", GetParam()});
  ASSERT_EQ(r.status, 0) << r.err;
  const std::string out = readFile(dir / "out.f64");
  ASSERT_EQ(out.size(), raw.size());
  for (int c = 0; c < 2; ++c) {
    const auto ref = libraryBlocks(x[c], rate, 2);
    for (std::size_t i = 0; i < ref.size(); ++i) {
      double v;
      std::memcpy(&v, out.data() + (2 * i + c) * 8, 8);
      ASSERT_EQ(v, ref[i]) << "channel " << c << " sample " << i;
    }
  }
}

// "0" is the whole record in one call.
INSTANTIATE_TEST_SUITE_P(BlockSizes, ToolFilterBlocks, testing::Values("1", "100", "0"));

TEST(ToolFilter, ZeroPhaseMatchesTheLibrarysForwardBackwardFilter) {
  TempDir dir;
  const double rate = 250.0;
  const auto x = testSignals(1, 1000, rate);
  std::string csv;
  char buf[64];
  for (double v : x[0]) {
    std::snprintf(buf, sizeof buf, "%.17g\n", v);
    csv += buf;
  }
  writeFile(dir / "in.csv", csv);
  writeFile(dir / "s.json", kSettingsJson);
  const ToolRun r = runTool(dir, {"filter", "--settings", "s.json", "--in", "in.csv", "--out",
                              "out.csv", "--rate", "250", "--zero-phase"});
  ASSERT_EQ(r.status, 0) << r.err;
  const auto y = readCsvColumns(dir / "out.csv", false);
  const auto ref = libraryZeroPhase(x[0], rate, 1);
  ASSERT_EQ(y.size(), 1u);
  ASSERT_EQ(y[0].size(), ref.size());
  for (std::size_t i = 0; i < ref.size(); ++i)
    ASSERT_NEAR(y[0][i], ref[i], 1e-9 * (1 + std::fabs(ref[i]))) << i;
}

// An EDF+ file with two signals at different rates and one annotation, written with edflib.
void writeEdfPlus(const std::string& path, int filetype, const std::vector<std::vector<double>>& x,
                  const std::vector<int>& perRecord, int records) {
  const int h = edfopen_file_writeonly(path.c_str(), filetype, static_cast<int>(x.size()));
  ASSERT_GE(h, 0);
  const bool bdf = filetype == EDFLIB_FILETYPE_BDFPLUS;
  for (std::size_t s = 0; s < x.size(); ++s) {
    const int sig = static_cast<int>(s);
    edf_set_samplefrequency(h, sig, perRecord[s]);
    edf_set_physical_maximum(h, sig, 2000.0);
    edf_set_physical_minimum(h, sig, -2000.0);
    edf_set_digital_maximum(h, sig, bdf ? 8388607 : 32767);
    edf_set_digital_minimum(h, sig, bdf ? -8388608 : -32768);
    edf_set_label(h, sig, s == 0 ? "EEG Fz" : "EEG Cz");
    edf_set_physical_dimension(h, sig, "uV");
  }
  edf_set_patientname(h, "Test Subject");
  for (int r = 0; r < records; ++r)
    for (std::size_t s = 0; s < x.size(); ++s)
      edfwrite_physical_samples(h, const_cast<double*>(x[s].data()) + r * perRecord[s]);
  edfwrite_annotation_utf8(h, 12000, -1, "stimulus");
  edfclose_file(h);
}

std::vector<double> readEdfSignal(const std::string& path, int signal, double* bitValue = nullptr,
                                  std::string* annotation = nullptr) {
  edf_hdr_struct hdr;
  EXPECT_EQ(edfopen_file_readonly(path.c_str(), &hdr, EDFLIB_READ_ALL_ANNOTATIONS), 0) << path;
  const edf_param_struct& p = hdr.signalparam[signal];
  std::vector<double> x(p.smp_in_file);
  edfread_physical_samples(hdr.handle, signal, static_cast<int>(x.size()), x.data());
  if (bitValue) *bitValue = (p.phys_max - p.phys_min) / (p.dig_max - p.dig_min);
  if (annotation && hdr.annotations_in_file > 0) {
    edf_annotation_struct a;
    edf_get_annotation(hdr.handle, 0, &a);
    *annotation = a.annotation;
  }
  edfclose_file(hdr.handle);
  return x;
}

// A plain EDF or BDF file written byte by byte (edflib writes only the "+" kinds).
void writePlainEdf(const std::string& path, bool bdf, const std::vector<std::vector<double>>& x,
                   const std::vector<int>& perRecord, int records) {
  auto field = [](std::string v, std::size_t width) {
    v.resize(width, ' ');
    return v;
  };
  const std::size_t ns = x.size();
  const long digMax = bdf ? 8388607 : 32767, digMin = bdf ? -8388608 : -32768;
  std::string h = bdf ? std::string("\xff") + "BIOSEMI" : field("0", 8);
  h += field("Plain Patient", 80) + field("Plain recording", 80) + "01.02.03" + "04.05.06";
  h += field(std::to_string(256 * (ns + 1)), 8) + field(bdf ? "24BIT" : "", 44);
  h += field(std::to_string(records), 8) + field("1", 8) + field(std::to_string(ns), 4);
  for (std::size_t s = 0; s < ns; ++s) h += field("EEG " + std::to_string(s + 1), 16);
  for (std::size_t s = 0; s < ns; ++s) h += field("AgAgCl electrode", 80);
  for (std::size_t s = 0; s < ns; ++s) h += field("uV", 8);
  for (std::size_t s = 0; s < ns; ++s) h += field("-2000", 8);
  for (std::size_t s = 0; s < ns; ++s) h += field("2000", 8);
  for (std::size_t s = 0; s < ns; ++s) h += field(std::to_string(digMin), 8);
  for (std::size_t s = 0; s < ns; ++s) h += field(std::to_string(digMax), 8);
  for (std::size_t s = 0; s < ns; ++s) h += field("HP:0.1Hz", 80);
  for (std::size_t s = 0; s < ns; ++s) h += field(std::to_string(perRecord[s]), 8);
  for (std::size_t s = 0; s < ns; ++s) h += field("", 32);
  for (int r = 0; r < records; ++r)
    for (std::size_t s = 0; s < ns; ++s)
      for (int i = 0; i < perRecord[s]; ++i) {
        const double v = x[s][r * perRecord[s] + i];
        const long d = std::lround((v + 2000.0) / 4000.0 * (digMax - digMin) + digMin);
        for (int b = 0; b < (bdf ? 3 : 2); ++b) h += static_cast<char>((d >> (8 * b)) & 0xFF);
      }
  writeFile(path, h);
}

struct EdfKind {
  const char* name;
  int filetype;
  const char* extension;
  std::size_t headerBytes;  // EDF+ and BDF+ carry an annotation signal
};

class ToolFilterEdf : public testing::TestWithParam<EdfKind> {};

// Two signals at different rates; the output keeps the header (and annotations) byte for byte.
TEST_P(ToolFilterEdf, MatchesTheLibraryAndKeepsTheHeader) {
  const EdfKind& kind = GetParam();
  TempDir dir;
  const int records = 6;
  const std::vector<int> perRecord = {250, 125};
  const auto a = testSignals(1, 250 * records, 250.0)[0];
  const auto b = testSignals(2, 125 * records, 125.0)[1];
  const std::string in = dir / (std::string("in.") + kind.extension);
  const std::string out = dir / (std::string("out.") + kind.extension);
  const bool plus = kind.filetype == EDFLIB_FILETYPE_EDFPLUS ||
                    kind.filetype == EDFLIB_FILETYPE_BDFPLUS;
  if (plus)
    writeEdfPlus(in, kind.filetype, {a, b}, perRecord, records);
  else
    writePlainEdf(in, kind.filetype == EDFLIB_FILETYPE_BDF, {a, b}, perRecord, records);
  writeFile(dir / "s.json", kSettingsJson);
  const ToolRun r = runTool(dir, {"filter", "--settings", "s.json", "--in", in, "--out", out});
  ASSERT_EQ(r.status, 0) << r.err;
  // 125 Hz leaves room for one mains harmonic only: the library says so.
  EXPECT_NE(r.err.find("Power-line noise harmonic is out of the filtering range (2->1)!?"),
            std::string::npos)
      << r.err;
  const std::string inBytes = readFile(in), outBytes = readFile(out);
  ASSERT_EQ(inBytes.size(), outBytes.size());
  EXPECT_EQ(inBytes.substr(0, kind.headerBytes), outBytes.substr(0, kind.headerBytes));
  std::string annotation;
  for (int s = 0; s < 2; ++s) {
    double bit = 0;
    const auto inPhys = readEdfSignal(in, s);
    const auto outPhys = readEdfSignal(out, s, &bit, &annotation);
    const auto ref = libraryBlocks(inPhys, perRecord[s], 2);
    ASSERT_EQ(outPhys.size(), ref.size());
    for (std::size_t i = 0; i < ref.size(); ++i)
      ASSERT_NEAR(outPhys[i], ref[i], 0.5 * bit * (1 + 1e-9)) << "signal " << s << " sample " << i;
  }
  EXPECT_EQ(annotation, plus ? "stimulus" : "");
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, ToolFilterEdf,
    testing::Values(EdfKind{"EdfPlus", EDFLIB_FILETYPE_EDFPLUS, "edf", 256 * 4},
                    EdfKind{"BdfPlus", EDFLIB_FILETYPE_BDFPLUS, "bdf", 256 * 4},
                    EdfKind{"Edf", EDFLIB_FILETYPE_EDF, "edf", 256 * 3},
                    EdfKind{"Bdf", EDFLIB_FILETYPE_BDF, "bdf", 256 * 3}),
    [](const testing::TestParamInfo<EdfKind>& info) { return std::string(info.param.name); });

// ---------------------------------------------------------------------------------------------

struct BadInput {
  const char* name;
  std::vector<std::string> args;
  const char* expected;  // part of the one-line error
};

class ToolBadInput : public testing::TestWithParam<BadInput> {};

TEST_P(ToolBadInput, OneLineErrorNonZeroStatusAndNoOutput) {
  const BadInput& bad = GetParam();
  TempDir dir;
  const auto x = testSignals(2, 300, 250.0);
  std::string csv = "a,b\n";
  for (std::size_t i = 0; i < x[0].size(); ++i)
    csv += std::to_string(x[0][i]) + "," + std::to_string(x[1][i]) + "\n";
  writeFile(dir / "good.csv", csv);
  writeFile(dir / "ragged.csv", "a,b\n1,2\n3\n4,5\n");
  writeFile(dir / "words.csv", "1,2\n3,4\n5,abc\n");
  writeFile(dir / "s.json", kSettingsJson);
  writeFile(dir / "malformed.json", "{ \"lowPassOn\": 1, }");
  writeFile(dir / "unknown.json", "{ \"lowPasFreq\": 40 }");
  writeFile(dir / "mistyped.json", "{ \"lowPassOn\": 1, \"lowPassFreq\": \"40\" }");
  writeFile(dir / "badrate.json", std::string(kSettingsJson).replace(1, 0, "\"acqSampleRate\": -250,"));
  writeFile(dir / "nothing.json", "{ \"lowPassOn\": 0 }");
  writeFile(dir / "short.f64", std::string(20, '\0'));
  writeEdfPlus(dir / "whole.edf", EDFLIB_FILETYPE_EDFPLUS, {x[0], x[1]}, {100, 100}, 3);
  const std::string edf = readFile(dir / "whole.edf");
  writeFile(dir / "trunc.edf", edf.substr(0, edf.size() - 150));
  // An earlier result that a failed run must leave alone.
  writeFile(dir / "out.csv", "earlier result\n");

  const ToolRun r = runTool(dir, bad.args);
  EXPECT_NE(r.status, 0);
  EXPECT_NE(r.err.find(bad.expected), std::string::npos) << r.err;
  EXPECT_EQ(std::count(r.err.begin(), r.err.end(), '\n'), 1) << r.err;
  EXPECT_EQ(readFile(dir / "out.csv"), "earlier result\n");
  for (const auto& entry : fs::directory_iterator(dir.path())) {
    const std::string name = entry.path().filename();
    EXPECT_EQ(name.find(".tmp-"), std::string::npos) << "left behind: " << name;
    EXPECT_NE(name, "out.edf");
    EXPECT_NE(name, "out.f64");
  }
}

std::vector<std::string> filterArgs(const std::string& settings, const std::string& in,
                                    const std::string& out, std::vector<std::string> more = {}) {
  std::vector<std::string> a = {"filter", "--settings", settings, "--in", in, "--out", out};
  a.insert(a.end(), more.begin(), more.end());
  return a;
}

INSTANTIATE_TEST_SUITE_P(
    Cases, ToolBadInput,
    testing::Values(
        BadInput{"MissingSettings", filterArgs("none.json", "good.csv", "out.csv", {"--rate", "250"}),
                 "none.json: cannot open"},
        BadInput{"MalformedJson", filterArgs("malformed.json", "good.csv", "out.csv", {"--rate", "250"}),
                 "malformed.json: malformed JSON"},
        BadInput{"UnknownField", filterArgs("unknown.json", "good.csv", "out.csv", {"--rate", "250"}),
                 "unknown.json: unknown field \"lowPasFreq\""},
        BadInput{"MistypedField", filterArgs("mistyped.json", "good.csv", "out.csv", {"--rate", "250"}),
                 "mistyped.json: field \"lowPassFreq\" must be a number, not a string"},
        BadInput{"NegativeRateArgument", filterArgs("s.json", "good.csv", "out.csv", {"--rate", "-250"}),
                 "--rate: the sample rate must be positive"},
        BadInput{"NegativeRateInSettings", filterArgs("badrate.json", "good.csv", "out.csv"),
                 "badrate.json: field \"acqSampleRate\""},
        BadInput{"NoRate", filterArgs("s.json", "good.csv", "out.csv"), "--rate: needed"},
        BadInput{"MissingInput", filterArgs("s.json", "none.csv", "out.csv", {"--rate", "250"}),
                 "none.csv: cannot open"},
        BadInput{"RaggedCsv", filterArgs("s.json", "ragged.csv", "out.csv", {"--rate", "250"}),
                 "ragged.csv: line 3 has 1 fields, expected 2"},
        BadInput{"NonNumberCsv", filterArgs("s.json", "words.csv", "out.csv", {"--rate", "250"}),
                 "words.csv: line 3, field 2: \"abc\" is not a finite number"},
        BadInput{"RawNotWholeFrames",
                 filterArgs("s.json", "short.f64", "out.f64", {"--rate", "250", "--channels", "2"}),
                 "short.f64: 20 bytes is not a whole number of 2-channel float64 frames"},
        BadInput{"TruncatedEdf", filterArgs("s.json", "trunc.edf", "out.edf"), "trunc.edf: "},
        BadInput{"NothingSwitchedOn", filterArgs("nothing.json", "good.csv", "out.csv", {"--rate", "250"}),
                 "built no stage"},
        BadInput{"UnknownBank",
                 filterArgs("s.json", "good.csv", "out.csv", {"--rate", "250", "--bank", "fir"}),
                 "--bank: unknown bank \"fir\""},
        BadInput{"ZeroPhaseOfABiquadBank",
                 filterArgs("s.json", "good.csv", "out.csv",
                            {"--rate", "250", "--bank", "biquad0", "--zero-phase"}),
                 "--zero-phase"},
        BadInput{"MissingArgument", {"filter", "--settings", "s.json", "--in", "good.csv"},
                 "--out is required"},
        BadInput{"UnwritableOutput", filterArgs("s.json", "good.csv", "no/such/dir/out.csv", {"--rate", "250"}),
                 "no/such/dir/out.csv: cannot create output file"},
        BadInput{"ResponseWithoutRate", {"response", "--settings", "s.json", "--svg", "out.csv"},
                 "acqSampleRate"}),
    [](const testing::TestParamInfo<BadInput>& info) { return std::string(info.param.name); });

// ---------------------------------------------------------------------------------------------

TEST(ToolResponse, SvgParsesAndShowsEveryStageAndTheBank) {
  TempDir dir;
  writeFile(dir / "s.json", std::string(kSettingsJson).replace(1, 0, "\"acqSampleRate\": 250,"));
  const ToolRun r = runTool(dir, {"response", "--settings", "s.json", "--svg", "r.svg", "--csv", "r.csv"});
  ASSERT_EQ(r.status, 0) << r.err;
  const std::string labels =
      " 'low-pass 40 Hz (order 4)' 'high-pass 1 Hz (order 4)' 'notch band-stop 20-24 Hz (order 4)'"
      " 'mains harmonic 1, band-stop 48-52 Hz (order 2)' 'mains harmonic 2, band-stop 98-102 Hz "
      "(order 2)' 'whole bank'";
  EXPECT_EQ(std::system((std::string(DIGITFILT_PYTHON) + " " + quote(DIGITFILT_CHECK_SVG) + " " +
                         quote(dir / "r.svg") + labels)
                            .c_str()),
            0);
  // The CSV has the bank and each of the five stages; the bank is -3 dB at the low-pass edge.
  const auto cols = readCsvColumns(dir / "r.csv", true);
  ASSERT_EQ(cols.size(), 7u);
  const auto j = nlohmann::json::parse(
      runTool(dir, {"response", "--settings", "s.json", "--json"}).out);
  bool sawEdge = false;
  for (const auto& at : j["bankGainAt"]) {
    if (at["hz"] != 40.0) continue;
    sawEdge = true;
    EXPECT_NEAR(at["db"].get<double>(), -3.0, 0.5);
  }
  EXPECT_TRUE(sawEdge);
}

TEST(ToolResponse, PrintsWhatTheBankCorrected) {
  TempDir dir;
  writeFile(dir / "s.json",
            "{ \"acqSampleRate\": 1000, \"lowPassOn\": 1, \"lowPassFreq\": 800,"
            "  \"powerLineOn\": 1, \"powerLineType\": 1, \"powerLineWidth\": 4,"
            "  \"powerLineHarmonics\": 12 }");
  const ToolRun r = runTool(dir, {"response", "--settings", "s.json", "--csv", "r.csv"});
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_NE(r.out.find("lowPassFreq: 800 -> 500"), std::string::npos) << r.out;
  EXPECT_NE(r.out.find("powerLineHarmonics: 12 -> 9"), std::string::npos) << r.out;
  EXPECT_NE(r.err.find("(12->9)"), std::string::npos) << r.err;
}

TEST(ToolDesign, ButterworthLowPassIsHalfPowerAtItsCutoff) {
  TempDir dir;
  const ToolRun r = runTool(dir, {"design", "butterworth", "--type", "lowpass", "--order", "4",
                              "--rate", "1000", "--cutoff", "100", "--json"});
  ASSERT_EQ(r.status, 0) << r.err;
  const auto j = nlohmann::json::parse(r.out);
  EXPECT_EQ(j["numCoefs"], 5);
  EXPECT_EQ(j["b"].size(), 5u);
  for (const auto& at : j["response"]) {
    if (at["name"] == "DC") {
      EXPECT_NEAR(at["db"].get<double>(), 0.0, 1e-9);
    }
    if (at["name"] == "cut-off") {
      EXPECT_NEAR(at["db"].get<double>(), -3.0103, 1e-3);
    }
  }
}

TEST(ToolDesign, OtherDesignersRunOrSayWhy) {
  TempDir dir;
  const std::vector<std::vector<std::string>> designs = {
      {"design", "chebyshev", "--rate", "1000", "--cutoff", "40", "--ripple-db", "1", "--json"},
      {"design", "kaiser", "--rate", "1000", "--cutoff", "40", "--transition", "20", "--json"},
      {"design", "remez", "--rate", "1000", "--cutoff", "100", "--transition", "50", "--json"}};
  for (const auto& args : designs) {
    SCOPED_TRACE(args[1]);
    const ToolRun r = runTool(dir, args);
    if (r.status == 0) {
      const auto j = nlohmann::json::parse(r.out);
      EXPECT_FALSE(j["response"].empty());
    } else {
      EXPECT_EQ(std::count(r.err.begin(), r.err.end(), '\n'), 1) << r.err;
      EXPECT_NE(r.err.find(args[1] + ":"), std::string::npos) << r.err;
    }
  }
  const ToolRun refused = runTool(dir, {"design", "butterworth", "--order", "25", "--rate", "1000",
                                    "--cutoff", "100"});
  EXPECT_EQ(refused.status, 1);
  EXPECT_NE(refused.err.find("refused"), std::string::npos);
}

TEST(ToolHelp, EveryCommandHasHelpWithAnExample) {
  TempDir dir;
  for (const std::vector<std::string>& cmd :
       std::vector<std::vector<std::string>>{{"demo"}, {"filter"}, {"response"}, {"settings"},
                                             {"design"}, {"design", "butterworth"},
                                             {"design", "chebyshev"}, {"design", "kaiser"},
                                             {"design", "remez"}}) {
    std::vector<std::string> args = cmd;
    args.push_back("--help");
    SCOPED_TRACE(args[0] + (args.size() > 2 ? " " + args[1] : ""));
    const ToolRun r = runTool(dir, args);
    EXPECT_EQ(r.status, 0);
    EXPECT_NE(r.out.find("Example:"), std::string::npos) << r.out;
  }
}

}  // namespace
