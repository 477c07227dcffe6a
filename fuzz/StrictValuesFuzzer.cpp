// StrictValuesFuzzer.cpp - gives managers that keep strict values
// (PropertySafety) any section, key and value, and checks that what they
// accept reads back from their file exactly, and that what they refuse
// leaves everything as it was.
//
// Input: the first byte picks the flavour (bit 0: INI) and the type (bit 1:
// a list, whose elements are the value split at '|'; else a string). The
// rest is split at 0xff bytes into section, key and value, so that every
// other byte, line feeds and NUL included, may stand in them.
//
// Checked, for a manager bound read-write to a file that holds one entry of
// its own:
// - a refusal is Property::WrongValue with the strict message for the key
//   ("Property '<key>' [of section '<section>'] can not be kept in its
//   file: <reason>"), and leaves the file's bytes, the property and its
//   value as they were;
// - after an accepted registration and set, a fresh store reads from the
//   file exactly the entry set, beside the file's own entry (nothing
//   injected, nothing lost), and the read returns (no line is too long).

#include <stdlib.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "FuzzSupport.h"
#include "IniProperties.h"
#include "IniPropertyManager.h"
#include "JavaProperties.h"
#include "JavaPropertyManager.h"
#include "ListProperty.h"
#include "Properties.h"
#include "PropertySafety.h"
#include "StringProperty.h"

