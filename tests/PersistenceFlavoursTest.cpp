// PersistenceFlavoursTest.cpp - what JavaPropertiesPersistence and
// IniPropertiesPersistence both do: loads on registration, merged rewrites on
// every change, read-only bindings, missing and unwritable files, rejected
// stored texts and assertions, tested once over the traits of each flavour.
// What the INI binding alone does is in IniPropertiesPersistenceTest.cpp.

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "Property.h"
#include "support/AssertionMessage.h"
#include "support/FileFaults.h"
#include "support/FlavourFixtures.h"
#include "support/Flavours.h"
#include "support/TempDir.h"

namespace {

using namespace std::string_literals;

using test_support::CanNotRead;
using test_support::CanNotWrite;
using test_support::FileExists;
using test_support::FlavourNames;
using test_support::Flavours;
using test_support::kHeader;
using test_support::Messages;
using test_support::ReadFile;
using test_support::RewritesAreCrashSafe;
using test_support::ScopedFullDisk;
using test_support::WriteFile;

template <typename F>
class PersistenceFlavoursTest : public test_support::PersistenceFixture<F> {
 protected:
  // A comment line, then the body lines.
  static std::string Commented(const std::string& comment,
                               const std::string& lines) {
    return F::kComment + comment + "\n" + F::Body(lines);
  }
  // An entry line with a comment after it.
  static std::string WithComment(const std::string& entry,
                                 const std::string& comment) {
    return entry + F::kComment + comment + "\n";
  }
};

TYPED_TEST_SUITE(PersistenceFlavoursTest, Flavours, FlavourNames);

// Loading on registration.

TYPED_TEST(PersistenceFlavoursTest, BindingLoadsPropertiesRegisteredBefore) {
  WriteFile(this->m_path, TypeParam::Body("port=8080\nname=db\n"));
  Property* port = this->AddInteger("port", "80");
  Property* name = this->AddString("name", "none");
  this->BindReadWrite(this->m_path);
  EXPECT_EQ(port->GetValue(), "8080");
  EXPECT_EQ(name->GetValue(), "db");
}

TYPED_TEST(PersistenceFlavoursTest,
           BindingDoesNotRewriteFileForPropertiesRegisteredBefore) {
  const std::string text =
      TypeParam::Body(this->WithComment("  port = 8080  ", " local"));
  WriteFile(this->m_path, text);
  this->AddInteger("port", "80");
  this->BindReadWrite(this->m_path);
  EXPECT_EQ(ReadFile(this->m_path), text);
}

TYPED_TEST(PersistenceFlavoursTest, PropertyRegisteredAfterBindingIsLoaded) {
  WriteFile(this->m_path, TypeParam::Body("port=8080\n"));
  this->BindReadWrite(this->m_path);
  EXPECT_EQ(this->AddInteger("port", "80")->GetValue(), "8080");
}

TYPED_TEST(PersistenceFlavoursTest, RegisteringStoredKeyRewritesFileAtOnce) {
  WriteFile(this->m_path,
            this->Commented(
                " local notes",
                this->WithComment("  port = 8080  ", " local") + "other=1\n"));
  this->BindReadWrite(this->m_path);
  this->AddInteger("port", "80");
  EXPECT_EQ(ReadFile(this->m_path),
            TypeParam::Written(kHeader, "other=1\nport=8080\n"));
}

TYPED_TEST(PersistenceFlavoursTest,
           RegisteringKeyAbsentFromFileLeavesFileAlone) {
  const std::string text = this->Commented(" local notes", "  other = 1\n");
  WriteFile(this->m_path, text);
  this->BindReadWrite(this->m_path);
  this->AddInteger("port", "80");
  EXPECT_EQ(ReadFile(this->m_path), text);
}

// Merging on every store.

TYPED_TEST(PersistenceFlavoursTest, ChangeWritesHeaderThenKeysInByteOrder) {
  WriteFile(this->m_path, TypeParam::Body("zeta=z\nAlpha=A\n"));
  this->BindReadWrite(this->m_path);
  Property* port = this->AddInteger("port", "80");
  this->AddString("name", "x");
  port->SetValue("9");
  EXPECT_EQ(ReadFile(this->m_path),
            TypeParam::Written(kHeader, "Alpha=A\nname=x\nport=9\nzeta=z\n"));
}

TYPED_TEST(PersistenceFlavoursTest, KeysNoPropertyRegistersSurviveEveryStore) {
  WriteFile(this->m_path, TypeParam::Body("extra=kept\n"));
  this->BindReadWrite(this->m_path);
  Property* port = this->AddInteger("port", "80");
  for (const char* value : {"1", "2", "3"}) port->SetValue(value);
  EXPECT_EQ(ReadFile(this->m_path),
            TypeParam::Written(kHeader, "extra=kept\nport=3\n"));
}

TYPED_TEST(PersistenceFlavoursTest, UnregisteredKeyKeepsItsLastWrittenValue) {
  this->BindReadWrite(this->m_path);
  std::unique_ptr<Property> port(this->AddInteger("port", "80"));
  Property* name = this->AddString("name", "x");
  port->SetValue("5");
  this->m_manager.UnregisterProperty(port.get());
  name->SetValue("y");
  EXPECT_EQ(ReadFile(this->m_path),
            TypeParam::Written(kHeader, "name=y\nport=5\n"));
}

TYPED_TEST(PersistenceFlavoursTest, UnregisteredPropertyIsNoLongerWritten) {
  this->BindReadWrite(this->m_path);
  std::unique_ptr<Property> port(this->AddInteger("port", "80"));
  port->SetValue("5");
  this->m_manager.UnregisterProperty(port.get());
  port->SetValue("6");  // Still linked to the manager, so a store follows.
  EXPECT_EQ(ReadFile(this->m_path), TypeParam::Written(kHeader, "port=5\n"));
}

TYPED_TEST(PersistenceFlavoursTest, FileChangedBetweenStoresIsMergedAgain) {
  this->BindReadWrite(this->m_path);
  Property* port = this->AddInteger("port", "80");
  port->SetValue("1");
  WriteFile(this->m_path, TypeParam::Body("added=yes\nport=77\n"));
  port->SetValue("2");
  EXPECT_EQ(ReadFile(this->m_path),
            TypeParam::Written(kHeader, "added=yes\nport=2\n"));
}

TYPED_TEST(PersistenceFlavoursTest, EmptyHeaderWritesNoCommentLine) {
  this->BindReadWrite(this->m_path, "");
  this->AddInteger("port", "80")->SetValue("81");
  EXPECT_EQ(ReadFile(this->m_path), TypeParam::Written("", "port=81\n"));
}

// Read-only bindings.

TYPED_TEST(PersistenceFlavoursTest, ReadOnlyBindingLoadsButNeverChangesFile) {
  const std::string text =
      TypeParam::Body(this->WithComment("  port = 8080  ", " local"));
  WriteFile(this->m_path, text);
  this->BindReadOnly(this->m_path);
  Property* port = this->AddInteger("port", "80");
  port->SetValue("81");
  EXPECT_EQ(port->GetValue(), "81");
  EXPECT_EQ(ReadFile(this->m_path), text);
}

TYPED_TEST(PersistenceFlavoursTest, ReadOnlyBindingNeverCreatesFile) {
  this->BindReadOnly(this->m_path);
  this->AddInteger("port", "80")->SetValue("81");
  EXPECT_FALSE(FileExists(this->m_path));
}

TYPED_TEST(PersistenceFlavoursTest,
           ReadOnlyLoadIsWrittenByReadWriteBindingOfAnotherPath) {
  typedef TypeParam F;
  const std::string readOnlyPath =
      this->m_dir.File("defaults"s + F::kExtension);
  WriteFile(readOnlyPath, F::Body("port=7\n"));
  this->BindReadWrite(this->m_path);
  this->BindReadOnly(readOnlyPath);
  this->AddInteger("port", "80");
  EXPECT_EQ(ReadFile(this->m_path), F::Written(kHeader, "port=7\n"));
  EXPECT_EQ(ReadFile(readOnlyPath), F::Body("port=7\n"));
}

// Other operations.

TYPED_TEST(PersistenceFlavoursTest, DoLoadAllReloadsEveryPropertyInOneRead) {
  typedef TypeParam F;
  typename F::Persistence* persistence = this->BindReadOnly(this->m_path);
  Property* port = this->AddInteger("port", "80");
  Property* name = this->AddString("name", "x");
  WriteFile(this->m_path, F::Body("port=3\nname=n\n"));
  this->m_log.Clear();
  persistence->DoLoadAll();
  EXPECT_EQ(port->GetValue(), "3");
  EXPECT_EQ(name->GetValue(), "n");
  EXPECT_EQ(this->Logged(),
            (Messages{F::Loading("port", "3"), F::Loading("name", "n")}));
}

TYPED_TEST(PersistenceFlavoursTest, GetFilePathReturnsBoundPath) {
  EXPECT_EQ(this->BindReadWrite(this->m_path)->GetFilePath(), this->m_path);
}

TYPED_TEST(PersistenceFlavoursTest, ConstructionTouchesNoFile) {
  typename TypeParam::Persistence persistence(this->m_path, kHeader);
  EXPECT_FALSE(FileExists(this->m_path));
  EXPECT_EQ(this->Logged(), Messages{});
}

// Missing and unreadable files.

TYPED_TEST(PersistenceFlavoursTest, MissingFileKeepsDefaultAndCreatesNoFile) {
  this->BindReadWrite(this->m_path);
  Property* port = this->AddInteger("port", "80");
  EXPECT_EQ(port->GetValue(), "80");
  EXPECT_EQ(this->Logged(),
            (Messages{CanNotRead(this->m_path), TypeParam::NotFound("port")}));
  EXPECT_FALSE(FileExists(this->m_path));
}

TYPED_TEST(PersistenceFlavoursTest, FirstChangeCreatesFileOfBoundProperties) {
  this->BindReadWrite(this->m_path);
  Property* port = this->AddInteger("port", "80");
  this->AddString("name", "x");
  port->SetValue("9");
  EXPECT_EQ(ReadFile(this->m_path),
            TypeParam::Written(kHeader, "name=x\nport=9\n"));
}

TYPED_TEST(PersistenceFlavoursTest, DirectoryAsPathIsNeitherLoadedNorWritten) {
  const std::string path = this->m_dir.path();
  this->BindReadWrite(path);
  Property* port = nullptr;
  ASSERT_NO_THROW(port = this->AddInteger("port", "80"));
  EXPECT_EQ(port->GetValue(), "80");
  this->m_log.Clear();
  EXPECT_NO_THROW(port->SetValue("9"));
  EXPECT_EQ(port->GetValue(), "9");
  EXPECT_EQ(this->Logged(),
            (Messages{"Error reading Line 1", TypeParam::Setting("port", "9"),
                      CanNotWrite(path)}));
}

// Unwritable files.

TYPED_TEST(PersistenceFlavoursTest, UnwritablePathLogsCanNotWriteOnChange) {
  const std::string path = this->UnwritablePath();
  this->BindReadWrite(path);
  Property* port = this->AddInteger("port", "80");
  this->m_log.Clear();
  port->SetValue("9");
  EXPECT_EQ(this->Logged(),
            (Messages{CanNotRead(path), TypeParam::Setting("port", "9"),
                      CanNotWrite(path)}));
}

TYPED_TEST(PersistenceFlavoursTest, UnwritablePathLogsEveryChange) {
  const std::string path = this->UnwritablePath();
  this->BindReadWrite(path);
  Property* port = this->AddInteger("port", "80");
  for (const char* value : {"1", "2", "3"}) port->SetValue(value);
  EXPECT_EQ(this->CountLogged(CanNotWrite(path)), 3u);
}

TYPED_TEST(PersistenceFlavoursTest, UnwritablePathLeavesValuesSettable) {
  const std::string path = this->UnwritablePath();
  this->BindReadWrite(path);
  Property* port = this->AddInteger("port", "80");
  EXPECT_NO_THROW(port->SetValue("9"));
  EXPECT_EQ(port->GetValue(), "9");
  EXPECT_FALSE(FileExists(path));
}

// /dev/full cannot stand in for a full disk here: it reads as NUL bytes
// without end, one endless line on which the reader never returns. A file size
// limit makes the writes fail instead.
TYPED_TEST(PersistenceFlavoursTest, WriteFailingAfterOpenKeepsValuesSilently) {
  typedef TypeParam F;
  WriteFile(this->m_path, F::Body("port=1\nextra=x\n"));
  this->BindReadWrite(this->m_path);
  Property* port = this->AddInteger("port", "80");
  const std::string before = ReadFile(this->m_path);
  this->m_log.Clear();
  {
    ScopedFullDisk fullDisk;
    EXPECT_NO_THROW(port->SetValue("9"));
  }
  EXPECT_EQ(port->GetValue(), "9");
  EXPECT_EQ(this->Logged(),
            (Messages{F::Loading("extra", "x"), F::Loading("port", "1"),
                      F::Setting("port", "9")}));
  // In place, the open has truncated the file; a crash-safe rewrite
  // leaves the old text.
  EXPECT_EQ(ReadFile(this->m_path), RewritesAreCrashSafe() ? before : "");
}

// Stored texts the property rejects.

TYPED_TEST(PersistenceFlavoursTest,
           RejectedStoredTextKeepsDefaultAndIsLoggedWithKeyAlone) {
  typedef TypeParam F;
  WriteFile(this->m_path, F::Body("port=eighty\n"));
  this->BindReadWrite(this->m_path);
  this->m_log.Clear();
  Property* port = this->AddInteger("port", "80");
  EXPECT_EQ(port->GetValue(), "80");
  EXPECT_EQ(
      this->Logged(),
      (Messages{F::Loading("port", "eighty"),
                "Format of property 'port' seems to be changed: "
                "'Property 'port' can only contain 'an integer value''"}));
  EXPECT_EQ(ReadFile(this->m_path), F::Body("port=eighty\n"));
}

TYPED_TEST(PersistenceFlavoursTest, NextChangeReplacesRejectedStoredText) {
  WriteFile(this->m_path, TypeParam::Body("port=eighty\n"));
  this->BindReadWrite(this->m_path);
  Property* port = this->AddInteger("port", "80");
  this->AddString("name", "x")->SetValue("y");
  EXPECT_EQ(port->GetValue(), "80");
  EXPECT_EQ(ReadFile(this->m_path),
            TypeParam::Written(kHeader, "name=y\nport=80\n"));
}

// Null properties.

template <typename F>
class PersistenceFlavoursDeathTest : public testing::Test {
 protected:
  typedef typename F::Persistence Persistence;

