// Properties.h - the library entry, and the twelve creator functions that the
// factories map the six type names to.
//
// Properties is the process-wide object through which a program reaches the
// library. It owns one manager per domain name and the two factories, and
// deletes them all at process exit (managers in ascending name order). A
// program never creates or deletes managers itself:
//
//   JavaPropertyManager* server =
//       Properties::GetInstance()->GetJavaPropertyManager("server");
//   IniPropertyManager* ui =
//       Properties::GetInstance()->GetIniPropertyManager("ui");
//
// Both flavours share one directory of names: use each name with one flavour
// only. Asking GetIniPropertyManager for a name that already names a
// JavaPropertyManager returns that manager unchecked, as the wrong type.
//
// Thread safety: every operation may be called from several threads at once.
// A name that exists is found without waiting for Properties::m_mutex; a new
// name is created once, under it. No entry point may be called after the
// singleton was destroyed at process exit.
//
// JCreate...Property makes a property of the flat flavour (empty section);
// ICreate...Property one of the sectioned flavour. Each returns a new object
// that the caller owns, and throws Property::WrongValue if the key or the
// initial value is rejected (nothing is leaked). For the list type, value is
// the list of choices ("red|green|blue").

#ifndef SRC_PROPERTIES_H_
#define SRC_PROPERTIES_H_

#include <pthread.h>

#include <map>

#include "IniPropertyFactory.h"
#include "IniPropertyManager.h"
#include "JavaPropertyFactory.h"
#include "JavaPropertyManager.h"
#include "Property.h"
#include "PropertyManager.h"
#include "PropertyThreadGuard.h"

// ABI: the member order and the virtual-function order are part of the
// binary interface. Do not reorder, insert or remove.
class Properties {
 public:
  // The singleton, built on first use (under m_mutex). Throws what building
  // it throws (std::bad_alloc); the next call tries again.
  static Properties* GetInstance();

  // The manager of name, created as a JavaPropertyManager if name is new.
  // The singleton owns it; it lives until process exit. Never null.
  JavaPropertyManager* GetJavaPropertyManager(propstring name);
  // The manager of name, created as an IniPropertyManager if name is new.
  IniPropertyManager* GetIniPropertyManager(propstring name);

  // The factories handed to new managers; filled with the six type names.
  // Owned by the singleton.
  JavaPropertyFactory* GetJavaPropertyFactory() const;
  IniPropertyFactory* GetIniPropertyFactory() const;

  // Logging switches of a logging build; they do nothing in this one.
  void EnableInternalLogging(const propstring& target);
  void DisableInternalLogging();

  // Used by GetInstance and at process exit only.
  Properties();
  virtual ~Properties();

  Properties(const Properties&) = delete;
  Properties& operator=(const Properties&) = delete;

  // Recursive; made when the library is loaded. Guards the creation of the
  // singleton and of every manager. Destroyed with the singleton.
  static pthread_mutex_t* m_mutex;

 protected:
  std::map<propstring, PropertyManager*> m_propertyManagers;  // Owned.
  JavaPropertyFactory* m_javaPropertyFactory;                 // Owned.
  IniPropertyFactory* m_iniPropertyFactory;                   // Owned.
};

// Creator functions:

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
