// FaultDriver.cpp - binds a flat and an INI domain to files, registers, sets
// and reads back properties of every type, and checks that every value in
// memory is the one expected, whatever the file calls did.
//
//   FaultDriver <directory>
//
// Run under LD_PRELOAD=libFailingSyscalls.so (see support/FailingSyscalls.cpp)
// it makes the chosen file call fail and only the library's own work between
// the start and the end of the run is counted. It prints one line:
//
//   flat 4/4 ini 4/4 values intact; failed: write #3 (ENOSPC)
//
// "failed: none" when no call was made to fail; without a failure to make
// (PROPERTIES_FAIL unset) the line ends with the calls counted, e.g.
// "; calls: open=38 read=52 write=12 close=38". Exit status 0 if every value
// was intact and nothing was thrown, 1 otherwise (the reasons go to stderr),
// 2 on wrong usage.

#include <dlfcn.h>
#include <sys/stat.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "IniPropertyManager.h"
#include "JavaPropertyManager.h"
#include "Properties.h"
#include "Property.h"

namespace {

// The hooks of the preloaded library, or nothing when it is absent.
class FaultHooks {
 public:
  FaultHooks()
      : m_start(Find<void (*)()>("PropertiesFaultsStart")),
        m_stop(Find<void (*)()>("PropertiesFaultsStop")),
        m_calls(Find<long (*)(const char*)>("PropertiesFaultsCalls")),
        m_injected(Find<int (*)()>("PropertiesFaultsInjected")) {}

  void Start() const {
    if (m_start != nullptr) m_start();
  }
  void Stop() const {
    if (m_stop != nullptr) m_stop();
  }
  long Calls(const char* family) const {
    return m_calls != nullptr ? m_calls(family) : 0;
  }
  bool Injected() const { return m_injected != nullptr && m_injected() != 0; }

 private:
  template <typename Function>
  static Function Find(const char* name) {
    return reinterpret_cast<Function>(dlsym(RTLD_DEFAULT, name));
  }

  void (*m_start)();
  void (*m_stop)();
  long (*m_calls)(const char*);
  int (*m_injected)();
};

// One property of the run: its type, key, initial text, the text stored in
// the seed file ("" if none), the text it is set to and the text it then
// reads back as.
struct Case {
  const char* type;
  const char* key;
  const char* initial;
  const char* stored;
  const char* set;
  const char* expected;
};

typedef std::vector<Case> Cases;

// Four properties per domain, the six types between them; two of each
// domain have a value in the seed file.
const Cases kFlatCases = {
    {"PROPERTY_TYPE_INTEGER", "port", "80", "8080", "0090", "90"},
    {"PROPERTY_TYPE_STRING", "name", "none", "db", "main db", "main db"},
    {"PROPERTY_TYPE_DOUBLE", "ratio", "0.5", "", "1e20", "1e+20"},
    {"PROPERTY_TYPE_LIST", "level", "debug|info|error", "", "2", "error"},
};
const Cases kIniCases = {
    {"PROPERTY_TYPE_INTEGER", "port", "80", "8080", "0090", "90"},
    {"PROPERTY_TYPE_BOOLEAN", "debug", "false", "true", "false", "false"},
    {"PROPERTY_TYPE_IP_ADDR", "host", "127.0.0.1", "", "10.1", "10.0.0.1"},
    {"PROPERTY_TYPE_STRING", "name", "none", "", "main db", "main db"},
};

// The value a property may hold right after registration: the initial one
// (its list's first element) or, if the file could be read, the stored one.
bool IsLoadedValue(const Case& c, const std::string& value) {
  const std::string initial = c.initial;
  const std::string first = initial.substr(0, initial.find('|'));
  return value == first || (*c.stored != '\0' && value == c.stored);
}

// The "key=value" lines of the stored values of cases.
std::string StoredLines(const Cases& cases) {
  std::string lines;
  for (const Case& c : cases) {
    if (*c.stored != '\0') lines += std::string(c.key) + "=" + c.stored + "\n";
  }
  return lines;
}

class Run {
 public:
  explicit Run(const std::string& directory) : m_directory(directory) {}

  // The file contents the run starts from (written before counting starts).
  void Seed() const {
    std::ofstream(FlatPath())
        << "#seed\nextra=kept\n" + StoredLines(kFlatCases);
    std::ofstream(IniPath())
        << ";seed\n[other]\nextra=kept\n\n[server]\n" + StoredLines(kIniCases);
  }

