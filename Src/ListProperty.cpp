// ListProperty.cpp - see ListProperty.h.

#include "ListProperty.h"

#include <algorithm>
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

propstring ListProperty::GetValue() const {
  return m_list[__atomic_load_n(&m_selected, __ATOMIC_ACQUIRE)];
}

void ListProperty::SetValue(const propstring& value) {
  // No lock, unlike the other value types: the selection is one word, and
  // this is how the type has always behaved.
  IsValueValid(value);
  // The selection is stored atomically, so that a reader on another thread
  // never races with a writer.
  std::vector<propstring>::const_iterator element =
      std::find(m_list.begin(), m_list.end(), value);
  const unsigned int selected =
      element != m_list.end()
          ? static_cast<unsigned int>(element - m_list.begin())
          : static_cast<unsigned int>(TextNumbers::StdStringToInteger(value));
  __atomic_store_n(&m_selected, selected, __ATOMIC_RELEASE);
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
  return std::find(m_list.begin(), m_list.end(), value) != m_list.end();
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
