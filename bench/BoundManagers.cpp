// BoundManagers.cpp - see BoundManagers.h.

#include "BoundManagers.h"

#include "Properties.h"

namespace bench {

const char kManagerName[] = "bench";
const char kManagerHeader[] = "bench settings";

namespace {

// Registered properties start at this value until the file's replaces it.
const char kInitial[] = "0";

}  // namespace

// The factories the library fills for its own managers; they keep no state
// of a manager, so that every manager made here still starts clean.
FlatManager::FlatManager()
    : m_manager(kManagerName,
                Properties::GetInstance()->GetJavaPropertyFactory()) {}

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

IniManager::IniManager()
    : m_manager(kManagerName,
                Properties::GetInstance()->GetIniPropertyFactory()) {}

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
