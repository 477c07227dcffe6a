// ReadWriteBenchmark.cpp - loading and storing whole files: the floor, the
// straightforward baselines and the library's JavaProperties and
// IniProperties, for flat and INI inputs of every size.
//
// Names are BM_<Impl>_<Operation>_<Format>/<entries>, where Operation is
// LoadFile, LoadHandWritten (the hand-written file of the same entries),
// LoadMemory (from an std::istringstream of the file's text), StoreFile or
// StoreMemory (to an std::ostringstream). BM_Bound*_Load* are the lower
// bounds of the loads (see there).

#include <benchmark/benchmark.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

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

// The generated input of the size, the hand-written one if kHand.
template <Format kFormat, bool kHand>
const InputFile& InputOf(const benchmark::State& state) {
  const int size = static_cast<int>(state.range(0));
  return kHand ? HandInput(kFormat, size) : Input(kFormat, size);
}

template <Format kFormat, typename Map, bool kHand>
void PlainLoadFile(benchmark::State& state) {
  const InputFile& input = InputOf<kFormat, kHand>(state);
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

// --- The lower bound of a load -------------------------------------------
// One read() of the file, then building and freeing the std::map tables the
// library's loads end in, from fields already split: what any reader into
// such tables pays at least. Three ways of building them:
//   Bound           in file order, each entry hinted at the end: the cheapest
//                   for a file in key order (every file the library wrote).
//   BoundFileOrder  in file order, unhinted: for a file in no order.
//   BoundSorted     the fields sorted by section and key first (the sort is
//                   timed), then hinted at the end.
// For a hand-written file the bound is the smaller of the last two.

typedef std::vector<const Entry*> Fields;

Fields InFileOrder(const InputFile& input) {
  Fields fields;
  fields.reserve(input.entries.size());
  for (const Entry& entry : input.entries) fields.push_back(&entry);
  return fields;
}

void SortFields(Fields* fields) {
  std::sort(fields->begin(), fields->end(),
            [](const Entry* left, const Entry* right) {
              const int section = left->section.compare(right->section);
              return section != 0 ? section < 0 : left->key < right->key;
            });
}

void BuildTable(const Fields& fields, bool hinted, FlatMap* entries) {
  for (const Entry* entry : fields) {
    if (hinted) {
      entries->emplace_hint(entries->end(), entry->key, entry->value);
    } else {
      entries->emplace(entry->key, entry->value);
    }
  }
}

// A section is looked up when it changes, as readers do; each occurs once.
void BuildTable(const Fields& fields, bool hinted, SectionMap* sections) {
  SectionMap::iterator section = sections->end();
  for (const Entry* entry : fields) {
    if (section == sections->end() || section->first != entry->section) {
      section = hinted ? sections->emplace_hint(sections->end(), entry->section,
                                                FlatMap())
                       : sections->emplace(entry->section, FlatMap()).first;
    }
    FlatMap& entries = section->second;
    if (hinted) {
      entries.emplace_hint(entries.end(), entry->key, entry->value);
    } else {
      entries.emplace(entry->key, entry->value);
    }
  }
}

enum class BoundWay { kFileOrderHinted, kFileOrder, kSorted };

template <typename Map>
bool BoundLoad(const InputFile& input, const Fields& fileOrder, BoundWay way,
               std::string* buffer, Map* map) {
  if (FloorRead(input.path, buffer) < 0) return false;
  if (way == BoundWay::kSorted) {
    Fields sorted = fileOrder;
    SortFields(&sorted);
    BuildTable(sorted, true, map);
  } else {
    BuildTable(fileOrder, way == BoundWay::kFileOrderHinted, map);
  }
  return true;
}

template <Format kFormat, typename Map, bool kHand, BoundWay kWay>
void BoundLoadFile(benchmark::State& state) {
  const InputFile& input = InputOf<kFormat, kHand>(state);
  const Fields fields = InFileOrder(input);
  std::string buffer;
  Map check;
  if (!BoundLoad(input, fields, kWay, &buffer, &check) ||
      check != Expected<Map>(input)) {
    state.SkipWithError(kMisread);
    return;
  }
  for (auto _ : state) {
    Map map;
    benchmark::DoNotOptimize(BoundLoad(input, fields, kWay, &buffer, &map));
  }
  SetCounters(state, input.text.size(), input.entries.size());
}

// --- The library ----------------------------------------------------------

template <Format kFormat>
bool LoadsAsGenerated(const InputFile& input) {
  typename TableOf<kFormat>::Type table;
  return table.Load(input.path) && table.ToText(kHeader) == input.canonicalText;
}

template <Format kFormat, bool kHand>
void OursLoadFile(benchmark::State& state) {
  const InputFile& input = InputOf<kFormat, kHand>(state);
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
                               PlainLoadFile<kFormat, Map, false>)
      ->Apply(AllSizes);
  benchmark::RegisterBenchmark(
      Name("Bound", "LoadFile", f).c_str(),
      BoundLoadFile<kFormat, Map, false, BoundWay::kFileOrderHinted>)
      ->Apply(AllSizes);
  benchmark::RegisterBenchmark(Name("Ours", "LoadFile", f).c_str(),
                               OursLoadFile<kFormat, false>)
      ->Apply(AllSizes);
  benchmark::RegisterBenchmark(
      Name("BoundFileOrder", "LoadHandWritten", f).c_str(),
      BoundLoadFile<kFormat, Map, true, BoundWay::kFileOrder>)
      ->Apply(AllSizes);
  benchmark::RegisterBenchmark(
      Name("BoundSorted", "LoadHandWritten", f).c_str(),
      BoundLoadFile<kFormat, Map, true, BoundWay::kSorted>)
      ->Apply(AllSizes);
  benchmark::RegisterBenchmark(Name("Plain", "LoadHandWritten", f).c_str(),
                               PlainLoadFile<kFormat, Map, true>)
      ->Apply(AllSizes);
  benchmark::RegisterBenchmark(Name("Ours", "LoadHandWritten", f).c_str(),
                               OursLoadFile<kFormat, true>)
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
