// ManagerBenchmark.cpp - what a program pays end to end through a
// JavaPropertyManager bound read-write to a file:
//   BM_Ours_RegisterBound_Flat/<N>  a fresh manager bound to a fresh copy of
//       the 1k-entry file, then N properties registered whose keys are in
//       the file (each takes its stored value); one iteration is all N.
//   BM_Ours_SetValue_Flat/<entries>  one SetValue through a manager bound to
//       a file of that many entries, alternating two values (each set
//       rewrites the file).
//   BM_Plain_SetValue_Flat/<entries>  the same change done by the
//       straightforward reader and the per-line-flush writer: read the whole
//       file into a map, set the value, write every line back.

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "Baselines.h"
#include "BenchmarkInputs.h"
#include "BenchmarkRegistry.h"
#include "BooleanProperty.h"
#include "DoubleProperty.h"
#include "IntegerProperty.h"
#include "IpAddrProperty.h"
#include "JavaPropertyFactory.h"
#include "JavaPropertyManager.h"
#include "ListProperty.h"
#include "Properties.h"
#include "StringProperty.h"

namespace bench {

namespace {

const char kManagerName[] = "bench";
// The file the registration benchmarks bind.
const int kRegisterFileSize = 1000;
// The two values SetValue alternates between.
const char* const kValues[2] = {"8081", "8082"};

// A factory filled the way the library fills its own, so that each manager
// can be made directly and start clean.
JavaPropertyFactory* Factory() {
  static JavaPropertyFactory* factory = [] {
    JavaPropertyFactory* made = new JavaPropertyFactory();
    made->AddCreator(IntegerProperty::kTypeName, JCreateIntegerProperty);
    made->AddCreator(DoubleProperty::kTypeName, JCreateDoubleProperty);
    made->AddCreator(BooleanProperty::kTypeName, JCreateBooleanProperty);
    made->AddCreator(StringProperty::kTypeName, JCreateStringProperty);
    made->AddCreator(ListProperty::kTypeName, JCreateListProperty);
    made->AddCreator(IpAddrProperty::kTypeName, JCreateIpAddrProperty);
    return made;
  }();
  return factory;
}

const char* TypeOf(const Entry& entry) {
  switch (entry.kind) {
    case Entry::kInteger:
      return IntegerProperty::kTypeName;
    case Entry::kDecimal:
      return DoubleProperty::kTypeName;
    case Entry::kText:
      break;
  }
  return StringProperty::kTypeName;
}

// count entries spread evenly over input.
std::vector<const Entry*> Spread(const InputFile& input, size_t count) {
  std::vector<const Entry*> chosen;
  for (size_t i = 0; i < count; ++i) {
    chosen.push_back(&input.entries[i * input.entries.size() / count]);
  }
  return chosen;
}

void RegisterAll(JavaPropertyManager* manager,
                 const std::vector<const Entry*>& entries) {
  for (const Entry* entry : entries) {
    manager->RegisterProperty(TypeOf(*entry), entry->key, "0");
  }
}

// True if every property holds the value the file stores for its key.
bool TookStoredValues(const JavaPropertyManager& manager,
                      const std::vector<const Entry*>& entries) {
  for (const Entry* entry : entries) {
    const std::string value = manager.GetValue(entry->key);
    const bool same = entry->kind == Entry::kDecimal
                          ? std::strtod(value.c_str(), nullptr) ==
                                std::strtod(entry->value.c_str(), nullptr)
                          : value == entry->value;
    if (!same) return false;
  }
  return true;
}

void OursRegisterBound(benchmark::State& state) {
  const InputFile& input = Input(Format::kFlat, kRegisterFileSize);
  const std::vector<const Entry*> entries =
      Spread(input, static_cast<size_t>(state.range(0)));
  const std::string path =
      ScratchPath("Ours-RegisterBound-" + std::to_string(entries.size()));
  {
    CopyFile(input.path, path);
    JavaPropertyManager manager(kManagerName, Factory());
    manager.RegisterPersistence(path, kHeader);
    RegisterAll(&manager, entries);
    if (!TookStoredValues(manager, entries)) {
      state.SkipWithError("a registered property did not take its value");
      return;
    }
  }
  for (auto _ : state) {
    state.PauseTiming();
    CopyFile(input.path, path);
    state.ResumeTiming();
    JavaPropertyManager manager(kManagerName, Factory());
    manager.RegisterPersistence(path, kHeader);
    RegisterAll(&manager, entries);
  }
  SetCounters(state, input.text.size(), entries.size());
}

// The first entry with an integer value in the middle of input.
const Entry& IntegerEntry(const InputFile& input) {
  for (size_t i = input.entries.size() / 2; i < input.entries.size(); ++i) {
    if (input.entries[i].kind == Entry::kInteger) return input.entries[i];
  }
  return input.entries.front();
}

bool FileHolds(const std::string& path, const Entry& entry, const char* value) {
  return ReadFile(path).find("\n" + entry.key + "=" + value + "\n") !=
         std::string::npos;
}

void OursSetValue(benchmark::State& state) {
  const InputFile& input =
      Input(Format::kFlat, static_cast<int>(state.range(0)));
  const Entry& entry = IntegerEntry(input);
  const std::string path =
      ScratchPath("Ours-SetValue-" + std::to_string(input.entries.size()));
  CopyFile(input.path, path);
  JavaPropertyManager manager(kManagerName, Factory());
  manager.RegisterPersistence(path, kHeader);
  manager.RegisterProperty(IntegerProperty::kTypeName, entry.key, "0");
  manager.SetValue(entry.key, kValues[1]);
  if (!FileHolds(path, entry, kValues[1])) {
    state.SkipWithError("the set value did not reach the file");
    return;
  }
  size_t round = 0;
  for (auto _ : state) manager.SetValue(entry.key, kValues[round++ & 1]);
  SetCounters(state, input.text.size(), 1);
}

void PlainSetValue(benchmark::State& state) {
  const InputFile& input =
      Input(Format::kFlat, static_cast<int>(state.range(0)));
  const Entry& entry = IntegerEntry(input);
  const std::string path =
      ScratchPath("Plain-SetValue-" + std::to_string(input.entries.size()));
  CopyFile(input.path, path);
  size_t round = 1;
  const auto set = [&] {
    FlatMap entries;
    PlainReadFlat(path, &entries);
    entries[entry.key] = kValues[round++ & 1];
    return PlainWriteFlat(path, kHeader, entries);
  };
  if (!set() || !FileHolds(path, entry, kValues[1])) {
    state.SkipWithError("the set value did not reach the file");
    return;
  }
  for (auto _ : state) benchmark::DoNotOptimize(set());
  SetCounters(state, input.text.size(), 1);
}

}  // namespace

void RegisterManagerBenchmarks() {
  benchmark::RegisterBenchmark("BM_Ours_RegisterBound_Flat", OursRegisterBound)
      ->Arg(100)
      ->Arg(1000)
      ->UseRealTime()
      ->Unit(benchmark::kMicrosecond);
  for (auto* run :
       {benchmark::RegisterBenchmark("BM_Ours_SetValue_Flat", OursSetValue),
        benchmark::RegisterBenchmark("BM_Plain_SetValue_Flat",
                                     PlainSetValue)}) {
    run->Arg(50)->Arg(1000)->Arg(10000)->UseRealTime()->Unit(
        benchmark::kMicrosecond);
  }
}

}  // namespace bench
