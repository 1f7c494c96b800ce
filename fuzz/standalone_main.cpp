// Driver for the fuzz targets when libFuzzer is not linked (GCC builds): replays every file of
// the given corpus directories, then mutates them at random for --seconds S (default 0).
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int main(int argc, char** argv) {
  double seconds = 0.0;
  std::vector<std::vector<std::uint8_t>> corpus;
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--seconds") == 0 && i + 1 < argc) {
      seconds = std::atof(argv[++i]);
      continue;
    }
    const std::filesystem::path path(argv[i]);
    std::vector<std::filesystem::path> files;
    if (std::filesystem::is_directory(path)) {
      for (const auto& entry : std::filesystem::directory_iterator(path))
        if (entry.is_regular_file()) files.push_back(entry.path());
    } else {
      files.push_back(path);
    }
    for (const auto& file : files) {
      std::ifstream in(file, std::ios::binary);
      corpus.emplace_back(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    }
  }
  if (corpus.empty()) corpus.emplace_back();
  for (const auto& input : corpus) LLVMFuzzerTestOneInput(input.data(), input.size());

  std::uint64_t state = 0x9E3779B97F4A7C15ull;
  auto next = [&state] {
    state ^= state << 13;
    state ^= state >> 7;
    state ^= state << 17;
    return state;
  };
  const auto stop = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
  std::size_t runs = corpus.size();
  while (std::chrono::steady_clock::now() < stop) {
    std::vector<std::uint8_t> input = corpus[next() % corpus.size()];
    const std::size_t edits = 1 + next() % 8;
    for (std::size_t e = 0; e < edits; ++e) {
      const std::uint64_t r = next();
      if (input.empty() || r % 4 == 0) {
        input.insert(input.begin() + (input.empty() ? 0 : r % input.size()),
                     static_cast<std::uint8_t>(r >> 8));
      } else if (r % 4 == 1 && input.size() > 1) {
        input.erase(input.begin() + (r >> 8) % input.size());
      } else {
        input[(r >> 8) % input.size()] = static_cast<std::uint8_t>(r >> 32);
      }
    }
    LLVMFuzzerTestOneInput(input.data(), input.size());
    ++runs;
  }
  std::printf("%zu inputs run\n", runs);
  return 0;
}
