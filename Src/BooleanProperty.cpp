// BooleanProperty.cpp - see BooleanProperty.h.

#include "BooleanProperty.h"

const char BooleanProperty::kTypeName[] = "PROPERTY_TYPE_BOOLEAN";

BooleanProperty::BooleanProperty(const propstring& key, const propstring& value,
                                 const propstring& section)
    : BaseProperty(key, kTypeName, "Boolean Property", section),
      m_value(false) {
  BooleanProperty::IsValueValid(value);
  m_value = value == "true";
}

BooleanProperty::~BooleanProperty() {}

propstring BooleanProperty::GetValue() const {
  return GetBooleanValue() ? "true" : "false";
}

void BooleanProperty::SetValue(const propstring& value) {
  PropertyThreadGuard guard(m_mutex);
  IsValueValid(value);
  // Atomic, so that a reader on another thread never races with a writer.
  __atomic_store_n(&m_value, value == "true", __ATOMIC_RELEASE);
  NotifyManager();
}

void BooleanProperty::IsValueValid(const propstring& value) {
  if (value == "true" || value == "false") return;
  RejectValue("true or false");
}

bool BooleanProperty::GetBooleanValue() const {
  return __atomic_load_n(&m_value, __ATOMIC_ACQUIRE);
}

void BooleanProperty::SetBooleanValue(bool value) {
  PropertyThreadGuard guard(m_mutex);
  __atomic_store_n(&m_value, value, __ATOMIC_RELEASE);
  NotifyManager();
}
