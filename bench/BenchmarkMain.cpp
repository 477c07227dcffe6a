// BenchmarkMain.cpp - the benchmark program: writes the inputs, registers
// every benchmark and runs the ones the command line selects (Google
// Benchmark's flags, e.g. --benchmark_filter=Load --benchmark_min_time=0.01).
// Started by itself with --peak-memory-child=..., it only measures one load
// (see PeakMemory.h).

#include <benchmark/benchmark.h>

#include "BenchmarkInputs.h"
#include "BenchmarkRegistry.h"
#include "PeakMemory.h"

int main(int argc, char** argv) {
  bench::RegisterReadWriteBenchmarks();
  bench::RegisterPeerBenchmarks();
  bench::RegisterManagerBenchmarks();
  bench::RegisterMemoryBenchmarks();
  bench::RegisterPeerMemoryBenchmarks();
  int exitCode = 0;
  if (bench::RunPeakMemoryChild(argc, argv, &exitCode)) return exitCode;

  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  if (!bench::CreateInputs()) return 1;
  benchmark::AddCustomContext("peers", bench::PeerNames());
  benchmark::AddCustomContext("properties_build_type", BENCH_BUILD_TYPE);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  bench::RemoveInputs();
  return 0;
}
