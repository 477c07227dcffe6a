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
//
// Everything on standard output is flushed at once, so that a test sees how
// far a run got even when it has to kill it. Exits 0 after a load that
// returned true, a binding, a set or a refusal; 1 after a load that returned
// false; 2 on a wrong command line.

#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <string>

#include "IniProperties.h"
#include "JavaProperties.h"
#include "Properties.h"
#include "Property.h"
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

int Usage() {
  std::fputs(
      "usage: SafetyDriver load-flat-store|load-flat-stream|load-ini-store|"
      "load-ini-stream FILE | bind-flat FILE KEY | bind-ini FILE SECTION KEY "
      "| set-flat FILE KEY VALUE | set-ini FILE SECTION KEY VALUE\n",
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
  if (argc == 6 && role == "set-ini") {
    return SetIni(path, argv[3], argv[4], argv[5]);
  }
  return Usage();
}
