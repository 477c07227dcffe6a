// ListProperty.cpp - see ListProperty.h.

#include "ListProperty.h"

#include <cctype>

#include "TextNumbers.h"

const char ListProperty::kTypeName[] = "PROPERTY_TYPE_LIST";

ListProperty::ListProperty(const propstring& key, const propstring& list,
                           const propstring& section)
    : BaseProperty(key, kTypeName, "List Property", section), m_selected(0) {
  size_t start = 0;
  while (start < list.size()) {
    size_t end = list.find('|', start);
    if (end == propstring::npos) end = list.size();
    if (end > start) m_list.push_back(list.substr(start, end - start));
    start = end + 1;
  }
}

ListProperty::~ListProperty() {}

propstring ListProperty::GetValue() const { return m_list[m_selected]; }

void ListProperty::SetValue(const propstring& value) {
  // No lock, unlike the other value types: the selection is one word, and
  // this is how the type has always behaved.
  IsValueValid(value);
  bool found = false;
  for (size_t i = 0; i < m_list.size() && !found; ++i) {
    if (m_list[i] == value) {
      m_selected = static_cast<unsigned int>(i);
      found = true;
    }
  }
  if (!found) {
    m_selected =
        static_cast<unsigned int>(TextNumbers::StdStringToInteger(value));
  }
  NotifyManager();
}

void ListProperty::IsValueValid(const propstring& value) {
  if (IsValueAtList(value) || IsValueANumber(value)) return;
  RejectValue("a value of the list or a number of the selected element");
}

propstring ListProperty::GetListValue() const {
  propstring joined;
  for (size_t i = 0; i < m_list.size(); ++i) {
    if (i > 0) joined += '|';
    joined += m_list[i];
  }
  return joined;
}

bool ListProperty::IsValueAtList(const propstring& value) {
  for (size_t i = 0; i < m_list.size(); ++i) {
    if (m_list[i] == value) return true;
  }
  return false;
}

bool ListProperty::IsValueANumber(const propstring& value) {
  for (size_t i = 0; i < value.size(); ++i) {
    if (!std::isdigit(static_cast<unsigned char>(value[i]))) return false;
  }
  int position = 0;
  try {
    position = TextNumbers::StdStringToInteger(value);
  } catch (...) {
    return false;
  }
  return static_cast<unsigned int>(position) < m_list.size();
}
