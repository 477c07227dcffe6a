// IntegerProperty.cpp - see IntegerProperty.h.

#include "IntegerProperty.h"

#include <cctype>
#include <cstdio>

#include "TextNumbers.h"

namespace {

const char kAllowed[] = "an integer value";

bool IsDigit(char c) { return std::isdigit(static_cast<unsigned char>(c)); }

}  // namespace

const char IntegerProperty::kTypeName[] = "PROPERTY_TYPE_INTEGER";

IntegerProperty::IntegerProperty(const propstring& key, const propstring& value,
                                 const propstring& section)
    : BaseProperty(key, kTypeName, "Integer Property", section), m_value(0) {
  IntegerProperty::IsValueValid(value);
  m_value = TextNumbers::StdStringToInteger(value);
}

IntegerProperty::~IntegerProperty() {}

propstring IntegerProperty::GetValue() const {
  char text[32];
  std::snprintf(text, sizeof text, "%d", GetIntValue());
  return text;
}

void IntegerProperty::SetValue(const propstring& value) {
  PropertyThreadGuard guard(m_mutex);
  IsValueValid(value);
  // Atomic, so that a reader on another thread never races with a writer.
  __atomic_store_n(&m_value, TextNumbers::StdStringToInteger(value),
                   __ATOMIC_RELEASE);
  NotifyManager();
}

void IntegerProperty::IsValueValid(const propstring& value) {
  // The conversion decides the range; the character rule below then narrows
  // the syntax further (no '+', no blanks), whatever the conversion accepts.
  try {
    TextNumbers::StdStringToInteger(value);
  } catch (...) {
    RejectValue(kAllowed);
  }
  if (value.empty() || !(IsDigit(value[0]) || value[0] == '-')) {
    RejectValue(kAllowed);
  }
  for (size_t i = 1; i < value.size(); ++i) {
    if (!IsDigit(value[i])) RejectValue(kAllowed);
  }
}

int IntegerProperty::GetIntValue() const {
  return __atomic_load_n(&m_value, __ATOMIC_ACQUIRE);
}

void IntegerProperty::SetIntValue(int value) {
  PropertyThreadGuard guard(m_mutex);
  __atomic_store_n(&m_value, value, __ATOMIC_RELEASE);
  NotifyManager();
}
