// IniPropertyFactory.cpp - see IniPropertyFactory.h.

#include "IniPropertyFactory.h"

IniPropertyFactory::IniPropertyFactory() {}

IniPropertyFactory::~IniPropertyFactory() {}

Property* IniPropertyFactory::CreateProperty(const propstring& type,
                                             const propstring& section,
                                             const propstring& key,
                                             const propstring& value) {
  IniPropertyCreator creator = FindCreator(type);
  return creator == nullptr ? nullptr : creator(key, value, section);
}
