// LayoutFuzzer.cpp - the same operations on two managers of one flavour,
// each bound read-write to its own copy of one file: one writes its file
// anew on every rewrite (the default), the other keeps the file's layout
// (PropertyLayout). Both files must read as the same table after every
// operation, both managers must hold the same values and have told their
// listeners the same changes, and the file that keeps its layout may differ
// from what it held before only on entry lines: changed or removed ones,
// and added entries and section headers.
//
// Input: the first byte picks the flavour (lowest bit: 0 flat, 1 INI). Then
// the file's first text, up to a line "%%" (or the end). Then one operation
// a line (at most 32; lines of 400 or more characters are cut):
//   S<section><key><value>  register the string property key (in section,
//                           INI only) if it is not, then set value
//   U<section><key>         unregister it
//   F<text>                 both files written by hand: text, with '|' for
//                           a line feed

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "FuzzSupport.h"
#include "IniProperties.h"
#include "IniPropertyManager.h"
#include "JavaProperties.h"
#include "JavaPropertyManager.h"
#include "Properties.h"
#include "PropertyChangeListener.h"
#include "PropertyLayout.h"
#include "StringProperty.h"
#include "support/LineDiff.h"
#include "support/TempDir.h"

namespace {

using fuzz_support::Quote;

const size_t kMaxOperations = 32;
const size_t kLongestInputLine = 399;

// Records every change it is told of, as "key=value".
class Recorder : public PropertyChangeListener {
 public:
  void PropertyChanged(Property* property) override {
    changes.push_back(property->GetKey() + "=" + property->GetValue());
  }
  std::vector<std::string> changes;
};

// What differs between the flavours.
struct Flat {
  typedef JavaPropertyManager Manager;
  typedef JavaProperties Store;
  static const char* Name() { return "flat.properties"; }
  static Manager* NewManager(const std::string& name) {
    return new Manager(name,
                       Properties::GetInstance()->GetJavaPropertyFactory());
  }
  static void Set(Manager& manager, const std::string&, const std::string& key,
                  const std::string& value) {
    if (manager.GetProperty(key) == nullptr) {
      manager.RegisterProperty(StringProperty::kTypeName, key, "");
    }
    manager.SetValue(key, value);
  }
  static void Unregister(Manager& manager, const std::string&,
                         const std::string& key) {
    delete manager.UnregisterProperty(key);
  }
  static std::string Get(Manager& manager, const std::string&,
                         const std::string& key) {
    return manager.GetValue(key);
  }
};

struct Ini {
  typedef IniPropertyManager Manager;
  typedef IniProperties Store;
  static const char* Name() { return "ini.ini"; }
  static Manager* NewManager(const std::string& name) {
    return new Manager(name,
                       Properties::GetInstance()->GetIniPropertyFactory());
  }
  static void Set(Manager& manager, const std::string& section,
                  const std::string& key, const std::string& value) {
    if (manager.GetProperty(section, key) == nullptr) {
      manager.RegisterProperty(StringProperty::kTypeName, section, key, "");
    }
    manager.SetValue(section, key, value);
  }
  static void Unregister(Manager& manager, const std::string& section,
                         const std::string& key) {
    delete manager.UnregisterProperty(section, key);
  }
  static std::string Get(Manager& manager, const std::string& section,
                         const std::string& key) {
    return manager.GetValue(section, key);
  }
};

// The table a file reads as, in the writer's text.
template <typename F>
std::string TableOf(const std::string& text) {
  typename F::Store store;
  std::istringstream in(text);
  store.Load(in);
  return store.ToText("");
}

// True if every line of to that is not a line of from (in order) is an
// entry or a section header, and every line of from that is not in to is
// an entry: the layout of the rest is kept.
bool OnlyEntryLinesDiffer(const std::string& from, const std::string& to,
                          std::string& why) {
  const std::vector<std::string> a = test_support::SplitLines(from);
  const std::vector<std::string> b = test_support::SplitLines(to);
  std::vector<bool> keptOfB;
  const std::vector<bool> keptOfA = test_support::KeptLines(a, b, keptOfB);
  const auto isEntryOrHeader = [](const std::string& line) {
    return line.find_first_of("=[") != std::string::npos;
  };
  for (size_t i = 0; i < a.size(); ++i) {
    if (!keptOfA[i] && !isEntryOrHeader(a[i])) {
      why = "lost line " + Quote(a[i]);
      return false;
    }
  }
  for (size_t j = 0; j < b.size(); ++j) {
    if (!keptOfB[j] && !isEntryOrHeader(b[j])) {
      why = "added line " + Quote(b[j]);
      return false;
    }
  }
  return true;
}

template <typename F>
void Run(const std::string& input) {
  const size_t split = input.find("\n%%\n");
  const std::string first =
      split == std::string::npos ? input : input.substr(0, split + 1);
  std::vector<std::string> operations;
  if (split != std::string::npos)
    operations = test_support::SplitLines(input.substr(split + 4));
  if (operations.size() > kMaxOperations) operations.resize(kMaxOperations);
  for (const std::string& line : test_support::SplitLines(first)) {
    if (line.size() > kLongestInputLine) return;  // The reader's limit.
  }

  test_support::TempDir dir;
  const std::string anewPath = dir.File(std::string("anew-") + F::Name());
  const std::string keptPath = dir.File(std::string("kept-") + F::Name());
  test_support::WriteFile(anewPath, first);
  test_support::WriteFile(keptPath, first);
  // Before the managers, which must not outlive them.
  Recorder anewChanges;
  Recorder keptChanges;
  std::unique_ptr<typename F::Manager> anew(F::NewManager("anew"));
  std::unique_ptr<typename F::Manager> kept(F::NewManager("kept"));
  PropertyLayout::SetKeepLayout(anew.get(), false);
  PropertyLayout::SetKeepLayout(kept.get(), true);
  anew->AddChangeListener(&anewChanges);
  kept->AddChangeListener(&keptChanges);
  anew->RegisterPersistence(anewPath, "h");
  kept->RegisterPersistence(keptPath, "h");
  std::map<std::pair<std::string, std::string>, bool> keys;

  for (std::string operation : operations) {
    if (operation.size() > kLongestInputLine) {
      operation.resize(kLongestInputLine);
    }
    if (operation.size() < 3) continue;
    const std::string section(1, operation[1]);
    const std::string key(1, operation[2]);
    const std::string before = test_support::ReadFile(keptPath);
    if (operation[0] == 'S') {
      const std::string value = operation.substr(3);
      bool anewRejected = false;
      bool keptRejected = false;
      try {
        F::Set(*anew, section, key, value);
      } catch (Property::WrongValue&) {
        anewRejected = true;
      }
      try {
        F::Set(*kept, section, key, value);
      } catch (Property::WrongValue&) {
        keptRejected = true;
      }
      FUZZ_CHECK(anewRejected == keptRejected, "set of " << Quote(value));
      keys[std::make_pair(section, key)] = true;
    } else if (operation[0] == 'U') {
      F::Unregister(*anew, section, key);
      F::Unregister(*kept, section, key);
      keys.erase(std::make_pair(section, key));
      continue;
    } else if (operation[0] == 'F') {
      std::string text = operation.substr(1);
      for (char& c : text) c = c == '|' ? '\n' : c;
      test_support::WriteFile(anewPath, text);
      test_support::WriteFile(keptPath, text);
      continue;
    } else {
      continue;
    }

    const std::string anewText = test_support::ReadFile(anewPath);
    const std::string keptText = test_support::ReadFile(keptPath);
    FUZZ_CHECK(
        TableOf<F>(anewText) == TableOf<F>(keptText),
        "written anew " << Quote(anewText) << "\nkept " << Quote(keptText));
    FUZZ_CHECK(anewChanges.changes == keptChanges.changes,
               "the listeners were told different changes");
    for (const auto& entry : keys) {
      FUZZ_CHECK(F::Get(*anew, entry.first.first, entry.first.second) ==
                     F::Get(*kept, entry.first.first, entry.first.second),
                 "values of " << Quote(entry.first.second));
    }
    // A file written anew (no edit read as the table) is not an edit.
    std::string why;
    FUZZ_CHECK(
        keptText == anewText || OnlyEntryLinesDiffer(before, keptText, why),
        why << "\nbefore " << Quote(before) << "\nafter " << Quote(keptText));
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  const std::string input = fuzz_support::ToString(data + 1, size - 1);
  fuzz_support::RunWithoutEscapes([&] {
    if (data[0] & 1) {
      Run<Ini>(input);
    } else {
      Run<Flat>(input);
    }
  });
  return 0;
}
