// PropertyFactory.cpp - see PropertyFactory.h.

#include "PropertyFactory.h"

#include "IniPropertyFactory.h"
#include "JavaPropertyFactory.h"

template <typename F>
PropertyFactory<F>::PropertyFactory() {}

template <typename F>
PropertyFactory<F>::~PropertyFactory() {}

template <typename F>
bool PropertyFactory<F>::AddCreator(const propstring& type, F creator) {
  return m_creators.insert(std::make_pair(type, creator)).second;
}

template <typename F>
F PropertyFactory<F>::FindCreator(const propstring& type) const {
  typename std::map<propstring, F>::const_iterator it = m_creators.find(type);
  return it == m_creators.end() ? nullptr : it->second;
}

template <typename F>
std::vector<propstring> PropertyFactory<F>::GetTypeNames() const {
  std::vector<propstring> names;
  for (const auto& entry : m_creators) names.push_back(entry.first);
  return names;
}

// The only two instantiations; clients link against these.
template class PropertyFactory<JavaPropertyCreator>;
template class PropertyFactory<IniPropertyCreator>;
