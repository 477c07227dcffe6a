// ManagerFuzzer.cpp - drives a JavaPropertyManager bound to files in a
// fresh directory through a series of operations and checks, after each,
// what the files and the values must be.
//
// Input: one operation a line (at most 48 lines; no line of 500 or more
// characters, so that no file line reaches the reader's limit). The first
// byte names the operation; keys are one byte, paths are 'a' or 'b' (any
// other byte picks one of the two by its lowest bit):
//   R<type><key><initial>  register (type b, i, d, s, p = IP address, l;
//                          any other byte is an unknown type name)
//   S<key><value>          set through the manager
//   T<key><value>          set on the property itself
//   G<key>                 get
//   U<key>                 unregister (and delete what comes back)
//   W<path><header>        bind read-write
//   O<path>                bind read-only
//   X<path>                unbind
//   L<path>                reload: unbind and bind again the same way
//   F<path><text>          write the file by hand ('|' is a line feed; '"'
//                          is written as '\'', so that every key read from
//                          a file reads back as itself)
//   D<path>                delete the file
//
// Checked:
// - nothing but Property::WrongValue escapes, and only where the type's
//   check (asked of a spare property of the same type) rejects the text;
// - a rejected set leaves the value and tells no listener; an accepted one
//   gives the spare property's value and tells the listeners once;
// - registering, binding and reloading give each property the value of its
//   key in the bound files, where the type accepts it;
// - a file changes only while it is bound read-write (loading, unbinding
//   and destroying the manager never write; a read-only file never changes);
// - after an accepted set, each read-write file holds every registered
//   property's value under its key (when key and value read back as
//   themselves), keeps the keys no property owns, and starts with the
//   header line; this stays true until the file is written by hand or the
//   binding is renewed.

#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "BooleanProperty.h"
#include "DoubleProperty.h"
#include "FuzzSupport.h"
#include "IntegerProperty.h"
#include "IpAddrProperty.h"
#include "JavaProperties.h"
#include "JavaPropertyFactory.h"
#include "JavaPropertyManager.h"
#include "ListProperty.h"
#include "Properties.h"
#include "Property.h"
#include "PropertyChangeListener.h"
#include "StringProperty.h"

namespace {

using fuzz_support::IsStableField;
using fuzz_support::Quote;
using fuzz_support::Show;
using fuzz_support::Table;

const size_t kMaxOperations = 48;
const size_t kLongestInputLine = 499;
const int kPathCount = 2;
const char* const kFileNames[kPathCount] = {"a.properties", "b.properties"};

// The factory the library's own managers get: the six type names.
JavaPropertyFactory* Factory() {
  return Properties::GetInstance()->GetJavaPropertyFactory();
}

std::string TypeName(char code) {
  switch (code) {
    case 'b':
      return BooleanProperty::kTypeName;
    case 'i':
      return IntegerProperty::kTypeName;
    case 'd':
      return DoubleProperty::kTypeName;
    case 's':
      return StringProperty::kTypeName;
    case 'p':
      return IpAddrProperty::kTypeName;
    case 'l':
      return ListProperty::kTypeName;
    default:
      return "PROPERTY_TYPE_UNKNOWN";
  }
}

// True if a list text has no element: such a property has no value, and a
// read-write binding could not write it.
bool IsEmptyList(const std::string& list) {
  return list.find_first_not_of('|') == std::string::npos;
}

// True if key=value, written by the flat writer, reads back as itself.
bool KeySurvives(const std::string& key) {
  return IsStableField(key) && key.find_first_of("=#") == std::string::npos;
}
bool ValueSurvives(const std::string& value) {
  return IsStableField(value) && value.find('#') == std::string::npos;
}

struct FileState {
  bool exists;
  std::string bytes;

  bool operator==(const FileState& other) const {
    return exists == other.exists && bytes == other.bytes;
  }
  Table ReferenceTable() const {
    return exists ? test_support::ReadFlat(bytes).entries : Table();
  }
};

std::string Show(const FileState& state) {
  return state.exists ? Quote(state.bytes) : "(no file)";
}

class ChangeCounter : public PropertyChangeListener {
 public:
  void PropertyChanged(Property*) override { ++m_count; }
  int m_count = 0;
};

// A binding as the fuzzer sees it.
struct Binding {
  bool readWrite;
  std::string header;
  // Keys whose value the file has held since the last accepted set.
  std::set<std::string> synced;
};

// How a registered key was registered, to make spare properties alike.
struct Registration {
  std::string type;
  std::string initial;
};

class Scenario {
 public:
  explicit Scenario(const std::string& directory)
      : m_manager(new JavaPropertyManager("ManagerFuzzer", Factory())) {
    for (int i = 0; i < kPathCount; ++i) {
      m_paths[i] = directory + "/" + kFileNames[i];
    }
    m_manager->AddChangeListener(&m_counter);
  }

