// SafetyDriver.cpp - a program that reads and writes property files through
// the shared library, for SafetyEnvironmentTest.cpp, which runs it with the
// library's environment variables (LIBPROPERTIES_LONG_LINES,
// LIBPROPERTIES_STRICT, LIBPROPERTIES_LOG) set or unset. It defines no Log()
// of its own: what the library logs goes where LIBPROPERTIES_LOG says.
//
//   SafetyDriver load-flat-store FILE      JavaProperties::Load(FILE)
//   SafetyDriver load-flat-stream FILE     JavaProperties::Load(istream)
//   SafetyDriver load-ini-store FILE       IniProperties::Load(FILE)
//   SafetyDriver load-ini-stream FILE      IniProperties::Load(istream)
//       print "loading", then every entry read: "key=value" (INI:
//       "[section]key=value"), in the table's order;
//   SafetyDriver bind-flat FILE KEY
//   SafetyDriver bind-ini FILE SECTION KEY
//       print "loading", bind FILE read-write, register the string property
//       KEY and print its value;
//   SafetyDriver set-flat FILE KEY VALUE
//   SafetyDriver set-ini FILE SECTION KEY VALUE
//       bind FILE read-write, register the string property KEY, set it to
//       VALUE and print "set", or "refused: <message>" if the manager
//       refuses the value with Property::WrongValue.
//   SafetyDriver probe-lock FILE
//       bind FILE read-write, register a property of a class of this program
//       (a string property whose GetValue() tries to take FILE's lock) and
//       set it; print "lock free" or "lock held" for every try that found
//       the file (the library must never hold it while this code runs).
//   SafetyDriver scenario-flat FILE SEED
//   SafetyDriver scenario-ini FILE SEED
//       bind FILE read-write and run 40 operations that SEED picks
//       (registrations, sets, hand edits of FILE, reloads, rebinding),
//       printing after each the file's bytes, every value and every change
//       the manager's listeners were told.
//
// Everything on standard output is flushed at once, so that a test sees how
// far a run got even when it has to kill it. Exits 0 after a load that
// returned true, a binding, a set or a refusal; 1 after a load that returned
// false; 2 on a wrong command line.

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "IniProperties.h"
#include "JavaProperties.h"
#include "Properties.h"
#include "Property.h"
#include "PropertyChangeListener.h"
#include "PropertyFileWatcher.h"
#include "StringProperty.h"

