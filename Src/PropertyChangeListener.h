// PropertyChangeListener.h - the interface of an object that hears every
// value change that a property reports to its manager.
//
// ABI: the order of the virtual functions is part of the binary interface.

#ifndef SRC_PROPERTYCHANGELISTENER_H_
#define SRC_PROPERTYCHANGELISTENER_H_

#include "PropertyThreadGuard.h"

class Property;

class PropertyChangeListener {
 public:
  virtual ~PropertyChangeListener();

  // A value was set on property (also when it equals the old one). Called on
  // the setting thread while the property's lock, and the manager's lock when
  // the change came through the manager, are held. Not owned.
  virtual void PropertyChanged(Property* property) = 0;
};

#endif  // SRC_PROPERTYCHANGELISTENER_H_
