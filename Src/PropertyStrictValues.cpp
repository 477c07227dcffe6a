// PropertyStrictValues.cpp - see PropertyStrictValues.h.

#include "PropertyStrictValues.h"

#include <cstdio>

#include "IniPropertiesFormat.h"
#include "JavaPropertiesFormat.h"
#include "ListProperty.h"
#include "PropertyMessages.h"
#include "PropertySafety.h"
#include "PropertyTextWriter.h"

namespace {

// Logs format with args and throws the same text.
template <typename... Args>
[[noreturn]] void Refuse(char* format, Args... args) {
  PropertyMessages::Write(format, args...);
  throw Property::WrongValue(PropertyMessages::Format(format, args...));
}

}  // namespace

template <typename Format>
void PropertyStrictValues::RequireEntry(const PropertyManager& manager,
                                        const propstring* section,
                                        const propstring& key,
                                        const propstring& value) {
  if (!PropertySafety::StrictValues(&manager)) return;
  const propstring reason = Format::Unreadable(
      section == nullptr ? propstring() : *section, key, value);
  if (reason.empty()) return;
  const propstring shownKey = Printable(key);
  if (section == nullptr) {
    Refuse(PropertyMessages::kRefused, shownKey.c_str(), reason.c_str());
  }
  const propstring shownSection = Printable(*section);
  Refuse(PropertyMessages::kRefusedInSection, shownKey.c_str(),
         shownSection.c_str(), reason.c_str());
}

template <typename Format>
void PropertyStrictValues::RequireValue(const PropertyManager& manager,
                                        Property& property,
                                        const propstring& value) {
  // Most managers are not strict: they pay for no copy of the address.
  if (!PropertySafety::StrictValues(&manager)) return;
  const propstring section = property.GetSection();
  RequireEntry<Format>(manager, Format::kSectioned ? &section : nullptr,
                       property.GetKey(), value);
}

template <typename Format>
void PropertyStrictValues::RequireProperty(const PropertyManager& manager,
                                           const propstring* section,
                                           Property& property) {
  if (!PropertySafety::StrictValues(&manager)) return;
  const propstring key = property.GetKey();
  ListProperty* list = dynamic_cast<ListProperty*>(&property);
  if (list == nullptr) {
    RequireEntry<Format>(manager, section, key, property.GetValue());
    return;
  }
  // Any element may be chosen later, by its position. Elements hold no
  // '|' and are never empty, so the joined list splits back into them.
  const propstring elements = list->GetListValue();
  for (size_t start = 0; start < elements.size();) {
    size_t end = elements.find('|', start);
    if (end == propstring::npos) end = elements.size();
    RequireEntry<Format>(manager, section, key,
                         elements.substr(start, end - start));
    start = end + 1;
  }
}

void PropertyStrictValues::RequireHeader(const PropertyManager& manager,
                                         const propstring& header) {
  if (!PropertySafety::StrictValues(&manager)) return;
  const char* reason = nullptr;
  if (header.find_first_of("\n\r") != propstring::npos) {
    reason = "it holds a line break";
  } else if (header.find('\0') != propstring::npos) {
    reason = "it holds a NUL byte";
  } else if (PropertyTextWriter::TooLong(1 + header.size())) {
    reason = "its line would be 512 characters or longer";
  }
  if (reason == nullptr) return;
  const propstring shown = Printable(header);
  Refuse(PropertyMessages::kRefusedHeader, shown.c_str(), reason);
}

propstring PropertyStrictValues::Printable(const propstring& text) {
  propstring shown;
  for (char c : text) {
    const unsigned char byte = static_cast<unsigned char>(c);
    if (byte >= 0x20 && byte != 0x7f) {
      shown += c;
    } else if (c == '\n') {
      shown += "\\n";
    } else if (c == '\r') {
      shown += "\\r";
    } else if (c == '\t') {
      shown += "\\t";
    } else if (c == '\0') {
      shown += "\\0";
    } else {
      char escaped[5];
      std::snprintf(escaped, sizeof escaped, "\\x%02x", byte);
      shown += escaped;
    }
  }
  return shown;
}

template void PropertyStrictValues::RequireEntry<JavaPropertiesFormat>(
    const PropertyManager&, const propstring*, const propstring&,
    const propstring&);
template void PropertyStrictValues::RequireEntry<IniPropertiesFormat>(
    const PropertyManager&, const propstring*, const propstring&,
    const propstring&);
template void PropertyStrictValues::RequireValue<JavaPropertiesFormat>(
    const PropertyManager&, Property&, const propstring&);
template void PropertyStrictValues::RequireValue<IniPropertiesFormat>(
    const PropertyManager&, Property&, const propstring&);
template void PropertyStrictValues::RequireProperty<JavaPropertiesFormat>(
    const PropertyManager&, const propstring*, Property&);
template void PropertyStrictValues::RequireProperty<IniPropertiesFormat>(
    const PropertyManager&, const propstring*, Property&);