  ~Scenario() {
    for (const std::string& path : m_paths) unlink(path.c_str());
  }

  void Run(const std::string& line) {
    const std::vector<FileState> filesBefore = Files();
    const std::set<int> readWriteBefore = ReadWritePaths();
    const int notifiedBefore = m_counter.m_count;
    const char op = line[0];
    const int path = PathIndex(Rest(line, 1).c_str()[0]);
    switch (op) {
      case 'R':
        Register(TypeName(Rest(line, 1).c_str()[0]), Key(line, 2),
                 Rest(line, 3));
        break;
      case 'S':
      case 'T':
        Set(op == 'S', Key(line, 1), Rest(line, 2), filesBefore);
        break;
      case 'G':
        Get(Key(line, 1));
        break;
      case 'U':
        Unregister(Key(line, 1));
        break;
      case 'W':
        Bind(path, true, Rest(line, 2));
        break;
      case 'O':
        Bind(path, false, "");
        break;
      case 'X':
        Unbind(path);
        break;
      case 'L':
        Reload(path);
        break;
      case 'F':
        WriteByHand(path, Rest(line, 2));
        break;
      case 'D':
        unlink(m_paths[path].c_str());
        if (m_bindings.count(path) != 0) m_bindings[path].synced.clear();
        break;
      default:
        return;
    }
    const bool byHand = op == 'F' || op == 'D';
    CheckFilesChangedOnlyWhereAllowed(filesBefore, readWriteBefore,
                                      byHand ? path : -1,
                                      m_counter.m_count != notifiedBefore);
    CheckSyncedFiles();
  }

  // Destroys the manager: that writes no file.
  void Finish() {
    const std::vector<FileState> before = Files();
    m_manager.reset();
    for (int i = 0; i < kPathCount; ++i) {
      FUZZ_CHECK(ReadFile(i) == before[i],
                 "destroying the manager changed " << kFileNames[i]);
    }
  }

 private:
  // The text of line from position on ("" if the line is shorter).
  static std::string Rest(const std::string& line, size_t position) {
    return position < line.size() ? line.substr(position) : "";
  }

  // The one-byte key at position of line; "a" if the line is shorter. (The
  // empty key is left out: keys of blanks are written as lines that read
  // back as it.)
  static std::string Key(const std::string& line, size_t position) {
    return position < line.size() ? line.substr(position, 1) : "a";
  }

  static int PathIndex(char code) {
    return code == 'a' ? 0 : code == 'b' ? 1 : code & 1;
  }

  FileState ReadFile(int path) const {
    std::ifstream in(m_paths[path].c_str(), std::ios::binary);
    if (!in.is_open()) return FileState{false, ""};
    return FileState{true, std::string(std::istreambuf_iterator<char>(in),
                                       std::istreambuf_iterator<char>())};
  }

  std::vector<FileState> Files() const {
    std::vector<FileState> files;
    for (int i = 0; i < kPathCount; ++i) files.push_back(ReadFile(i));
    return files;
  }

  std::set<int> ReadWritePaths() const {
    std::set<int> paths;
    for (const auto& binding : m_bindings) {
      if (binding.second.readWrite) paths.insert(binding.first);
    }
    return paths;
  }

  // A property like the registered one of key, owned by the caller.
  std::unique_ptr<Property> Spare(const std::string& key) const {
    const Registration& registration = m_registered.at(key);
    return std::unique_ptr<Property>(Factory()->CreateProperty(
        registration.type, key, registration.initial));
  }

  // True if spare accepts text (and then holds its value).
  static bool Accepts(Property& spare, const std::string& text) {
    try {
      spare.SetValue(text);
      return true;
    } catch (Property::WrongValue&) {
      return false;
    }
  }

  // The value a property of key gets from table: the value the type makes
  // of the table's text, or current if the table has none or it is refused.
  std::string LoadedValue(const std::string& key, const Table& table,
                          const std::string& current) const {
    const auto found = table.find(key);
    if (found == table.end()) return current;
    std::unique_ptr<Property> spare = Spare(key);
    return Accepts(*spare, found->second) ? spare->GetValue() : current;
  }

