// The tool's pieces on their own: settings JSON, CSV parsing, atomic output, spectra, SVG text
// and the way the tool drives the Butterworth acquisition bank block by block.
#include <unistd.h>

#include <cmath>
#include <complex>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include <digitfilt/digitfilt.h>

#include "banks.h"
#include "settings_json.h"
#include "signal_io.h"
#include "spectrum.h"
#include "svg_plot.h"
#include "tool_error.h"

namespace {

using namespace digitfilt::tool;
namespace fs = std::filesystem;

std::string errorOf(const std::function<void()>& f) {
  try {
    f();
  } catch (const ToolError& e) {
    return e.what();
  }
  return "(no error)";
}

TEST(SettingsJson, ReadsRecordFieldsByName) {
  const CFilterDcLtSetAcqqv s = settingsFromJsonText(
      "// comment\n{ \"lowPassOn\": true, \"lowPassFreq\": 70, \"notchOn\": [0, 1],"
      "  \"notchFreqHigh\": [0, 52.5], /* inline */ \"powerLineHarmonics\": 3 }",
      "s.json");
  EXPECT_EQ(s.lowPassOn, 1);
  EXPECT_EQ(s.lowPassFreq, 70.0);
  EXPECT_EQ(s.notchOn[1], 1);
  EXPECT_EQ(s.notchFreqHigh[1], 52.5);
  EXPECT_EQ(s.notchOn[2], 0);
  EXPECT_EQ(s.powerLineHarmonics, 3);
  EXPECT_EQ(s.highPassOn, 0);  // left out: 0
}

TEST(SettingsJson, RejectsUnknownAndMistypedFieldsByName) {
  auto err = [](const char* text) { return errorOf([&] { settingsFromJsonText(text, "s.json"); }); };
  EXPECT_EQ(err("{\"lowPasFreq\": 1}"), "s.json: unknown field \"lowPasFreq\"");
  EXPECT_EQ(err("{\"lowPassFreq\": \"70\"}"),
            "s.json: field \"lowPassFreq\" must be a number, not a string");
  EXPECT_EQ(err("{\"powerLineHarmonics\": 2.5}"),
            "s.json: field \"powerLineHarmonics\" must be an integer, not a number");
  EXPECT_EQ(err("{\"lowPassOn\": \"yes\"}"),
            "s.json: field \"lowPassOn\" must be 0, 1, true or false, not a string");
  EXPECT_EQ(err("{\"channelCount\": 4294967296}"),
            "s.json: field \"channelCount\" is out of the 32-bit integer range");
  EXPECT_EQ(err("{\"notchOn\": [0,0,0,0,0,0,1]}"),
            "s.json: field \"notchOn\" must be an array of at most 6 values");
  EXPECT_EQ(err("{\"notchFreqLow\": [1, null]}"),
            "s.json: field \"notchFreqLow[1]\" must be a number, not null");
  EXPECT_EQ(err("[1, 2]"), "s.json: settings must be a JSON object");
  EXPECT_EQ(err("{\"lowPassOn\": 1,}").rfind("s.json: malformed JSON: ", 0), 0u);
}

TEST(SettingsJson, TemplateReadsBackAsTheDemoSettings) {
  const CFilterDcLtSetAcqqv s = settingsFromJsonText(settingsTemplate(), "template");
  EXPECT_EQ(settingsToJson(s), settingsToJson(demoSettings(1000.0, 8)));
  EXPECT_TRUE(settingChanges(s, demoSettings(1000.0, 8)).empty());
}

TEST(SettingsJson, ChangesListEachCorrectedField) {
  CFilterDcLtSetAcqqv a, b;
  a.lowPassFreq = 800;
  b.lowPassFreq = 500;
  a.notchFreqHigh[3] = 0;
  b.notchFreqHigh[3] = 0.5;
  const auto c = settingChanges(a, b);
  ASSERT_EQ(c.size(), 2u);
  EXPECT_EQ(c[0].field, "lowPassFreq");
  EXPECT_EQ(c[0].requested + " " + c[0].corrected, "800 500");
  EXPECT_EQ(c[1].field, "notchFreqHigh[3]");
}

TEST(Csv, HeaderIsOptionalAndRowsMustAgree) {
  const Recording a = parseCsv("Fz, Cz\n1,2\n3 , 4.5e1\n\n", "a.csv", 250.0);
  EXPECT_TRUE(a.csvHeader);
  EXPECT_EQ(a.names, (std::vector<std::string>{"Fz", "Cz"}));
  EXPECT_EQ(a.channels[1], (std::vector<double>{2, 45}));
  EXPECT_EQ(a.rates, (std::vector<double>{250, 250}));
  const Recording b = parseCsv("1\r\n-2\r\n+3", "b.csv", 100.0);
  EXPECT_FALSE(b.csvHeader);
  EXPECT_EQ(b.channels[0], (std::vector<double>{1, -2, 3}));
  auto err = [](const char* text) { return errorOf([&] { parseCsv(text, "x.csv", 1.0); }); };
  EXPECT_EQ(err("1,2\n3\n"), "x.csv: line 2 has 1 fields, expected 2");
  EXPECT_EQ(err("1,2\n\n3,4\n"), "x.csv: line 2 is empty");
  EXPECT_EQ(err("1,2\n3,nan\n"), "x.csv: line 2, field 2: \"nan\" is not a finite number");
  EXPECT_EQ(err("a,b\n"), "x.csv: no samples");
  EXPECT_EQ(err(""), "x.csv: no samples");
}

TEST(AtomicOutput, TargetChangesOnlyOnCommit) {
  char tmpl[] = "/tmp/digitfilt-units-XXXXXX";
  const std::string dir = mkdtemp(tmpl);
  const std::string target = dir + "/out.txt";
  std::ofstream(target) << "old\n";
  {
    AtomicOutput out(target);
    out.write(std::string("half a file"));
  }  // no commit: as if an error had been thrown
  auto read = [&] {
    std::ifstream in(target);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
  };
  EXPECT_EQ(read(), "old\n");
  EXPECT_EQ(std::distance(fs::directory_iterator(dir), fs::directory_iterator()), 1);
  writeTextFile(target, "new\n");
  EXPECT_EQ(read(), "new\n");
  EXPECT_EQ(std::distance(fs::directory_iterator(dir), fs::directory_iterator()), 1);
  fs::remove_all(dir);
}

TEST(Spectrum, FftMatchesADirectSum) {
  std::vector<std::complex<double>> x(64);
  for (std::size_t i = 0; i < x.size(); ++i) x[i] = {std::sin(0.3 * i * i), std::cos(1.7 * i)};
  auto X = x;
  fft(X, false);
  for (std::size_t k = 0; k < x.size(); ++k) {
    std::complex<double> s = 0;
    for (std::size_t n = 0; n < x.size(); ++n) s += x[n] * std::polar(1.0, -2 * M_PI * k * n / 64.0);
    EXPECT_NEAR(std::abs(X[k] - s), 0.0, 1e-10);
  }
  fft(X, true);
  for (std::size_t i = 0; i < x.size(); ++i) EXPECT_NEAR(std::abs(X[i] - x[i]), 0.0, 1e-12);
}

// A tone of amplitude A has mean-square power A^2 / 2; a constant c has c^2, all at DC.
TEST(Spectrum, BandPowersAreMeanSquares) {
  const double rate = 1000, A = 3.0, c = 2.0;
  std::vector<double> x(10000);
  for (std::size_t i = 0; i < x.size(); ++i) x[i] = c + A * std::sin(2 * M_PI * 50.3 * i / rate);
  const Periodogram p(x.data(), x.size(), rate);
  EXPECT_NEAR(p.bandPower(49.5, 51.0), A * A / 2, 0.01 * A * A / 2);
  EXPECT_NEAR(p.bandPower(0.0, 0.5), c * c, 0.01 * c * c);
  EXPECT_LT(p.bandPower(100.0, 500.0), 1e-6);
  const Spectrum w = welchPsd(x.data(), x.size(), rate, 1024);
  double total = 0;
  for (std::size_t k = 1; k < w.psd.size(); ++k) total += w.psd[k] * rate / 1024;
  EXPECT_NEAR(total, A * A / 2, 0.02 * A * A / 2);  // Welch removes each segment's mean
}

TEST(Spectrum, DecibelsAndLogGrid) {
  EXPECT_DOUBLE_EQ(toDb(0.1), -20.0);
  EXPECT_EQ(toDb(0.0), -300.0);
  EXPECT_EQ(toDb(NAN), -300.0);
  EXPECT_EQ(toDb(INFINITY), 300.0);
  const auto f = logSpacedFrequencies(0.1, 1000, 5);
  EXPECT_NEAR(f[1], 1.0, 1e-12);
  EXPECT_NEAR(f[3], 100.0, 1e-9);
  EXPECT_EQ(f.back(), 1000.0);
}

TEST(SvgPlot, EscapesTextAndBreaksLinesAtMissingValues) {
  EXPECT_EQ(xmlEscape("a<b & \"c\" 'd'>"), "a&lt;b &amp; &quot;c&quot; &apos;d&apos;&gt;");
  PlotPanel p;
  p.logX = false;
  p.xMin = 0, p.xMax = 3;
  p.curves = {Curve{"A & B", {0, 1, 2, 3}, {0, NAN, 1, 2}}};
  const std::string svg = renderSvg("t", {p});
  // Two pieces of one curve, both labelled.
  std::size_t count = 0;
  for (std::size_t at = 0; (at = svg.find("data-label=\"A &amp; B\"", at)) != std::string::npos; ++at)
    ++count;
  EXPECT_EQ(count, 2u);  // two polylines; the legend carries the label as text
  EXPECT_NE(svg.find(">A &amp; B</text>"), std::string::npos);  // legend
}

// The tool's block runner for the Butterworth bank keeps each stage's history in its own
// window; blocks of any size must give exactly what the library gives for the whole record.
TEST(ButterworthBankRunner, BlockSizeDoesNotChangeTheResult) {
  const double rate = 500;
  CFilterDcLtSetAcqqv s = demoSettings(rate, 1);
  s.notchOn[0] = 1;
  s.notchFreqLow[0] = 20;
  s.notchFreqHigh[0] = 25;
  std::vector<double> x(3000);
  for (std::size_t i = 0; i < x.size(); ++i)
    x[i] = 80 + 30 * std::sin(0.05 * i) + 10 * std::sin(2 * M_PI * 50 * i / rate) + (i % 97 == 0 ? 40 : 0);

  CFilterDcLtSetAcqqv ref = s;
  CDigitFiltCoefMak01ButterworthAcqqv lib;
  ASSERT_EQ(lib.setCheckCoefs(ref), 6);
  lib.makeAllButterworthCoeffs(true);
  lib.reset4RunTimeFilter();
  std::vector<double> expected = x, tmp(x.size() + 1);
  expected.push_back(0);
  lib.fastFilterInC(expected.data(), tmp.data(), 3000, 0, 3000, 0);
  expected.pop_back();

  for (std::int64_t block : {1, 7, 100, 3000}) {
    SCOPED_TRACE(block);
    CFilterDcLtSetAcqqv settings = s;
    auto bank = makeBank(BankKind::kButterworth);
    ASSERT_EQ(bank->configure(settings), 6);
    EXPECT_EQ(bank->stageLabels().size(), 6u);
    bank->start();
    std::vector<double> y = x;
    for (std::int64_t first = 0; first < 3000; first += block)
      bank->filterBlock(y.data(), 3000, first, std::min<std::int64_t>(3000, first + block));
    for (std::size_t i = 0; i < y.size(); ++i) ASSERT_EQ(y[i], expected[i]) << i;
  }
}

TEST(Banks, NamesRoundTripAndUnknownNamesAreRefused) {
  for (const std::string& n : bankNames()) EXPECT_EQ(bankName(parseBankKind(n)), n);
  EXPECT_EQ(errorOf([] { parseBankKind("fir"); }),
            "--bank: unknown bank \"fir\" (butterworth, direct-butterworth, biquad0, biquad1 or "
            "biquad2)");
}

}  // namespace
