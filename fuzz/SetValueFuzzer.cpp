// SetValueFuzzer.cpp - constructs a property of one of the six value types
// and sets a series of texts on it, checking every outcome against the
// type's rules.
//
// Input: the first byte picks the type ('0' boolean, '1' integer, '2'
// double, '3' string, '4' IP address, '5' list; the low four bits modulo 6)
// and the field separator (a line feed, or NUL when bit 0x40 is set, as in
// 'p' to 'u', so that texts can hold line feeds). The fields are the key,
// the initial value (for a list, its elements) and the texts to set.
//
// Checked:
// - a constructor either throws Property::WrongValue, exactly when the key
//   holds both '=' and '#' or the type rejects the initial value, or starts
//   with the initial value in its text form;
// - every set either throws Property::WrongValue with the type's message,
//   leaves the value as it was and tells no change listener, or is accepted,
//   tells the listeners exactly once (the new value already in place) and
//   gives the text form the type's rules predict;
// - the new value is accepted again, and setting it again keeps it;
// - nothing but Property::WrongValue is ever thrown.

#include <arpa/inet.h>
#include <netinet/in.h>

#include <cerrno>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <memory>
#include <string>
#include <vector>

#include "BooleanProperty.h"
#include "DoubleProperty.h"
#include "FuzzSupport.h"
#include "IntegerProperty.h"
#include "IpAddrProperty.h"
#include "JavaPropertyManager.h"
#include "ListProperty.h"
#include "Property.h"
#include "PropertyChangeListener.h"
#include "StringProperty.h"

namespace {

using fuzz_support::Quote;

enum Type { kBoolean, kInteger, kDouble, kString, kIpAddr, kList, kTypeCount };

const char* const kTypeNames[kTypeCount] = {
    "PROPERTY_TYPE_BOOLEAN", "PROPERTY_TYPE_INTEGER", "PROPERTY_TYPE_DOUBLE",
    "PROPERTY_TYPE_STRING",  "PROPERTY_TYPE_IP_ADDR", "PROPERTY_TYPE_LIST"};
const char* const kPropertyNames[kTypeCount] = {
    "Boolean Property", "Integer Property",    "Double Property",
    "String Property",  "IP Address Property", "List Property"};
const char* const kAllowed[kTypeCount] = {
    "true or false",
    "an integer value",
    "a double value",
    "",
    "an ip address",
    "a value of the list or a number of the selected element"};

const size_t kMaxSets = 32;

// What the rules say of one text.
struct Verdict {
  enum Outcome { kAccepted, kRejected, kEither } outcome;
  std::string value;  // The text form after an accepted set.
};

Verdict Accepted(const std::string& value) {
  return Verdict{Verdict::kAccepted, value};
}
Verdict Rejected() { return Verdict{Verdict::kRejected, ""}; }

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// The value of a run of decimal digits, if it fits in int (leading zeros
// allowed); negative selects a leading '-'.
bool DigitsToInt(const std::string& digits, bool negative, long long& value) {
  value = 0;
  for (char c : digits) {
    if (!IsDigit(c)) return false;
    value = value * 10 + (c - '0');
    if (value > 2147483648LL) return false;
  }
  if (negative) value = -value;
  return !digits.empty() && value >= -2147483648LL && value <= 2147483647LL;
}

Verdict IntegerVerdict(const std::string& text) {
  const bool negative = !text.empty() && text[0] == '-';
  long long value = 0;
  if (!DigitsToInt(text.substr(negative ? 1 : 0), negative, value)) {
    return Rejected();
  }
  return Accepted(std::to_string(value));
}

std::string DoubleText(double value) {
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, "%.15g", value);
  return buffer;
}

// Optional sign, digits with an optional point (at least one digit), an
// optional exponent; a value beyond the largest double, or one that would
// become zero, is rejected. Values that only a subnormal double holds may go
// either way.
Verdict DoubleVerdict(const std::string& text) {
  size_t i = 0;
  if (i < text.size() && (text[i] == '+' || text[i] == '-')) ++i;
  size_t digits = 0;
  bool nonZero = false;
  for (; i < text.size() && IsDigit(text[i]); ++i, ++digits) {
    nonZero = nonZero || text[i] != '0';
  }
  if (i < text.size() && text[i] == '.') {
    for (++i; i < text.size() && IsDigit(text[i]); ++i, ++digits) {
      nonZero = nonZero || text[i] != '0';
    }
  }
  if (digits == 0) return Rejected();
  if (i < text.size() && (text[i] == 'e' || text[i] == 'E')) {
    ++i;
    if (i < text.size() && (text[i] == '+' || text[i] == '-')) ++i;
    size_t exponentDigits = 0;
    for (; i < text.size() && IsDigit(text[i]); ++i) ++exponentDigits;
    if (exponentDigits == 0) return Rejected();
  }
  if (i != text.size()) return Rejected();

  const double value = std::strtod(text.c_str(), nullptr);
  if (std::isinf(value)) return Rejected();
  if (value == 0 && nonZero) return Rejected();
  if (std::fpclassify(value) == FP_SUBNORMAL) {
    return Verdict{Verdict::kEither, DoubleText(value)};
  }
  return Accepted(DoubleText(value));
}

