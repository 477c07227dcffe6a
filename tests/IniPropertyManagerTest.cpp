// IniPropertyManagerTest.cpp - what IniPropertyManager alone does: sections
// as part of a property's address, and read-only bindings that are not
// recorded (each RegisterNonPersistence attaches one more reader, which
// UnRegisterPersistence cannot remove). What both manager flavours do is
// tested in ManagerFlavoursTest.cpp.

#include "IniPropertyManager.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "support/FlavourFixtures.h"
#include "support/Flavours.h"
#include "support/Recorders.h"
#include "support/TempDir.h"

namespace {

using test_support::kHeader;
using test_support::kIntegerType;
using test_support::Messages;
using test_support::ReadFile;
using test_support::WriteFile;

const char kLoadingPort[] = "Loading 'port' of 'net' to '8080'";

// RegisterPort() registers ("net", "port").
class IniPropertyManagerTest
    : public test_support::ManagerFixture<test_support::Ini> {};

// Sections.

TEST_F(IniPropertyManagerTest, SameKeyInTwoSectionsGivesTwoProperties) {
  Property* a = m_manager.RegisterProperty(kIntegerType, "a", "k", "1");
  Property* b = m_manager.RegisterProperty(kIntegerType, "b", "k", "2");
  ASSERT_NE(b, nullptr);
  EXPECT_NE(a, b);
  EXPECT_EQ(b->GetSection(), "b");
  EXPECT_EQ(m_manager.GetProperty("a", "k"), a);
  EXPECT_EQ(m_manager.GetProperty("b", "k"), b);
}

TEST_F(IniPropertyManagerTest, SetValueInOneSectionLeavesTheOtherAlone) {
  m_manager.RegisterProperty(kIntegerType, "a", "k", "1");
  m_manager.RegisterProperty(kIntegerType, "b", "k", "2");
  m_manager.SetValue("a", "k", "10");
  EXPECT_EQ(m_manager.GetValue("a", "k"), "10");
  EXPECT_EQ(m_manager.GetValue("b", "k"), "2");
}

TEST_F(IniPropertyManagerTest, GetPropertyOfKeyInAnotherSectionIsNull) {
  RegisterPort();
  EXPECT_EQ(m_manager.GetProperty("web", "port"), nullptr);
}

TEST_F(IniPropertyManagerTest, GetPropertyComparesSectionsCaseSensitively) {
  RegisterPort();
  EXPECT_EQ(m_manager.GetProperty("Net", "port"), nullptr);
}

TEST_F(IniPropertyManagerTest, EmptySectionIsAnOrdinarySection) {
  Property* plain = m_manager.RegisterProperty(kIntegerType, "", "port", "1");
  EXPECT_EQ(m_manager.GetProperty("", "port"), plain);
  EXPECT_EQ(m_manager.GetProperty("net", "port"), nullptr);
  EXPECT_NE(RegisterPort(), plain);
  EXPECT_EQ(m_manager.GetProperty("", "port"), plain);
}

TEST_F(IniPropertyManagerTest, GetValueOfKeyInAnotherSectionIsEmpty) {
  RegisterPort();
  EXPECT_EQ(m_manager.GetValue("web", "port"), "");
  EXPECT_EQ(Logged(), Messages{});
}

TEST_F(IniPropertyManagerTest, SetValueOfKeyInAnotherSectionLogsNotFound) {
  RegisterPort("80");
  m_manager.SetValue("web", "port", "9090");
  EXPECT_EQ(Logged(), Messages{"Property 'port' was not found"});
  EXPECT_EQ(m_manager.GetValue("net", "port"), "80");
}

TEST_F(IniPropertyManagerTest, UnregisterPropertyTakesOnlyThatSection) {
  Property* a = m_manager.RegisterProperty(kIntegerType, "a", "k", "1");
  Property* b = m_manager.RegisterProperty(kIntegerType, "b", "k", "2");
  std::unique_ptr<Property> removed(m_manager.UnregisterProperty("b", "k"));
  EXPECT_EQ(removed.get(), b);
  EXPECT_EQ(m_manager.GetProperty("a", "k"), a);
}

TEST_F(IniPropertyManagerTest, UnregisterPropertyOfKeyInAnotherSectionIsNull) {
  RegisterPort();
  m_manager.AddRegistryListener(&m_listener);
  EXPECT_EQ(m_manager.UnregisterProperty("web", "port"), nullptr);
  EXPECT_TRUE(m_events.empty());
}

// Read-only bindings, which are not recorded.

TEST_F(IniPropertyManagerTest, RegisterNonPersistenceTwiceLoadsTheFileTwice) {
  WriteFile(m_path, "[net]\nport=8080\n");
  m_manager.RegisterNonPersistence(m_path);
  m_manager.RegisterNonPersistence(m_path);
  m_manager.AddChangeListener(&m_changes);
  m_log.Clear();
  RegisterPort();
  EXPECT_EQ(Logged(), (Messages{kLoadingPort, kLoadingPort}));
  EXPECT_EQ(m_changes.count, 2);
}

TEST_F(IniPropertyManagerTest, UnRegisterPersistenceOfReadOnlyPathDoesNothing) {
  WriteFile(m_path, "[net]\nport=8080\n");
  m_manager.RegisterNonPersistence(m_path);
  m_manager.UnRegisterPersistence(m_path);
  EXPECT_EQ(RegisterPort("80")->GetValue(), "8080");
}

TEST_F(IniPropertyManagerTest, RegisterPersistenceAfterReadOnlyBindsReadWrite) {
  WriteFile(m_path, "; by hand\n[net]\n port = 8080 \n");
  m_manager.RegisterNonPersistence(m_path);
  m_manager.RegisterPersistence(m_path, kHeader);
  RegisterPort();
  m_manager.SetValue("net", "port", "81");
  EXPECT_EQ(ReadFile(m_path), ";app settings\n[net]\nport=81\n\n");
  WriteFile(m_path, "[web]\nother=1\n");
  m_manager.SetValue("net", "port", "82");
  EXPECT_EQ(ReadFile(m_path),
            ";app settings\n[net]\nport=82\n\n[web]\nother=1\n\n");
}

TEST_F(IniPropertyManagerTest, UnbindingPathBoundBothWaysKeepsTheReader) {
  const std::string text = "[net]\nport=8080\n";
  WriteFile(m_path, text);
  m_manager.RegisterNonPersistence(m_path);
  m_manager.RegisterPersistence(m_path, kHeader);
  m_manager.UnRegisterPersistence(m_path);
  EXPECT_EQ(RegisterPort("80")->GetValue(), "8080");
  m_manager.SetValue("net", "port", "81");
  EXPECT_EQ(ReadFile(m_path), text);
}

}  // namespace
