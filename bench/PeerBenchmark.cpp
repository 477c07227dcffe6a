// PeerBenchmark.cpp - the same loads and stores done by other libraries
// that read INI-style files, each parsing into its own in-memory structure:
//   Inih       inih's ini_parse / ini_parse_string, with a handler that
//              stores into std::map (flat) or a map of section to map (INI)
//   SimpleIni  CSimpleIniA LoadFile / SaveFile
//   Boost      boost::property_tree::ini_parser read_ini / write_ini
//   GKeyFile   GLib's g_key_file_load_from_file / g_key_file_to_data and
//              one write(); INI inputs only, as it requires a group
// Each is compiled in only if CMake found it (BENCH_HAVE_<NAME>). Names
// follow ReadWriteBenchmark.cpp: BM_<Peer>_<Operation>_<Format>/<entries>.

#include <benchmark/benchmark.h>

#include <memory>
#include <string>

#include "Baselines.h"
#include "BenchmarkInputs.h"
#include "BenchmarkRegistry.h"
#include "PeakMemory.h"

#ifdef BENCH_HAVE_INIH
#include <ini.h>
#endif
#ifdef BENCH_HAVE_SIMPLEINI
// Only the char flavour is used; it needs no conversion library. Debian's
// header keeps the template bodies behind SI_IMPLEMENTATION (its shared
// library holds a build of them); upstream's has them always. Either way
// they are compiled here, with the same flags as everything else.
#define SI_NO_CONVERSION
#define SI_IMPLEMENTATION
#include <SimpleIni.h>
#endif
#ifdef BENCH_HAVE_BOOST
#include <boost/property_tree/ini_parser.hpp>
#include <boost/property_tree/ptree.hpp>
#endif
#ifdef BENCH_HAVE_GLIB
#include <glib.h>
#endif

