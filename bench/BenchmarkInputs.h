// BenchmarkInputs.h - the generated property files that every benchmark
// reads, and the scratch directory they live in.
//
// CreateInputs() writes, in a new directory under /dev/shm (or /tmp when
// /dev/shm is not writable), one flat and one INI file for each of kSizes:
// realistic dotted keys (8-30 characters) and values (numbers, words, paths,
// host names; 5-60 characters), sorted as the library writes them, with a
// comment or a blank line as every 10th line. Beside each, a hand-written
// file holds the same entries the way people write them: a block of
// comments at the top, keys in no order (INI: sections in no order, keys in
// no order within them), blanks around '=' and at either end of some lines,
// tabs, comment lines and blank lines between groups of entries. The text is
// the same on every run: each file comes from its own fixed seed.
// RemoveInputs() deletes the directory and everything written into it; it
// is also called at exit.
//
//   if (!bench::CreateInputs()) return 1;
//   const bench::InputFile& input = bench::Input(bench::Format::kFlat, 1000);
//   JavaProperties properties;
//   properties.Load(input.path);

#ifndef BENCH_BENCHMARKINPUTS_H_
#define BENCH_BENCHMARKINPUTS_H_

#include <benchmark/benchmark.h>

#include <cstddef>
#include <string>
#include <vector>

namespace bench {

enum class Format { kFlat, kIni };

// The entry counts every load and store benchmark runs at: a typical
// configuration, then 1k, 10k and 100k entries.
extern const int kSizes[4];
// The size the peak-memory benchmarks load.
const int kLargestSize = 100000;

// The header line text the library writes ("#bench settings" in flat files,
// ";bench settings" in INI files).
extern const char kHeader[];

// One generated entry.
struct Entry {
  enum Kind { kInteger, kDecimal, kText };
  std::string section;  // Empty in flat files.
  std::string key;
  std::string value;
  Kind kind;
};

// One generated file.
struct InputFile {
  Format format;
  std::string path;            // Inside the scratch directory.
  std::string text;            // The content of the file.
  std::vector<Entry> entries;  // In file order: sorted, except hand-written.
  std::string canonicalText;   // What the library's Store writes for it.
  size_t sectionCount;         // 0 in flat files.
  bool handWritten;            // Unsorted, with blanks and comments.
};

// Creates the scratch directory and writes every input file into it.
// Returns false, after a message on stderr, if that fails. Call once.
bool CreateInputs();
// Removes the scratch directory and every file in it. Harmless if there is
// none or it is gone already.
void RemoveInputs();

// The input of format with entries entries. REQUIRES: CreateInputs()
// succeeded and entries is one of kSizes.
const InputFile& Input(Format format, int entries);
// The hand-written file of format with the same entries as Input(format,
// entries), so the same canonicalText. REQUIRES: as Input().
const InputFile& HandInput(Format format, int entries);
// A path inside the scratch directory for a file a benchmark writes.
std::string ScratchPath(const std::string& name);
// Copies the file at from to to (replacing it). Returns false on failure.
bool CopyFile(const std::string& from, const std::string& to);
// The content of the file at path; empty if it cannot be read.
std::string ReadFile(const std::string& path);

// Registers one run per size of kSizes, timed in wall-clock time (the work
// includes file system calls) and shown in microseconds.
void AllSizes(benchmark::internal::Benchmark* benchmark);
// Credits each iteration with bytes bytes and entries items.
void SetCounters(benchmark::State& state, size_t bytes, size_t entries);

}  // namespace bench

#endif  // BENCH_BENCHMARKINPUTS_H_
