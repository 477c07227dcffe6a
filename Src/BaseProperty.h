// BaseProperty.h - what all value types share: section, key, type names, the
// owning manager and a per-property recursive mutex.
//
// The value types derive from BaseProperty and add only the value, its text
// form and its check. Value setters follow one protocol: lock m_mutex, check
// with IsValueValid, store, then tell m_manager's change listeners, all under
// the lock (the list type is the exception: it takes no lock).
//
// ABI: member order and virtual-function order are part of the binary
// interface. Do not reorder, insert or remove.

#ifndef SRC_BASEPROPERTY_H_
#define SRC_BASEPROPERTY_H_

#include <pthread.h>

#include "Property.h"
#include "PropertyThreadGuard.h"

class PropertyManager;

class BaseProperty : public Property {
 public:
  // Throws Property::WrongValue if key holds both '=' and '#' (the key check
  // of this class runs first; no object exists after a throw).
  BaseProperty(const propstring& key, const propstring& type,
               const propstring& name, const propstring& section);
  // Frees the mutex. Does not tell the manager: removing a property from its
  // manager is the manager's business.
  virtual ~BaseProperty();

  propstring GetSection() const override;
  void SetSection(const propstring& section) override;
  propstring GetKey() const override;
  propstring GetPropertyType() const override;
  propstring GetPropertyName() const override;
  void RegisterPropertyManager(PropertyManager* manager) override;

  // Rejects only a key that holds both '=' and '#'. Either character alone is
  // accepted, and so is the empty key.
  void IsKeyValid(const propstring& key) override;

  BaseProperty(const BaseProperty&) = delete;
  BaseProperty& operator=(const BaseProperty&) = delete;

 protected:
  // Throws Property::WrongValue with "Property '<key>' can only contain
  // '<allowed>'", cut at 1023 characters.
  [[noreturn]] void RejectValue(const char* allowed) const;

  // Tells the manager's change listeners of this property, if a manager is
  // set. Called with m_mutex held by the value types that lock.
  void NotifyManager();

  propstring m_section;
  propstring m_key;
  propstring m_type;
  propstring m_name;
  PropertyManager* m_manager;  // Not owned; null until registered.
  pthread_mutex_t* m_mutex;    // Owned.
};

#endif  // SRC_BASEPROPERTY_H_
