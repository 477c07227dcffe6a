// JavaPropertyFactory.cpp - see JavaPropertyFactory.h.

#include "JavaPropertyFactory.h"

JavaPropertyFactory::JavaPropertyFactory() {}

JavaPropertyFactory::~JavaPropertyFactory() {}

Property* JavaPropertyFactory::CreateProperty(const propstring& type,
                                              const propstring& key,
                                              const propstring& value) {
  JavaPropertyCreator creator = FindCreator(type);
  return creator == nullptr ? nullptr : creator(key, value);
}
