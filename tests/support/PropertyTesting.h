// PropertyTesting.h - helpers for tests of properties and of what makes them:
// the message of a rejected value, factories filled with every type, and the
// fixtures of the value-type tests, which watch a property "k" through a
// counting change listener on a TestManager.

#ifndef TESTS_SUPPORT_PROPERTYTESTING_H_
#define TESTS_SUPPORT_PROPERTYTESTING_H_

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "IniPropertyFactory.h"
#include "JavaPropertyFactory.h"
#include "Property.h"
#include "support/Recorders.h"

namespace test_support {

// What the functions below return when nothing is thrown.
extern const char kAccepted[];

// The message of the Property::WrongValue that action throws, or kAccepted if
// it throws nothing. Other exceptions pass through.
std::string WrongValueMessage(const std::function<void()>& action);

// The message with which property rejects SetValue(text), or kAccepted.
std::string RejectionOf(Property* property, const std::string& text);

// Adds the six type names with their flat creators (JCreate...Property), in
// the order in which the library fills its own factory. Returns what each
// AddCreator call returned, in that order.
std::vector<bool> AddAllCreators(JavaPropertyFactory* factory);
// The same with the sectioned creators (ICreate...Property).
std::vector<bool> AddAllCreators(IniPropertyFactory* factory);

// Fixture for the value type P: m_property is P("k", initial, ""), registered
// on m_manager, which owns it; every change it announces reaches m_listener.
template <typename P>
class RegisteredPropertyFixture : public testing::Test {
 protected:
  // rejection: the message with which P refuses the texts of
  // ExpectRejected().
  RegisteredPropertyFixture(const std::string& initial,
                            const std::string& rejection)
      : m_property(new P("k", initial, "")), m_rejection(rejection) {
    m_manager.RegisterProperty(m_property);
    m_manager.AddChangeListener(&m_listener);
  }

  // The text form after SetValue(text).
  std::string ReadBack(const std::string& text) {
    m_property->SetValue(text);
    return m_property->GetValue();
  }

  // Checks that text is rejected with the type's message, and that the value
  // stays and nobody is told.
  void ExpectRejected(const std::string& text) {
    const std::string before = m_property->GetValue();
    EXPECT_EQ(RejectionOf(m_property, text), m_rejection) << "text: " << text;
    EXPECT_EQ(m_property->GetValue(), before);
    EXPECT_EQ(m_listener.count, 0);
  }

  CountingChangeListener m_listener;
  TestManager m_manager;
  P* m_property;  // Owned by m_manager.

 private:
  std::string m_rejection;
};

// Fixture for the value type P (or a class derived from it): m_property,
// made by Make(), is owned by the test and tells m_manager, which does not own
// it, of its changes; every change reaches m_listener.
template <typename P>
class LinkedPropertyFixture : public testing::Test {
 protected:
  LinkedPropertyFixture() { m_manager.AddChangeListener(&m_listener); }

  // Replaces m_property by a new P("k", value, "") linked to m_manager.
  void Make(const propstring& value) {
    m_property.reset(new P("k", value, ""));
    m_property->RegisterPropertyManager(&m_manager);
  }

  // The message with which m_property rejects SetValue(value), or kAccepted.
  std::string SetValueError(const propstring& value) {
    return RejectionOf(m_property.get(), value);
  }

  TestManager m_manager;
  CountingChangeListener m_listener;
  std::unique_ptr<P> m_property;
};

}  // namespace test_support

#endif  // TESTS_SUPPORT_PROPERTYTESTING_H_
