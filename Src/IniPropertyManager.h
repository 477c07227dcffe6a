// IniPropertyManager.h - the manager of one domain of sectioned properties,
// addressed by section and key and bound to INI files.
//
// Get one from Properties::GetInstance()->GetIniPropertyManager(name); the
// singleton owns it. It works like JavaPropertyManager with (section, key)
// in place of the key, except for read-only bindings: they are not recorded,
// so every RegisterNonPersistence call attaches one more reader (even for the
// same path), UnRegisterPersistence never finds one, and a read-only binding
// lasts until the manager is destroyed.
//
// Thread safety: as JavaPropertyManager. RegisterProperty and SetValue hold
// the manager's recursive mutex; look-ups, GetValue, UnregisterProperty and
// the binding operations take no lock of their own.
//
// ABI: the base, the member order and the virtual-function order are part of
// the binary interface. Do not reorder, insert or remove.

#ifndef SRC_INIPROPERTYMANAGER_H_
#define SRC_INIPROPERTYMANAGER_H_

#include <map>

#include "IniPropertiesPersistence.h"
#include "IniPropertyFactory.h"
#include "Property.h"
#include "PropertyManager.h"
#include "PropertyThreadGuard.h"

class IniPropertyManager : public PropertyManager {
 public:
  // factory is not owned and may be null (then registering a new pair
  // aborts).
  IniPropertyManager(const propstring& name, IniPropertyFactory* factory);
  // Deletes the registered properties, then all bindings (read-only ones
  // included). Writes no file.
  virtual ~IniPropertyManager();

  // Binds the domain read-write to the INI file at filePath, with header as
  // its ";" comment line. Ignored if filePath is bound read-write already.
  void RegisterPersistence(const propstring& filePath,
                           const propstring& header) override;
  // Attaches a new read-only reader of filePath, unless filePath is bound
  // read-write. Not recorded: see the file comment.
  void RegisterNonPersistence(const propstring& filePath) override;
  // Removes the read-write binding of filePath; ignored if there is none.
  void UnRegisterPersistence(const propstring& filePath) override;

  // Returns the property registered under (section, key); if there is none,
  // creates one of type with the initial value and registers it. The manager
  // owns it. Returns null if type is unknown. Throws Property::WrongValue if
  // the key or the initial value is rejected.
  Property* RegisterProperty(const propstring& type, const propstring& section,
                             const propstring& key, const propstring& initial);
  // Removes the property and returns it: the caller owns it now. Returns null
  // if (section, key) is unknown.
  Property* UnregisterProperty(const propstring& section,
                               const propstring& key);
  // Sets the value. Logs (naming the key only) and returns if (section, key)
  // is unknown. Throws Property::WrongValue if the property rejects value.
  void SetValue(const propstring& section, const propstring& key,
                const propstring& value);
  // The value, or "" if (section, key) is unknown.
  propstring GetValue(const propstring& section, const propstring& key) const;
  // The property of (section, key), or null. Not owned.
  Property* GetProperty(const propstring& section, const propstring& key) const;

 protected:
  IniPropertyFactory* m_propertyFactory;  // Not owned.
  // Index of the read-write bindings by path; the base owns them as clients.
  std::map<propstring, IniPropertiesPersistence*> m_persistences;
};

#endif  // SRC_INIPROPERTYMANAGER_H_
