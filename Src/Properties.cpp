// Properties.cpp - see Properties.h.

#include "Properties.h"

#include <pthread.h>

#include <cstdlib>
#include <memory>
#include <new>

#include "BooleanProperty.h"
#include "DoubleProperty.h"
#include "IntegerProperty.h"
#include "IpAddrProperty.h"
#include "ListProperty.h"
#include "StringProperty.h"

// Made at library load, before any entry point can run.
pthread_mutex_t* Properties::m_mutex = PropertyCreateNewMutex();

namespace {

// The singleton lives in static storage and is built on first use, so that
// its construction is guarded by m_mutex. Both are only touched under it.
alignas(Properties) unsigned char g_instanceStorage[sizeof(Properties)];
bool g_instanceConstructed = false;

// Guards the shape of the manager directory, so that the look-up that does
// not wait for m_mutex is still free of data races. It is held only for one
// map look-up or insertion, never while a manager is being built.
// Constant-initialised and never destroyed: it must outlive the singleton.
pthread_rwlock_t g_directoryLock = PTHREAD_RWLOCK_INITIALIZER;

Properties* Instance() {
  return std::launder(reinterpret_cast<Properties*>(g_instanceStorage));
}

void DestroyInstance() { Instance()->~Properties(); }

PropertyManager* FindManager(const std::map<propstring, PropertyManager*>& map,
                             const propstring& name) {
  pthread_rwlock_rdlock(&g_directoryLock);
  std::map<propstring, PropertyManager*>::const_iterator it = map.find(name);
  PropertyManager* manager = it == map.end() ? nullptr : it->second;
  pthread_rwlock_unlock(&g_directoryLock);
  return manager;
}

void InsertManager(std::map<propstring, PropertyManager*>& map,
                   const propstring& name, PropertyManager* manager) {
  pthread_rwlock_wrlock(&g_directoryLock);
  try {
    map.insert(std::make_pair(name, manager));
  } catch (...) {
    pthread_rwlock_unlock(&g_directoryLock);
    throw;
  }
  pthread_rwlock_unlock(&g_directoryLock);
}

// Returns the manager of name, creating it with make() under m_mutex if name
// is new. make() gets the name cut at its first NUL, as managers have always
// been named; the directory keeps the whole name.
template <typename Make>
PropertyManager* FindOrCreate(std::map<propstring, PropertyManager*>& map,
                              const propstring& name, Make make) {
  PropertyManager* manager = FindManager(map, name);
  if (manager != nullptr) return manager;
  PropertyThreadGuard guard(Properties::m_mutex);
  manager = FindManager(map, name);
  if (manager != nullptr) return manager;
  std::unique_ptr<PropertyManager> created(make(propstring(name.c_str())));
  InsertManager(map, name, created.get());
  return created.release();
}

template <typename Factory, typename Creator>
void FillFactory(Factory& factory, Creator integer, Creator real,
                 Creator boolean, Creator string, Creator list, Creator ip) {
  factory.AddCreator(IntegerProperty::kTypeName, integer);
  factory.AddCreator(DoubleProperty::kTypeName, real);
  factory.AddCreator(BooleanProperty::kTypeName, boolean);
  factory.AddCreator(StringProperty::kTypeName, string);
  factory.AddCreator(ListProperty::kTypeName, list);
  factory.AddCreator(IpAddrProperty::kTypeName, ip);
}

template <typename T>
Property* Create(const propstring& key, const propstring& value,
                 const propstring& section) {
  return new T(key, value, section);
}

}  // namespace

Properties* Properties::GetInstance() {
  PropertyThreadGuard guard(m_mutex);
  if (!g_instanceConstructed) {
    new (g_instanceStorage) Properties();
    g_instanceConstructed = true;
    // atexit from a shared library also runs when the library is unloaded.
    std::atexit(DestroyInstance);
  }
  return Instance();
}

