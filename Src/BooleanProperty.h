// BooleanProperty.h - a property holding true or false.
//
// Accepted texts are exactly "true" and "false" (no other case, no digits, no
// blanks). Type name "PROPERTY_TYPE_BOOLEAN", human-readable name
// "Boolean Property".
//
// ABI: member order and virtual-function order are part of the binary
// interface. Do not reorder, insert or remove.

#ifndef SRC_BOOLEANPROPERTY_H_
#define SRC_BOOLEANPROPERTY_H_

#include "BaseProperty.h"

class BooleanProperty : public BaseProperty {
 public:
  static const char kTypeName[];  // "PROPERTY_TYPE_BOOLEAN"

  // Throws Property::WrongValue if the key or the initial value is rejected.
  BooleanProperty(const propstring& key, const propstring& value,
                  const propstring& section);
  virtual ~BooleanProperty();

  propstring GetValue() const override;  // "true" or "false"
  void SetValue(const propstring& value) override;
  void IsValueValid(const propstring& value) override;

  // Reads the value atomically, without taking the lock: safe while another
  // thread sets the value.
  bool GetBooleanValue() const;
  // Stores value unchecked and notifies, under the property's lock.
  void SetBooleanValue(bool value);

 protected:
  bool m_value;
};

#endif  // SRC_BOOLEANPROPERTY_H_
