// ReplayMain.cpp - runs a fuzz target once on each file it is given, so that
// the corpora replay as ordinary tests where libFuzzer is not used (g++, or
// fuzzers turned off).
//
//   ExtractFuzzer [-flags...] FILE-OR-DIRECTORY...
//
// Directories are walked recursively, in name order. Arguments that start
// with '-' are libFuzzer flags and are ignored, so that one test command
// serves both builds. A failed check aborts; a missing path is an error.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

namespace fs = std::filesystem;

// Adds path, or the regular files below it, to inputs. False if path does
// not exist.
bool Collect(const fs::path& path, std::vector<fs::path>& inputs) {
  std::error_code error;
  if (fs::is_directory(path, error)) {
    std::vector<fs::path> found;
    for (const auto& entry : fs::recursive_directory_iterator(path)) {
      if (entry.is_regular_file()) found.push_back(entry.path());
    }
    std::sort(found.begin(), found.end());
    inputs.insert(inputs.end(), found.begin(), found.end());
    return true;
  }
  if (!fs::exists(path, error)) return false;
  inputs.push_back(path);
  return true;
}

bool Replay(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in.is_open()) return false;
  const std::vector<char> bytes((std::istreambuf_iterator<char>(in)),
                                std::istreambuf_iterator<char>());
  // A block of exactly the input's size (never null), as libFuzzer passes
  // it, so that a sanitizer catches a read past the end.
  std::unique_ptr<uint8_t[]> data(new uint8_t[bytes.size()]);
  std::copy(bytes.begin(), bytes.end(), data.get());
  LLVMFuzzerTestOneInput(data.get(), bytes.size());
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<fs::path> inputs;
  for (int i = 1; i < argc; ++i) {
    if (argv[i][0] == '-') continue;
    if (!Collect(argv[i], inputs)) {
      std::fprintf(stderr, "%s: no such file or directory\n", argv[i]);
      return 1;
    }
  }
  for (const fs::path& input : inputs) {
    if (!Replay(input)) {
      std::fprintf(stderr, "%s: cannot read\n", input.c_str());
      return 1;
    }
  }
  std::printf("replayed %zu inputs\n", inputs.size());
  return 0;
}