  std::map<std::string, std::string> Values() const {
    std::map<std::string, std::string> values;
    for (const auto& registered : m_registered) {
      values[registered.first] =
          m_manager->GetProperty(registered.first)->GetValue();
    }
    return values;
  }

  void Register(const std::string& type, const std::string& key,
                const std::string& initial) {
    if (type == ListProperty::kTypeName && IsEmptyList(initial)) return;
    Property* existing = m_manager->GetProperty(key);
    const std::string existingValue = existing ? existing->GetValue() : "";
    const int notified = m_counter.m_count;
    std::unique_ptr<Property> spare;
    bool spareRefused = false;
    try {
      spare.reset(Factory()->CreateProperty(type, key, initial));
    } catch (Property::WrongValue&) {
      spareRefused = true;
    }
    // The files in the order their bindings hear of a new property.
    std::vector<FileState> files;
    for (int path : m_listenerOrder) files.push_back(ReadFile(path));

    Property* property = nullptr;
    try {
      property = m_manager->RegisterProperty(type, key, initial);
    } catch (Property::WrongValue& e) {
      FUZZ_CHECK(!existing && spareRefused,
                 "registering " << Quote(key) << " as " << type << " with "
                                << Quote(initial) << " threw "
                                << Quote(e.m_message));
      FUZZ_CHECK(!m_manager->GetProperty(key), "a refused key is registered");
      return;
    }
    if (existing) {
      FUZZ_CHECK(property == existing, "a second property for " << Quote(key));
      FUZZ_CHECK(existing->GetValue() == existingValue,
                 "registering again changed the value");
      FUZZ_CHECK(m_counter.m_count == notified, "registering again notified");
      return;
    }
    if (!spare) {
      FUZZ_CHECK(!spareRefused && property == nullptr,
                 type << " with " << Quote(initial) << " was accepted");
      return;
    }
    FUZZ_CHECK(property && property == m_manager->GetProperty(key),
               "registering " << Quote(key) << " gave no property");
    FUZZ_CHECK(property->GetPropertyType() == type, "type of " << Quote(key));
    m_registered[key] = Registration{type, initial};

    // Each binding loads its file in turn; later ones win. A rewrite caused
    // by an earlier load leaves the file's texts as they were only if they
    // all read back as themselves.
    std::string expected = spare->GetValue();
    bool predictable = true;
    for (const FileState& file : files) {
      const Table table = file.ReferenceTable();
      for (const auto& entry : table) {
        predictable = predictable && IsStableField(entry.first) &&
                      IsStableField(entry.second);
      }
      expected = LoadedValue(key, table, expected);
    }
    if (predictable) {
      FUZZ_CHECK(property->GetValue() == expected,
                 Quote(key) << " registered as " << Quote(property->GetValue())
                            << ", expected " << Quote(expected));
    }
  }

  void Set(bool throughManager, const std::string& key,
           const std::string& value, const std::vector<FileState>& before) {
    Property* property = m_manager->GetProperty(key);
    const int notified = m_counter.m_count;
    if (!property) {
      if (throughManager) m_manager->SetValue(key, value);
      FUZZ_CHECK(m_counter.m_count == notified, "an unknown key notified");
      return;
    }
    const std::string old = property->GetValue();
    std::unique_ptr<Property> spare = Spare(key);
    const bool accepted = Accepts(*spare, value);
    try {
      if (throughManager) {
        m_manager->SetValue(key, value);
      } else {
        property->SetValue(value);
      }
    } catch (Property::WrongValue& e) {
      FUZZ_CHECK(!accepted, Quote(value) << " for " << Quote(key) << " threw "
                                         << Quote(e.m_message));
      FUZZ_CHECK(property->GetValue() == old,
                 "a refused " << Quote(value) << " changed the value to "
                              << Quote(property->GetValue()));
      FUZZ_CHECK(m_counter.m_count == notified, "a refused value notified");
      return;
    }
    FUZZ_CHECK(accepted, Quote(value)
                             << " for " << Quote(key) << " was accepted");
    FUZZ_CHECK(property->GetValue() == spare->GetValue(),
               Quote(value) << " reads back as " << Quote(property->GetValue())
                            << ", expected " << Quote(spare->GetValue()));
    FUZZ_CHECK(m_counter.m_count == notified + 1,
               "announced " << m_counter.m_count - notified << " times");

    for (auto& binding : m_bindings) {
      if (!binding.second.readWrite) continue;
      for (const auto& registered : m_registered) {
        binding.second.synced.insert(registered.first);
      }
      CheckRewrite(binding.first, binding.second, before[binding.first]);
    }
  }