  // Binds, registers, sets and reads back both domains. Returns the values
  // intact per domain through flatIntact and iniIntact.
  void Exercise(int* flatIntact, int* iniIntact) {
    Properties* properties = Properties::GetInstance();
    JavaPropertyManager* flat = properties->GetJavaPropertyManager("faults");
    IniPropertyManager* ini = properties->GetIniPropertyManager("faults-ini");
    flat->RegisterPersistence(FlatPath(), "fault driver");
    ini->RegisterPersistence(IniPath(), "fault driver");
    *flatIntact = Domain(
        "flat", kFlatCases,
        [flat](const Case& c) {
          return flat->RegisterProperty(c.type, c.key, c.initial);
        },
        [flat](const Case& c) { flat->SetValue(c.key, c.set); },
        [flat](const Case& c) { return flat->GetValue(c.key); });
    *iniIntact = Domain(
        "ini", kIniCases,
        [ini](const Case& c) {
          return ini->RegisterProperty(c.type, "server", c.key, c.initial);
        },
        [ini](const Case& c) { ini->SetValue("server", c.key, c.set); },
        [ini](const Case& c) { return ini->GetValue("server", c.key); });
  }

 private:
  std::string FlatPath() const { return m_directory + "/faults.properties"; }
  std::string IniPath() const { return m_directory + "/faults.ini"; }

  // Registers every case, sets each and reads them all back. Returns the
  // number of cases whose value was right at every step.
  int Domain(const char* name, const Cases& cases,
             const std::function<Property*(const Case&)>& add,
             const std::function<void(const Case&)>& set,
             const std::function<std::string(const Case&)>& get) {
    std::vector<char> intact(cases.size(), 1);
    for (size_t i = 0; i < cases.size(); ++i) {
      if (add(cases[i]) == nullptr) {
        Broken(name, cases[i], "not registered", &intact[i]);
      }
      if (!IsLoadedValue(cases[i], get(cases[i]))) {
        Broken(name, cases[i], "loaded '" + get(cases[i]) + "'", &intact[i]);
      }
    }
    for (size_t i = 0; i < cases.size(); ++i) {
      set(cases[i]);
      if (get(cases[i]) != cases[i].expected) {
        Broken(name, cases[i], "set '" + get(cases[i]) + "'", &intact[i]);
      }
    }
    int count = 0;
    for (size_t i = 0; i < cases.size(); ++i) {
      if (get(cases[i]) != cases[i].expected) {
        Broken(name, cases[i], "read '" + get(cases[i]) + "'", &intact[i]);
      }
      if (intact[i]) ++count;
    }
    return count;
  }

  // Reports what went wrong with the value of c and marks it as not intact.
  static void Broken(const char* domain, const Case& c, const std::string& what,
                     char* intact) {
    std::fprintf(stderr, "%s: %s: %s\n", domain, c.key, what.c_str());
    *intact = 0;
  }

  std::string m_directory;
};

// "write #3 (ENOSPC)" from PROPERTIES_FAIL="write:3:ENOSPC".
std::string FailureName() {
  const char* text = std::getenv("PROPERTIES_FAIL");
  std::string failure = text != nullptr ? text : "";
  const size_t first = failure.find(':');
  const size_t second = failure.find(':', first + 1);
  if (first == std::string::npos) return failure;
  std::string name = failure.substr(0, first) + " #" +
                     failure.substr(first + 1, second - first - 1);
  if (second != std::string::npos)
    name += " (" + failure.substr(second + 1) + ")";
  return name;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: %s <directory>\n", argv[0]);
    return 2;
  }
  ::mkdir(argv[1], 0777);
  Run run(argv[1]);
  run.Seed();
  const FaultHooks hooks;
  int flatIntact = 0;
  int iniIntact = 0;
  bool thrown = true;
  hooks.Start();
  try {
    run.Exercise(&flatIntact, &iniIntact);
    thrown = false;
  } catch (const Property::WrongValue& e) {
    std::fprintf(stderr, "Property::WrongValue: %s\n", e.m_message.c_str());
  } catch (const std::exception& e) {
    std::fprintf(stderr, "exception: %s\n", e.what());
  } catch (...) {
    std::fprintf(stderr, "unknown exception\n");
  }
  hooks.Stop();

  const int flatCount = static_cast<int>(kFlatCases.size());
  const int iniCount = static_cast<int>(kIniCases.size());
  std::printf("flat %d/%d ini %d/%d values intact; failed: %s", flatIntact,
              flatCount, iniIntact, iniCount,
              hooks.Injected() ? FailureName().c_str() : "none");
  if (std::getenv("PROPERTIES_FAIL") == nullptr) {
    std::printf("; calls: open=%ld read=%ld write=%ld close=%ld",
                hooks.Calls("open"), hooks.Calls("read"), hooks.Calls("write"),
                hooks.Calls("close"));
  }
  std::printf("\n");
  const bool intact = flatIntact == flatCount && iniIntact == iniCount;
  return !thrown && intact ? 0 : 1;
}
