// BoundManagers.cpp - see BoundManagers.h.

#include "BoundManagers.h"

#include "BooleanProperty.h"
#include "DoubleProperty.h"
#include "IniPropertyFactory.h"
#include "IntegerProperty.h"
#include "IpAddrProperty.h"
#include "JavaPropertyFactory.h"
#include "ListProperty.h"
#include "Properties.h"
#include "StringProperty.h"

namespace bench {

const char kManagerName[] = "bench";
const char kManagerHeader[] = "bench settings";

namespace {

JavaPropertyFactory* FlatFactory() {
  static JavaPropertyFactory* factory = [] {
    JavaPropertyFactory* made = new JavaPropertyFactory();
    made->AddCreator(IntegerProperty::kTypeName, JCreateIntegerProperty);
    made->AddCreator(DoubleProperty::kTypeName, JCreateDoubleProperty);
    made->AddCreator(BooleanProperty::kTypeName, JCreateBooleanProperty);
    made->AddCreator(StringProperty::kTypeName, JCreateStringProperty);
    made->AddCreator(ListProperty::kTypeName, JCreateListProperty);
    made->AddCreator(IpAddrProperty::kTypeName, JCreateIpAddrProperty);
    return made;
  }();
  return factory;
}

IniPropertyFactory* IniFactory() {
  static IniPropertyFactory* factory = [] {
    IniPropertyFactory* made = new IniPropertyFactory();
    made->AddCreator(IntegerProperty::kTypeName, ICreateIntegerProperty);
    made->AddCreator(DoubleProperty::kTypeName, ICreateDoubleProperty);
    made->AddCreator(BooleanProperty::kTypeName, ICreateBooleanProperty);
    made->AddCreator(StringProperty::kTypeName, ICreateStringProperty);
    made->AddCreator(ListProperty::kTypeName, ICreateListProperty);
    made->AddCreator(IpAddrProperty::kTypeName, ICreateIpAddrProperty);
    return made;
  }();
  return factory;
}

// Registered properties start at this value until the file's replaces it.
const char kInitial[] = "0";

}  // namespace

FlatManager::FlatManager() : m_manager(kManagerName, FlatFactory()) {}

void FlatManager::Bind(const std::string& path) {
  m_manager.RegisterPersistence(path, kManagerHeader);
}

void FlatManager::Register(const char* type, const std::string&,
                           const std::string& key) {
  m_manager.RegisterProperty(type, key, kInitial);
}

void FlatManager::Set(const std::string&, const std::string& key,
                      const std::string& value) {
  m_manager.SetValue(key, value);
}

std::string FlatManager::Get(const std::string&, const std::string& key) const {
  return m_manager.GetValue(key);
}

IniManager::IniManager() : m_manager(kManagerName, IniFactory()) {}

void IniManager::Bind(const std::string& path) {
  m_manager.RegisterPersistence(path, kManagerHeader);
}

void IniManager::Register(const char* type, const std::string& section,
                          const std::string& key) {
  m_manager.RegisterProperty(type, section, key, kInitial);
}

void IniManager::Set(const std::string& section, const std::string& key,
                     const std::string& value) {
  m_manager.SetValue(section, key, value);
}

std::string IniManager::Get(const std::string& section,
                            const std::string& key) const {
  return m_manager.GetValue(section, key);
}

}  // namespace bench
