// Properties.h - the library entry, and the twelve creator functions that the
// factories map the six type names to.
//
// JCreate...Property makes a property of the flat flavour (empty section);
// ICreate...Property one of the sectioned flavour. Each returns a new object
// that the caller owns, and throws Property::WrongValue if the key or the
// initial value is rejected (nothing is leaked). For the list type, value is
// the list of choices ("red|green|blue").

#ifndef SRC_PROPERTIES_H_
#define SRC_PROPERTIES_H_

#include "Property.h"
#include "PropertyThreadGuard.h"

Property* JCreateIntegerProperty(const propstring& key,
                                 const propstring& value);
Property* JCreateDoubleProperty(const propstring& key, const propstring& value);
Property* JCreateBooleanProperty(const propstring& key,
                                 const propstring& value);
Property* JCreateStringProperty(const propstring& key, const propstring& value);
Property* JCreateListProperty(const propstring& key, const propstring& value);
Property* JCreateIpAddrProperty(const propstring& key, const propstring& value);

Property* ICreateIntegerProperty(const propstring& key, const propstring& value,
                                 const propstring& section);
Property* ICreateDoubleProperty(const propstring& key, const propstring& value,
                                const propstring& section);
Property* ICreateBooleanProperty(const propstring& key, const propstring& value,
                                 const propstring& section);
Property* ICreateStringProperty(const propstring& key, const propstring& value,
                                const propstring& section);
Property* ICreateListProperty(const propstring& key, const propstring& value,
                              const propstring& section);
Property* ICreateIpAddrProperty(const propstring& key, const propstring& value,
                                const propstring& section);

#endif  // SRC_PROPERTIES_H_
