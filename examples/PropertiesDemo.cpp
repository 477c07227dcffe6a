// PropertiesDemo.cpp - typed properties on a registry, a change listener and
// a rejected value with its exact message.

#include <cstdio>
#include <memory>

#include "IniPropertyFactory.h"
#include "JavaPropertyFactory.h"
#include "Properties.h"
#include "PropertyChangeListener.h"
#include "PropertyManager.h"

namespace {

// A registry for one domain. This demo keeps its values in memory only.
class InMemoryRegistry : public PropertyManager {
 public:
  InMemoryRegistry() : PropertyManager("demo") {}
  void RegisterPersistence(const propstring&, const propstring&) override {}
  void RegisterNonPersistence(const propstring&) override {}
  void UnRegisterPersistence(const propstring&) override {}
};

class PrintingListener : public PropertyChangeListener {
 public:
  void PropertyChanged(Property* property) override {
    std::printf("  changed: %s = %s\n", property->GetKey().c_str(),
                property->GetValue().c_str());
  }
};

void FillFactory(JavaPropertyFactory& factory) {
  factory.AddCreator("PROPERTY_TYPE_INTEGER", JCreateIntegerProperty);
  factory.AddCreator("PROPERTY_TYPE_DOUBLE", JCreateDoubleProperty);
  factory.AddCreator("PROPERTY_TYPE_BOOLEAN", JCreateBooleanProperty);
  factory.AddCreator("PROPERTY_TYPE_STRING", JCreateStringProperty);
  factory.AddCreator("PROPERTY_TYPE_LIST", JCreateListProperty);
  factory.AddCreator("PROPERTY_TYPE_IP_ADDR", JCreateIpAddrProperty);
}

void TrySet(Property* property, const propstring& value) {
  std::printf("set %s to \"%s\"\n", property->GetKey().c_str(), value.c_str());
  try {
    property->SetValue(value);
  } catch (Property::WrongValue& e) {
    std::printf("  rejected: %s\n", e.m_message.c_str());
  }
}

}  // namespace

int main() {
  JavaPropertyFactory factory;
  FillFactory(factory);
  InMemoryRegistry registry;
  PrintingListener listener;
  registry.AddChangeListener(&listener);

  Property* port =
      factory.CreateProperty("PROPERTY_TYPE_INTEGER", "port", "8080");
  Property* level = factory.CreateProperty("PROPERTY_TYPE_LIST", "level",
                                           "debug|info|warning|error");
  Property* host =
      factory.CreateProperty("PROPERTY_TYPE_IP_ADDR", "host", "127.1");
  registry.RegisterProperty(port);  // The registry owns them from here on.
  registry.RegisterProperty(level);
  registry.RegisterProperty(host);

  std::printf("port=%s level=%s host=%s\n", port->GetValue().c_str(),
              level->GetValue().c_str(), host->GetValue().c_str());
  TrySet(port, "9090");
  TrySet(port, "+80");
  TrySet(level, "2");
  TrySet(level, "verbose");
  TrySet(host, "10.1");
  return 0;
}
