// IpAddrProperty.h - a property holding an IPv4 address.
//
// Accepted texts are exactly those inet_aton() accepts (one to four parts,
// decimal, octal or hexadecimal). The text form is always inet_ntoa()'s
// dotted quad: "10.1" reads back as "10.0.0.1". Type name
// "PROPERTY_TYPE_IP_ADDR", human-readable name "IP Address Property".
//
// ABI: member order and virtual-function order are part of the binary
// interface. Do not reorder, insert or remove.

#ifndef SRC_IPADDRPROPERTY_H_
#define SRC_IPADDRPROPERTY_H_

#include <netinet/in.h>

#include "BaseProperty.h"

class IpAddrProperty : public BaseProperty {
 public:
  static const char kTypeName[];  // "PROPERTY_TYPE_IP_ADDR"

  // Throws Property::WrongValue if the key or the initial value is rejected.
  IpAddrProperty(const propstring& key, const propstring& value,
                 const propstring& section);
  virtual ~IpAddrProperty();

  // The dotted quad. The address is read and written atomically: safe while
  // another thread sets the value.
  propstring GetValue() const override;
  void SetValue(const propstring& value) override;
  // Throws Property::WrongValue if inet_aton() rejects value. Note: an
  // accepted text is stored as the new address at once, without the lock and
  // without any notification.
  void IsValueValid(const propstring& value) override;

 protected:
  in_addr m_value;  // Network byte order.
};

#endif  // SRC_IPADDRPROPERTY_H_
