// MemoryBenchmark.cpp - peak memory of loading the largest input: the floor
// (the file's text in one string), the straightforward reader's map, and
// the library's JavaProperties (flat) and IniProperties (INI).

#include <memory>
#include <string>

#include "Baselines.h"
#include "BenchmarkInputs.h"
#include "BenchmarkRegistry.h"
#include "IniProperties.h"
#include "JavaProperties.h"
#include "PeakMemory.h"

namespace bench {

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
}

}  // namespace bench
