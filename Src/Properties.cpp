// Properties.cpp - see Properties.h.

#include "Properties.h"

#include "BooleanProperty.h"
#include "DoubleProperty.h"
#include "IntegerProperty.h"
#include "IpAddrProperty.h"
#include "ListProperty.h"
#include "StringProperty.h"

namespace {

template <typename T>
Property* Create(const propstring& key, const propstring& value,
                 const propstring& section) {
  return new T(key, value, section);
}

}  // namespace

// The flat flavour has no sections: every property it makes gets "".
Property* JCreateIntegerProperty(const propstring& key,
                                 const propstring& value) {
  return Create<IntegerProperty>(key, value, propstring());
}

Property* JCreateDoubleProperty(const propstring& key,
                                const propstring& value) {
  return Create<DoubleProperty>(key, value, propstring());
}

Property* JCreateBooleanProperty(const propstring& key,
                                 const propstring& value) {
  return Create<BooleanProperty>(key, value, propstring());
}

Property* JCreateStringProperty(const propstring& key,
                                const propstring& value) {
  return Create<StringProperty>(key, value, propstring());
}

Property* JCreateListProperty(const propstring& key, const propstring& value) {
  return Create<ListProperty>(key, value, propstring());
}

Property* JCreateIpAddrProperty(const propstring& key,
                                const propstring& value) {
  return Create<IpAddrProperty>(key, value, propstring());
}

Property* ICreateIntegerProperty(const propstring& key, const propstring& value,
                                 const propstring& section) {
  return Create<IntegerProperty>(key, value, section);
}

Property* ICreateDoubleProperty(const propstring& key, const propstring& value,
                                const propstring& section) {
  return Create<DoubleProperty>(key, value, section);
}

Property* ICreateBooleanProperty(const propstring& key, const propstring& value,
                                 const propstring& section) {
  return Create<BooleanProperty>(key, value, section);
}

Property* ICreateStringProperty(const propstring& key, const propstring& value,
                                const propstring& section) {
  return Create<StringProperty>(key, value, section);
}

Property* ICreateListProperty(const propstring& key, const propstring& value,
                              const propstring& section) {
  return Create<ListProperty>(key, value, section);
}

Property* ICreateIpAddrProperty(const propstring& key, const propstring& value,
                                const propstring& section) {
  return Create<IpAddrProperty>(key, value, section);
}
