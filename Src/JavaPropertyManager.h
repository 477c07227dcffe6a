// JavaPropertyManager.h - the manager of one domain of flat properties,
// addressed by key alone and bound to key=value files.
//
// Get one from Properties::GetInstance()->GetJavaPropertyManager(name); the
// singleton owns it. Typical use:
//
//   JavaPropertyManager* m =
//       Properties::GetInstance()->GetJavaPropertyManager("server");
//   m->RegisterPersistence("/etc/server.properties", "server settings");
//   m->RegisterProperty("PROPERTY_TYPE_INTEGER", "port", "8080");
//   m->SetValue("port", "9090");  // rewrites /etc/server.properties
//
// Thread safety: RegisterProperty and SetValue hold the manager's recursive
// mutex across creation plus registration, and across the property's SetValue
// with the change notification and file rewrite it causes. Look-ups, GetValue
// and UnregisterProperty take no lock of their own. The binding operations
// take no lock either: bind files before other threads use the manager.
//
// ABI: the base, the member order and the virtual-function order are part of
// the binary interface. Do not reorder, insert or remove.

#ifndef SRC_JAVAPROPERTYMANAGER_H_
#define SRC_JAVAPROPERTYMANAGER_H_

#include <map>

#include "JavaPropertiesPersistence.h"
#include "JavaPropertyFactory.h"
#include "Property.h"
#include "PropertyManager.h"
#include "PropertyThreadGuard.h"

class JavaPropertyManager : public PropertyManager {
 public:
  // factory is not owned and may be null (then registering a new key aborts).
  JavaPropertyManager(const propstring& name, JavaPropertyFactory* factory);
  // Deletes the registered properties, then the bindings. Writes no file.
  virtual ~JavaPropertyManager();

  // Binds the domain read-write to the file at filePath: stored values are
  // loaded now and at every later registration, and every value change
  // rewrites the file with header as its "#" comment line. Ignored if
  // filePath is bound already (either way).
  void RegisterPersistence(const propstring& filePath,
                           const propstring& header) override;
  // Binds the domain read-only to filePath: stored values are loaded, the
  // file is never written. Ignored if filePath is bound already.
  void RegisterNonPersistence(const propstring& filePath) override;
  // Removes either kind of binding of filePath; ignored if there is none.
  void UnRegisterPersistence(const propstring& filePath) override;

  // Returns the property registered under key; if there is none, creates one
  // of type (e.g. "PROPERTY_TYPE_INTEGER") with the initial value (for a list
  // property, its choices "a|b|c") and registers it. The manager owns it.
  // An existing property is returned unchanged, whatever type and initial
  // say. Returns null if type is unknown. Throws Property::WrongValue if the
  // key or the initial value is rejected.
  Property* RegisterProperty(const propstring& type, const propstring& key,
                             const propstring& initial);
  // Removes the property of key and returns it: the caller owns it now.
  // Returns null if key is unknown.
  Property* UnregisterProperty(const propstring& key);
  // Sets the value of key. Logs and returns if key is unknown. Throws
  // Property::WrongValue if the property rejects value (the old value stays).
  void SetValue(const propstring& key, const propstring& value);
  // The value of key, or "" if key is unknown.
  propstring GetValue(const propstring& key) const;
  // The property of key, or null. Not owned.
  Property* GetProperty(const propstring& key) const;

 protected:
  JavaPropertyFactory* m_propertyFactory;  // Not owned.
  // Index of the bindings by path; the base owns them as clients.
  std::map<propstring, JavaPropertiesPersistence*> m_persistences;
};

#endif  // SRC_JAVAPROPERTYMANAGER_H_
