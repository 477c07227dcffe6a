// ListProperty.h - a property whose value is one element of a fixed list.
//
// The constructor takes the allowed elements as one text separated by '|'
// ("red|green|blue"; empty pieces are dropped, duplicates kept). The initial
// value is the first element. SetValue accepts an element's text or its
// position counted from 0; text is tried first, so with "10|0|5" the value
// "0" selects the element "0" at position 1. GetValue always returns the
// element's text. Type name "PROPERTY_TYPE_LIST", human-readable name
// "List Property".
//
// Thread safety: no operation of this type takes a lock. The selection is
// read and written atomically, so GetValue is safe while another thread sets
// the value; two threads setting one list property at once are not ordered.
//
// ABI: member order and virtual-function order are part of the binary
// interface. Do not reorder, insert or remove.

#ifndef SRC_LISTPROPERTY_H_
#define SRC_LISTPROPERTY_H_

#include <vector>

#include "BaseProperty.h"

class ListProperty : public BaseProperty {
 public:
  static const char kTypeName[];  // "PROPERTY_TYPE_LIST"

  // Throws Property::WrongValue if the key is rejected. list is never
  // rejected.
  ListProperty(const propstring& key, const propstring& list,
               const propstring& section);
  virtual ~ListProperty();

  // The selected element's text. REQUIRES: the list is not empty.
  propstring GetValue() const override;
  void SetValue(const propstring& value) override;
  // Throws Property::WrongValue unless IsValueAtList(value) or
  // IsValueANumber(value).
  void IsValueValid(const propstring& value) override;

  // The elements joined by '|'; empty for an empty list.
  propstring GetListValue() const;
  // True if some element equals value exactly.
  bool IsValueAtList(const propstring& value);
  // True if value is all decimal digits, converts to an int and is below the
  // number of elements.
  bool IsValueANumber(const propstring& value);

 protected:
  std::vector<propstring> m_list;
  unsigned int m_selected;
};

#endif  // SRC_LISTPROPERTY_H_
