// PropertyMessagesTest.cpp - the fixed texts: every log format as log
// readers match it, and every assertion's message as crash tooling matches
// it, whatever NDEBUG says.

#include "PropertyMessages.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "support/AssertionMessage.h"
#include "support/LogRecorder.h"

namespace {

using test_support::AssertionRegex;
using test_support::LogRecorder;

TEST(PropertyMessagesTest, LogFormatsAreTheEstablishedTexts) {
  EXPECT_STREQ("Error reading Line %d", PropertyMessages::kErrorReading);
  EXPECT_STREQ("Line %d is too long", PropertyMessages::kLineTooLong);
  EXPECT_STREQ("Line %d redefines a property",
               PropertyMessages::kRedefinesProperty);
  EXPECT_STREQ("Line %d redefines a section",
               PropertyMessages::kRedefinesSection);
  EXPECT_STREQ("Loading '%s' to '%s'", PropertyMessages::kLoadingEntry);
  EXPECT_STREQ("Loading '%s' of '%s' to '%s'",
               PropertyMessages::kLoadingSectionEntry);
  EXPECT_STREQ("Setting '%s' to '%s'", PropertyMessages::kSettingEntry);
  EXPECT_STREQ("Setting '%s' of '%s' to '%s'",
               PropertyMessages::kSettingSectionEntry);
  EXPECT_STREQ("Property '%s' was not found", PropertyMessages::kNotFound);
  EXPECT_STREQ("Property '%s' at Section '%s' was not found",
               PropertyMessages::kSectionEntryNotFound);
  EXPECT_STREQ("Format of property '%s' seems to be changed: '%s'",
               PropertyMessages::kFormatChanged);
  EXPECT_STREQ("Can not read File '%s'", PropertyMessages::kCanNotRead);
  EXPECT_STREQ("Can not write File '%s'", PropertyMessages::kCanNotWrite);
  EXPECT_STREQ("File '%s' stayed locked; going on without the lock",
               PropertyMessages::kStayedLocked);
}

struct Site {
  PropertyMessages::Assertion assertion;
  const char* file;
  int line;
  const char* function;
  const char* condition;
};

// Written out here a second time on purpose: a change to the table in the
// library must fail a test.
const Site kSites[] = {
    {PropertyMessages::kJavaPropertiesLoad, "Src/JavaProperties.cpp", 34,
     "bool JavaProperties::Load(const propstring&)", "!fileName.empty()"},
    {PropertyMessages::kJavaPropertiesStore, "Src/JavaProperties.cpp", 99,
     "bool JavaProperties::Store(const propstring&, const propstring&)",
     "!fileName.empty()"},
    {PropertyMessages::kIniPropertiesLoad, "Src/IniProperties.cpp", 34,
     "bool IniProperties::Load(const propstring&)", "!fileName.empty()"},
    {PropertyMessages::kIniPropertiesStore, "Src/IniProperties.cpp", 124,
     "bool IniProperties::Store(const propstring&, const propstring&)",
     "!fileName.empty()"},
    {PropertyMessages::kManagerRegisterProperty, "Src/PropertyManager.cpp", 53,
     "void PropertyManager::RegisterProperty(Property*)", "property"},
    {PropertyMessages::kManagerUnregisterProperty, "Src/PropertyManager.cpp",
     79, "void PropertyManager::UnregisterProperty(Property*)", "property"},
    {PropertyMessages::kManagerRegisterClient, "Src/PropertyManager.cpp", 102,
     "void PropertyManager::RegisterClient(PropertyClient*)", "client"},
    {PropertyMessages::kManagerUnregisterClient, "Src/PropertyManager.cpp", 126,
     "void PropertyManager::UnregisterClient(PropertyClient*)", "client"},
    {PropertyMessages::kManagerAddRegistryListener, "Src/PropertyManager.cpp",
     145,
     "void PropertyManager::AddRegistryListener(PropertyRegistryListener*)",
     "listener"},
    {PropertyMessages::kManagerRemoveRegistryListener,
     "Src/PropertyManager.cpp", 161,
     "void PropertyManager::RemoveRegistryListener(PropertyRegistryListener*)",
     "listener"},
    {PropertyMessages::kManagerAddChangeListener, "Src/PropertyManager.cpp",
     180, "void PropertyManager::AddChangeListener(PropertyChangeListener*)",
     "listener"},
    {PropertyMessages::kManagerRemoveChangeListener, "Src/PropertyManager.cpp",
     196, "void PropertyManager::RemoveChangeListener(PropertyChangeListener*)",
     "listener"},
    {PropertyMessages::kManagerNotifyChangeListeners, "Src/PropertyManager.cpp",
     215, "void PropertyManager::NotifyChangeListeners(Property*)", "property"},
    {PropertyMessages::kJavaManagerRegisterProperty,
     "Src/JavaPropertyManager.cpp", 40,
     "Property* JavaPropertyManager::RegisterProperty(const propstring&, "
     "const propstring&, const propstring&)",
     "m_propertyFactory"},
    {PropertyMessages::kIniManagerRegisterProperty,
     "Src/IniPropertyManager.cpp", 41,
     "Property* IniPropertyManager::RegisterProperty(const propstring&, "
     "const propstring&, const propstring&, const propstring&)",
     "m_propertyFactory"},
    {PropertyMessages::kJavaPersistenceRegisteredProperty,
     "Src/JavaPropertiesPersistence.cpp", 41,
     "virtual void JavaPropertiesPersistence::RegisteredProperty(Property*)",
     "property != __null"},
    {PropertyMessages::kJavaPersistenceUnregisterProperty,
     "Src/JavaPropertiesPersistence.cpp", 57,
     "void JavaPropertiesPersistence::UnregisterProperty(Property*)",
     "property != __null"},
    {PropertyMessages::kJavaPersistenceAddingProperty,
     "Src/JavaPropertiesPersistence.cpp", 76,
     "virtual void JavaPropertiesPersistence::AddingProperty(Property*)",
     "property"},
    {PropertyMessages::kJavaPersistenceRemovingProperty,
     "Src/JavaPropertiesPersistence.cpp", 87,
     "virtual void JavaPropertiesPersistence::RemovingProperty(Property*)",
     "property"},
    {PropertyMessages::kJavaPersistencePropertyChanged,
     "Src/JavaPropertiesPersistence.cpp", 98,
     "virtual void JavaPropertiesPersistence::PropertyChanged(Property*)",
     "property"},
    {PropertyMessages::kJavaPersistenceSetValue,
     "Src/JavaPropertiesPersistence.cpp", 163,
     "void JavaPropertiesPersistence::SetValue(Property*, JavaProperties&)",
     "property"},
    {PropertyMessages::kIniPersistenceRegisteredProperty,
     "Src/IniPropertiesPersistence.cpp", 41,
     "virtual void IniPropertiesPersistence::RegisteredProperty(Property*)",
     "property != __null"},
    {PropertyMessages::kIniPersistenceUnregisterProperty,
     "Src/IniPropertiesPersistence.cpp", 57,
     "void IniPropertiesPersistence::UnregisterProperty(Property*)",
     "property != __null"},
    {PropertyMessages::kIniPersistenceAddingProperty,
     "Src/IniPropertiesPersistence.cpp", 76,
     "virtual void IniPropertiesPersistence::AddingProperty(Property*)",
     "property"},
    {PropertyMessages::kIniPersistenceRemovingProperty,
     "Src/IniPropertiesPersistence.cpp", 87,
     "virtual void IniPropertiesPersistence::RemovingProperty(Property*)",
     "property"},
    {PropertyMessages::kIniPersistencePropertyChanged,
     "Src/IniPropertiesPersistence.cpp", 98,
     "virtual void IniPropertiesPersistence::PropertyChanged(Property*)",
     "property"},
    {PropertyMessages::kIniPersistenceSetValue,
     "Src/IniPropertiesPersistence.cpp", 164,
     "void IniPropertiesPersistence::SetValue(Property*, IniProperties&)",
     "property"},
};

TEST(PropertyMessagesTest, EveryAssertionIsListedOnce) {
  ASSERT_EQ(static_cast<size_t>(PropertyMessages::kAssertionCount),
            sizeof kSites / sizeof kSites[0]);
  for (size_t i = 0; i < sizeof kSites / sizeof kSites[0]; ++i) {
    EXPECT_EQ(static_cast<int>(i), static_cast<int>(kSites[i].assertion));
  }
}

TEST(PropertyMessagesDeathTest, FailAbortsWithTheFixedMessageOfEveryAssertion) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  for (const Site& site : kSites) {
    EXPECT_DEATH(
        PropertyMessages::Fail(site.assertion),
        AssertionRegex(site.file, site.line, site.function, site.condition))
        << site.file << ":" << site.line;
  }
}

TEST(PropertyMessagesDeathTest, RequireFailsOnlyWhenTheConditionDoesNotHold) {
  PropertyMessages::Require(true, PropertyMessages::kManagerRegisterClient);
  EXPECT_DEATH(
      PropertyMessages::Require(false,
                                PropertyMessages::kManagerRegisterClient),
      AssertionRegex("Src/PropertyManager.cpp", 102,
                     "void PropertyManager::RegisterClient(PropertyClient*)",
                     "client"));
}

TEST(PropertyMessagesTest, SilenceMutesWritesOfItsOwnThreadWhileAlive) {
  LogRecorder log;
  {
    PropertyMessages::Silence outer;
    {
      PropertyMessages::Silence inner;
      PropertyMessages::Write(PropertyMessages::kErrorReading, 1);
    }
    PropertyMessages::Write(PropertyMessages::kErrorReading, 2);
    std::thread other(
        [] { PropertyMessages::Write(PropertyMessages::kErrorReading, 3); });
    other.join();
  }
  PropertyMessages::Write(PropertyMessages::kErrorReading, 4);
  EXPECT_EQ(std::vector<std::string>(
                {"Error reading Line 3", "Error reading Line 4"}),
            log.Messages());
}

}  // namespace
