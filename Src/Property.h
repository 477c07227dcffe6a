// Property.h - the interface of one typed configuration value, and
// Property::WrongValue, the one exception type of the library.
//
// A property is addressed by its key and, in the sectioned flavour, its
// section. Every value crosses this interface as text; each value type checks
// the text, converts it to its native form and formats it back. Programs
// usually reach properties through a manager and handle them as Property*.
//
// ABI: the order of the virtual functions below is part of the binary
// interface. Do not reorder, insert or remove.

#ifndef SRC_PROPERTY_H_
#define SRC_PROPERTY_H_

#include "PropertyThreadGuard.h"

class PropertyManager;

class Property {
 public:
  // Thrown by value when a key or a value text is rejected; catch it by
  // reference. m_message holds the complete message, e.g.
  //   Property 'port' can only contain 'an integer value'
  class WrongValue {
   public:
    // Implicit on purpose: existing callers throw a message text directly.
    WrongValue(const propstring& message);
    ~WrongValue();

    propstring m_message;
  };

  virtual ~Property();

  // The section; empty for properties of the flat flavour.
  virtual propstring GetSection() const = 0;
  // Changes the section only: no check, no lock, no notification.
  virtual void SetSection(const propstring& section) = 0;
  virtual propstring GetKey() const = 0;

  // The value in its text form.
  virtual propstring GetValue() const = 0;
  // Checks, stores and announces a new value. Every accepted call notifies
  // the manager's change listeners, also when the value does not change.
  // Throws Property::WrongValue if the text is rejected; the old value stays.
  virtual void SetValue(const propstring& value) = 0;

  // The type name, e.g. "PROPERTY_TYPE_BOOLEAN".
  virtual propstring GetPropertyType() const = 0;
  // The human-readable type name, e.g. "Boolean Property" (the same text for
  // every property of one type).
  virtual propstring GetPropertyName() const = 0;

  // Called by the manager that registers the property. Not owned.
  virtual void RegisterPropertyManager(PropertyManager* manager) = 0;

  // Throws Property::WrongValue if key is rejected.
  virtual void IsKeyValid(const propstring& key) = 0;
  // Throws Property::WrongValue if value is rejected.
  virtual void IsValueValid(const propstring& value) = 0;
};

#endif  // SRC_PROPERTY_H_
