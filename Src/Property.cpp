// Property.cpp - see Property.h.

#include "Property.h"

Property::WrongValue::WrongValue(const propstring& message)
    : m_message(message) {}

Property::WrongValue::~WrongValue() {}

Property::~Property() {}
