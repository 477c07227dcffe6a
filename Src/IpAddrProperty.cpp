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

propstring IpAddrProperty::GetValue() const {
  in_addr address;
  address.s_addr = __atomic_load_n(&m_value.s_addr, __ATOMIC_ACQUIRE);
  return inet_ntoa(address);
}

void IpAddrProperty::SetValue(const propstring& value) {
  PropertyThreadGuard guard(m_mutex);
  // The check stores the address when it accepts the text.
  IsValueValid(value);
  NotifyManager();
}

void IpAddrProperty::IsValueValid(const propstring& value) {
  // Parsing straight into the stored address is long-standing behaviour that
  // programs may rely on: a successful check already sets the address.
  // A rejected text changes nothing. The store is atomic, so that a reader
  // on another thread never races with a writer.
  in_addr parsed;
  if (inet_aton(value.c_str(), &parsed) != 0) {
    __atomic_store_n(&m_value.s_addr, parsed.s_addr, __ATOMIC_RELEASE);
    return;
  }
  RejectValue("an ip address");
}
