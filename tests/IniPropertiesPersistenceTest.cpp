// IniPropertiesPersistenceTest.cpp - loads, merged rewrites, file faults.

#include "IniPropertiesPersistence.h"

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

class IniPropertiesPersistenceTest : public testing::Test {
 protected:
  IniPropertiesPersistenceTest() : m_path(m_dir.File("app.ini")) {}

  // Attaches a new persistence object as a read-write binding does; the
  // manager owns it from then on.
  IniPropertiesPersistence* BindReadWrite(const std::string& path,
                                          const std::string& header = kHeader) {
    IniPropertiesPersistence* persistence = BindReadOnly(path, header);
    m_manager.AddChangeListener(persistence);
    return persistence;
  }

  // Attaches a new persistence object as a read-only binding does: never a
  // change listener.
  IniPropertiesPersistence* BindReadOnly(const std::string& path,
                                         const std::string& header = "") {
    IniPropertiesPersistence* persistence =
        new IniPropertiesPersistence(path, header);
    m_manager.RegisterClient(persistence);
    m_manager.AddRegistryListener(persistence);
    return persistence;
  }

  // Registers a new property on the manager, which owns it.
  Property* AddInteger(const std::string& section, const std::string& key,
                       const std::string& value) {
    return Add(ICreateIntegerProperty(key, value, section));
  }
  Property* AddString(const std::string& section, const std::string& key,
                      const std::string& value) {
    return Add(ICreateStringProperty(key, value, section));
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
    return m_dir.File("plain/app.ini");
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

TEST_F(IniPropertiesPersistenceTest, BindingLoadsPropertiesRegisteredBefore) {
  WriteFile(m_path, "[net]\nport=8080\n[db]\nname=main\n");
  Property* port = AddInteger("net", "port", "80");
  Property* name = AddString("db", "name", "none");
  BindReadWrite(m_path);
  EXPECT_EQ(port->GetValue(), "8080");
  EXPECT_EQ(name->GetValue(), "main");
}

TEST_F(IniPropertiesPersistenceTest,
       BindingDoesNotRewriteFileForPropertiesRegisteredBefore) {
  const std::string text = "[net]\n  port = 8080  ; local\n";
  WriteFile(m_path, text);
  AddInteger("net", "port", "80");
  BindReadWrite(m_path);
  EXPECT_EQ(ReadFile(m_path), text);
}

TEST_F(IniPropertiesPersistenceTest, PropertyRegisteredAfterBindingIsLoaded) {
  WriteFile(m_path, "[net]\nport=8080\n");
  BindReadWrite(m_path);
  EXPECT_EQ(AddInteger("net", "port", "80")->GetValue(), "8080");
}

TEST_F(IniPropertiesPersistenceTest, RegisteringStoredKeyRewritesFileAtOnce) {
  WriteFile(m_path, "; local notes\n[net]\n  port = 8080  ; local\nhost=a\n");
  BindReadWrite(m_path);
  AddInteger("net", "port", "80");
  EXPECT_EQ(ReadFile(m_path), ";app settings\n[net]\nhost=a\nport=8080\n\n");
}

TEST_F(IniPropertiesPersistenceTest,
       RegisteringKeyAbsentFromFileLeavesFileAlone) {
  const std::string text = "; local notes\n[net]\n  host = a\n";
  WriteFile(m_path, text);
  BindReadWrite(m_path);
  AddInteger("net", "port", "80");
  EXPECT_EQ(ReadFile(m_path), text);
}

// Merging on every store.

TEST_F(IniPropertiesPersistenceTest,
       ChangeWritesHeaderThenSectionsInByteOrder) {
  WriteFile(m_path, "[zeta]\nz=1\n[Alpha]\na=1\n");
  BindReadWrite(m_path);
  Property* port = AddInteger("net", "port", "80");
  AddString("net", "name", "x");
  port->SetValue("9");
  EXPECT_EQ(ReadFile(m_path),
            ";app settings\n[Alpha]\na=1\n\n[net]\nname=x\nport=9\n\n"
            "[zeta]\nz=1\n\n");
}

TEST_F(IniPropertiesPersistenceTest, KeysNoPropertyRegistersSurviveEveryStore) {
  WriteFile(m_path, "[net]\nextra=kept\n");
  BindReadWrite(m_path);
  Property* port = AddInteger("net", "port", "80");
  for (const char* value : {"1", "2", "3"}) port->SetValue(value);
  EXPECT_EQ(ReadFile(m_path), ";app settings\n[net]\nextra=kept\nport=3\n\n");
}

TEST_F(IniPropertiesPersistenceTest, SectionNoPropertyUsesSurvivesEveryStore) {
  WriteFile(m_path, "[net]\nport=1\n[other]\nx=1\n");
  BindReadWrite(m_path);
  Property* port = AddInteger("net", "port", "80");
  for (const char* value : {"2", "3"}) port->SetValue(value);
  EXPECT_EQ(ReadFile(m_path),
            ";app settings\n[net]\nport=3\n\n[other]\nx=1\n\n");
}

TEST_F(IniPropertiesPersistenceTest,
       PropertyOfSectionMissingFromFileKeepsDefault) {
  const std::string text = "[other]\nport=1\n";
  WriteFile(m_path, text);
  BindReadWrite(m_path);
  EXPECT_EQ(AddInteger("net", "port", "80")->GetValue(), "80");
  EXPECT_EQ(ReadFile(m_path), text);
}

TEST_F(IniPropertiesPersistenceTest, FirstStoreAddsMissingSectionWithItsKey) {
  WriteFile(m_path, "[other]\nport=1\n");
  BindReadWrite(m_path);
  AddInteger("net", "port", "80")->SetValue("9");
  EXPECT_EQ(ReadFile(m_path),
            ";app settings\n[net]\nport=9\n\n[other]\nport=1\n\n");
}

TEST_F(IniPropertiesPersistenceTest, SameKeyInTwoSectionsIsLoadedSeparately) {
  WriteFile(m_path, "[a]\nport=1\n[b]\nport=2\n");
  BindReadWrite(m_path);
  Property* first = AddInteger("a", "port", "80");
  Property* second = AddInteger("b", "port", "80");
  EXPECT_EQ(first->GetValue(), "1");
  EXPECT_EQ(second->GetValue(), "2");
}

TEST_F(IniPropertiesPersistenceTest, SameKeyInTwoSectionsIsStoredInEach) {
  BindReadWrite(m_path);
  Property* first = AddInteger("a", "port", "1");
  AddInteger("b", "port", "2");
  first->SetValue("3");
  EXPECT_EQ(ReadFile(m_path), ";app settings\n[a]\nport=3\n\n[b]\nport=2\n\n");
}

TEST_F(IniPropertiesPersistenceTest, UnregisteredKeyKeepsItsLastWrittenValue) {
  BindReadWrite(m_path);
  std::unique_ptr<Property> port(AddInteger("net", "port", "80"));
  Property* name = AddString("net", "name", "x");
  port->SetValue("5");
  m_manager.UnregisterProperty(port.get());
  name->SetValue("y");
  EXPECT_EQ(ReadFile(m_path), ";app settings\n[net]\nname=y\nport=5\n\n");
}

TEST_F(IniPropertiesPersistenceTest, UnregisteredPropertyIsNoLongerWritten) {
  BindReadWrite(m_path);
  std::unique_ptr<Property> port(AddInteger("net", "port", "80"));
  port->SetValue("5");
  m_manager.UnregisterProperty(port.get());
  port->SetValue("6");  // Still linked to the manager, so a store follows.
  EXPECT_EQ(ReadFile(m_path), ";app settings\n[net]\nport=5\n\n");
}

TEST_F(IniPropertiesPersistenceTest, FileChangedBetweenStoresIsMergedAgain) {
  BindReadWrite(m_path);
  Property* port = AddInteger("net", "port", "80");
  port->SetValue("1");
  WriteFile(m_path, "[net]\nadded=yes\nport=77\n[more]\nm=1\n");
  port->SetValue("2");
  EXPECT_EQ(ReadFile(m_path),
            ";app settings\n[more]\nm=1\n\n[net]\nadded=yes\nport=2\n\n");
}

TEST_F(IniPropertiesPersistenceTest, EmptyHeaderWritesNoCommentLine) {
  BindReadWrite(m_path, "");
  AddInteger("net", "port", "80")->SetValue("81");
  EXPECT_EQ(ReadFile(m_path), "[net]\nport=81\n\n");
}

// Read-only bindings.

TEST_F(IniPropertiesPersistenceTest, ReadOnlyBindingLoadsButNeverChangesFile) {
  const std::string text = "[net]\n  port = 8080  ; local\n";
  WriteFile(m_path, text);
  BindReadOnly(m_path);
  Property* port = AddInteger("net", "port", "80");
  port->SetValue("81");
  EXPECT_EQ(port->GetValue(), "81");
  EXPECT_EQ(ReadFile(m_path), text);
}

TEST_F(IniPropertiesPersistenceTest, ReadOnlyBindingNeverCreatesFile) {
  BindReadOnly(m_path);
  AddInteger("net", "port", "80")->SetValue("81");
  EXPECT_FALSE(FileExists(m_path));
}

TEST_F(IniPropertiesPersistenceTest,
       ReadOnlyLoadIsWrittenByReadWriteBindingOfAnotherPath) {
  const std::string readOnlyPath = m_dir.File("defaults.ini");
  WriteFile(readOnlyPath, "[net]\nport=7\n");
  BindReadWrite(m_path);
  BindReadOnly(readOnlyPath);
  AddInteger("net", "port", "80");
  EXPECT_EQ(ReadFile(m_path), ";app settings\n[net]\nport=7\n\n");
  EXPECT_EQ(ReadFile(readOnlyPath), "[net]\nport=7\n");
}

// Other operations.

TEST_F(IniPropertiesPersistenceTest, DoLoadAllReloadsEveryPropertyInOneRead) {
  IniPropertiesPersistence* persistence = BindReadOnly(m_path);
  Property* port = AddInteger("net", "port", "80");
  Property* name = AddString("db", "name", "x");
  WriteFile(m_path, "[net]\nport=3\n[db]\nname=n\n");
  m_log.Clear();
  persistence->DoLoadAll();
  EXPECT_EQ(port->GetValue(), "3");
  EXPECT_EQ(name->GetValue(), "n");
  EXPECT_EQ(Logged(), (Messages{"Loading 'port' of 'net' to '3'",
                                "Loading 'name' of 'db' to 'n'"}));
}

TEST_F(IniPropertiesPersistenceTest, GetFilePathReturnsBoundPath) {
  EXPECT_EQ(BindReadWrite(m_path)->GetFilePath(), m_path);
}

TEST_F(IniPropertiesPersistenceTest, ConstructionTouchesNoFile) {
  IniPropertiesPersistence persistence(m_path, kHeader);
  EXPECT_FALSE(FileExists(m_path));
  EXPECT_EQ(Logged(), Messages{});
}

// Missing and unreadable files.

TEST_F(IniPropertiesPersistenceTest, MissingFileKeepsDefaultAndCreatesNoFile) {
  BindReadWrite(m_path);
  Property* port = AddInteger("net", "port", "80");
  EXPECT_EQ(port->GetValue(), "80");
  EXPECT_EQ(Logged(),
            (Messages{CanNotRead(m_path),
                      "Property 'port' at Section 'net' was not found"}));
  EXPECT_FALSE(FileExists(m_path));
}

TEST_F(IniPropertiesPersistenceTest, FirstChangeCreatesFileOfBoundProperties) {
  BindReadWrite(m_path);
  Property* port = AddInteger("net", "port", "80");
  AddString("db", "name", "x");
  port->SetValue("9");
  EXPECT_EQ(ReadFile(m_path),
            ";app settings\n[db]\nname=x\n\n[net]\nport=9\n\n");
}

TEST_F(IniPropertiesPersistenceTest, DirectoryAsPathIsNeitherLoadedNorWritten) {
  const std::string path = m_dir.path();
  BindReadWrite(path);
  Property* port = nullptr;
  ASSERT_NO_THROW(port = AddInteger("net", "port", "80"));
  EXPECT_EQ(port->GetValue(), "80");
  m_log.Clear();
  EXPECT_NO_THROW(port->SetValue("9"));
  EXPECT_EQ(port->GetValue(), "9");
  EXPECT_EQ(Logged(),
            (Messages{"Error reading Line 1", "Setting 'port' of 'net' to '9'",
                      CanNotWrite(path)}));
}

// Unwritable files.

TEST_F(IniPropertiesPersistenceTest, UnwritablePathLogsCanNotWriteOnChange) {
  const std::string path = UnwritablePath();
  BindReadWrite(path);
  Property* port = AddInteger("net", "port", "80");
  m_log.Clear();
  port->SetValue("9");
  EXPECT_EQ(Logged(),
            (Messages{CanNotRead(path), "Setting 'port' of 'net' to '9'",
                      CanNotWrite(path)}));
}

TEST_F(IniPropertiesPersistenceTest, UnwritablePathLogsEveryChange) {
  const std::string path = UnwritablePath();
  BindReadWrite(path);
  Property* port = AddInteger("net", "port", "80");
  for (const char* value : {"1", "2", "3"}) port->SetValue(value);
  EXPECT_EQ(CountLogged(CanNotWrite(path)), 3u);
}

TEST_F(IniPropertiesPersistenceTest, UnwritablePathLeavesValuesSettable) {
  const std::string path = UnwritablePath();
  BindReadWrite(path);
  Property* port = AddInteger("net", "port", "80");
  EXPECT_NO_THROW(port->SetValue("9"));
  EXPECT_EQ(port->GetValue(), "9");
  EXPECT_FALSE(FileExists(path));
}

// /dev/full cannot stand in for a full disk here: it reads as NUL bytes
// without end, one endless line on which the reader never returns. A file size
// limit makes the writes fail instead.
TEST_F(IniPropertiesPersistenceTest, WriteFailingAfterOpenKeepsValuesSilently) {
  WriteFile(m_path, "[net]\nport=1\nextra=x\n");
  BindReadWrite(m_path);
  Property* port = AddInteger("net", "port", "80");
  const std::string before = ReadFile(m_path);
  m_log.Clear();
  {
    ScopedFullDisk fullDisk;
    EXPECT_NO_THROW(port->SetValue("9"));
  }
  EXPECT_EQ(port->GetValue(), "9");
  EXPECT_EQ(Logged(), (Messages{"Loading 'extra' of 'net' to 'x'",
                                "Loading 'port' of 'net' to '1'",
                                "Setting 'port' of 'net' to '9'"}));
  // In place, the open has truncated the file; a crash-safe rewrite
  // leaves the old text.
  EXPECT_EQ(ReadFile(m_path), RewritesAreCrashSafe() ? before : "");
}

// Stored texts the property rejects.

TEST_F(IniPropertiesPersistenceTest, RejectedStoredTextIsLoggedWithKeyOnly) {
  WriteFile(m_path, "[net]\nport=eighty\n");
  BindReadWrite(m_path);
  m_log.Clear();
  Property* port = AddInteger("net", "port", "80");
  EXPECT_EQ(port->GetValue(), "80");
  EXPECT_EQ(
      Logged(),
      (Messages{"Loading 'port' of 'net' to 'eighty'",
                "Format of property 'port' seems to be changed: "
                "'Property 'port' can only contain 'an integer value''"}));
  EXPECT_EQ(ReadFile(m_path), "[net]\nport=eighty\n");
}

TEST_F(IniPropertiesPersistenceTest, NextChangeReplacesRejectedStoredText) {
  WriteFile(m_path, "[net]\nport=eighty\n");
  BindReadWrite(m_path);
  Property* port = AddInteger("net", "port", "80");
  AddString("net", "name", "x")->SetValue("y");
  EXPECT_EQ(port->GetValue(), "80");
  EXPECT_EQ(ReadFile(m_path), ";app settings\n[net]\nname=y\nport=80\n\n");
}

// Null properties.

// Expects call, made on a fresh unattached object, to abort with the
// assertion of condition at line of the source file, in function.
void ExpectAssertion(void (*call)(IniPropertiesPersistence*), int line,
                     const std::string& function,
                     const std::string& condition) {
  IniPropertiesPersistence persistence("unused.ini", kHeader);
  EXPECT_DEATH(call(&persistence),
               test_support::AssertionRegex("Src/IniPropertiesPersistence.cpp",
                                            line, function, condition));
}

TEST(IniPropertiesPersistenceDeathTest, RegisteredPropertyWithNullAborts) {
  ExpectAssertion(
      [](IniPropertiesPersistence* p) { p->RegisteredProperty(nullptr); }, 41,
      "virtual void IniPropertiesPersistence::RegisteredProperty(Property*)",
      "property != __null");
}

TEST(IniPropertiesPersistenceDeathTest, UnregisterPropertyWithNullAborts) {
  ExpectAssertion(
      [](IniPropertiesPersistence* p) { p->UnregisterProperty(nullptr); }, 57,
      "void IniPropertiesPersistence::UnregisterProperty(Property*)",
      "property != __null");
}

TEST(IniPropertiesPersistenceDeathTest, AddingPropertyWithNullAborts) {
  ExpectAssertion(
      [](IniPropertiesPersistence* p) { p->AddingProperty(nullptr); }, 76,
      "virtual void IniPropertiesPersistence::AddingProperty(Property*)",
      "property");
}

TEST(IniPropertiesPersistenceDeathTest, RemovingPropertyWithNullAborts) {
  ExpectAssertion(
      [](IniPropertiesPersistence* p) { p->RemovingProperty(nullptr); }, 87,
      "virtual void IniPropertiesPersistence::RemovingProperty(Property*)",
      "property");
}

TEST(IniPropertiesPersistenceDeathTest, PropertyChangedWithNullAborts) {
  ExpectAssertion(
      [](IniPropertiesPersistence* p) { p->PropertyChanged(nullptr); }, 98,
      "virtual void IniPropertiesPersistence::PropertyChanged(Property*)",
      "property");
}

TEST(IniPropertiesPersistenceDeathTest, SetValueWithNullAborts) {
  ExpectAssertion(
      [](IniPropertiesPersistence* p) {
        IniProperties store;
        p->SetValue(nullptr, store);
      },
      164, "void IniPropertiesPersistence::SetValue(Property*, IniProperties&)",
      "property");
}

}  // namespace
