// ManagerBenchmark.cpp - what a program pays end to end through a manager
// bound read-write to a file, flat (JavaPropertyManager) and INI
// (IniPropertyManager), and the floors of the same file accesses:
//   BM_Ours_SetValue_<F>/<entries>  one SetValue through a manager bound to
//       a file of that many entries, alternating two values (each set
//       rewrites the file).
//   BM_Floor_SetValue_<F>/<entries>  one read() of that file plus one
//       in-place rewrite of the same bytes (O_TRUNC and one write()).
//   BM_Plain_SetValue_Flat/<entries>  the same change done by the
//       straightforward reader and the per-line-flush writer: read the whole
//       file into a map, set the value, write every line back.
//   BM_Ours_RegisterBound_<F>/<entries>  a fresh manager bound to a fresh
//       copy of the file of that many entries, then 1000 properties
//       registered whose keys are in the file (each takes its stored value);
//       one iteration is all 1000.
//   BM_Floor_RegisterBound_<F>/<entries>  the file accesses a registration
//       makes, 1000 times: two whole reads and one in-place rewrite.
//   BM_Locks_SetValue_<F>/<entries>  SetValue timed in child processes
//       (SetValueChild.h) of the library as built (file locks on by
//       default) and of the library built without file locks, in turns;
//       the time is the first's, the counter without_locks_us the second's.

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "Baselines.h"
#include "BenchmarkInputs.h"
#include "BenchmarkRegistry.h"
#include "BoundManagers.h"
#include "DoubleProperty.h"
#include "IntegerProperty.h"
#include "SetValueChild.h"
#include "StringProperty.h"

