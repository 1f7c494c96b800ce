#pragma once
// EDF, EDF+ and BDF(+) files. Reading goes through edflib, which checks the file; writing copies
// the input's header and annotation signals byte for byte and stores the filtered samples with
// each signal's own scaling, so the output is the same kind of file with the same header.
#include <cstdint>
#include <string>
#include <vector>

#include "signal_io.h"

namespace digitfilt::tool {

struct EdfLayout {
  struct Signal {
    int samplesPerRecord = 0;
    bool annotation = false;
    int channel = -1;  // index into Recording::channels, -1 for annotation signals
    double bitValue = 1.0;
    double offset = 0.0;  // physical = bitValue * (digital + offset), as edflib converts
    int digMin = 0;
    int digMax = 0;
  };
  std::string header;  // every header byte of the input
  int bytesPerSample = 2;
  std::int64_t records = 0;
  std::vector<Signal> signals;  // every signal of a data record, annotation signals included
  std::string annotationBytes;  // annotation signals' bytes, record after record
};

Recording readEdf(const std::string& path);

// Returns the number of samples that had to be clipped to their signal's digital range.
std::int64_t writeEdf(const std::string& path, const Recording& rec);

}  // namespace digitfilt::tool
