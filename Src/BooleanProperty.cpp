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
  return m_value ? "true" : "false";
}

void BooleanProperty::SetValue(const propstring& value) {
  PropertyThreadGuard guard(m_mutex);
  IsValueValid(value);
  m_value = value == "true";
  NotifyManager();
}

void BooleanProperty::IsValueValid(const propstring& value) {
  if (value == "true" || value == "false") return;
  RejectValue("true or false");
}

bool BooleanProperty::GetBooleanValue() const { return m_value; }

void BooleanProperty::SetBooleanValue(bool value) {
  PropertyThreadGuard guard(m_mutex);
  m_value = value;
  NotifyManager();
}
