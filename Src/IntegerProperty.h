// IntegerProperty.h - a property holding a 32-bit signed integer.
//
// Accepted texts: an optional '-' and decimal digits only, with a value that
// TextNumbers converts to an int. No '+', no blanks, no decimal point, no
// exponent. Leading zeros are accepted and dropped on output ("007" reads
// back as "7"). Type name "PROPERTY_TYPE_INTEGER", human-readable name
// "Integer Property".
//
// ABI: member order and virtual-function order are part of the binary
// interface. Do not reorder, insert or remove.

#ifndef SRC_INTEGERPROPERTY_H_
#define SRC_INTEGERPROPERTY_H_

#include "BaseProperty.h"

class IntegerProperty : public BaseProperty {
 public:
  static const char kTypeName[];  // "PROPERTY_TYPE_INTEGER"

  // Throws Property::WrongValue if the key or the initial value is rejected.
  IntegerProperty(const propstring& key, const propstring& value,
                  const propstring& section);
  virtual ~IntegerProperty();

  propstring GetValue() const override;  // printf "%d"
  void SetValue(const propstring& value) override;
  void IsValueValid(const propstring& value) override;

  // Reads the value atomically, without taking the lock: safe while another
  // thread sets the value.
  int GetIntValue() const;
  // Stores value unchecked and notifies, under the property's lock.
  void SetIntValue(int value);

 protected:
  int m_value;
};

#endif  // SRC_INTEGERPROPERTY_H_
