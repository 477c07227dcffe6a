// ReadWriteBenchmark.cpp - loading and storing whole files: the floor, the
// straightforward baselines and the library's JavaProperties and
// IniProperties, for flat and INI inputs of every size.
//
// Names are BM_<Impl>_<Operation>_<Format>/<entries>, where Operation is
// LoadFile, LoadMemory (from an std::istringstream of the file's text),
// StoreFile or StoreMemory (to an std::ostringstream); BM_TableOnly_Build_*
// is the lower bound of a load (see there).

#include <benchmark/benchmark.h>

#include <sstream>
#include <string>

#include "Baselines.h"
#include "BenchmarkInputs.h"
#include "BenchmarkRegistry.h"
#include "IniProperties.h"
#include "JavaProperties.h"

namespace bench {

namespace {

const char kMisread[] = "the input read back differently than it was generated";
const char kMiswritten[] = "the written text differs from the library's";

const char* Suffix(Format format) {
  return format == Format::kFlat ? "Flat" : "Ini";
}

std::string Name(const char* impl, const char* operation, Format format) {
  return std::string("BM_") + impl + "_" + operation + "_" + Suffix(format);
}

std::string Scratch(const char* impl, const char* operation,
                    const InputFile& input) {
  return ScratchPath(std::string(impl) + "-" + operation + "-" +
                     Suffix(input.format) + "-" +
                     std::to_string(input.entries.size()));
}

// The table type of the library for format.
template <Format kFormat>
struct TableOf {
  typedef JavaProperties Type;
};
template <>
struct TableOf<Format::kIni> {
  typedef IniProperties Type;
};

// --- The floor ------------------------------------------------------------

template <Format kFormat>
void FloorLoadFile(benchmark::State& state) {
  const InputFile& input = Input(kFormat, static_cast<int>(state.range(0)));
  std::string buffer;
  if (FloorRead(input.path, &buffer) < 0 || buffer != input.text) {
    state.SkipWithError(kMisread);
    return;
  }
  for (auto _ : state) {
    benchmark::DoNotOptimize(FloorRead(input.path, &buffer));
  }
  SetCounters(state, input.text.size(), input.entries.size());
}

template <Format kFormat>
void FloorStoreFile(benchmark::State& state) {
  const InputFile& input = Input(kFormat, static_cast<int>(state.range(0)));
  const std::string path = Scratch("Floor", "StoreFile", input);
  for (auto _ : state) {
    benchmark::DoNotOptimize(FloorWrite(path, input.canonicalText));
  }
  if (ReadFile(path) != input.canonicalText) state.SkipWithError(kMiswritten);
  SetCounters(state, input.canonicalText.size(), input.entries.size());
}

// --- The straightforward baselines ----------------------------------------

bool PlainRead(const InputFile& input, FlatMap* entries) {
  return PlainReadFlat(input.path, entries);
}
bool PlainRead(const InputFile& input, SectionMap* sections) {
  return PlainReadIni(input.path, sections);
}
bool PlainWrite(const std::string& path, const FlatMap& entries) {
  return PlainWriteFlat(path, kHeader, entries);
}
bool PlainWrite(const std::string& path, const SectionMap& sections) {
  return PlainWriteIni(path, kHeader, sections);
}

// The table that reading input must give.
template <typename Map>
Map Expected(const InputFile& input) {
  Map map;
  FillMap(input, &map);
  return map;
}

template <Format kFormat, typename Map>
void PlainLoadFile(benchmark::State& state) {
  const InputFile& input = Input(kFormat, static_cast<int>(state.range(0)));
  Map check;
  if (!PlainRead(input, &check) || check != Expected<Map>(input)) {
    state.SkipWithError(kMisread);
    return;
  }
  for (auto _ : state) {
    Map map;
    benchmark::DoNotOptimize(PlainRead(input, &map));
  }
  SetCounters(state, input.text.size(), input.entries.size());
}

template <Format kFormat, typename Map>
void PlainStoreFile(benchmark::State& state) {
  const InputFile& input = Input(kFormat, static_cast<int>(state.range(0)));
  Map map;
  FillMap(input, &map);
  const std::string path = Scratch("Plain", "StoreFile", input);
  for (auto _ : state) {
    benchmark::DoNotOptimize(PlainWrite(path, map));
  }
  if (ReadFile(path) != input.canonicalText) state.SkipWithError(kMiswritten);
  SetCounters(state, input.canonicalText.size(), input.entries.size());
}

// --- The table alone ------------------------------------------------------
// Building and freeing the std::map that the library's tables are, from
// fields already split, in key order and hinted: what any reader into such a
// table pays on top of reading the file, so floor + this bounds every load.

void BuildTable(const InputFile& input, FlatMap* entries) {
  for (const Entry& entry : input.entries) {
    entries->emplace_hint(entries->end(), entry.key, entry.value);
  }
}

void BuildTable(const InputFile& input, SectionMap* sections) {
  SectionMap::iterator section = sections->end();
  for (const Entry& entry : input.entries) {
    if (section == sections->end() || section->first != entry.section) {
      section =
          sections->emplace_hint(sections->end(), entry.section, FlatMap());
    }
    section->second.emplace_hint(section->second.end(), entry.key, entry.value);
  }
}

template <Format kFormat, typename Map>
void TableOnlyBuild(benchmark::State& state) {
  const InputFile& input = Input(kFormat, static_cast<int>(state.range(0)));
  Map check;
  BuildTable(input, &check);
  if (check != Expected<Map>(input)) {
    state.SkipWithError(kMisread);
    return;
  }
  for (auto _ : state) {
    Map map;
    BuildTable(input, &map);
    benchmark::DoNotOptimize(map);
  }
  SetCounters(state, input.text.size(), input.entries.size());
}

// --- The library ----------------------------------------------------------

template <Format kFormat>
bool LoadsAsGenerated(const InputFile& input) {
  typename TableOf<kFormat>::Type table;
  return table.Load(input.path) && table.ToText(kHeader) == input.canonicalText;
}

template <Format kFormat>
void OursLoadFile(benchmark::State& state) {
  const InputFile& input = Input(kFormat, static_cast<int>(state.range(0)));
  if (!LoadsAsGenerated<kFormat>(input)) {
    state.SkipWithError(kMisread);
    return;
  }
  for (auto _ : state) {
    typename TableOf<kFormat>::Type table;
    benchmark::DoNotOptimize(table.Load(input.path));
  }
  SetCounters(state, input.text.size(), input.entries.size());
}

template <Format kFormat>
void OursLoadMemory(benchmark::State& state) {
  const InputFile& input = Input(kFormat, static_cast<int>(state.range(0)));
  if (!LoadsAsGenerated<kFormat>(input)) {
    state.SkipWithError(kMisread);
    return;
  }
  std::istringstream in(input.text);
  for (auto _ : state) {
    in.clear();
    in.seekg(0);
    typename TableOf<kFormat>::Type table;
    benchmark::DoNotOptimize(table.Load(in));
  }
  SetCounters(state, input.text.size(), input.entries.size());
}

template <Format kFormat>
void OursStoreFile(benchmark::State& state) {
  const InputFile& input = Input(kFormat, static_cast<int>(state.range(0)));
  typename TableOf<kFormat>::Type table;
  table.Load(input.path);
  const std::string path = Scratch("Ours", "StoreFile", input);
  for (auto _ : state) {
    benchmark::DoNotOptimize(table.Store(path, kHeader));
  }
  if (ReadFile(path) != input.canonicalText) state.SkipWithError(kMiswritten);
  SetCounters(state, input.canonicalText.size(), input.entries.size());
}

template <Format kFormat>
void OursStoreMemory(benchmark::State& state) {
  const InputFile& input = Input(kFormat, static_cast<int>(state.range(0)));
  typename TableOf<kFormat>::Type table;
  table.Load(input.path);
  std::ostringstream check;
  if (!table.Store(check, kHeader) || check.str() != input.canonicalText) {
    state.SkipWithError(kMiswritten);
    return;
  }
  for (auto _ : state) {
    std::ostringstream out;
    benchmark::DoNotOptimize(table.Store(out, kHeader));
  }
  SetCounters(state, input.canonicalText.size(), input.entries.size());
}

template <Format kFormat, typename Map>
void RegisterFormat() {
  const Format f = kFormat;
  benchmark::RegisterBenchmark(Name("Floor", "LoadFile", f).c_str(),
                               FloorLoadFile<kFormat>)
      ->Apply(AllSizes);
  benchmark::RegisterBenchmark(Name("Plain", "LoadFile", f).c_str(),
                               PlainLoadFile<kFormat, Map>)
      ->Apply(AllSizes);
  benchmark::RegisterBenchmark(Name("TableOnly", "Build", f).c_str(),
                               TableOnlyBuild<kFormat, Map>)
      ->Apply(AllSizes);
  benchmark::RegisterBenchmark(Name("Ours", "LoadFile", f).c_str(),
                               OursLoadFile<kFormat>)
      ->Apply(AllSizes);
  benchmark::RegisterBenchmark(Name("Ours", "LoadMemory", f).c_str(),
                               OursLoadMemory<kFormat>)
      ->Apply(AllSizes);
  benchmark::RegisterBenchmark(Name("Floor", "StoreFile", f).c_str(),
                               FloorStoreFile<kFormat>)
      ->Apply(AllSizes);
  benchmark::RegisterBenchmark(Name("Plain", "StoreFile", f).c_str(),
                               PlainStoreFile<kFormat, Map>)
      ->Apply(AllSizes);
  benchmark::RegisterBenchmark(Name("Ours", "StoreFile", f).c_str(),
                               OursStoreFile<kFormat>)
      ->Apply(AllSizes);
  benchmark::RegisterBenchmark(Name("Ours", "StoreMemory", f).c_str(),
                               OursStoreMemory<kFormat>)
      ->Apply(AllSizes);
}

}  // namespace

void RegisterReadWriteBenchmarks() {
  RegisterFormat<Format::kFlat, FlatMap>();
  RegisterFormat<Format::kIni, SectionMap>();
}

}  // namespace bench
