// BenchmarkMain.cpp - the benchmark program: writes the inputs, registers
// every benchmark and runs the ones the command line selects (Google
// Benchmark's flags, e.g. --benchmark_filter=Load --benchmark_min_time=0.01).
// Started by itself with --peak-memory-child=..., it only measures one load
// (see PeakMemory.h); with --set-value-child=..., it only times SetValue
// (see SetValueChild.h).
//
// Besides Google Benchmark's own context, the results record what a reader
// of the numbers needs to compare two runs: the processor model, the kernel,
// the compiler and the command line (repetitions, minimum time). The commit
// comes from outside, as --benchmark_context=commit=... (make bench).

#include <benchmark/benchmark.h>
#include <sys/utsname.h>

#include <fstream>
#include <string>

#include "BenchmarkInputs.h"
#include "BenchmarkRegistry.h"
#include "PeakMemory.h"
#include "SetValueChild.h"

namespace {

// The first "model name" of /proc/cpuinfo, or "" where there is none.
std::string CpuModel() {
  std::ifstream in("/proc/cpuinfo");
  std::string line;
  while (std::getline(in, line)) {
    if (line.compare(0, 10, "model name") != 0) continue;
    const std::string::size_type colon = line.find(':');
    if (colon == std::string::npos) continue;
    const std::string::size_type start =
        line.find_first_not_of(" \t", colon + 1);
    return start == std::string::npos ? "" : line.substr(start);
  }
  return "";
}

std::string Kernel() {
  struct utsname name;
  if (uname(&name) != 0) return "";
  return std::string(name.sysname) + " " + name.release + " " + name.machine;
}

std::string Arguments(int argc, char** argv) {
  std::string text;
  for (int i = 1; i < argc; ++i) {
    if (i > 1) text += ' ';
    text += argv[i];
  }
  return text;
}

}  // namespace

int main(int argc, char** argv) {
  bench::RegisterReadWriteBenchmarks();
  bench::RegisterPeerBenchmarks();
  bench::RegisterManagerBenchmarks();
  bench::RegisterMemoryBenchmarks();
  bench::RegisterPeerMemoryBenchmarks();
  int exitCode = 0;
  if (bench::RunPeakMemoryChild(argc, argv, &exitCode)) return exitCode;
  if (bench::RunSetValueChild(argc, argv, &exitCode)) return exitCode;

  const std::string arguments = Arguments(argc, argv);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  if (!bench::CreateInputs()) return 1;
  benchmark::AddCustomContext("peers", bench::PeerNames());
  benchmark::AddCustomContext("properties_build_type", BENCH_BUILD_TYPE);
  benchmark::AddCustomContext("compiler", BENCH_COMPILER);
  benchmark::AddCustomContext("cpu_model", CpuModel());
  benchmark::AddCustomContext("kernel", Kernel());
  benchmark::AddCustomContext("arguments", arguments);
  benchmark::AddCustomContext("file_locks", BENCH_FILE_LOCKS);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  bench::RemoveInputs();
  return 0;
}