namespace bench {

namespace {

// The helpers below serve whichever peers are compiled in; with none of
// them, nothing uses them.
[[maybe_unused]] const char kMisread[] =
    "the input read back differently than it was generated";
[[maybe_unused]] const char kNotWritten[] = "the file could not be written";

[[maybe_unused]] const char* Suffix(Format format) {
  return format == Format::kFlat ? "Flat" : "Ini";
}

[[maybe_unused]] std::string Name(const char* peer, const char* operation,
                                  Format format) {
  return std::string("BM_") + peer + "_" + operation + "_" + Suffix(format);
}

[[maybe_unused]] std::string Scratch(const char* peer, const InputFile& input) {
  return ScratchPath(std::string(peer) + "-StoreFile-" + Suffix(input.format) +
                     "-" + std::to_string(input.entries.size()));
}

[[maybe_unused]] const InputFile& InputOf(benchmark::State& state,
                                          Format format) {
  return Input(format, static_cast<int>(state.range(0)));
}

// Registers the four sizes of one operation on one format.
template <typename Function>
void Register(const char* peer, const char* operation, Format format,
              Function function) {
  benchmark::RegisterBenchmark(Name(peer, operation, format).c_str(),
                               [format, function](benchmark::State& state) {
                                 function(state, InputOf(state, format));
                               })
      ->Apply(AllSizes);
}

// Runs store in the loop, crediting each iteration with the size of what it
// wrote.
template <typename Store>
void TimeStore(benchmark::State& state, const InputFile& input,
               const std::string& path, Store store) {
  if (!store()) {
    state.SkipWithError(kNotWritten);
    return;
  }
  const size_t written = ReadFile(path).size();
  for (auto _ : state) benchmark::DoNotOptimize(store());
  SetCounters(state, written, input.entries.size());
}

#ifdef BENCH_HAVE_INIH

// Keeps the map of the current section, so that a section's name is looked
// up once per section rather than once per entry.
struct InihSections {
  SectionMap sections;
  std::string name;
  FlatMap* current = nullptr;
};

int InihFlatHandler(void* user, const char*, const char* name,
                    const char* value) {
  (*static_cast<FlatMap*>(user))[name] = value;
  return 1;
}

int InihIniHandler(void* user, const char* section, const char* name,
                   const char* value) {
  InihSections* state = static_cast<InihSections*>(user);
  if (state->current == nullptr || state->name != section) {
    state->name = section;
    state->current = &state->sections[state->name];
  }
  (*state->current)[name] = value;
  return 1;
}

// Parses input with inih, from the file or from its text in memory.
bool InihLoad(const InputFile& input, bool fromMemory, FlatMap* entries,
              SectionMap* sections) {
  int result;
  if (input.format == Format::kFlat) {
    result =
        fromMemory
            ? ini_parse_string(input.text.c_str(), InihFlatHandler, entries)
            : ini_parse(input.path.c_str(), InihFlatHandler, entries);
  } else {
    InihSections state;
    result = fromMemory
                 ? ini_parse_string(input.text.c_str(), InihIniHandler, &state)
                 : ini_parse(input.path.c_str(), InihIniHandler, &state);
    sections->swap(state.sections);
  }
  return result == 0;
}

void InihLoadBenchmark(benchmark::State& state, const InputFile& input,
                       bool fromMemory) {
  FlatMap expectedEntries, entries;
  SectionMap expectedSections, sections;
  if (input.format == Format::kFlat) {
    FillMap(input, &expectedEntries);
  } else {
    FillMap(input, &expectedSections);
  }
  if (!InihLoad(input, fromMemory, &entries, &sections) ||
      entries != expectedEntries || sections != expectedSections) {
    state.SkipWithError(kMisread);
    return;
  }
  for (auto _ : state) {
    FlatMap loadedEntries;
    SectionMap loadedSections;
    benchmark::DoNotOptimize(
        InihLoad(input, fromMemory, &loadedEntries, &loadedSections));
  }
  SetCounters(state, input.text.size(), input.entries.size());
}

void RegisterInih() {
  for (Format format : {Format::kFlat, Format::kIni}) {
    Register("Inih", "LoadFile", format,
             [](benchmark::State& state, const InputFile& input) {
               InihLoadBenchmark(state, input, false);
             });
    Register("Inih", "LoadMemory", format,
             [](benchmark::State& state, const InputFile& input) {
               InihLoadBenchmark(state, input, true);
             });
  }
}

void RegisterInihMemory() {
  RegisterPeakMemory("Inih", Format::kFlat, [](const std::string& path) {
    auto entries = std::make_shared<FlatMap>();
    return ini_parse(path.c_str(), InihFlatHandler, entries.get()) == 0
               ? std::shared_ptr<void>(entries)
               : nullptr;
  });
}

#endif  // BENCH_HAVE_INIH

#ifdef BENCH_HAVE_SIMPLEINI

bool SimpleIniMatches(const CSimpleIniA& ini, const InputFile& input) {
  for (const Entry& entry : input.entries) {
    const char* value =
        ini.GetValue(entry.section.c_str(), entry.key.c_str(), nullptr);
    if (value == nullptr || entry.value != value) return false;
  }
  return true;
}

void SimpleIniLoad(benchmark::State& state, const InputFile& input) {
  {
    CSimpleIniA check;
    if (check.LoadFile(input.path.c_str()) < 0 ||
        !SimpleIniMatches(check, input)) {
      state.SkipWithError(kMisread);
      return;
    }
  }
  for (auto _ : state) {
    CSimpleIniA ini;
    benchmark::DoNotOptimize(ini.LoadFile(input.path.c_str()));
  }
  SetCounters(state, input.text.size(), input.entries.size());
}

void SimpleIniSave(benchmark::State& state, const InputFile& input) {
  CSimpleIniA ini;
  ini.LoadFile(input.path.c_str());
  const std::string path = Scratch("SimpleIni", input);
  TimeStore(state, input, path,
            [&] { return ini.SaveFile(path.c_str()) >= 0; });
}

void RegisterSimpleIni() {
  for (Format format : {Format::kFlat, Format::kIni}) {
    Register("SimpleIni", "LoadFile", format, SimpleIniLoad);
    Register("SimpleIni", "StoreFile", format, SimpleIniSave);
  }
}

void RegisterSimpleIniMemory() {
  RegisterPeakMemory("SimpleIni", Format::kFlat, [](const std::string& path) {
    auto ini = std::make_shared<CSimpleIniA>();
    return ini->LoadFile(path.c_str()) >= 0 ? std::shared_ptr<void>(ini)
                                            : nullptr;
  });
}

#endif  // BENCH_HAVE_SIMPLEINI

#ifdef BENCH_HAVE_BOOST

typedef boost::property_tree::ptree Tree;

// Keys are looked up as single names: their dots are not paths here.
const Tree* Child(const Tree& tree, const std::string& name) {
  Tree::const_assoc_iterator it = tree.find(name);
  return it == tree.not_found() ? nullptr : &it->second;
}

bool BoostMatches(const Tree& tree, const InputFile& input) {
  for (const Entry& entry : input.entries) {
    const Tree* parent =
        entry.section.empty() ? &tree : Child(tree, entry.section);
    const Tree* child = parent == nullptr ? nullptr : Child(*parent, entry.key);
    if (child == nullptr || child->data() != entry.value) return false;
  }
  return true;
}

bool BoostRead(const std::string& path, Tree* tree) {
  try {
    boost::property_tree::ini_parser::read_ini(path, *tree);
    return true;
  } catch (const boost::property_tree::ini_parser_error&) {
    return false;
  }
}

void BoostLoad(benchmark::State& state, const InputFile& input) {
  Tree check;
  if (!BoostRead(input.path, &check) || !BoostMatches(check, input)) {
    state.SkipWithError(kMisread);
    return;
  }
  for (auto _ : state) {
    Tree tree;
    benchmark::DoNotOptimize(BoostRead(input.path, &tree));
  }
  SetCounters(state, input.text.size(), input.entries.size());
}

void BoostSave(benchmark::State& state, const InputFile& input) {
  Tree tree;
  BoostRead(input.path, &tree);
  const std::string path = Scratch("Boost", input);
  TimeStore(state, input, path, [&] {
    try {
      boost::property_tree::ini_parser::write_ini(path, tree);
      return true;
    } catch (const boost::property_tree::ini_parser_error&) {
      return false;
    }
  });
}

void RegisterBoost() {
  for (Format format : {Format::kFlat, Format::kIni}) {
    Register("Boost", "LoadFile", format, BoostLoad);
    Register("Boost", "StoreFile", format, BoostSave);
  }
}

void RegisterBoostMemory() {
  RegisterPeakMemory("Boost", Format::kFlat, [](const std::string& path) {
    auto tree = std::make_shared<Tree>();
    return BoostRead(path, tree.get()) ? std::shared_ptr<void>(tree) : nullptr;
  });
}

#endif  // BENCH_HAVE_BOOST

#ifdef BENCH_HAVE_GLIB

typedef std::unique_ptr<GKeyFile, void (*)(GKeyFile*)> KeyFile;

KeyFile GKeyFileRead(const std::string& path) {
  KeyFile file(g_key_file_new(), g_key_file_free);
  GError* error = nullptr;
  if (!g_key_file_load_from_file(file.get(), path.c_str(), G_KEY_FILE_NONE,
                                 &error)) {
    g_error_free(error);
    file.reset();
  }
  return file;
}

bool GKeyFileMatches(GKeyFile* file, const InputFile& input) {
  for (const Entry& entry : input.entries) {
    gchar* value = g_key_file_get_value(file, entry.section.c_str(),
                                        entry.key.c_str(), nullptr);
    const bool same = value != nullptr && entry.value == value;
    g_free(value);
    if (!same) return false;
  }
  return true;
}

void GKeyFileLoad(benchmark::State& state, const InputFile& input) {
  KeyFile check = GKeyFileRead(input.path);
  if (!check || !GKeyFileMatches(check.get(), input)) {
    state.SkipWithError(kMisread);
    return;
  }
  for (auto _ : state) {
    KeyFile file = GKeyFileRead(input.path);
    benchmark::DoNotOptimize(file.get());
  }
  SetCounters(state, input.text.size(), input.entries.size());
}

void GKeyFileSave(benchmark::State& state, const InputFile& input) {
  KeyFile file = GKeyFileRead(input.path);
  const std::string path = Scratch("GKeyFile", input);
  TimeStore(state, input, path, [&] {
    gsize length = 0;
    gchar* data = g_key_file_to_data(file.get(), &length, nullptr);
    const bool written = FloorWrite(path, std::string(data, length));
    g_free(data);
    return written;
  });
}

void RegisterGKeyFile() {
  Register("GKeyFile", "LoadFile", Format::kIni, GKeyFileLoad);
  Register("GKeyFile", "StoreFile", Format::kIni, GKeyFileSave);
}

void RegisterGKeyFileMemory() {
  RegisterPeakMemory("GKeyFile", Format::kIni, [](const std::string& path) {
    KeyFile file = GKeyFileRead(path);
    return file ? std::shared_ptr<void>(file.release(), g_key_file_free)
                : nullptr;
  });
}

#endif  // BENCH_HAVE_GLIB

}  // namespace

void RegisterPeerBenchmarks() {
#ifdef BENCH_HAVE_INIH
  RegisterInih();
#endif
#ifdef BENCH_HAVE_SIMPLEINI
  RegisterSimpleIni();
#endif
#ifdef BENCH_HAVE_BOOST
  RegisterBoost();
#endif
#ifdef BENCH_HAVE_GLIB
  RegisterGKeyFile();
#endif
}

void RegisterPeerMemoryBenchmarks() {
#ifdef BENCH_HAVE_INIH
  RegisterInihMemory();
#endif
#ifdef BENCH_HAVE_SIMPLEINI
  RegisterSimpleIniMemory();
#endif
#ifdef BENCH_HAVE_BOOST
  RegisterBoostMemory();
#endif
#ifdef BENCH_HAVE_GLIB
  RegisterGKeyFileMemory();
#endif
}

std::string PeerNames() {
  std::string names;
#ifdef BENCH_HAVE_INIH
  names += ",Inih";
#endif
#ifdef BENCH_HAVE_SIMPLEINI
  names += ",SimpleIni";
#endif
#ifdef BENCH_HAVE_BOOST
  names += ",Boost";
#endif
#ifdef BENCH_HAVE_GLIB
  names += ",GKeyFile";
#endif
  return names.empty() ? names : names.substr(1);
}

}  // namespace bench
