// JavaPropertyManagerTest.cpp - what JavaPropertyManager alone does: look-up
// by key whatever the section, and read-only bindings that are recorded, so
// that they can be found again. What both manager flavours do is tested in
// ManagerFlavoursTest.cpp.

#include "JavaPropertyManager.h"

#include <gtest/gtest.h>

#include <string>

#include "Properties.h"
#include "PropertyManager.h"
#include "support/FlavourFixtures.h"
#include "support/Flavours.h"
#include "support/TempDir.h"

namespace {

using test_support::kHeader;
using test_support::ReadFile;
using test_support::WriteFile;

class JavaPropertyManagerTest
    : public test_support::ManagerFixture<test_support::Flat> {};

TEST_F(JavaPropertyManagerTest, GetPropertyDoesNotLookAtTheSection) {
  Property* port = ICreateIntegerProperty("port", "80", "net");
  static_cast<PropertyManager&>(m_manager).RegisterProperty(port);
  EXPECT_EQ(m_manager.GetProperty("port"), port);
}

// Read-only bindings are recorded by path, so they can be removed.
TEST_F(JavaPropertyManagerTest, UnbindingReadOnlyPathStopsLoading) {
  WriteFile(m_path, "port=8080\n");
  m_manager.RegisterNonPersistence(m_path);
  m_manager.UnRegisterPersistence(m_path);
  RegisterPort("80");
  EXPECT_EQ(Get("port"), "80");
}

// A path bound read-only stays read-only: binding it read-write is ignored.
TEST_F(JavaPropertyManagerTest,
       RegisterPersistenceOfReadOnlyPathKeepsItReadOnly) {
  const std::string text = "port = 8080  # by hand\n";
  WriteFile(m_path, text);
  m_manager.RegisterNonPersistence(m_path);
  m_manager.RegisterPersistence(m_path, kHeader);
  RegisterPort();
  m_manager.SetValue("port", "81");
  EXPECT_EQ(ReadFile(m_path), text);
}

// The second binding of the path is ignored, so the file is loaded once.
TEST_F(JavaPropertyManagerTest, SecondRegisterNonPersistenceOfPathIsIgnored) {
  WriteFile(m_path, "port=8080\n");
  for (int bindings = 0; bindings < 2; ++bindings) {
    m_manager.RegisterNonPersistence(m_path);
  }
  m_manager.AddChangeListener(&m_changes);
  RegisterPort();
  EXPECT_EQ(m_changes.count, 1);
}

}  // namespace
