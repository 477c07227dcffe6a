// SharingDriver.cpp - one of several programs sharing one property file, for
// SharedFileTest.cpp. Each run ends by itself within a minute.
//
//   SharingDriver flat|ini PATH writer KEY COUNT
//       binds PATH read-write and sets its integer property KEY (section
//       "s" for INI) to 1, 2, ... COUNT, one rewrite each;
//   SharingDriver flat|ini PATH reader COUNT KEY...
//       loads PATH COUNT times; every table must hold each KEY, and no key
//       may lose a value it had (values only grow): a table read while
//       another program rewrites the file is whole.
// Exits 0 if all went as described, 1 otherwise (with a line on stderr).

#include <unistd.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <vector>

#include "IniProperties.h"
#include "JavaProperties.h"
#include "Properties.h"

namespace {

int Fail(const std::string& why) {
  std::fprintf(stderr, "SharingDriver: %s\n", why.c_str());
  return 1;
}

std::map<std::string, std::string> LoadTable(bool ini,
                                             const std::string& path) {
  std::map<std::string, std::string> table;
  if (ini) {
    IniProperties store;
    store.Load(path);
    for (const char* key : {"keep", "w0", "w1", "w2", "w3", "w4", "w5"}) {
      std::string value;
      if (store.GetProperty("s", key, value)) table[key] = value;
    }
  } else {
    JavaProperties store;
    store.Load(path);
    for (const char* key : {"keep", "w0", "w1", "w2", "w3", "w4", "w5"}) {
      std::string value;
      if (store.GetProperty(key, value)) table[key] = value;
    }
  }
  return table;
}

int Writer(bool ini, const std::string& path, const std::string& key,
           int count) {
  if (ini) {
    IniPropertyManager* manager =
        Properties::GetInstance()->GetIniPropertyManager("sharing");
    manager->RegisterPersistence(path, "");
    manager->RegisterProperty("PROPERTY_TYPE_INTEGER", "s", key, "0");
    for (int i = 1; i <= count; ++i) {
      manager->SetValue("s", key, std::to_string(i));
    }
  } else {
    JavaPropertyManager* manager =
        Properties::GetInstance()->GetJavaPropertyManager("sharing");
    manager->RegisterPersistence(path, "");
    manager->RegisterProperty("PROPERTY_TYPE_INTEGER", key, "0");
    for (int i = 1; i <= count; ++i) {
      manager->SetValue(key, std::to_string(i));
    }
  }
  return 0;
}

int Reader(bool ini, const std::string& path, int count,
           const std::vector<std::string>& keys) {
  std::map<std::string, long> highest;
  for (int i = 0; i < count; ++i) {
    const std::map<std::string, std::string> table = LoadTable(ini, path);
    for (const std::string& key : keys) {
      if (table.count(key) == 0) {
        return Fail("read " + std::to_string(i) + " lacks " + key);
      }
    }
    for (const auto& entry : table) {
      const long value = std::strtol(entry.second.c_str(), nullptr, 10);
      if (value < highest[entry.first]) {
        return Fail("read " + std::to_string(i) + ": " + entry.first +
                    " went back from " + std::to_string(highest[entry.first]) +
                    " to " + entry.second);
      }
      highest[entry.first] = value;
    }
  }
  return 0;
}

}  // namespace

// Every message of the library goes to standard error, one a line, so that
// the test sees what happened (this Log takes the place of the library's).
void Log(int, char* format, ...) {
  va_list args;
  va_start(args, format);
  std::vfprintf(stderr, format, args);
  va_end(args);
  std::fputc('\n', stderr);
}

int main(int argc, char** argv) {
  ::alarm(60);  // Never outlive a test that forgot it.
  if (argc < 5) return Fail("usage: flat|ini PATH writer|reader ...");
  const bool ini = std::string(argv[1]) == "ini";
  const std::string path = argv[2];
  const std::string role = argv[3];
  if (role == "writer" && argc == 6) {
    return Writer(ini, path, argv[4], std::atoi(argv[5]));
  }
  if (role == "reader") {
    return Reader(ini, path, std::atoi(argv[4]),
                  std::vector<std::string>(argv + 5, argv + argc));
  }
  return Fail("unknown role " + role);
}