JavaPropertyManager* Properties::GetJavaPropertyManager(propstring name) {
  JavaPropertyFactory* factory = m_javaPropertyFactory;
  PropertyManager* manager =
      FindOrCreate(m_propertyManagers, name, [factory](const propstring& n) {
        return new JavaPropertyManager(n, factory);
      });
  // Unchecked on purpose: one directory serves both flavours, and a name
  // made by the other flavour comes back as it is.
  return reinterpret_cast<JavaPropertyManager*>(manager);
}

IniPropertyManager* Properties::GetIniPropertyManager(propstring name) {
  IniPropertyFactory* factory = m_iniPropertyFactory;
  PropertyManager* manager =
      FindOrCreate(m_propertyManagers, name, [factory](const propstring& n) {
        return new IniPropertyManager(n, factory);
      });
  // Unchecked on purpose, as in GetJavaPropertyManager.
  return reinterpret_cast<IniPropertyManager*>(manager);
}

JavaPropertyFactory* Properties::GetJavaPropertyFactory() const {
  return m_javaPropertyFactory;
}

IniPropertyFactory* Properties::GetIniPropertyFactory() const {
  return m_iniPropertyFactory;
}

void Properties::EnableInternalLogging(const propstring&) {}

void Properties::DisableInternalLogging() {}

Properties::Properties()
    : m_javaPropertyFactory(nullptr), m_iniPropertyFactory(nullptr) {
  std::unique_ptr<JavaPropertyFactory> java(new JavaPropertyFactory());
  FillFactory(*java, JCreateIntegerProperty, JCreateDoubleProperty,
              JCreateBooleanProperty, JCreateStringProperty,
              JCreateListProperty, JCreateIpAddrProperty);
  std::unique_ptr<IniPropertyFactory> ini(new IniPropertyFactory());
  FillFactory(*ini, ICreateIntegerProperty, ICreateDoubleProperty,
              ICreateBooleanProperty, ICreateStringProperty,
              ICreateListProperty, ICreateIpAddrProperty);
  m_javaPropertyFactory = java.release();
  m_iniPropertyFactory = ini.release();
}

Properties::~Properties() {
  for (const auto& entry : m_propertyManagers) delete entry.second;
  delete m_javaPropertyFactory;
  delete m_iniPropertyFactory;
  // Not reset: nothing may run after the singleton is gone.
  PropertyDeleteMutex(m_mutex);
  m_propertyManagers.clear();
}

// The flat flavour has no sections: every property it makes gets "".
Property* JCreateIntegerProperty(const propstring& key,
                                 const propstring& value) {
  return Create<IntegerProperty>(key, value, propstring());
}

Property* JCreateDoubleProperty(const propstring& key,
                                const propstring& value) {
  return Create<DoubleProperty>(key, value, propstring());
}

Property* JCreateBooleanProperty(const propstring& key,
                                 const propstring& value) {
  return Create<BooleanProperty>(key, value, propstring());
}

Property* JCreateStringProperty(const propstring& key,
                                const propstring& value) {
  return Create<StringProperty>(key, value, propstring());
}

Property* JCreateListProperty(const propstring& key, const propstring& value) {
  return Create<ListProperty>(key, value, propstring());
}

Property* JCreateIpAddrProperty(const propstring& key,
                                const propstring& value) {
  return Create<IpAddrProperty>(key, value, propstring());
}

Property* ICreateIntegerProperty(const propstring& key, const propstring& value,
                                 const propstring& section) {
  return Create<IntegerProperty>(key, value, section);
}

Property* ICreateDoubleProperty(const propstring& key, const propstring& value,
                                const propstring& section) {
  return Create<DoubleProperty>(key, value, section);
}

Property* ICreateBooleanProperty(const propstring& key, const propstring& value,
                                 const propstring& section) {
  return Create<BooleanProperty>(key, value, section);
}

Property* ICreateStringProperty(const propstring& key, const propstring& value,
                                const propstring& section) {
  return Create<StringProperty>(key, value, section);
}

Property* ICreateListProperty(const propstring& key, const propstring& value,
                              const propstring& section) {
  return Create<ListProperty>(key, value, section);
}

Property* ICreateIpAddrProperty(const propstring& key, const propstring& value,
                                const propstring& section) {
  return Create<IpAddrProperty>(key, value, section);
}