  // After a set, a read-write file was read, merged and written: it starts
  // with its header line and keeps the keys of the old file that no
  // property owns.
  void CheckRewrite(int path, const Binding& binding,
                    const FileState& before) const {
    const FileState after = ReadFile(path);
    FUZZ_CHECK(after.exists, kFileNames[path] << " was not written");
    if (!binding.header.empty()) {
      const std::string line = "#" + binding.header + "\n";
      FUZZ_CHECK(
          after.bytes.compare(0, line.size(), line) == 0,
          kFileNames[path] << " lacks its header: " << Quote(after.bytes));
    }
    const Table old = before.ReferenceTable();
    for (const auto& entry : old) {
      if (!IsStableField(entry.first)) return;
    }
    JavaProperties now;
    now.Load(m_paths[path]);
    for (const auto& entry : old) {
      if (m_registered.count(entry.first) != 0 || entry.first.empty() ||
          !IsStableField(entry.second)) {
        continue;
      }
      std::string value;
      FUZZ_CHECK(now.GetProperty(entry.first, value) && value == entry.second,
                 "the unowned " << Quote(entry.first) << "="
                                << Quote(entry.second) << " of " << Show(before)
                                << " became " << Show(after));
    }
  }

  void Get(const std::string& key) {
    Property* property = m_manager->GetProperty(key);
    const std::string value = m_manager->GetValue(key);
    FUZZ_CHECK(value == (property ? property->GetValue() : ""),
               "GetValue of " << Quote(key) << " gave " << Quote(value));
    FUZZ_CHECK((property != nullptr) == (m_registered.count(key) != 0),
               "GetProperty of " << Quote(key));
  }

  void Unregister(const std::string& key) {
    Property* property = m_manager->GetProperty(key);
    std::unique_ptr<Property> removed(m_manager->UnregisterProperty(key));
    FUZZ_CHECK(removed.get() == property, "unregistered another property");
    FUZZ_CHECK(!m_manager->GetProperty(key), Quote(key) << " is still there");
    m_registered.erase(key);
    for (auto& binding : m_bindings) binding.second.synced.erase(key);
  }

  void Bind(int path, bool readWrite, const std::string& header) {
    if (m_bindings.count(path) != 0) {
      const std::map<std::string, std::string> before = Values();
      const int notified = m_counter.m_count;
      if (readWrite) {
        m_manager->RegisterPersistence(m_paths[path], header);
      } else {
        m_manager->RegisterNonPersistence(m_paths[path]);
      }
      FUZZ_CHECK(Values() == before && m_counter.m_count == notified,
                 "binding a bound path again did something");
      return;
    }
    // A new binding loads its file once per property; its own file is not
    // written meanwhile, since it hears of changes only afterwards.
    const Table table = ReadFile(path).ReferenceTable();
    const std::map<std::string, std::string> before = Values();
    const int notified = m_counter.m_count;
    if (readWrite) {
      m_manager->RegisterPersistence(m_paths[path], header);
    } else {
      m_manager->RegisterNonPersistence(m_paths[path]);
    }
    m_bindings[path] = Binding{readWrite, header, std::set<std::string>()};
    m_listenerOrder.push_back(path);

    int loads = 0;
    for (const auto& value : before) {
      const std::string expected =
          LoadedValue(value.first, table, value.second);
      const std::string actual = m_manager->GetValue(value.first);
      FUZZ_CHECK(actual == expected,
                 "binding " << kFileNames[path] << " " << Show(table)
                            << " gave " << Quote(value.first) << " the value "
                            << Quote(actual) << ", expected "
                            << Quote(expected));
      if (table.count(value.first) != 0) {
        std::unique_ptr<Property> spare = Spare(value.first);
        if (Accepts(*spare, table.at(value.first))) ++loads;
      }
    }
    FUZZ_CHECK(m_counter.m_count == notified + loads,
               "binding announced " << m_counter.m_count - notified
                                    << " changes for " << loads << " loads");
  }