namespace bench {

namespace {

// How many properties the registration benchmarks register.
const size_t kRegistrations = 1000;
// The files they bind.
const int kRegisterFileSizes[] = {1000, 10000};
// The two values SetValue alternates between.
const char* const kValues[2] = {"8081", "8082"};
// The rounds of SetValue children per build of the library, and how long
// each child sets values, in seconds.
const int kLockRounds = 5;
const double kRoundSeconds = 0.05;
// The sizes the file lock's share of a SetValue is measured at.
const int kLockSizes[] = {50, 1000, 10000};

const char* Suffix(Format format) {
  return format == Format::kFlat ? "Flat" : "Ini";
}

std::string Name(const char* impl, const char* what, Format format) {
  return std::string("BM_") + impl + "_" + what + "_" + Suffix(format);
}

std::string Scratch(const char* impl, const char* what,
                    const InputFile& input) {
  return ScratchPath(std::string(impl) + "-" + what + "-" +
                     Suffix(input.format) + "-" +
                     std::to_string(input.entries.size()));
}

template <Format kFormat>
struct ManagerOf {
  typedef FlatManager Type;
};
template <>
struct ManagerOf<Format::kIni> {
  typedef IniManager Type;
};

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

template <typename Manager>
void RegisterAll(Manager* manager, const std::vector<const Entry*>& entries) {
  for (const Entry* entry : entries) {
    manager->Register(TypeOf(*entry), entry->section, entry->key);
  }
}

// True if every property holds the value the file stores for its key.
template <typename Manager>
bool TookStoredValues(const Manager& manager,
                      const std::vector<const Entry*>& entries) {
  for (const Entry* entry : entries) {
    const std::string value = manager.Get(entry->section, entry->key);
    const bool same = entry->kind == Entry::kDecimal
                          ? std::strtod(value.c_str(), nullptr) ==
                                std::strtod(entry->value.c_str(), nullptr)
                          : value == entry->value;
    if (!same) return false;
  }
  return true;
}

template <Format kFormat>
void OursRegisterBound(benchmark::State& state) {
  typedef typename ManagerOf<kFormat>::Type Manager;
  const InputFile& input = Input(kFormat, static_cast<int>(state.range(0)));
  const std::vector<const Entry*> entries = Spread(input, kRegistrations);
  const std::string path = Scratch("Ours", "RegisterBound", input);
  // The manager of one iteration is checked, then destroyed, untimed in the
  // next: a run is often a single iteration of seconds.
  std::unique_ptr<Manager> manager;
  for (auto _ : state) {
    state.PauseTiming();
    manager.reset();
    CopyFile(input.path, path);
    state.ResumeTiming();
    manager.reset(new Manager());
    manager->Bind(path);
    RegisterAll(manager.get(), entries);
  }
  if (!TookStoredValues(*manager, entries)) {
    state.SkipWithError("a registered property did not take its value");
    return;
  }
  SetCounters(state, input.text.size(), entries.size());
}

template <Format kFormat>
void FloorRegisterBound(benchmark::State& state) {
  const InputFile& input = Input(kFormat, static_cast<int>(state.range(0)));
  const std::string path = Scratch("Floor", "RegisterBound", input);
  std::string buffer;
  for (auto _ : state) {
    state.PauseTiming();
    CopyFile(input.path, path);
    state.ResumeTiming();
    for (size_t i = 0; i < kRegistrations; ++i) {
      FloorRead(path, &buffer);
      FloorRead(path, &buffer);
      benchmark::DoNotOptimize(FloorWrite(path, buffer));
    }
  }
  if (ReadFile(path) != input.text) {
    state.SkipWithError("the rewritten file differs from the input");
    return;
  }
  SetCounters(state, input.text.size(), kRegistrations);
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

template <Format kFormat>
void OursSetValue(benchmark::State& state) {
  const InputFile& input = Input(kFormat, static_cast<int>(state.range(0)));
  const Entry& entry = IntegerEntry(input);
  const std::string path = Scratch("Ours", "SetValue", input);
  CopyFile(input.path, path);
  typename ManagerOf<kFormat>::Type manager;
  manager.Bind(path);
  manager.Register(IntegerProperty::kTypeName, entry.section, entry.key);
  manager.Set(entry.section, entry.key, kValues[1]);
  if (!FileHolds(path, entry, kValues[1])) {
    state.SkipWithError("the set value did not reach the file");
    return;
  }
  size_t round = 0;
  for (auto _ : state) {
    manager.Set(entry.section, entry.key, kValues[round++ & 1]);
  }
  SetCounters(state, input.canonicalText.size(), 1);
}

// The file a bound SetValue reads and rewrites is the library's own text.
template <Format kFormat>
void FloorSetValue(benchmark::State& state) {
  const InputFile& input = Input(kFormat, static_cast<int>(state.range(0)));
  const std::string path = Scratch("Floor", "SetValue", input);
  std::string buffer;
  const auto set = [&] {
    return FloorRead(path, &buffer) >= 0 && FloorWrite(path, buffer);
  };
  if (!FloorWrite(path, input.canonicalText) || !set() ||
      ReadFile(path) != input.canonicalText) {
    state.SkipWithError("the rewritten file differs from the input");
    return;
  }
  for (auto _ : state) benchmark::DoNotOptimize(set());
  SetCounters(state, input.canonicalText.size(), 1);
}

void PlainSetValue(benchmark::State& state) {
  const InputFile& input =
      Input(Format::kFlat, static_cast<int>(state.range(0)));
  const Entry& entry = IntegerEntry(input);
  const std::string path = Scratch("Plain", "SetValue", input);
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

std::string NoLocksProgram() {
#ifdef BENCH_NO_LOCKS_PROGRAM
  return BENCH_NO_LOCKS_PROGRAM;
#else
  return std::string();
#endif
}

// Both children run in turns, each round short, and the fastest round of
// each counts: on a machine shared with other work a burst of it then
// slows one round, not one build.
void LockShare(benchmark::State& state, Format format) {
  const std::string withoutLocks = NoLocksProgram();
  if (withoutLocks.empty()) {
    state.SkipWithError("the library without file locks was not built");
    return;
  }
  const InputFile& input = Input(format, static_cast<int>(state.range(0)));
  const Entry& entry = IntegerEntry(input);
  const std::string path = Scratch("Locks", "SetValue", input);
  double fastest[2] = {-1, -1};  // With locks, without.
  for (auto _ : state) {
    for (int round = 0; round < kLockRounds; ++round) {
      for (int turn = 0; turn < 2; ++turn) {
        // Who goes first alternates, so neither always starts on a heap
        // or a page cache the other left.
        const int which = (round + turn) & 1;
        CopyFile(input.path, path);
        const double seconds =
            SetValueSecondsInChild(which == 0 ? "/proc/self/exe" : withoutLocks,
                                   format == Format::kIni, path, entry.section,
                                   entry.key, kRoundSeconds);
        if (seconds < 0) {
          state.SkipWithError("the SetValue child failed");
          return;
        }
        if (fastest[which] < 0 || seconds < fastest[which]) {
          fastest[which] = seconds;
        }
      }
    }
    state.SetIterationTime(fastest[0]);
  }
  state.counters["without_locks_us"] = fastest[1] * 1e6;
  SetCounters(state, input.canonicalText.size(), 1);
}

template <Format kFormat>
void RegisterFormat() {
  const Format f = kFormat;
  for (int size : kSizes) {
    benchmark::RegisterBenchmark(Name("Floor", "SetValue", f).c_str(),
                                 FloorSetValue<kFormat>)
        ->Arg(size)
        ->UseRealTime()
        ->Unit(benchmark::kMicrosecond);
    benchmark::RegisterBenchmark(Name("Ours", "SetValue", f).c_str(),
                                 OursSetValue<kFormat>)
        ->Arg(size)
        ->UseRealTime()
        ->Unit(benchmark::kMicrosecond);
  }
  for (int size : kRegisterFileSizes) {
    benchmark::RegisterBenchmark(Name("Floor", "RegisterBound", f).c_str(),
                                 FloorRegisterBound<kFormat>)
        ->Arg(size)
        ->UseRealTime()
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark(Name("Ours", "RegisterBound", f).c_str(),
                                 OursRegisterBound<kFormat>)
        ->Arg(size)
        ->UseRealTime()
        ->Unit(benchmark::kMillisecond);
  }
}

void RegisterLocks(Format format) {
  for (int size : kLockSizes) {
    benchmark::RegisterBenchmark(
        Name("Locks", "SetValue", format).c_str(),
        [format](benchmark::State& state) { LockShare(state, format); })
        ->Arg(size)
        ->Iterations(1)
        ->UseManualTime()
        ->Unit(benchmark::kMicrosecond);
  }
}

}  // namespace

void RegisterManagerBenchmarks() {
  RegisterFormat<Format::kFlat>();
  RegisterFormat<Format::kIni>();
  benchmark::RegisterBenchmark("BM_Plain_SetValue_Flat", PlainSetValue)
      ->Arg(50)
      ->Arg(1000)
      ->Arg(10000)
      ->UseRealTime()
      ->Unit(benchmark::kMicrosecond);
  RegisterLocks(Format::kFlat);
  RegisterLocks(Format::kIni);
}

}  // namespace bench