namespace {

using fuzz_support::Quote;

const char kSeparator = '\xff';
const char kStringRefusal[] = "Property values can not contain character \"#\"";

std::string Directory() {
  static const std::string directory = [] {
    const char* base = std::getenv("TMPDIR");
    std::string name = std::string(base != nullptr ? base : "/tmp") +
                       "/strict-values-fuzz-XXXXXX";
    FUZZ_CHECK(::mkdtemp(&name[0]) != nullptr, "no temporary directory");
    return name;
  }();
  return directory;
}

std::string ReadBytes(const std::string& path) {
  std::ifstream in(path.c_str(), std::ios::binary);
  std::ostringstream bytes;
  bytes << in.rdbuf();
  return bytes.str();
}

void WriteBytes(const std::string& path, const std::string& bytes) {
  std::ofstream(path.c_str(), std::ios::binary | std::ios::trunc) << bytes;
}

std::vector<std::string> Split(const std::string& text, char separator) {
  std::vector<std::string> parts;
  size_t start = 0;
  for (;;) {
    const size_t end = text.find(separator, start);
    parts.push_back(text.substr(start, end - start));
    if (end == std::string::npos) return parts;
    start = end + 1;
  }
}

// The elements a list text gives: pieces between '|', empty ones dropped.
std::vector<std::string> Elements(const std::string& list) {
  std::vector<std::string> elements;
  for (const std::string& piece : Split(list, '|')) {
    if (!piece.empty()) elements.push_back(piece);
  }
  return elements;
}

// A refusal is strict values' own, or the string type's of '#', which
// holds in every mode.
void CheckRefusal(const Property::WrongValue& e) {
  const bool strict =
      e.m_message.compare(0, 10, "Property '") == 0 &&
      e.m_message.find(" can not be kept in its file: ") != std::string::npos;
  FUZZ_CHECK(strict || e.m_message == kStringRefusal,
             "refused with " << Quote(e.m_message));
}

// What one flavour needs: its manager, how to register and set, and how a
// fresh store reads the file.
struct Flat {
  static const char* Path() { return "/flat.properties"; }
  static std::string OwnEntry() { return "own=1\n"; }
  static JavaPropertyManager* Manager() {
    static JavaPropertyManager* manager = [] {
      JavaPropertyManager* m =
          Properties::GetInstance()->GetJavaPropertyManager("strict-flat");
      PropertySafety::SetStrictValues(m, true);
      m->RegisterPersistence(Directory() + Path(), "");
      return m;
    }();
    return manager;
  }
  static Property* Register(const std::string& type, const std::string&,
                            const std::string& key, const std::string& first) {
    return Manager()->RegisterProperty(type, key, first);
  }
  static void Set(const std::string&, const std::string& key,
                  const std::string& value) {
    Manager()->SetValue(key, value);
  }
  static void Unregister(const std::string&, const std::string& key) {
    delete Manager()->UnregisterProperty(key);
  }
  static Property* Find(const std::string&, const std::string& key) {
    return Manager()->GetProperty(key);
  }
  // The entries a fresh store reads, as "key=value" lines of a known form.
  static std::string Read(const std::string& path) {
    JavaProperties store;
    FUZZ_CHECK(store.Load(path), "the file could not be read");
    return store.ToText("");
  }
  static std::string Expected(const std::string&, const std::string& key,
                              const std::string& value) {
    JavaProperties store;
    store.SetProperty("own", "1");
    store.SetProperty(key, value);
    return store.ToText("");
  }
};

struct Ini {
  static const char* Path() { return "/ini.ini"; }
  static std::string OwnEntry() { return "[own]\nk=1\n"; }
  static IniPropertyManager* Manager() {
    static IniPropertyManager* manager = [] {
      IniPropertyManager* m =
          Properties::GetInstance()->GetIniPropertyManager("strict-ini");
      PropertySafety::SetStrictValues(m, true);
      m->RegisterPersistence(Directory() + Path(), "");
      return m;
    }();
    return manager;
  }
  static Property* Register(const std::string& type, const std::string& section,
                            const std::string& key, const std::string& first) {
    return Manager()->RegisterProperty(type, section, key, first);
  }
  static void Set(const std::string& section, const std::string& key,
                  const std::string& value) {
    Manager()->SetValue(section, key, value);
  }
  static void Unregister(const std::string& section, const std::string& key) {
    delete Manager()->UnregisterProperty(section, key);
  }
  static Property* Find(const std::string& section, const std::string& key) {
    return Manager()->GetProperty(section, key);
  }
  static std::string Read(const std::string& path) {
    IniProperties store;
    FUZZ_CHECK(store.Load(path), "the file could not be read");
    return store.ToText("");
  }
  static std::string Expected(const std::string& section,
                              const std::string& key,
                              const std::string& value) {
    IniProperties store;
    store.SetProperty("own", "k", "1");
    store.SetProperty(section, key, value);
    return store.ToText("");
  }
};

template <typename F>
void Run(bool list, const std::string& section, const std::string& key,
         const std::string& value) {
  const std::string path = Directory() + F::Path();
  F::Manager();  // Bound before the file is set up: binding reads nothing.
  WriteBytes(path, F::OwnEntry());
  std::vector<std::string> values =
      list ? Elements(value) : std::vector<std::string>{value};
  if (values.empty()) return;  // A list without elements has no value.

  Property* property = nullptr;
  try {
    property =
        F::Register(list ? ListProperty::kTypeName : StringProperty::kTypeName,
                    section, key, list ? value : "initial");
  } catch (const Property::WrongValue& e) {
    CheckRefusal(e);
    FUZZ_CHECK(ReadBytes(path) == F::OwnEntry(),
               "a refused registration changed the file to "
                   << Quote(ReadBytes(path)));
    FUZZ_CHECK(F::Find(section, key) == nullptr,
               "a refused registration registered");
    return;
  }
  FUZZ_CHECK(property != nullptr, "nothing registered");
  for (const std::string& text : values) {
    const std::string before = ReadBytes(path);
    const std::string was = property->GetValue();
    try {
      F::Set(section, key, text);
    } catch (const Property::WrongValue& e) {
      CheckRefusal(e);
      FUZZ_CHECK(ReadBytes(path) == before, "a refused set changed the file");
      FUZZ_CHECK(property->GetValue() == was,
                 "a refused set changed the value");
      continue;
    }
    const std::string read = F::Read(path);
    const std::string expected = F::Expected(section, key, text);
    FUZZ_CHECK(read == expected,
               "section " << Quote(section) << " key " << Quote(key)
                          << " value " << Quote(text) << "\nread back "
                          << Quote(read) << "\nexpected " << Quote(expected));
  }
  F::Unregister(section, key);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 1) return 0;
  const std::string input = fuzz_support::ToString(data + 1, size - 1);
  const std::vector<std::string> fields = Split(input, kSeparator);
  if (fields.size() != 3) return 0;
  const bool list = (data[0] & 2) != 0;
  if ((data[0] & 1) != 0) {
    Run<Ini>(list, fields[0], fields[1], fields[2]);
  } else {
    Run<Flat>(list, fields[0], fields[1], fields[2]);
  }
  return 0;
}