  // Expects call, made on a fresh unattached binding, to abort with
  // assertion.
  static void ExpectAssertion(void (*call)(Persistence*),
                              const test_support::AssertionText& assertion) {
    Persistence persistence("unused"s + F::kExtension, kHeader);
    EXPECT_DEATH(call(&persistence), test_support::AssertionRegex(assertion));
  }
};

TYPED_TEST_SUITE(PersistenceFlavoursDeathTest, Flavours, FlavourNames);

TYPED_TEST(PersistenceFlavoursDeathTest, RegisteredPropertyWithNullAborts) {
  this->ExpectAssertion(
      [](typename TypeParam::Persistence* p) {
        p->RegisteredProperty(nullptr);
      },
      TypeParam::kNullRegisteredProperty);
}

TYPED_TEST(PersistenceFlavoursDeathTest, UnregisterPropertyWithNullAborts) {
  this->ExpectAssertion(
      [](typename TypeParam::Persistence* p) {
        p->UnregisterProperty(nullptr);
      },
      TypeParam::kNullUnregisterProperty);
}

TYPED_TEST(PersistenceFlavoursDeathTest, AddingPropertyWithNullAborts) {
  this->ExpectAssertion(
      [](typename TypeParam::Persistence* p) { p->AddingProperty(nullptr); },
      TypeParam::kNullAddingProperty);
}

TYPED_TEST(PersistenceFlavoursDeathTest, RemovingPropertyWithNullAborts) {
  this->ExpectAssertion(
      [](typename TypeParam::Persistence* p) { p->RemovingProperty(nullptr); },
      TypeParam::kNullRemovingProperty);
}

TYPED_TEST(PersistenceFlavoursDeathTest, PropertyChangedWithNullAborts) {
  this->ExpectAssertion(
      [](typename TypeParam::Persistence* p) { p->PropertyChanged(nullptr); },
      TypeParam::kNullPropertyChanged);
}

TYPED_TEST(PersistenceFlavoursDeathTest, SetValueWithNullAborts) {
  this->ExpectAssertion(
      [](typename TypeParam::Persistence* p) {
        typename TypeParam::Store store;
        p->SetValue(nullptr, store);
      },
      TypeParam::kNullSetValue);
}

}  // namespace