  void Unbind(int path) {
    const std::map<std::string, std::string> before = Values();
    const int notified = m_counter.m_count;
    m_manager->UnRegisterPersistence(m_paths[path]);
    m_bindings.erase(path);
    m_listenerOrder.erase(
        std::remove(m_listenerOrder.begin(), m_listenerOrder.end(), path),
        m_listenerOrder.end());
    FUZZ_CHECK(Values() == before && m_counter.m_count == notified,
               "unbinding changed values");
  }

  void Reload(int path) {
    if (m_bindings.count(path) == 0) return;
    const Binding binding = m_bindings[path];
    Unbind(path);
    Bind(path, binding.readWrite, binding.header);
  }

  void WriteByHand(int path, std::string text) {
    for (char& c : text) {
      if (c == '|') c = '\n';
      if (c == '"') c = '\'';
    }
    std::ofstream out(m_paths[path].c_str(),
                      std::ios::binary | std::ios::trunc);
    out << text;
    out.close();
    FUZZ_CHECK(out.good(), "cannot write " << m_paths[path]);
    if (m_bindings.count(path) != 0) m_bindings[path].synced.clear();
  }

  // Only stores write, and only a file bound read-write from before to after
  // the operation; without any change announced, nothing is written at all.
  void CheckFilesChangedOnlyWhereAllowed(const std::vector<FileState>& before,
                                         const std::set<int>& readWriteBefore,
                                         int writtenByHand,
                                         bool announced) const {
    const std::set<int> readWriteAfter = ReadWritePaths();
    for (int i = 0; i < kPathCount; ++i) {
      if (i == writtenByHand) continue;
      const bool mayChange = announced && readWriteBefore.count(i) != 0 &&
                             readWriteAfter.count(i) != 0;
      const FileState after = ReadFile(i);
      FUZZ_CHECK(mayChange || after == before[i],
                 kFileNames[i] << " changed from " << Show(before[i]) << " to "
                               << Show(after));
    }
  }

  // Every read-write file holds the values of the keys it has held since the
  // last accepted set.
  void CheckSyncedFiles() const {
    for (const auto& binding : m_bindings) {
      if (!binding.second.readWrite || binding.second.synced.empty()) continue;
      const int path = binding.first;
      JavaProperties file;
      FUZZ_CHECK(file.Load(m_paths[path]), kFileNames[path] << " is missing");
      for (const std::string& key : binding.second.synced) {
        const std::string value = m_manager->GetValue(key);
        if (!KeySurvives(key) || !ValueSurvives(value)) continue;
        std::string stored;
        FUZZ_CHECK(file.GetProperty(key, stored) && stored == value,
                   kFileNames[path] << " " << Show(ReadFile(path)) << " lacks "
                                    << Quote(key) << "=" << Quote(value));
      }
    }
  }

  std::string m_paths[kPathCount];
  // Destroyed after the manager, which may still tell it of changes.
  ChangeCounter m_counter;
  std::unique_ptr<JavaPropertyManager> m_manager;
  std::map<int, Binding> m_bindings;
  std::vector<int> m_listenerOrder;
  std::map<std::string, Registration> m_registered;
};

// A new, empty directory; removed again by the destructor.
class TempDirectory {
 public:
  TempDirectory() {
    const char* base = getenv("TMPDIR");
    std::string pattern =
        std::string(base && *base ? base : "/tmp") + "/ManagerFuzzer.XXXXXX";
    std::vector<char> buffer(pattern.begin(), pattern.end());
    buffer.push_back('\0');
    FUZZ_CHECK(mkdtemp(buffer.data()) != nullptr,
               "cannot make a directory like " << pattern);
    m_path = buffer.data();
  }
  ~TempDirectory() { rmdir(m_path.c_str()); }

  const std::string& Path() const { return m_path; }

 private:
  std::string m_path;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string input = fuzz_support::ToString(data, size);
  if (fuzz_support::LongestLine(input) > kLongestInputLine) return 0;
  std::vector<std::string> lines;
  std::istringstream in(input);
  for (std::string line;
       lines.size() < kMaxOperations && std::getline(in, line);) {
    if (!line.empty()) lines.push_back(line);
  }

  TempDirectory directory;
  fuzz_support::RunWithoutEscapes([&] {
    Scenario scenario(directory.Path());
    for (const std::string& line : lines) scenario.Run(line);
    scenario.Finish();
  });
  return 0;
}
