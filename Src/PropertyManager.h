// PropertyManager.h - the registry of the properties of one named domain,
// with its clients, registry listeners and change listeners.
//
// The two manager flavours (JavaPropertyManager, IniPropertyManager) derive
// from this class; programs get them from Properties and never create or
// delete managers themselves.
//
// Callbacks are made on the caller's thread, in the order the callees were
// added. The operations of this class take no lock: the flavours hold m_mutex
// around their registering and value-setting operations, and callers that use
// these operations directly from several threads serialise them.
//
// Ownership: the manager owns its registered properties and its clients and
// deletes them in its destructor (properties first, without callbacks).
// Listeners are never owned.
//
// Passing a null pointer to any of the nine pointer operations aborts with an
// assertion failure (in every build type).
//
// ABI: member order and virtual-function order are part of the binary
// interface. Do not reorder, insert or remove.

#ifndef SRC_PROPERTYMANAGER_H_
#define SRC_PROPERTYMANAGER_H_

#include <pthread.h>

#include <list>

#include "Property.h"
#include "PropertyChangeListener.h"
#include "PropertyClient.h"
#include "PropertyRegistryListener.h"
#include "PropertyThreadGuard.h"

class PropertyManager {
 public:
  explicit PropertyManager(const propstring& name);
  // Deletes every registered property, then every client (once, also if it is
  // a listener too). No callbacks are made and no file is written.
  virtual ~PropertyManager();

  // Bind the domain to a file; the flavours define the arguments.
  virtual void RegisterPersistence(const propstring& filePath,
                                   const propstring& header) = 0;
  virtual void RegisterNonPersistence(const propstring& filePath) = 0;
  virtual void UnRegisterPersistence(const propstring& filePath) = 0;

  // Takes ownership of property, tells it its manager and calls AddingProperty
  // on every registry listener. Ignored (caller keeps ownership, nobody told)
  // if the same pointer, or a property with equal key and section, is already
  // registered.
  void RegisterProperty(Property* property);
  // Calls RemovingProperty on every registry listener while property is still
  // listed, then removes it. Caller owns it afterwards; its manager link stays.
  // Ignored if property is not registered.
  void UnregisterProperty(Property* property);

  // Takes ownership of client and calls its RegisteredProperty for every
  // property registered so far, in registration order. Ignored if present.
  void RegisterClient(PropertyClient* client);
  // Removes client without callbacks; caller owns it afterwards.
  void UnregisterClient(PropertyClient* client);

  // Listeners are not owned; adding one twice keeps one entry, and removing
  // an absent one does nothing. No callbacks.
  void AddRegistryListener(PropertyRegistryListener* listener);
  void RemoveRegistryListener(PropertyRegistryListener* listener);
  void AddChangeListener(PropertyChangeListener* listener);
  void RemoveChangeListener(PropertyChangeListener* listener);

  // Calls PropertyChanged(property) on every change listener. property need
  // not belong to this manager.
  void NotifyChangeListeners(Property* property);

  propstring GetName() const;

  PropertyManager(const PropertyManager&) = delete;
  PropertyManager& operator=(const PropertyManager&) = delete;

 protected:
  // Not client interface: the operations both flavours share.
  friend class PropertyManagerOperations;

  propstring m_name;
  std::list<PropertyClient*> m_clients;
  std::list<Property*> m_properties;
  std::list<PropertyRegistryListener*> m_registryListeners;
  std::list<PropertyChangeListener*> m_changeListeners;
  // Not client interface: the four cursors are kept for the binary layout
  // only. Walks use cursors of their own so that a callback may start
  // another walk of the same manager, e.g. a change listener that sets a
  // further property.
  std::list<PropertyClient*>::iterator m_clientIter;
  std::list<Property*>::iterator m_propertyIter;
  std::list<PropertyRegistryListener*>::iterator m_registryListenerIter;
  std::list<PropertyChangeListener*>::iterator m_changeListenerIter;
  pthread_mutex_t* m_mutex;  // Owned; locked by the flavours.
};

#endif  // SRC_PROPERTYMANAGER_H_
