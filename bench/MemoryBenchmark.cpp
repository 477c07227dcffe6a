// MemoryBenchmark.cpp - peak memory of loading the largest input: the floor
// (the file's text in one string), the straightforward reader's map, and
// the library's JavaProperties (flat) and IniProperties (INI); and, at every
// size, of a bound manager (OursBound): bound read-write to a copy of the
// file, one property registered (a key the file lacks, so the file is
// rewritten) and set once (rewritten again).

#include <memory>
#include <string>

#include "Baselines.h"
#include "BenchmarkInputs.h"
#include "BenchmarkRegistry.h"
#include "BoundManagers.h"
#include "IniProperties.h"
#include "IntegerProperty.h"
#include "JavaProperties.h"
#include "PeakMemory.h"

namespace bench {

namespace {

template <typename Manager>
std::shared_ptr<void> BoundManager(const std::string& path) {
  static const char kSection[] = "bench";
  static const char kKey[] = "bench.peak.memory";
  auto manager = std::make_shared<Manager>();
  manager->Bind(path);
  manager->Register(IntegerProperty::kTypeName, kSection, kKey);
  manager->Set(kSection, kKey, "42");
  return manager->Get(kSection, kKey) == "42" ? std::shared_ptr<void>(manager)
                                              : nullptr;
}

}  // namespace

void RegisterMemoryBenchmarks() {
  RegisterPeakMemory("Floor", Format::kFlat, [](const std::string& path) {
    auto text = std::make_shared<std::string>();
    return FloorRead(path, text.get()) < 0 ? nullptr
                                           : std::shared_ptr<void>(text);
  });
  RegisterPeakMemory("Plain", Format::kFlat, [](const std::string& path) {
    auto entries = std::make_shared<FlatMap>();
    return PlainReadFlat(path, entries.get()) ? std::shared_ptr<void>(entries)
                                              : nullptr;
  });
  RegisterPeakMemory("Ours", Format::kFlat, [](const std::string& path) {
    auto table = std::make_shared<JavaProperties>();
    return table->Load(path) ? std::shared_ptr<void>(table) : nullptr;
  });
  RegisterPeakMemory("Ours", Format::kIni, [](const std::string& path) {
    auto table = std::make_shared<IniProperties>();
    return table->Load(path) ? std::shared_ptr<void>(table) : nullptr;
  });
  const std::vector<int> sizes(kSizes, kSizes + 4);
  RegisterPeakMemory("OursBound", Format::kFlat, BoundManager<FlatManager>,
                     sizes, true);
  RegisterPeakMemory("OursBound", Format::kIni, BoundManager<IniManager>, sizes,
                     true);
}

}  // namespace bench
