// PropertyRegistryListener.h - the interface of an object that hears every
// addition to and removal from a manager's registry.
//
// ABI: the order of the virtual functions is part of the binary interface.

#ifndef SRC_PROPERTYREGISTRYLISTENER_H_
#define SRC_PROPERTYREGISTRYLISTENER_H_

#include "PropertyThreadGuard.h"

class Property;

class PropertyRegistryListener {
 public:
  virtual ~PropertyRegistryListener();

  // The property has just been added: it is already listed and knows its
  // manager. Not owned.
  virtual void AddingProperty(Property* property) = 0;
  // The property is about to be removed: it is still listed. Not owned.
  virtual void RemovingProperty(Property* property) = 0;
};

#endif  // SRC_PROPERTYREGISTRYLISTENER_H_
