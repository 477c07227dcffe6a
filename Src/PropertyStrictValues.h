// PropertyStrictValues.h - the check behind PropertySafety's strict values:
// a manager that asks for it refuses keys, sections, values and headers
// that its file would not give back as they were given. Internal to the
// library: not installed.
//
// What a format reads back is the format's own rule (its Unreadable());
// this class decides when to apply it and how a refusal is reported: a
// log line and a Property::WrongValue with the same text, thrown before
// anything is registered, set, notified or written.

#ifndef SRC_PROPERTYSTRICTVALUES_H_
#define SRC_PROPERTYSTRICTVALUES_H_

#include "Property.h"
#include "PropertyManager.h"
#include "PropertyThreadGuard.h"

class PropertyStrictValues {
 public:
  // Throws if manager keeps strict values and Format would not read back
  // the entry of (section,) key and value. section is null for the flat
  // flavour.
  template <typename Format>
  static void RequireEntry(const PropertyManager& manager,
                           const propstring* section, const propstring& key,
                           const propstring& value);
  // RequireEntry() for value as property's next value.
  template <typename Format>
  static void RequireValue(const PropertyManager& manager, Property& property,
                           const propstring& value);
  // RequireEntry() for every value property may hold: its value, or each
  // element of a list.
  template <typename Format>
  static void RequireProperty(const PropertyManager& manager,
                              const propstring* section, Property& property);
  // Throws if manager keeps strict values and header would not stay the
  // one comment line a rewrite starts with.
  static void RequireHeader(const PropertyManager& manager,
                            const propstring& header);

  // text with control bytes written as \n, \r, \t, \0 or \xHH, so that a
  // refused text cannot break the message that names it.
  static propstring Printable(const propstring& text);
};

#endif  // SRC_PROPERTYSTRICTVALUES_H_
