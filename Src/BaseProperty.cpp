// BaseProperty.cpp - see BaseProperty.h.

#include "BaseProperty.h"

#include <cstdio>

#include "PropertyManager.h"

BaseProperty::BaseProperty(const propstring& key, const propstring& type,
                           const propstring& name, const propstring& section)
    : m_manager(nullptr), m_mutex(nullptr) {
  BaseProperty::IsKeyValid(key);
  m_key = key;
  m_type = type;
  m_name = name;
  m_section = section;
  m_mutex = PropertyCreateNewMutex();
}

BaseProperty::~BaseProperty() { PropertyDeleteMutex(m_mutex); }

propstring BaseProperty::GetSection() const { return m_section; }

void BaseProperty::SetSection(const propstring& section) {
  m_section = section;
}

propstring BaseProperty::GetKey() const { return m_key; }

propstring BaseProperty::GetPropertyType() const { return m_type; }

propstring BaseProperty::GetPropertyName() const { return m_name; }

void BaseProperty::RegisterPropertyManager(PropertyManager* manager) {
  m_manager = manager;
}

void BaseProperty::IsKeyValid(const propstring& key) {
  // Only both characters together are refused, although the message reads as
  // if either were; existing files and programs rely on keys with one of them.
  if (key.find('#') == propstring::npos) return;
  if (key.find('=') == propstring::npos) return;
  throw WrongValue("Property key can not contain characters: '= #'");
}

void BaseProperty::RejectValue(const char* allowed) const {
  char message[1024];
  std::snprintf(message, sizeof message, "Property '%s' can only contain '%s'",
                GetKey().c_str(), allowed);
  throw WrongValue(message);
}

void BaseProperty::NotifyManager() {
  if (m_manager != nullptr) m_manager->NotifyChangeListeners(this);
}
