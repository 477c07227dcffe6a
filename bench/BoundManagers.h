// BoundManagers.h - the two managers of the library behind one face, so that
// a benchmark of a bound manager is written once for flat and INI files:
//
//   FlatManager manager;  // or IniManager
//   manager.Bind(path);
//   manager.Register(IntegerProperty::kTypeName, "", "server.port");
//   manager.Set("", "server.port", "8081");  // rewrites the file
//
// The section argument is ignored by FlatManager. Each manager is made
// directly (not through the Properties singleton, which keeps one per
// name), with the library's own factories, so that every one starts clean.
// Shared by the benchmark program and the SetValue child (SetValueChild.h).

#ifndef BENCH_BOUNDMANAGERS_H_
#define BENCH_BOUNDMANAGERS_H_

#include <string>

#include "IniPropertyManager.h"
#include "JavaPropertyManager.h"

namespace bench {

// The domain name every benchmark manager has.
extern const char kManagerName[];
// The header line text the managers write ("bench settings").
extern const char kManagerHeader[];

class FlatManager {
 public:
  FlatManager();
  // Binds the manager read-write to the file at path.
  void Bind(const std::string& path);
  void Register(const char* type, const std::string& section,
                const std::string& key);
  void Set(const std::string& section, const std::string& key,
           const std::string& value);
  std::string Get(const std::string& section, const std::string& key) const;

 private:
  JavaPropertyManager m_manager;
};

class IniManager {
 public:
  IniManager();
  void Bind(const std::string& path);
  void Register(const char* type, const std::string& section,
                const std::string& key);
  void Set(const std::string& section, const std::string& key,
           const std::string& value);
  std::string Get(const std::string& section, const std::string& key) const;

 private:
  IniPropertyManager m_manager;
};

}  // namespace bench

#endif  // BENCH_BOUNDMANAGERS_H_
