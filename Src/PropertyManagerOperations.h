// PropertyManagerOperations.h - what the two manager flavours do alike:
// look-ups by (section and) key, registration by type name under the
// manager's mutex, setting a value with its log line, and binding files to
// the manager and unbinding them. Internal to the library: not installed.
//
// The flavours differ only in how a property is addressed (a section, or
// none) and which factory and persistence class they use; they pass those
// in and keep their own members, whose layout programs depend on.

#ifndef SRC_PROPERTYMANAGEROPERATIONS_H_
#define SRC_PROPERTYMANAGEROPERATIONS_H_

#include <pthread.h>

#include <map>
#include <vector>

#include "Property.h"
#include "PropertyManager.h"
#include "PropertyMessages.h"
#include "PropertyThreadGuard.h"

class PropertyManagerOperations {
 public:
  // Hold these around reads and single changes of a manager's property list:
  // look-ups run without the manager's mutex, and these keep them free of
  // data races. Never held during a callback, so they cannot deadlock.
  class ListReadLock {
   public:
    ListReadLock();
    ~ListReadLock();
  };
  class ListWriteLock {
   public:
    ListWriteLock();
    ~ListWriteLock();
  };

  // Returns the first registered property of manager whose section (unless
  // section is null; compared first) and key equal the arguments, or null.
  static Property* Find(const PropertyManager& manager,
                        const propstring* section, const propstring& key);

  // Sets value on property under the manager's mutex, so that the change
  // notification and any file rewrite happen under it too. A null property
  // is logged as "Property '<key>' was not found". Throws
  // Property::WrongValue, after logging it, if the property rejects value.
  static void SetValue(PropertyManager& manager, Property* property,
                       const propstring& key, const propstring& value);

  // Returns the property of (section,) key; if there is none, registers the
  // one create() makes, unless that is null. Aborts with assertion
  // noFactory if a property must be made and haveFactory is false.
  template <typename Create>
  static Property* Register(PropertyManager& manager, const propstring* section,
                            const propstring& key, bool haveFactory,
                            PropertyMessages::Assertion noFactory,
                            Create create) {
    // The common case, a key that is registered already, does not wait for
    // the mutex; the second look-up under it makes concurrent registrations
    // of one key agree on one property.
    Property* property = Find(manager, section, key);
    if (property != nullptr) return property;
    PropertyThreadGuard guard(manager.m_mutex);
    property = Find(manager, section, key);
    if (property != nullptr) return property;
    PropertyMessages::Require(haveFactory, noFactory);
    property = create();
    if (property == nullptr) return nullptr;
    manager.RegisterProperty(property);
    return property;
  }

  // Reloads every file binding of manager (read-write and read-only, of
  // either flavour, also those the INI manager does not record) from its
  // file, under the manager's mutex: properties whose stored value text
  // changed get it.
  static void Reload(PropertyManager& manager);
  // The paths of manager's file bindings, in the order they were made.
  static std::vector<propstring> BoundPaths(const PropertyManager& manager);

  // Binds the file at path to manager through a new Persistence(path,
  // header), unless index holds path already: as client and registry
  // listener and, if writes, as change listener, in that order. The manager
  // owns it; it enters index if recorded.
  template <typename Persistence>
  static void Bind(PropertyManager& manager,
                   std::map<propstring, Persistence*>& index,
                   const propstring& path, const propstring& header,
                   bool writes, bool recorded) {
    if (index.count(path) != 0) return;
    Persistence* persistence = new Persistence(path, header);
    manager.RegisterClient(persistence);
    manager.AddRegistryListener(persistence);
    if (writes) manager.AddChangeListener(persistence);
    if (recorded) index[path] = persistence;
  }

  // Detaches and deletes the binding that index holds for path, if any.
  template <typename Persistence>
  static void Unbind(PropertyManager& manager,
                     std::map<propstring, Persistence*>& index,
                     const propstring& path) {
    typename std::map<propstring, Persistence*>::iterator it = index.find(path);
    if (it == index.end()) return;
    Persistence* persistence = it->second;
    manager.UnregisterClient(persistence);
    manager.RemoveRegistryListener(persistence);
    // Harmless for a read-only binding, which never was a change listener.
    manager.RemoveChangeListener(persistence);
    delete persistence;
    index.erase(it);
  }
};

#endif  // SRC_PROPERTYMANAGEROPERATIONS_H_
