// BenchmarkRegistry.h - the functions that register each group of
// benchmarks, called once by main() after the inputs exist. Benchmarks run
// in the order they are registered.

#ifndef BENCH_BENCHMARKREGISTRY_H_
#define BENCH_BENCHMARKREGISTRY_H_

#include <string>

namespace bench {

// Floor, straightforward baselines and the library: whole-file loads and
// stores (ReadWriteBenchmark.cpp).
void RegisterReadWriteBenchmarks();
// The other libraries that are installed (PeerBenchmark.cpp): loads and
// stores, and the peak memory of their largest load.
void RegisterPeerBenchmarks();
void RegisterPeerMemoryBenchmarks();
// The names of the other libraries compiled in, comma-separated.
std::string PeerNames();
// Registering bound properties and setting values through a bound manager
// (ManagerBenchmark.cpp).
void RegisterManagerBenchmarks();
// Peak memory of the largest load, for the floor, the baseline and the
// library (MemoryBenchmark.cpp).
void RegisterMemoryBenchmarks();

}  // namespace bench

#endif  // BENCH_BENCHMARKREGISTRY_H_
