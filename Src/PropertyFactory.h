// PropertyFactory.h - a table from type name to the function that creates a
// property of that type.
//
// F is the creator's function-pointer type. The library instantiates the
// template for the two creator types of JavaPropertyFactory and
// IniPropertyFactory only; the member definitions live in the library.
//
// The table is filled once, by its owner, and only read afterwards: reads
// from several threads at once are safe, a write during reads is not.
//
// ABI: member order and virtual-function order are part of the binary
// interface. Do not reorder, insert or remove.

#ifndef SRC_PROPERTYFACTORY_H_
#define SRC_PROPERTYFACTORY_H_

#include <map>
#include <vector>

#include "PropertyThreadGuard.h"

template <typename F>
class PropertyFactory {
 public:
  PropertyFactory();  // An empty table.
  virtual ~PropertyFactory();

  // Adds creator under type unless type has a creator already, in which case
  // the first one stays. Returns true if creator was added.
  bool AddCreator(const propstring& type, F creator);
  // Returns the creator for type (exact, case-sensitive match), or null.
  F FindCreator(const propstring& type) const;
  // The type names in the table, in byte order.
  std::vector<propstring> GetTypeNames() const;

 protected:
  std::map<propstring, F> m_creators;
};

#endif  // SRC_PROPERTYFACTORY_H_
