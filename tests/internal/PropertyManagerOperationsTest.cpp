// PropertyManagerOperationsTest.cpp - what both manager flavours do alike,
// on the manager core: look-ups, registration under the mutex, setting a
// value with its log lines, binding and unbinding files.

#include "PropertyManagerOperations.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

#include "IntegerProperty.h"
#include "JavaPropertiesFormat.h"
#include "JavaPropertiesPersistence.h"
#include "support/LogRecorder.h"
#include "support/Recorders.h"
#include "support/TempDir.h"

namespace {

using test_support::LogRecorder;
using test_support::TempDir;
using test_support::TestManager;

typedef PropertyManagerOperations Operations;

class PropertyManagerOperationsTest : public testing::Test {
 protected:
  PropertyManagerOperationsTest() : m_manager("domain") {
    m_manager.RegisterProperty(new IntegerProperty("k", "1", "a"));
    m_manager.RegisterProperty(new IntegerProperty("k", "2", "b"));
  }

  TestManager m_manager;
  std::map<propstring, JavaPropertiesPersistence*> m_index;
  TempDir m_dir;
};

TEST_F(PropertyManagerOperationsTest, FindComparesTheSectionOnlyIfGiven) {
  const propstring b = "b";
  EXPECT_EQ("1", Operations::Find(m_manager, nullptr, "k")->GetValue());
  EXPECT_EQ("2", Operations::Find(m_manager, &b, "k")->GetValue());
  EXPECT_EQ(nullptr, Operations::Find(m_manager, &b, "other"));
}

TEST_F(PropertyManagerOperationsTest, RegisterReturnsAnExistingProperty) {
  Property* existing = Operations::Find(m_manager, nullptr, "k");
  bool created = false;
  EXPECT_EQ(existing, Operations::Register<JavaPropertiesFormat>(
                          m_manager, nullptr, "k", true,
                          PropertyMessages::kJavaManagerRegisterProperty, [&] {
                            created = true;
                            return static_cast<Property*>(nullptr);
                          }));
  EXPECT_FALSE(created);
}

TEST_F(PropertyManagerOperationsTest, RegisterRegistersWhatCreateMakes) {
  Property* made = Operations::Register<JavaPropertiesFormat>(
      m_manager, nullptr, "new", true,
      PropertyMessages::kJavaManagerRegisterProperty, [] {
        return static_cast<Property*>(new IntegerProperty("new", "3", ""));
      });
  EXPECT_EQ(made, Operations::Find(m_manager, nullptr, "new"));
}

TEST_F(PropertyManagerOperationsTest, RegisterOfNothingMadeReturnsNull) {
  EXPECT_EQ(nullptr, Operations::Register<JavaPropertiesFormat>(
                         m_manager, nullptr, "none", true,
                         PropertyMessages::kJavaManagerRegisterProperty,
                         [] { return static_cast<Property*>(nullptr); }));
}

TEST_F(PropertyManagerOperationsTest, SetValueOfNoPropertyLogsTheKey) {
  LogRecorder log;
  Operations::SetValue<JavaPropertiesFormat>(m_manager, nullptr, "gone", "1");
  EXPECT_EQ(std::vector<std::string>{"Property 'gone' was not found"},
            log.Messages());
}

TEST_F(PropertyManagerOperationsTest, SetValueRejectedIsLoggedAndRethrown) {
  Property* property = Operations::Find(m_manager, nullptr, "k");
  LogRecorder log;
  EXPECT_THROW(
      Operations::SetValue<JavaPropertiesFormat>(m_manager, property, "k", "x"),
      Property::WrongValue);
  EXPECT_EQ("1", property->GetValue());
  EXPECT_EQ(std::vector<std::string>{"Format of property 'k' seems to be "
                                     "changed: 'Property 'k' can only "
                                     "contain 'an integer value''"},
            log.Messages());
}

TEST_F(PropertyManagerOperationsTest, BindOfABoundPathIsIgnored) {
  const std::string path = m_dir.File("f");
  Operations::Bind(m_manager, m_index, path, "h", true, true);
  JavaPropertiesPersistence* first = m_index[path];
  Operations::Bind(m_manager, m_index, path, "other", true, true);
  EXPECT_EQ(first, m_index[path]);
  EXPECT_EQ(1u, m_index.size());
  EXPECT_EQ(1u, m_manager.ClientCount());
  EXPECT_EQ(1u, m_manager.ChangeListenerCount());
}

TEST_F(PropertyManagerOperationsTest, UnrecordedBindingCannotBeUnbound) {
  const std::string path = m_dir.File("f");
  Operations::Bind(m_manager, m_index, path, "", false, false);
  EXPECT_TRUE(m_index.empty());
  EXPECT_EQ(1u, m_manager.ClientCount());
  EXPECT_EQ(1u, m_manager.RegistryListenerCount());
  EXPECT_EQ(0u, m_manager.ChangeListenerCount());
  Operations::Unbind(m_manager, m_index, path);  // Nothing to find.
  Operations::Bind(m_manager, m_index, path, "", false, true);
  EXPECT_EQ(1u, m_index.size());
  Operations::Unbind(m_manager, m_index, path);
  EXPECT_TRUE(m_index.empty());
  EXPECT_EQ(1u, m_manager.ClientCount());  // The unrecorded one stays.
}

}  // namespace