Verdict IpAddrVerdict(const std::string& text) {
  in_addr address;
  if (inet_aton(text.c_str(), &address) == 0) return Rejected();
  return Accepted(inet_ntoa(address));
}

// The elements of a list text: the pieces between '|', empty ones dropped.
std::vector<std::string> Elements(const std::string& list) {
  std::vector<std::string> elements;
  size_t start = 0;
  while (start <= list.size()) {
    size_t end = list.find('|', start);
    if (end == std::string::npos) end = list.size();
    if (end > start) elements.push_back(list.substr(start, end - start));
    start = end + 1;
  }
  return elements;
}

std::string Joined(const std::vector<std::string>& elements) {
  std::string text;
  for (size_t i = 0; i < elements.size(); ++i) {
    if (i > 0) text += "|";
    text += elements[i];
  }
  return text;
}

Verdict ListVerdict(const std::vector<std::string>& elements,
                    const std::string& text) {
  for (const std::string& element : elements) {
    if (element == text) return Accepted(element);
  }
  long long position = 0;
  if (DigitsToInt(text, false, position) &&
      static_cast<unsigned long long>(position) < elements.size()) {
    return Accepted(elements[static_cast<size_t>(position)]);
  }
  return Rejected();
}

Verdict ValueVerdict(Type type, const std::vector<std::string>& elements,
                     const std::string& text) {
  switch (type) {
    case kBoolean:
      return text == "true" || text == "false" ? Accepted(text) : Rejected();
    case kInteger:
      return IntegerVerdict(text);
    case kDouble:
      return DoubleVerdict(text);
    case kString:
      return text.find('#') == std::string::npos ? Accepted(text) : Rejected();
    case kIpAddr:
      return IpAddrVerdict(text);
    default:
      return ListVerdict(elements, text);
  }
}

std::string RejectionMessage(Type type, const std::string& key) {
  if (type == kString) return "Property values can not contain character \"#\"";
  // The key goes through "%s" and the message is cut at 1023 characters.
  const std::string message = "Property '" + std::string(key.c_str()) +
                              "' can only contain '" + kAllowed[type] + "'";
  return message.substr(0, 1023);
}

Property* NewProperty(Type type, const std::string& key,
                      const std::string& initial, const std::string& section) {
  switch (type) {
    case kBoolean:
      return new BooleanProperty(key, initial, section);
    case kInteger:
      return new IntegerProperty(key, initial, section);
    case kDouble:
      return new DoubleProperty(key, initial, section);
    case kString:
      return new StringProperty(key, initial, section);
    case kIpAddr:
      return new IpAddrProperty(key, initial, section);
    default:
      return new ListProperty(key, initial, section);
  }
}

class ChangeRecorder : public PropertyChangeListener {
 public:
  void PropertyChanged(Property* property) override {
    ++m_count;
    m_last = property;
    m_valueSeen = property->GetValue();
  }

  int m_count = 0;
  Property* m_last = nullptr;
  std::string m_valueSeen;
};

std::vector<std::string> Split(const std::string& text, char separator) {
  std::vector<std::string> fields;
  size_t start = 0;
  for (;;) {
    const size_t end = text.find(separator, start);
    fields.push_back(text.substr(
        start, end == std::string::npos ? std::string::npos : end - start));
    if (end == std::string::npos) return fields;
    start = end + 1;
  }
}

class Scenario {
 public:
  Scenario(Type type, const std::string& key, const std::string& initial)
      : m_type(type),
        m_key(key),
        m_elements(type == kList ? Elements(initial)
                                 : std::vector<std::string>()),
        m_manager("SetValueFuzzer", nullptr) {
    m_manager.AddChangeListener(&m_recorder);
  }

