// StringProperty.h - a property holding free text.
//
// SetValue rejects any text that holds '#' (it would start a comment in a
// flat property file). The initial value given to the constructor is not
// checked and is kept as it stands. Type name "PROPERTY_TYPE_STRING",
// human-readable name "String Property".
//
// ABI: member order and virtual-function order are part of the binary
// interface. Do not reorder, insert or remove.

#ifndef SRC_STRINGPROPERTY_H_
#define SRC_STRINGPROPERTY_H_

#include "BaseProperty.h"

class StringProperty : public BaseProperty {
 public:
  static const char kTypeName[];  // "PROPERTY_TYPE_STRING"

  // Throws Property::WrongValue if the key is rejected. value is not checked.
  StringProperty(const propstring& key, const propstring& value,
                 const propstring& section);
  virtual ~StringProperty();

  // Copies the text without a lock: NOT safe while another thread sets the
  // value of this property.
  propstring GetValue() const override;
  void SetValue(const propstring& value) override;
  // Throws Property::WrongValue with
  // "Property values can not contain character \"#\"" if value holds '#'.
  void IsValueValid(const propstring& value) override;

 protected:
  propstring m_value;
};

#endif  // SRC_STRINGPROPERTY_H_
