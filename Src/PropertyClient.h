// PropertyClient.h - the interface of an object that a manager owns and tells
// of the properties registered before the object itself was registered.
//
// ABI: the order of the virtual functions is part of the binary interface.

#ifndef SRC_PROPERTYCLIENT_H_
#define SRC_PROPERTYCLIENT_H_

#include "PropertyThreadGuard.h"

class Property;

class PropertyClient {
 public:
  // Public and virtual: a manager deletes its clients through this interface.
  virtual ~PropertyClient();

  // Called once per property already registered when the client itself is
  // registered, in registration order. Not owned.
  virtual void RegisteredProperty(Property* property) = 0;
};

#endif  // SRC_PROPERTYCLIENT_H_
