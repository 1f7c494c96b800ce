// digitfilt: see what the library's filters do without writing a host.
#include <exception>
#include <iostream>

#include <CLI/CLI.hpp>

#include "banks.h"
#include "commands.h"
#include "tool_error.h"

namespace {

using namespace digitfilt::tool;

void addDesignCommon(CLI::App* cmd, DesignOptions& o, bool withBandStop) {
  cmd->add_option("--type", o.type,
                  withBandStop ? "lowpass, highpass, bandpass or bandstop (default lowpass)"
                               : "lowpass, highpass or bandpass (default lowpass)");
  cmd->add_option("--rate", o.rate, "sample rate in Hz")->required();
  cmd->add_option("--cutoff", o.cutoff, "edge of a low-pass or high-pass, Hz");
  cmd->add_option("--low", o.low, "lower band edge of a band filter, Hz");
  cmd->add_option("--high", o.high, "upper band edge of a band filter, Hz");
  cmd->add_option("--at", o.at, "also show the response at these frequencies (Hz)");
  cmd->add_flag("--json", o.json, "machine-readable output");
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app{"digitfilt: run the digitfilt library's filter banks and designers on synthetic "
               "signals, files and settings, and plot what they do."};
  app.require_subcommand(1);
  app.set_version_flag("--version", "digitfilt 0.1.0");
  app.footer("Example:\n  digitfilt demo\nEvery command has --help with an example.");

  DemoOptions demo;
  auto* demoCmd = app.add_subcommand(
      "demo",
      "Filter 8 channels x 20 s of synthetic EEG (offset, drift, 50 Hz mains and harmonics) "
      "block by block through an acquisition bank; print what it removed and write "
      "digitfilt-demo.svg.");
  demoCmd->add_option("--bank", demo.bank, "bank class:\n" + bankChoicesHelp());
  demoCmd->add_option("--out", demo.outDir, "directory for digitfilt-demo.svg (default .)");
  demoCmd->add_flag("--json", demo.json, "machine-readable results on stdout");
  demoCmd->add_option("--seconds", demo.seconds, "length of the record (default 20)");
  demoCmd->add_option("--block", demo.block, "samples per block (default 100)");
  demoCmd->footer("Example:\n  digitfilt demo\n  digitfilt demo --bank biquad0 --out /tmp --json");

  FilterOptions filt;
  auto* filterCmd = app.add_subcommand(
      "filter",
      "Filter every channel of a CSV, raw float64 or EDF/EDF+/BDF file and write the same "
      "format.");
  filterCmd->add_option("--settings", filt.settingsPath, "settings JSON (see `settings --template`)")
      ->required();
  filterCmd->add_option("--in", filt.inPath, "input file (.csv, .f64, .edf/.bdf)")->required();
  filterCmd->add_option("--out", filt.outPath, "output file, written only when complete")
      ->required();
  filterCmd->add_option("--bank", filt.bank, "bank class:\n" + bankChoicesHelp());
  filterCmd->add_option("--block", filt.block,
                        "samples per block (default 100; 0 = the whole record at once)");
  filterCmd->add_flag("--zero-phase", filt.zeroPhase,
                      "filter each whole record forwards and backwards instead of in blocks");
  filterCmd->add_option("--format", filt.format, "csv, raw or edf (default: from the extension)");
  filterCmd->add_option("--rate", filt.rate,
                        "sample rate of CSV/raw input, Hz (default: acqSampleRate of the settings)");
  filterCmd->add_option("--channels", filt.channels, "channel count of raw input");
  filterCmd->add_flag("--quiet", filt.quiet, "no summary and no progress bar");
  filterCmd->footer(
      "Raw input is little-endian float64, one frame of all channels per sample. A progress bar\n"
      "appears on a terminal when filtering takes more than a second.\n"
      "Example:\n"
      "  digitfilt settings --template > s.json\n"
      "  digitfilt filter --settings s.json --in eeg.csv --rate 500 --out eeg-filtered.csv");

  ResponseOptions resp;
  auto* respCmd = app.add_subcommand(
      "response",
      "Magnitude response of every stage and of the whole bank, with the settings as the bank "
      "corrected them.");
  respCmd->add_option("--settings", resp.settingsPath, "settings JSON")->required();
  respCmd->add_option("--bank", resp.bank, "bank class:\n" + bankChoicesHelp());
  respCmd->add_option("--svg", resp.svgPath, "write the plot here");
  respCmd->add_option("--csv", resp.csvPath, "write the curves here (dB per frequency)");
  respCmd->add_option("--rate", resp.rate, "sample rate, Hz (default: acqSampleRate)");
  respCmd->add_option("--points", resp.points, "frequencies on the curves (default 600)");
  respCmd->add_flag("--json", resp.json, "machine-readable summary on stdout");
  respCmd->footer("Example:\n  digitfilt response --settings s.json --svg response.svg");

  DesignOptions design;
  auto* designCmd = app.add_subcommand(
      "design", "Coefficients of one design, with its response at a few named frequencies.");
  designCmd->require_subcommand(1);
  designCmd->footer("Example:\n  digitfilt design butterworth --type lowpass --order 4 "
                    "--rate 1000 --cutoff 70");
  auto* bw = designCmd->add_subcommand("butterworth", "Butterworth stage (filter_iirspec)");
  addDesignCommon(bw, design, true);
  bw->add_option("--order", design.order, "prototype order (default 4)");
  bw->footer("Example:\n  digitfilt design butterworth --type bandstop --order 2 --rate 1000 "
             "--low 48 --high 52 --at 50");
  auto* cheb = designCmd->add_subcommand("chebyshev", "Chebyshev type I stage");
  addDesignCommon(cheb, design, true);
  cheb->add_option("--order", design.order, "order (default 4; band types: a multiple of 4)");
  cheb->add_option("--ripple-db", design.rippleDb, "pass-band ripple in dB (default 0.5)");
  cheb->add_option("--epsilon", design.epsilon, "ripple as the Chebyshev epsilon instead");
  cheb->footer("Example:\n  digitfilt design chebyshev --type lowpass --order 4 --rate 1000 "
               "--cutoff 40 --ripple-db 1");
  auto* kaiser = designCmd->add_subcommand("kaiser", "Kaiser-window FIR");
  addDesignCommon(kaiser, design, false);
  kaiser->add_option("--atten", design.attenDb, "stop-band attenuation in dB (default 60)");
  kaiser->add_option("--transition", design.transition, "transition width in Hz")->required();
  kaiser->footer("Example:\n  digitfilt design kaiser --type lowpass --rate 1000 --cutoff 40 "
                 "--transition 10 --atten 60");
  auto* remez = designCmd->add_subcommand("remez", "equiripple FIR (Parks-McClellan)");
  addDesignCommon(remez, design, false);
  remez->add_option("--order", design.order, "filter length in taps (rounded up to even)");
  remez->add_option("--transition", design.transition, "transition width in Hz")->required();
  remez->add_option("--stop-weight", design.stopWeight, "weight of the stop band(s) (default 1)");
  remez->footer("Example:\n  digitfilt design remez --type lowpass --order 40 --rate 1000 "
                "--cutoff 100 --transition 50");

  bool templ = false;
  auto* settingsCmd =
      app.add_subcommand("settings", "Print a JSON template of the acquisition settings.");
  settingsCmd->add_flag("--template", templ, "print the template")->required();
  settingsCmd->footer("Example:\n  digitfilt settings --template > s.json");

  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& e) {
    if (e.get_exit_code() == 0) return app.exit(e);  // --help, --version
    std::cerr << "digitfilt: " << e.what() << "\n";
    return 2;
  }

  try {
    if (*demoCmd) return runDemo(demo);
    if (*filterCmd) return runFilter(filt);
    if (*respCmd) return runResponse(resp);
    if (*settingsCmd) return runSettingsTemplate();
    if (*designCmd) {
      for (auto* sub : {bw, cheb, kaiser, remez})
        if (*sub) design.method = sub->get_name();
      if (design.method == "remez" && remez->count("--order") == 0)
        design.order = 30;
      return runDesign(design);
    }
  } catch (const ToolError& e) {
    std::cerr << "digitfilt: " << e.what() << "\n";
    return 1;
  } catch (const std::exception& e) {
    std::cerr << "digitfilt: internal error: " << e.what() << "\n";
    return 3;
  }
  return 0;
}
