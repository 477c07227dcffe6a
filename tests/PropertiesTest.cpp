// PropertiesTest.cpp - managers by name, factories and exit-time clean-up of
// the Properties singleton.

#include "Properties.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <unistd.h>

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "BooleanProperty.h"
#include "DoubleProperty.h"
#include "IntegerProperty.h"
#include "IpAddrProperty.h"
#include "ListProperty.h"
#include "StringProperty.h"
#include "support/LogRecorder.h"
#include "support/MutexProbe.h"
#include "support/TempDir.h"

namespace {

using test_support::IsFreeForOtherThreads;

using test_support::LogRecorder;
using test_support::ReadFile;
using test_support::TempDir;
using test_support::WriteFile;

// The six type names in byte order, as GetTypeNames lists them.
const std::vector<propstring> kTypeNames = {
    "PROPERTY_TYPE_BOOLEAN", "PROPERTY_TYPE_DOUBLE", "PROPERTY_TYPE_INTEGER",
    "PROPERTY_TYPE_IP_ADDR", "PROPERTY_TYPE_LIST",   "PROPERTY_TYPE_STRING"};

template <typename T>
bool IsA(const Property* property) {
  return dynamic_cast<const T*>(property) != nullptr;
}

// A type name, an initial value it accepts, and a test for its class.
struct TypeCase {
  const char* type;
  const char* initial;
  bool (*isRightClass)(const Property*);
};

const TypeCase kTypeCases[] = {
    {"PROPERTY_TYPE_BOOLEAN", "true", IsA<BooleanProperty>},
    {"PROPERTY_TYPE_DOUBLE", "0.5", IsA<DoubleProperty>},
    {"PROPERTY_TYPE_INTEGER", "7", IsA<IntegerProperty>},
    {"PROPERTY_TYPE_IP_ADDR", "10.0.0.1", IsA<IpAddrProperty>},
    {"PROPERTY_TYPE_LIST", "red|green", IsA<ListProperty>},
    {"PROPERTY_TYPE_STRING", "text", IsA<StringProperty>},
};

Properties* Instance() { return Properties::GetInstance(); }

// A manager name no other test uses: the current test's name plus suffix.
propstring UniqueName(const std::string& suffix) {
  const testing::TestInfo* test =
      testing::UnitTest::GetInstance()->current_test_info();
  return std::string(test->test_suite_name()) + "." + test->name() + "." +
         suffix;
}

// Writes text to stderr at once, without stdio buffering.
void WriteToStderr(const std::string& text) {
  ssize_t written = write(STDERR_FILENO, text.data(), text.size());
  (void)written;
}

// A client that reports its own deletion on stderr as "deleted:<name>".
class DeletionReporter : public PropertyClient {
 public:
  explicit DeletionReporter(const std::string& name)
      : m_line("deleted:" + name + "\n") {}
  ~DeletionReporter() override { WriteToStderr(m_line); }
  void RegisteredProperty(Property*) override {}

 private:
  std::string m_line;
};

// A string property that reports its deletion on stderr as "deleted:<key>".
class ReportingProperty : public StringProperty {
 public:
  explicit ReportingProperty(const std::string& key)
      : StringProperty(key, "value", ""), m_line("deleted:" + key + "\n") {}
  ~ReportingProperty() override { WriteToStderr(m_line); }

