// StringProperty.cpp - see StringProperty.h.

#include "StringProperty.h"

const char StringProperty::kTypeName[] = "PROPERTY_TYPE_STRING";

StringProperty::StringProperty(const propstring& key, const propstring& value,
                               const propstring& section)
    : BaseProperty(key, kTypeName, "String Property", section),
      // Unchecked on purpose: programs create defaults holding '#' and expect
      // to read them back; only later changes are checked.
      m_value(value) {}

StringProperty::~StringProperty() {}

propstring StringProperty::GetValue() const { return m_value; }

void StringProperty::SetValue(const propstring& value) {
  PropertyThreadGuard guard(m_mutex);
  IsValueValid(value);
  m_value = value;
  NotifyManager();
}

void StringProperty::IsValueValid(const propstring& value) {
  if (value.find('#') != propstring::npos) {
    throw WrongValue("Property values can not contain character \"#\"");
  }
}
