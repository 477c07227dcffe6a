// JavaPropertiesPersistenceTest.cpp - loads, merged rewrites, file faults.

#include "JavaPropertiesPersistence.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "Properties.h"
#include "support/AssertionMessage.h"
#include "support/FileFaults.h"
#include "support/LogRecorder.h"
#include "support/Recorders.h"
#include "support/TempDir.h"

namespace {

using test_support::CanNotRead;
using test_support::CanNotWrite;
using test_support::FileExists;
using test_support::LogRecorder;
using test_support::ReadFile;
using test_support::RewritesAreCrashSafe;
using test_support::ScopedFullDisk;
using test_support::TempDir;
using test_support::TestManager;
using test_support::WriteFile;

typedef std::vector<std::string> Messages;

const char kHeader[] = "app settings";

class JavaPropertiesPersistenceTest : public testing::Test {
 protected:
  JavaPropertiesPersistenceTest() : m_path(m_dir.File("app.properties")) {}

  // Attaches a new persistence object as a read-write binding does; the
  // manager owns it from then on.
  JavaPropertiesPersistence* BindReadWrite(
      const std::string& path, const std::string& header = kHeader) {
    JavaPropertiesPersistence* persistence = BindReadOnly(path, header);
    m_manager.AddChangeListener(persistence);
    return persistence;
  }

  // Attaches a new persistence object as a read-only binding does: never a
  // change listener.
  JavaPropertiesPersistence* BindReadOnly(const std::string& path,
                                          const std::string& header = "") {
    JavaPropertiesPersistence* persistence =
        new JavaPropertiesPersistence(path, header);
    m_manager.RegisterClient(persistence);
    m_manager.AddRegistryListener(persistence);
    return persistence;
  }

  // Registers a new property on the manager, which owns it.
  Property* AddInteger(const std::string& key, const std::string& value) {
    return Add(JCreateIntegerProperty(key, value));
  }
  Property* AddString(const std::string& key, const std::string& value) {
    return Add(JCreateStringProperty(key, value));
  }
  Property* Add(Property* property) {
    m_manager.RegisterProperty(property);
    return property;
  }

  // The messages logged since the last Clear(); each must be at level 1.
  Messages Logged() const { return test_support::MessagesAllAtLevel(m_log, 1); }

  // A path below a regular file, which can therefore never be opened.
  std::string UnwritablePath() {
    WriteFile(m_dir.File("plain"), "not a directory\n");
    return m_dir.File("plain/app.properties");
  }

  size_t CountLogged(const std::string& message) const {
    const Messages messages = Logged();
    return static_cast<size_t>(
        std::count(messages.begin(), messages.end(), message));
  }

