// DoubleProperty.h - a property holding a 64-bit floating-point number.
//
// Accepted texts are those TextNumbers::StdStringToDouble accepts. The text
// form is printf "%.15g" in the C locale (at most 15 significant digits, no
// trailing zeros): 0.1 reads back as "0.1", 1e20 as "1e+20", 2 as "2".
// Type name "PROPERTY_TYPE_DOUBLE", human-readable name "Double Property".
//
// ABI: member order and virtual-function order are part of the binary
// interface. Do not reorder, insert or remove.

#ifndef SRC_DOUBLEPROPERTY_H_
#define SRC_DOUBLEPROPERTY_H_

#include "BaseProperty.h"

class DoubleProperty : public BaseProperty {
 public:
  static const char kTypeName[];  // "PROPERTY_TYPE_DOUBLE"

  // Throws Property::WrongValue if the key or the initial value is rejected.
  DoubleProperty(const propstring& key, const propstring& value,
                 const propstring& section);
  virtual ~DoubleProperty();

  // "%.15g" with '.' as the decimal point, whatever the process locale.
  propstring GetValue() const override;
  void SetValue(const propstring& value) override;
  void IsValueValid(const propstring& value) override;

  // Reads the value atomically, without taking the lock: safe while another
  // thread sets the value.
  double GetDoubleValue() const;
  // Stores value unchecked and notifies, under the property's lock.
  void SetDoubleValue(double value);

 protected:
  double m_value;
};

#endif  // SRC_DOUBLEPROPERTY_H_
