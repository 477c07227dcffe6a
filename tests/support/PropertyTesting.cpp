// PropertyTesting.cpp - see PropertyTesting.h.

#include "support/PropertyTesting.h"

#include "Properties.h"

namespace test_support {

const char kAccepted[] = "<accepted>";

std::string WrongValueMessage(const std::function<void()>& action) {
  try {
    action();
  } catch (const Property::WrongValue& e) {
    return e.m_message;
  }
  return kAccepted;
}

std::string RejectionOf(Property* property, const std::string& text) {
  return WrongValueMessage([property, &text] { property->SetValue(text); });
}

std::vector<bool> AddAllCreators(JavaPropertyFactory* factory) {
  return {factory->AddCreator("PROPERTY_TYPE_INTEGER", JCreateIntegerProperty),
          factory->AddCreator("PROPERTY_TYPE_DOUBLE", JCreateDoubleProperty),
          factory->AddCreator("PROPERTY_TYPE_BOOLEAN", JCreateBooleanProperty),
          factory->AddCreator("PROPERTY_TYPE_STRING", JCreateStringProperty),
          factory->AddCreator("PROPERTY_TYPE_LIST", JCreateListProperty),
          factory->AddCreator("PROPERTY_TYPE_IP_ADDR", JCreateIpAddrProperty)};
}

std::vector<bool> AddAllCreators(IniPropertyFactory* factory) {
  return {factory->AddCreator("PROPERTY_TYPE_INTEGER", ICreateIntegerProperty),
          factory->AddCreator("PROPERTY_TYPE_DOUBLE", ICreateDoubleProperty),
          factory->AddCreator("PROPERTY_TYPE_BOOLEAN", ICreateBooleanProperty),
          factory->AddCreator("PROPERTY_TYPE_STRING", ICreateStringProperty),
          factory->AddCreator("PROPERTY_TYPE_LIST", ICreateListProperty),
          factory->AddCreator("PROPERTY_TYPE_IP_ADDR", ICreateIpAddrProperty)};
}

}  // namespace test_support
