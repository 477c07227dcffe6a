// PeakMemory.cpp - see PeakMemory.h.

#include "PeakMemory.h"

#include <benchmark/benchmark.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>

#include "ChildAnswer.h"

namespace bench {

namespace {

const char kChildFlag[] = "--peak-memory-child=";

std::map<std::string, Loader>& Loaders() {
  static std::map<std::string, Loader> loaders;
  return loaders;
}

// The value of a "Name:   123 kB" line of /proc/self/status; -1 if absent.
long StatusKilobytes(const char* name) {
  FILE* status = std::fopen("/proc/self/status", "r");
  if (status == nullptr) return -1;
  char line[256];
  long value = -1;
  const size_t length = std::strlen(name);
  while (std::fgets(line, sizeof line, status) != nullptr) {
    if (std::strncmp(line, name, length) == 0 && line[length] == ':') {
      value = std::strtol(line + length + 1, nullptr, 10);
      break;
    }
  }
  std::fclose(status);
  return value;
}

// Makes VmHWM start again from the current resident set size (Linux 4.0+).
void ResetPeak() {
  FILE* refs = std::fopen("/proc/self/clear_refs", "w");
  if (refs == nullptr) return;
  std::fputs("5", refs);
  std::fclose(refs);
}

// Runs the loader registered as name on path in a new process and returns
// the rise of its VmHWM in kB; -1 on any failure.
long PeakKilobytes(const std::string& name, const std::string& path) {
  std::string answer;
  if (!RunForAnswer(
          "/proc/self/exe",
          {"PropertiesBenchmark", std::string(kChildFlag) + name, path},
          &answer)) {
    return -1;
  }
  return std::strtol(answer.c_str(), nullptr, 10);
}

}  // namespace

void RegisterPeakMemory(const std::string& impl, Format format, Loader load,
                        const std::vector<int>& sizes, bool onCopy) {
  const std::string name =
      "BM_PeakMemory_" + impl + (format == Format::kFlat ? "_Flat" : "_Ini");
  Loaders()[name] = load;
  benchmark::internal::Benchmark* benchmark = benchmark::RegisterBenchmark(
      name.c_str(), [name, format, onCopy](benchmark::State& state) {
        const InputFile& input =
            Input(format, static_cast<int>(state.range(0)));
        std::string path = input.path;
        if (onCopy) {
          path = ScratchPath(name.substr(3) + "-" +
                             std::to_string(input.entries.size()));
        }
        long kilobytes = -1;
        for (auto _ : state) {
          if (onCopy && !CopyFile(input.path, path)) break;
          kilobytes = PeakKilobytes(name, path);
        }
        if (kilobytes < 0) {
          state.SkipWithError("the load in the child process failed");
          return;
        }
        state.counters["peak_kB"] = static_cast<double>(kilobytes);
        state.counters["file_kB"] =
            static_cast<double>(input.text.size()) / 1024;
      });
  for (int size : sizes) benchmark->Arg(size);
  benchmark->Iterations(1)->UseRealTime()->Unit(benchmark::kMillisecond);
}

bool RunPeakMemoryChild(int argc, char** argv, int* exitCode) {
  const size_t flagLength = sizeof kChildFlag - 1;
  if (argc != 4 || std::strncmp(argv[1], kChildFlag, flagLength) != 0) {
    return false;
  }
  *exitCode = 1;
  const auto found = Loaders().find(argv[1] + flagLength);
  if (found == Loaders().end()) return true;
  const std::string path = argv[2];
  const int fd = std::atoi(argv[3]);
  ResetPeak();
  const long before = StatusKilobytes("VmHWM");
  const std::shared_ptr<void> loaded = found->second(path);
  const long after = StatusKilobytes("VmHWM");
  if (!loaded || before < 0 || after < 0) return true;
  const std::string answer = std::to_string(after - before);
  if (::write(fd, answer.data(), answer.size()) ==
      static_cast<ssize_t>(answer.size())) {
    *exitCode = 0;
  }
  return true;
}

}  // namespace bench