  TempDir m_dir;
  std::string m_path;
  TestManager m_manager;
  LogRecorder m_log;
};

// Loading on registration.

TEST_F(JavaPropertiesPersistenceTest, BindingLoadsPropertiesRegisteredBefore) {
  WriteFile(m_path, "port=8080\nname=db\n");
  Property* port = AddInteger("port", "80");
  Property* name = AddString("name", "none");
  BindReadWrite(m_path);
  EXPECT_EQ(port->GetValue(), "8080");
  EXPECT_EQ(name->GetValue(), "db");
}

TEST_F(JavaPropertiesPersistenceTest,
       BindingDoesNotRewriteFileForPropertiesRegisteredBefore) {
  const std::string text = "  port = 8080  # local\n";
  WriteFile(m_path, text);
  AddInteger("port", "80");
  BindReadWrite(m_path);
  EXPECT_EQ(ReadFile(m_path), text);
}

TEST_F(JavaPropertiesPersistenceTest, PropertyRegisteredAfterBindingIsLoaded) {
  WriteFile(m_path, "port=8080\n");
  BindReadWrite(m_path);
  EXPECT_EQ(AddInteger("port", "80")->GetValue(), "8080");
}

TEST_F(JavaPropertiesPersistenceTest, RegisteringStoredKeyRewritesFileAtOnce) {
  WriteFile(m_path, "# local notes\n  port = 8080  # local\nother=1\n");
  BindReadWrite(m_path);
  AddInteger("port", "80");
  EXPECT_EQ(ReadFile(m_path), "#app settings\nother=1\nport=8080\n");
}

TEST_F(JavaPropertiesPersistenceTest,
       RegisteringKeyAbsentFromFileLeavesFileAlone) {
  const std::string text = "# local notes\n  other = 1\n";
  WriteFile(m_path, text);
  BindReadWrite(m_path);
  AddInteger("port", "80");
  EXPECT_EQ(ReadFile(m_path), text);
}

// Merging on every store.

TEST_F(JavaPropertiesPersistenceTest, ChangeWritesHeaderThenKeysInByteOrder) {
  WriteFile(m_path, "zeta=z\nAlpha=A\n");
  BindReadWrite(m_path);
  Property* port = AddInteger("port", "80");
  AddString("name", "x");
  port->SetValue("9");
  EXPECT_EQ(ReadFile(m_path),
            "#app settings\nAlpha=A\nname=x\nport=9\nzeta=z\n");
}

TEST_F(JavaPropertiesPersistenceTest,
       KeysNoPropertyRegistersSurviveEveryStore) {
  WriteFile(m_path, "extra=kept\n");
  BindReadWrite(m_path);
  Property* port = AddInteger("port", "80");
  for (const char* value : {"1", "2", "3"}) port->SetValue(value);
  EXPECT_EQ(ReadFile(m_path), "#app settings\nextra=kept\nport=3\n");
}

TEST_F(JavaPropertiesPersistenceTest, UnregisteredKeyKeepsItsLastWrittenValue) {
  BindReadWrite(m_path);
  std::unique_ptr<Property> port(AddInteger("port", "80"));
  Property* name = AddString("name", "x");
  port->SetValue("5");
  m_manager.UnregisterProperty(port.get());
  name->SetValue("y");
  EXPECT_EQ(ReadFile(m_path), "#app settings\nname=y\nport=5\n");
}

TEST_F(JavaPropertiesPersistenceTest, UnregisteredPropertyIsNoLongerWritten) {
  BindReadWrite(m_path);
  std::unique_ptr<Property> port(AddInteger("port", "80"));
  port->SetValue("5");
  m_manager.UnregisterProperty(port.get());
  port->SetValue("6");  // Still linked to the manager, so a store follows.
  EXPECT_EQ(ReadFile(m_path), "#app settings\nport=5\n");
}

TEST_F(JavaPropertiesPersistenceTest, FileChangedBetweenStoresIsMergedAgain) {
  BindReadWrite(m_path);
  Property* port = AddInteger("port", "80");
  port->SetValue("1");
  WriteFile(m_path, "added=yes\nport=77\n");
  port->SetValue("2");
  EXPECT_EQ(ReadFile(m_path), "#app settings\nadded=yes\nport=2\n");
}

TEST_F(JavaPropertiesPersistenceTest, EmptyHeaderWritesNoCommentLine) {
  BindReadWrite(m_path, "");
  AddInteger("port", "80")->SetValue("81");
  EXPECT_EQ(ReadFile(m_path), "port=81\n");
}

// Read-only bindings.

TEST_F(JavaPropertiesPersistenceTest, ReadOnlyBindingLoadsButNeverChangesFile) {
  const std::string text = "  port = 8080  # local\n";
  WriteFile(m_path, text);
  BindReadOnly(m_path);
  Property* port = AddInteger("port", "80");
  port->SetValue("81");
  EXPECT_EQ(port->GetValue(), "81");
  EXPECT_EQ(ReadFile(m_path), text);
}

TEST_F(JavaPropertiesPersistenceTest, ReadOnlyBindingNeverCreatesFile) {
  BindReadOnly(m_path);
  AddInteger("port", "80")->SetValue("81");
  EXPECT_FALSE(FileExists(m_path));
}

TEST_F(JavaPropertiesPersistenceTest,
       ReadOnlyLoadIsWrittenByReadWriteBindingOfAnotherPath) {
  const std::string readOnlyPath = m_dir.File("defaults.properties");
  WriteFile(readOnlyPath, "port=7\n");
  BindReadWrite(m_path);
  BindReadOnly(readOnlyPath);
  AddInteger("port", "80");
  EXPECT_EQ(ReadFile(m_path), "#app settings\nport=7\n");
  EXPECT_EQ(ReadFile(readOnlyPath), "port=7\n");
}

// Other operations.

TEST_F(JavaPropertiesPersistenceTest, DoLoadAllReloadsEveryPropertyInOneRead) {
  JavaPropertiesPersistence* persistence = BindReadOnly(m_path);
  Property* port = AddInteger("port", "80");
  Property* name = AddString("name", "x");
  WriteFile(m_path, "port=3\nname=n\n");
  m_log.Clear();
  persistence->DoLoadAll();
  EXPECT_EQ(port->GetValue(), "3");
  EXPECT_EQ(name->GetValue(), "n");
  EXPECT_EQ(Logged(),
            (Messages{"Loading 'port' to '3'", "Loading 'name' to 'n'"}));
}

TEST_F(JavaPropertiesPersistenceTest, GetFilePathReturnsBoundPath) {
  EXPECT_EQ(BindReadWrite(m_path)->GetFilePath(), m_path);
}

TEST_F(JavaPropertiesPersistenceTest, ConstructionTouchesNoFile) {
  JavaPropertiesPersistence persistence(m_path, kHeader);
  EXPECT_FALSE(FileExists(m_path));
  EXPECT_EQ(Logged(), Messages{});
}

// Missing and unreadable files.

TEST_F(JavaPropertiesPersistenceTest, MissingFileKeepsDefaultAndCreatesNoFile) {
  BindReadWrite(m_path);
  Property* port = AddInteger("port", "80");
  EXPECT_EQ(port->GetValue(), "80");
  EXPECT_EQ(Logged(),
            (Messages{CanNotRead(m_path), "Property 'port' was not found"}));
  EXPECT_FALSE(FileExists(m_path));
}

TEST_F(JavaPropertiesPersistenceTest, FirstChangeCreatesFileOfBoundProperties) {
  BindReadWrite(m_path);
  Property* port = AddInteger("port", "80");
  AddString("name", "x");
  port->SetValue("9");
  EXPECT_EQ(ReadFile(m_path), "#app settings\nname=x\nport=9\n");
}

TEST_F(JavaPropertiesPersistenceTest,
       DirectoryAsPathIsNeitherLoadedNorWritten) {
  const std::string path = m_dir.path();
  BindReadWrite(path);
  Property* port = nullptr;
  ASSERT_NO_THROW(port = AddInteger("port", "80"));
  EXPECT_EQ(port->GetValue(), "80");
  m_log.Clear();
  EXPECT_NO_THROW(port->SetValue("9"));
  EXPECT_EQ(port->GetValue(), "9");
  EXPECT_EQ(Logged(), (Messages{"Error reading Line 1", "Setting 'port' to '9'",
                                CanNotWrite(path)}));
}

// Unwritable files.

TEST_F(JavaPropertiesPersistenceTest, UnwritablePathLogsCanNotWriteOnChange) {
  const std::string path = UnwritablePath();
  BindReadWrite(path);
  Property* port = AddInteger("port", "80");
  m_log.Clear();
  port->SetValue("9");
  EXPECT_EQ(Logged(), (Messages{CanNotRead(path), "Setting 'port' to '9'",
                                CanNotWrite(path)}));
}

TEST_F(JavaPropertiesPersistenceTest, UnwritablePathLogsEveryChange) {
  const std::string path = UnwritablePath();
  BindReadWrite(path);
  Property* port = AddInteger("port", "80");
  for (const char* value : {"1", "2", "3"}) port->SetValue(value);
  EXPECT_EQ(CountLogged(CanNotWrite(path)), 3u);
}

TEST_F(JavaPropertiesPersistenceTest, UnwritablePathLeavesValuesSettable) {
  const std::string path = UnwritablePath();
  BindReadWrite(path);
  Property* port = AddInteger("port", "80");
  EXPECT_NO_THROW(port->SetValue("9"));
  EXPECT_EQ(port->GetValue(), "9");
  EXPECT_FALSE(FileExists(path));
}

// /dev/full cannot stand in for a full disk here: it reads as NUL bytes
// without end, one endless line on which the reader never returns. A file size
// limit makes the writes fail instead.
TEST_F(JavaPropertiesPersistenceTest,
       WriteFailingAfterOpenKeepsValuesSilently) {
  WriteFile(m_path, "port=1\nextra=x\n");
  BindReadWrite(m_path);
  Property* port = AddInteger("port", "80");
  const std::string before = ReadFile(m_path);
  m_log.Clear();
  {
    ScopedFullDisk fullDisk;
    EXPECT_NO_THROW(port->SetValue("9"));
  }
  EXPECT_EQ(port->GetValue(), "9");
  EXPECT_EQ(Logged(),
            (Messages{"Loading 'extra' to 'x'", "Loading 'port' to '1'",
                      "Setting 'port' to '9'"}));
  // In place, the open has truncated the file; a crash-safe rewrite
  // leaves the old text.
  EXPECT_EQ(ReadFile(m_path), RewritesAreCrashSafe() ? before : "");
}

// Stored texts the property rejects.

TEST_F(JavaPropertiesPersistenceTest,
       RejectedStoredTextKeepsDefaultAndIsLogged) {
  WriteFile(m_path, "port=eighty\n");
  BindReadWrite(m_path);
  m_log.Clear();
  Property* port = AddInteger("port", "80");
  EXPECT_EQ(port->GetValue(), "80");
  EXPECT_EQ(
      Logged(),
      (Messages{"Loading 'port' to 'eighty'",
                "Format of property 'port' seems to be changed: "
                "'Property 'port' can only contain 'an integer value''"}));
  EXPECT_EQ(ReadFile(m_path), "port=eighty\n");
}

TEST_F(JavaPropertiesPersistenceTest, NextChangeReplacesRejectedStoredText) {
  WriteFile(m_path, "port=eighty\n");
  BindReadWrite(m_path);
  Property* port = AddInteger("port", "80");
  AddString("name", "x")->SetValue("y");
  EXPECT_EQ(port->GetValue(), "80");
  EXPECT_EQ(ReadFile(m_path), "#app settings\nname=y\nport=80\n");
}

// Null properties.

// Expects call, made on a fresh unattached object, to abort with the
// assertion of condition at line of the source file, in function.
void ExpectAssertion(void (*call)(JavaPropertiesPersistence*), int line,
                     const std::string& function,
                     const std::string& condition) {
  JavaPropertiesPersistence persistence("unused.properties", kHeader);
  EXPECT_DEATH(call(&persistence),
               test_support::AssertionRegex("Src/JavaPropertiesPersistence.cpp",
                                            line, function, condition));
}

TEST(JavaPropertiesPersistenceDeathTest, RegisteredPropertyWithNullAborts) {
  ExpectAssertion(
      [](JavaPropertiesPersistence* p) { p->RegisteredProperty(nullptr); }, 41,
      "virtual void JavaPropertiesPersistence::RegisteredProperty(Property*)",
      "property != __null");
}

TEST(JavaPropertiesPersistenceDeathTest, UnregisterPropertyWithNullAborts) {
  ExpectAssertion(
      [](JavaPropertiesPersistence* p) { p->UnregisterProperty(nullptr); }, 57,
      "void JavaPropertiesPersistence::UnregisterProperty(Property*)",
      "property != __null");
}

TEST(JavaPropertiesPersistenceDeathTest, AddingPropertyWithNullAborts) {
  ExpectAssertion(
      [](JavaPropertiesPersistence* p) { p->AddingProperty(nullptr); }, 76,
      "virtual void JavaPropertiesPersistence::AddingProperty(Property*)",
      "property");
}

TEST(JavaPropertiesPersistenceDeathTest, RemovingPropertyWithNullAborts) {
  ExpectAssertion(
      [](JavaPropertiesPersistence* p) { p->RemovingProperty(nullptr); }, 87,
      "virtual void JavaPropertiesPersistence::RemovingProperty(Property*)",
      "property");
}

TEST(JavaPropertiesPersistenceDeathTest, PropertyChangedWithNullAborts) {
  ExpectAssertion(
      [](JavaPropertiesPersistence* p) { p->PropertyChanged(nullptr); }, 98,
      "virtual void JavaPropertiesPersistence::PropertyChanged(Property*)",
      "property");
}

TEST(JavaPropertiesPersistenceDeathTest, SetValueWithNullAborts) {
  ExpectAssertion(
      [](JavaPropertiesPersistence* p) {
        JavaProperties store;
        p->SetValue(nullptr, store);
      },
      163,
      "void JavaPropertiesPersistence::SetValue(Property*, JavaProperties&)",
      "property");
}

}  // namespace
