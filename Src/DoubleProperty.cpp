// DoubleProperty.cpp - see DoubleProperty.h.

#include "DoubleProperty.h"

#include <charconv>

#include "TextNumbers.h"

const char DoubleProperty::kTypeName[] = "PROPERTY_TYPE_DOUBLE";

DoubleProperty::DoubleProperty(const propstring& key, const propstring& value,
                               const propstring& section)
    : BaseProperty(key, kTypeName, "Double Property", section), m_value(0.0) {
  DoubleProperty::IsValueValid(value);
  m_value = TextNumbers::StdStringToDouble(value);
}

DoubleProperty::~DoubleProperty() {}

propstring DoubleProperty::GetValue() const {
  // to_chars with a precision is printf "%.15g" in the C locale. snprintf
  // would follow LC_NUMERIC and write "0,1" in a German locale, which no
  // reader of the file could take back.
  char text[32] = {};
  const std::to_chars_result result =
      std::to_chars(text, text + sizeof text - 1, GetDoubleValue(),
                    std::chars_format::general, 15);
  return propstring(text, result.ptr);
}

void DoubleProperty::SetValue(const propstring& value) {
  PropertyThreadGuard guard(m_mutex);
  IsValueValid(value);
  // Atomic, so that a reader on another thread never races with a writer.
  double converted = TextNumbers::StdStringToDouble(value);
  __atomic_store(&m_value, &converted, __ATOMIC_RELEASE);
  NotifyManager();
}

void DoubleProperty::IsValueValid(const propstring& value) {
  try {
    TextNumbers::StdStringToDouble(value);
  } catch (...) {
    RejectValue("a double value");
  }
}

double DoubleProperty::GetDoubleValue() const {
  double value;
  __atomic_load(&m_value, &value, __ATOMIC_ACQUIRE);
  return value;
}

void DoubleProperty::SetDoubleValue(double value) {
  PropertyThreadGuard guard(m_mutex);
  __atomic_store(&m_value, &value, __ATOMIC_RELEASE);
  NotifyManager();
}
