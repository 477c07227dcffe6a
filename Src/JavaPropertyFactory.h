// JavaPropertyFactory.h - creates properties of the flat flavour (key and
// initial value; the section is always empty) by type name.
//
// ABI: part of the binary interface; do not change the bases or add virtual
// functions.

#ifndef SRC_JAVAPROPERTYFACTORY_H_
#define SRC_JAVAPROPERTYFACTORY_H_

#include "Property.h"
#include "PropertyFactory.h"

// Creates a property from key and initial value; the caller owns the result.
typedef Property* (*JavaPropertyCreator)(const propstring& key,
                                         const propstring& value);

class JavaPropertyFactory : public PropertyFactory<JavaPropertyCreator> {
 public:
  JavaPropertyFactory();  // An empty table.
  virtual ~JavaPropertyFactory();

  // Returns a new property of the named type; the caller owns it. Returns null
  // if type is unknown. Throws Property::WrongValue if the key or the initial
  // value is rejected (nothing is leaked).
  Property* CreateProperty(const propstring& type, const propstring& key,
                           const propstring& value);
};

#endif  // SRC_JAVAPROPERTYFACTORY_H_