  // Constructs the property; false if the constructor rightly refused.
  bool Construct(const std::string& initial) {
    const bool badKey = m_key.find('=') != std::string::npos &&
                        m_key.find('#') != std::string::npos;
    Verdict verdict = Accepted(initial);
    if (m_type == kList) {
      verdict = Accepted(m_elements.empty() ? "" : m_elements.front());
    } else if (m_type != kString) {
      verdict = ValueVerdict(m_type, m_elements, initial);
    }
    try {
      m_property.reset(NewProperty(m_type, m_key, initial, "s"));
    } catch (Property::WrongValue& e) {
      FUZZ_CHECK(badKey || verdict.outcome != Verdict::kAccepted,
                 "the initial value " << Quote(initial) << " was refused: "
                                      << Quote(e.m_message));
      const std::string expected =
          badKey ? "Property key can not contain characters: '= #'"
                 : RejectionMessage(m_type, m_key);
      FUZZ_CHECK(e.m_message == expected, "message " << Quote(e.m_message));
      return false;
    }
    FUZZ_CHECK(!badKey && verdict.outcome != Verdict::kRejected,
               "the initial value " << Quote(initial) << " or the key "
                                    << Quote(m_key) << " was accepted");
    FUZZ_CHECK(m_property->GetKey() == m_key, "key " << Quote(m_key));
    FUZZ_CHECK(m_property->GetSection() == "s", "section");
    FUZZ_CHECK(m_property->GetPropertyType() == kTypeNames[m_type], "type");
    FUZZ_CHECK(m_property->GetPropertyName() == kPropertyNames[m_type], "name");
    if (m_type == kList) {
      auto* list = static_cast<ListProperty*>(m_property.get());
      FUZZ_CHECK(list->GetListValue() == Joined(m_elements),
                 "list " << Quote(list->GetListValue()));
    }
    if (HasValue()) {
      FUZZ_CHECK(m_property->GetValue() == verdict.value,
                 "initial value " << Quote(m_property->GetValue())
                                  << ", expected " << Quote(verdict.value));
    }
    m_property->RegisterPropertyManager(&m_manager);
    return true;
  }

  void Set(const std::string& text) {
    const Verdict verdict = ValueVerdict(m_type, m_elements, text);
    const std::string before = HasValue() ? m_property->GetValue() : "";
    const int notified = m_recorder.m_count;
    try {
      m_property->SetValue(text);
    } catch (Property::WrongValue& e) {
      FUZZ_CHECK(verdict.outcome != Verdict::kAccepted,
                 Quote(text) << " was refused: " << Quote(e.m_message));
      FUZZ_CHECK(e.m_message == RejectionMessage(m_type, m_key),
                 "message " << Quote(e.m_message));
      FUZZ_CHECK(m_recorder.m_count == notified,
                 "a refused " << Quote(text) << " was announced");
      if (HasValue()) {
        FUZZ_CHECK(m_property->GetValue() == before,
                   "a refused " << Quote(text) << " changed the value to "
                                << Quote(m_property->GetValue()));
      }
      return;
    }
    FUZZ_CHECK(
        verdict.outcome != Verdict::kRejected,
        Quote(text) << " was accepted as " << Quote(m_property->GetValue()));
    const std::string after = m_property->GetValue();
    FUZZ_CHECK(after == verdict.value,
               Quote(text) << " reads back as " << Quote(after) << ", expected "
                           << Quote(verdict.value));
    CheckAnnouncedOnce(notified, after);

    // The text form is a value of the type (unless it lies where the double
    // type's text form cannot be read back: see DoubleVerdict).
    if (ValueVerdict(m_type, m_elements, after).outcome != Verdict::kAccepted) {
      return;
    }
    try {
      m_property->SetValue(after);
    } catch (Property::WrongValue& e) {
      FUZZ_CHECK(false, "its own value " << Quote(after) << " was refused: "
                                         << Quote(e.m_message));
    }
    FUZZ_CHECK(m_property->GetValue() == after,
               Quote(after) << " set again reads back as "
                            << Quote(m_property->GetValue()));
    CheckAnnouncedOnce(notified + 1, after);
  }

 private:
  // An empty list has no value to ask for.
  bool HasValue() const { return m_type != kList || !m_elements.empty(); }

  void CheckAnnouncedOnce(int notifiedBefore, const std::string& value) {
    FUZZ_CHECK(m_recorder.m_count == notifiedBefore + 1,
               "announced " << m_recorder.m_count - notifiedBefore << " times");
    FUZZ_CHECK(m_recorder.m_last == m_property.get(), "announced another");
    FUZZ_CHECK(m_recorder.m_valueSeen == value,
               "listeners saw " << Quote(m_recorder.m_valueSeen));
  }

  const Type m_type;
  const std::string m_key;
  const std::vector<std::string> m_elements;
  // Destroyed in reverse: the property before its manager, the manager
  // before its listener.
  ChangeRecorder m_recorder;
  JavaPropertyManager m_manager;
  std::unique_ptr<Property> m_property;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  const Type type = static_cast<Type>((data[0] & 0x0f) % kTypeCount);
  const char separator = (data[0] & 0x40) != 0 ? '\0' : '\n';
  const std::vector<std::string> fields =
      Split(fuzz_support::ToString(data + 1, size - 1), separator);
  const std::string key = fields[0];
  const std::string initial = fields.size() > 1 ? fields[1] : "";

  fuzz_support::RunWithoutEscapes([&] {
    Scenario scenario(type, key, initial);
    if (!scenario.Construct(initial)) return;
    for (size_t i = 2; i < fields.size() && i < 2 + kMaxSets; ++i) {
      scenario.Set(fields[i]);
    }
  });
  return 0;
}
