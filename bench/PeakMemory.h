// PeakMemory.h - measures how much memory one load takes at its peak, in a
// fresh child process so that nothing the benchmark program holds or has
// freed counts.
//
//   RegisterPeakMemory("Ours", Format::kFlat, [](const std::string& path) {
//     auto table = std::make_shared<JavaProperties>();
//     return table->Load(path) ? std::shared_ptr<void>(table) : nullptr;
//   });
//
// registers BM_PeakMemory_Ours_Flat/100000. Each run forks; the child
// executes this program again (a forked copy would reuse the heap pages the
// parent freed, which a load then fills without raising the resident set
// size), which resets its peak resident set size (VmHWM), loads the largest
// input, and reports through a pipe how far the load raised VmHWM. Counters:
// peak_kB (that rise) and file_kB (the size of the file). One iteration per
// repetition.

#ifndef BENCH_PEAKMEMORY_H_
#define BENCH_PEAKMEMORY_H_

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "BenchmarkInputs.h"

namespace bench {

// Loads the file at path and returns what it loaded (kept alive until the
// peak has been read), or null on failure.
typedef std::function<std::shared_ptr<void>(const std::string& path)> Loader;

// Registers BM_PeakMemory_<impl>_<Flat|Ini>/<n> for each n of sizes
// (default: the largest input) and makes load known to the child process
// under that name. With onCopy, load gets a fresh copy of the input (for
// loaders that write the file) instead of the input itself.
void RegisterPeakMemory(const std::string& impl, Format format, Loader load,
                        const std::vector<int>& sizes = {kLargestSize},
                        bool onCopy = false);

// If argv is the command line of a measuring child, measures and returns
// true with the exit code in *exitCode; returns false otherwise. Call at the
// start of main(), after every RegisterPeakMemory() call.
bool RunPeakMemoryChild(int argc, char** argv, int* exitCode);

}  // namespace bench

#endif  // BENCH_PEAKMEMORY_H_
