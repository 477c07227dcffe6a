// IniPropertyFactory.h - creates properties of the sectioned flavour (key,
// initial value and section) by type name.
//
// ABI: part of the binary interface; do not change the bases or add virtual
// functions.

#ifndef SRC_INIPROPERTYFACTORY_H_
#define SRC_INIPROPERTYFACTORY_H_

#include "Property.h"
#include "PropertyFactory.h"

// Creates a property from key, initial value and section; the caller owns the
// result.
typedef Property* (*IniPropertyCreator)(const propstring& key,
                                        const propstring& value,
                                        const propstring& section);

class IniPropertyFactory : public PropertyFactory<IniPropertyCreator> {
 public:
  IniPropertyFactory();  // An empty table.
  virtual ~IniPropertyFactory();

  // Returns a new property of the named type; the caller owns it. Returns null
  // if type is unknown. Throws Property::WrongValue if the key or the initial
  // value is rejected (nothing is leaked). Note the argument order: section
  // comes first here but is passed last to the creator.
  Property* CreateProperty(const propstring& type, const propstring& section,
                           const propstring& key, const propstring& value);
};

#endif  // SRC_INIPROPERTYFACTORY_H_