namespace {

void Print(const std::string& line) {
  std::fputs((line + "\n").c_str(), stdout);
  std::fflush(stdout);
}

// The library's tables, opened to print them whole.
class FlatTable : public JavaProperties {
 public:
  void Print() const {
    for (const auto& entry : m_entries) {
      ::Print(std::string(entry.first) + "=" + std::string(entry.second));
    }
  }
};

class IniTable : public IniProperties {
 public:
  void Print() const {
    for (const auto& section : m_sections) {
      for (const auto& entry : section.second) {
        ::Print("[" + std::string(section.first) + "]" +
                std::string(entry.first) + "=" + std::string(entry.second));
      }
    }
  }
};

template <typename Table>
int LoadFile(const std::string& path) {
  Print("loading");
  Table table;
  const bool loaded = table.Load(path);
  table.Print();
  return loaded ? 0 : 1;
}

template <typename Table>
int LoadStream(const std::string& path) {
  Print("loading");
  std::ifstream in(path.c_str());
  Table table;
  const bool loaded = table.Load(in);
  table.Print();
  return loaded ? 0 : 1;
}

int BindFlat(const std::string& path, const std::string& key) {
  Print("loading");
  JavaPropertyManager* manager =
      Properties::GetInstance()->GetJavaPropertyManager("SafetyDriver");
  manager->RegisterPersistence(path, "");
  manager->RegisterProperty(StringProperty::kTypeName, key, "");
  Print(manager->GetValue(key));
  return 0;
}

int BindIni(const std::string& path, const std::string& section,
            const std::string& key) {
  Print("loading");
  IniPropertyManager* manager =
      Properties::GetInstance()->GetIniPropertyManager("SafetyDriver");
  manager->RegisterPersistence(path, "");
  manager->RegisterProperty(StringProperty::kTypeName, section, key, "");
  Print(manager->GetValue(section, key));
  return 0;
}

int SetFlat(const std::string& path, const std::string& key,
            const std::string& value) {
  JavaPropertyManager* manager =
      Properties::GetInstance()->GetJavaPropertyManager("SafetyDriver");
  manager->RegisterPersistence(path, "");
  manager->RegisterProperty(StringProperty::kTypeName, key, "");
  try {
    manager->SetValue(key, value);
  } catch (const Property::WrongValue& refusal) {
    Print("refused: " + std::string(refusal.m_message));
    return 0;
  }
  Print("set");
  return 0;
}

int SetIni(const std::string& path, const std::string& section,
           const std::string& key, const std::string& value) {
  IniPropertyManager* manager =
      Properties::GetInstance()->GetIniPropertyManager("SafetyDriver");
  manager->RegisterPersistence(path, "");
  manager->RegisterProperty(StringProperty::kTypeName, section, key, "");
  try {
    manager->SetValue(section, key, value);
  } catch (const Property::WrongValue& refusal) {
    Print("refused: " + std::string(refusal.m_message));
    return 0;
  }
  Print("set");
  return 0;
}

// A property of a class of the program: each GetValue() tries to take the
// lock of the file it is bound to, and prints whether it could.
class LockProbe : public StringProperty {
 public:
  LockProbe(const propstring& key, const propstring& value)
      : StringProperty(key, value, "") {}
  propstring GetValue() const override {
    const int fd = ::open(s_path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd >= 0) {
      Print(::flock(fd, LOCK_SH | LOCK_NB) == 0 ? "lock free" : "lock held");
      ::close(fd);
    }
    return StringProperty::GetValue();
  }
  static Property* Create(const propstring& key, const propstring& value) {
    return new LockProbe(key, value);
  }
  static std::string s_path;
};

std::string LockProbe::s_path;

int ProbeLock(const std::string& path) {
  LockProbe::s_path = path;
  Properties* properties = Properties::GetInstance();
  properties->GetJavaPropertyFactory()->AddCreator("PROBE", LockProbe::Create);
  JavaPropertyManager* manager =
      properties->GetJavaPropertyManager("SafetyDriver");
  manager->RegisterPersistence(path, "");
  manager->RegisterProperty("PROBE", "probe", "");
  manager->SetValue("probe", "set");
  return 0;
}

// Prints every change it is told of.
class ChangePrinter : public PropertyChangeListener {
 public:
  void PropertyChanged(Property* property) override {
    Print("changed " + std::string(property->GetKey()) + "=" +
          std::string(property->GetValue()));
  }
};

std::string FileText(const std::string& path) {
  std::ifstream in(path.c_str(), std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

void WriteText(const std::string& path, const std::string& text) {
  std::ofstream(path.c_str(), std::ios::binary | std::ios::trunc) << text;
}

// The flavours as the scenario uses them; the INI one in the section "s".
struct FlatManager {
  static JavaPropertyManager* Get() {
    return Properties::GetInstance()->GetJavaPropertyManager("scenario");
  }
  static const char* Section() { return ""; }
  static bool Has(JavaPropertyManager* m, const std::string& key) {
    return m->GetProperty(key) != nullptr;
  }
  static void Register(JavaPropertyManager* m, const char* type,
                       const std::string& key) {
    m->RegisterProperty(type, key, "0");
  }
  static void Set(JavaPropertyManager* m, const std::string& key,
                  const std::string& value) {
    m->SetValue(key, value);
  }
  static std::string Value(JavaPropertyManager* m, const std::string& key) {
    return m->GetValue(key);
  }
};
struct IniManager {
  static IniPropertyManager* Get() {
    return Properties::GetInstance()->GetIniPropertyManager("scenario");
  }
  static const char* Section() { return "[s]\n"; }
  static bool Has(IniPropertyManager* m, const std::string& key) {
    return m->GetProperty("s", key) != nullptr;
  }
  static void Register(IniPropertyManager* m, const char* type,
                       const std::string& key) {
    m->RegisterProperty(type, "s", key, "0");
  }
  static void Set(IniPropertyManager* m, const std::string& key,
                  const std::string& value) {
    m->SetValue("s", key, value);
  }
  static std::string Value(IniPropertyManager* m, const std::string& key) {
    return m->GetValue("s", key);
  }
};

template <typename F>
int Scenario(const std::string& path, unsigned seed) {
  std::mt19937 random(seed);
  const auto pick = [&random](int n) {
    return std::uniform_int_distribution<int>(0, n - 1)(random);
  };
  const std::string section = F::Section();
  const std::vector<std::string> texts = {
      section + "a=1\nb=2\n", section + "# note\n a = 7 \nc=x\na=8\n",
      section + "\" a\"=5\nb=\"q\"\n", ""};
  const char* const keys[] = {"a", "b", "c", "d"};
  const char* const values[] = {"1", "2", "x", "10", " 3", "\"q"};
  WriteText(path, texts[pick(4)]);
  ChangePrinter changes;
  auto* manager = F::Get();
  manager->AddChangeListener(&changes);
  manager->RegisterPersistence(path, "h");
  std::vector<std::string> registered;
  for (int step = 0; step < 40; ++step) {
    const std::string key = keys[pick(4)];
    switch (pick(6)) {
      case 0:
      case 1:
        if (!F::Has(manager, key)) {
          F::Register(
              manager,
              pick(2) ? "PROPERTY_TYPE_INTEGER" : "PROPERTY_TYPE_STRING", key);
          registered.push_back(key);
        }
        break;
      case 2:
        if (F::Has(manager, key)) {
          try {
            F::Set(manager, key, values[pick(6)]);
          } catch (const Property::WrongValue& refusal) {
            Print("refused: " + std::string(refusal.m_message));
          }
        }
        break;
      case 3:
        WriteText(path, texts[pick(4)]);
        break;
      case 4:
        PropertyFileWatcher::Reload(manager);
        break;
      case 5:
        manager->UnRegisterPersistence(path);
        manager->RegisterPersistence(path, pick(2) ? "h" : "");
        break;
    }
    Print("file " + FileText(path));
    for (const std::string& known : registered) {
      Print("value " + known + "=" + F::Value(manager, known));
    }
  }
  return 0;
}

int Usage() {
  std::fputs(
      "usage: SafetyDriver load-flat-store|load-flat-stream|load-ini-store|"
      "load-ini-stream FILE | bind-flat FILE KEY | bind-ini FILE SECTION KEY "
      "| set-flat FILE KEY VALUE | set-ini FILE SECTION KEY VALUE | "
      "probe-lock FILE | scenario-flat FILE SEED | scenario-ini FILE SEED\n",
      stderr);
  return 2;
}

}  // namespace

int main(int argc, char** argv) {
  // A load that never returns is what some runs are meant to show; the test
  // kills it long before this, and no run outlives a test that forgot it.
  ::alarm(60);
  if (argc < 3) return Usage();
  const std::string role = argv[1];
  const std::string path = argv[2];
  if (argc == 3 && role == "load-flat-store") return LoadFile<FlatTable>(path);
  if (argc == 3 && role == "load-flat-stream") {
    return LoadStream<FlatTable>(path);
  }
  if (argc == 3 && role == "load-ini-store") return LoadFile<IniTable>(path);
  if (argc == 3 && role == "load-ini-stream") return LoadStream<IniTable>(path);
  if (argc == 4 && role == "bind-flat") return BindFlat(path, argv[3]);
  if (argc == 5 && role == "bind-ini") return BindIni(path, argv[3], argv[4]);
  if (argc == 5 && role == "set-flat") return SetFlat(path, argv[3], argv[4]);
  if (argc == 3 && role == "probe-lock") return ProbeLock(path);
  if (argc == 4 && role == "scenario-flat") {
    return Scenario<FlatManager>(path,
                                 static_cast<unsigned>(std::atoi(argv[3])));
  }
  if (argc == 4 && role == "scenario-ini") {
    return Scenario<IniManager>(path,
                                static_cast<unsigned>(std::atoi(argv[3])));
  }
  if (argc == 6 && role == "set-ini") {
    return SetIni(path, argv[3], argv[4], argv[5]);
  }
  return Usage();
}
