// IpAddrProperty.cpp - see IpAddrProperty.h.

#include "IpAddrProperty.h"

#include <arpa/inet.h>

const char IpAddrProperty::kTypeName[] = "PROPERTY_TYPE_IP_ADDR";

IpAddrProperty::IpAddrProperty(const propstring& key, const propstring& value,
                               const propstring& section)
    : BaseProperty(key, kTypeName, "IP Address Property", section), m_value() {
  IpAddrProperty::IsValueValid(value);
  inet_aton(value.c_str(), &m_value);
}

IpAddrProperty::~IpAddrProperty() {}

propstring IpAddrProperty::GetValue() const { return inet_ntoa(m_value); }

void IpAddrProperty::SetValue(const propstring& value) {
  PropertyThreadGuard guard(m_mutex);
  IsValueValid(value);
  inet_aton(value.c_str(), &m_value);
  NotifyManager();
}

void IpAddrProperty::IsValueValid(const propstring& value) {
  // Parsing straight into the stored address is long-standing behaviour that
  // programs may rely on: a successful check already sets the address.
  // inet_aton() writes nothing on failure, so a rejected text changes nothing.
  if (inet_aton(value.c_str(), &m_value) != 0) return;
  RejectValue("an ip address");
}
