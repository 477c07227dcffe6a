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
#include "PropertyChoices.h"
#include "PropertyManager.h"
#include "PropertyMessages.h"
#include "PropertyStrictValues.h"
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
  // Property::WrongValue, after logging it, if the property rejects value,
  // or if the manager keeps strict values and a file of Format would not
  // give value back.
  template <typename Format>
  static void SetValue(PropertyManager& manager, Property* property,
                       const propstring& key, const propstring& value);

  // Returns the property of (section,) key; if there is none, registers the
  // one create() makes, unless that is null. Aborts with assertion
  // noFactory if a property must be made and haveFactory is false. If the
  // manager keeps strict values, throws Property::WrongValue, registering
  // nothing, for a section, key or value a file of Format would not give
  // back.
  template <typename Format, typename Create>
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
    PropertyStrictValues::RequireEntry<Format>(manager, section, key,
                                               propstring());
    property = create();
    if (property == nullptr) return nullptr;
    try {
      PropertyStrictValues::RequireProperty<Format>(manager, section,
                                                    *property);
    } catch (...) {
      delete property;  // Nobody has seen it yet.
      throw;
    }
    manager.RegisterProperty(property);
    return property;
  }

  // Reloads every file binding of manager (read-write and read-only, of
  // either flavour, also those the INI manager does not record) from its
  // file, under the manager's mutex: properties whose stored value text
  // changed get it.
  static void Reload(PropertyManager& manager);
  // A file binding of a manager: its path, and an address that names it
  // while it lives (for tables kept beside it).
  struct Binding {
    const void* id;
    propstring path;
  };
  // Manager's file bindings, in the order they were made. Takes the
  // manager's mutex.
  static std::vector<Binding> Bindings(PropertyManager& manager);
  // The paths of Bindings(manager).
  static std::vector<propstring> BoundPaths(PropertyManager& manager);

  // Binds the file at path to manager through a new Persistence(path,
  // header), unless index holds path already: as client and registry
  // listener and, if writes, as change listener, in that order. The manager
  // owns it; it enters index if recorded. If writes and the manager keeps
  // strict values, throws Property::WrongValue, binding nothing, for a
  // header that would not stay one comment line.
  template <typename Persistence>
  static void Bind(PropertyManager& manager,
                   std::map<propstring, Persistence*>& index,
                   const propstring& path, const propstring& header,
                   bool writes, bool recorded) {
    if (index.count(path) != 0) return;
    if (writes) PropertyStrictValues::RequireHeader(manager, header);
    Persistence* persistence = new Persistence(path, header);
    // Before the first rewrite, which may come as it is attached.
    PropertyChoices::Own(&manager, &persistence->m_boundProperties);
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