 private:
  std::string m_line;
};

TEST(PropertiesTest, GetInstanceReturnsTheSameObjectEveryTime) {
  Properties* first = Properties::GetInstance();
  ASSERT_NE(nullptr, first);
  EXPECT_EQ(first, Properties::GetInstance());
}

TEST(PropertiesTest, SameNameGivesTheSameJavaManager) {
  const propstring name = UniqueName("domain");
  JavaPropertyManager* first = Instance()->GetJavaPropertyManager(name);
  ASSERT_NE(nullptr, first);
  EXPECT_EQ(first, Instance()->GetJavaPropertyManager(name));
  EXPECT_EQ(name, first->GetName());
}

TEST(PropertiesTest, SameNameGivesTheSameIniManager) {
  const propstring name = UniqueName("domain");
  IniPropertyManager* first = Instance()->GetIniPropertyManager(name);
  ASSERT_NE(nullptr, first);
  EXPECT_EQ(first, Instance()->GetIniPropertyManager(name));
  EXPECT_EQ(name, first->GetName());
}

TEST(PropertiesTest, IniManagerOfAJavaManagerNameIsThatJavaManager) {
  const propstring name = UniqueName("domain");
  JavaPropertyManager* java = Instance()->GetJavaPropertyManager(name);
  // Only compared: it is not an IniPropertyManager and must not be used as one.
  IniPropertyManager* ini = Instance()->GetIniPropertyManager(name);
  EXPECT_EQ(static_cast<void*>(java), static_cast<void*>(ini));
}

TEST(PropertiesTest, NamesDifferingOnlyInCaseGiveTwoManagers) {
  JavaPropertyManager* lower =
      Instance()->GetJavaPropertyManager(UniqueName("domain"));
  JavaPropertyManager* upper =
      Instance()->GetJavaPropertyManager(UniqueName("DOMAIN"));
  EXPECT_NE(lower, upper);
  EXPECT_EQ(UniqueName("domain"), lower->GetName());
  EXPECT_EQ(UniqueName("DOMAIN"), upper->GetName());
}

TEST(PropertiesTest, ManagerOfANameWithNulIsNamedUpToTheNul) {
  const propstring name = UniqueName("ab") + std::string("\0cd", 3);
  JavaPropertyManager* manager = Instance()->GetJavaPropertyManager(name);
  EXPECT_EQ(UniqueName("ab"), manager->GetName());
}

TEST(PropertiesTest, DirectoryKeepsTheWholeNameWithNul) {
  const propstring cut = UniqueName("ab");
  const propstring whole = cut + std::string("\0cd", 3);
  JavaPropertyManager* manager = Instance()->GetJavaPropertyManager(whole);
  EXPECT_NE(manager, Instance()->GetJavaPropertyManager(cut));
  EXPECT_EQ(manager, Instance()->GetJavaPropertyManager(whole));
}

TEST(PropertiesTest, EmptyNameIsAValidName) {
  JavaPropertyManager* manager = Instance()->GetJavaPropertyManager("");
  ASSERT_NE(nullptr, manager);
  EXPECT_EQ("", manager->GetName());
  EXPECT_EQ(manager, Instance()->GetJavaPropertyManager(""));
}

TEST(PropertiesTest, JavaFactoryKnowsExactlyTheSixTypeNames) {
  ASSERT_NE(nullptr, Instance()->GetJavaPropertyFactory());
  EXPECT_EQ(kTypeNames, Instance()->GetJavaPropertyFactory()->GetTypeNames());
}

TEST(PropertiesTest, IniFactoryKnowsExactlyTheSixTypeNames) {
  ASSERT_NE(nullptr, Instance()->GetIniPropertyFactory());
  EXPECT_EQ(kTypeNames, Instance()->GetIniPropertyFactory()->GetTypeNames());
}

TEST(PropertiesTest, JavaFactoryCreatesTheClassOfEachTypeName) {
  for (const TypeCase& c : kTypeCases) {
    std::unique_ptr<Property> property(
        Instance()->GetJavaPropertyFactory()->CreateProperty(c.type, "key",
                                                             c.initial));
    ASSERT_NE(nullptr, property) << c.type;
    EXPECT_TRUE(c.isRightClass(property.get())) << c.type;
    EXPECT_EQ(c.type, property->GetPropertyType());
    EXPECT_EQ("", property->GetSection()) << c.type;
  }
}

TEST(PropertiesTest, IniFactoryCreatesTheClassOfEachTypeName) {
  for (const TypeCase& c : kTypeCases) {
    std::unique_ptr<Property> property(
        Instance()->GetIniPropertyFactory()->CreateProperty(c.type, "section",
                                                            "key", c.initial));
    ASSERT_NE(nullptr, property) << c.type;
    EXPECT_TRUE(c.isRightClass(property.get())) << c.type;
    EXPECT_EQ(c.type, property->GetPropertyType());
    EXPECT_EQ("section", property->GetSection()) << c.type;
  }
}

TEST(PropertiesTest, LoggingSwitchesChangeNothing) {
  JavaPropertyManager* manager =
      Instance()->GetJavaPropertyManager(UniqueName("domain"));
  manager->RegisterProperty("PROPERTY_TYPE_INTEGER", "port", "8080");
  LogRecorder log;
  Instance()->EnableInternalLogging("anything");
  Instance()->DisableInternalLogging();
  EXPECT_TRUE(log.Entries().empty());
  EXPECT_EQ(manager, Instance()->GetJavaPropertyManager(UniqueName("domain")));
  EXPECT_EQ("8080", manager->GetValue("port"));
}

TEST(PropertiesTest, MutexCanBeLockedTwiceByOneThread) {
  ASSERT_EQ(0, pthread_mutex_trylock(Properties::m_mutex));
  const bool lockedAgain = pthread_mutex_trylock(Properties::m_mutex) == 0;
  pthread_mutex_unlock(Properties::m_mutex);
  ASSERT_TRUE(lockedAgain);
  EXPECT_FALSE(IsFreeForOtherThreads(Properties::m_mutex));
  pthread_mutex_unlock(Properties::m_mutex);
  EXPECT_TRUE(IsFreeForOtherThreads(Properties::m_mutex));
}

// The statements below run in a child process that ends with exit(0), so
// that the singleton is destroyed there; the parent sees the child's stderr.

void MakeManagersAndExit() {
  for (const char* name : {"zeta", "alpha", "mid"}) {
    const std::string full = std::string("ExitOrder-") + name;
    Instance()->GetJavaPropertyManager(full)->RegisterClient(
        new DeletionReporter(full));
  }
  std::exit(0);
}

void RegisterPropertyAndExit() {
  PropertyManager* manager = Instance()->GetJavaPropertyManager("ExitProperty");
  manager->RegisterProperty(new ReportingProperty("ExitProperty-key"));
  std::exit(0);
}

// Exits with 1 if the bound file was not written on the set, else edits the
// file behind the manager's back and exits with 0.
void SetBoundValueEditFileAndExit(const std::string& path) {
  JavaPropertyManager* manager = Instance()->GetJavaPropertyManager("ExitFile");
  manager->RegisterPersistence(path, "header");
  manager->RegisterProperty("PROPERTY_TYPE_INTEGER", "port", "1");
  manager->SetValue("port", "2");
  if (ReadFile(path) != "#header\nport=2\n") std::exit(1);
  WriteFile(path, "edited=1\n");
  std::exit(0);
}

TEST(PropertiesDeathTest, ManagersAreDeletedAtExitInAscendingNameOrder) {
  EXPECT_EXIT(MakeManagersAndExit(), testing::ExitedWithCode(0),
              "^deleted:ExitOrder-alpha\ndeleted:ExitOrder-mid\n"
              "deleted:ExitOrder-zeta\n$");
}

TEST(PropertiesDeathTest, RegisteredPropertyIsDeletedAtExit) {
  EXPECT_EXIT(RegisterPropertyAndExit(), testing::ExitedWithCode(0),
              "^deleted:ExitProperty-key\n$");
}

TEST(PropertiesDeathTest, BoundFileIsNotWrittenAtExit) {
  TempDir dir;
  const std::string path = dir.File("exit.properties");
  EXPECT_EXIT(SetBoundValueEditFileAndExit(path), testing::ExitedWithCode(0),
              "");
  EXPECT_EQ("edited=1\n", ReadFile(path));
}

}  // namespace
