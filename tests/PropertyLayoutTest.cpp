// PropertyLayoutTest.cpp - layout keeping (PropertyLayout): a binding that
// keeps its file's layout changes only the lines of changed entries and
// adds those of new ones, where the process, its manager or the binding
// itself chose so; without a choice every rewrite writes the file anew, as
// it always has. The edit itself is tested in
// internal/PropertyLayoutKeeperTest.cpp; here, who chooses and what a
// program sees.

#include "PropertyLayout.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>

#include "support/FlavourFixtures.h"
#include "support/Flavours.h"
#include "support/PropertyTesting.h"
#include "support/SafetySettings.h"
#include "support/StoreTesting.h"

namespace {

using test_support::FlavourNames;
using test_support::Flavours;
using test_support::kHeader;
using test_support::kStringType;
using test_support::ReadFile;
using test_support::ScopedKeepLayout;
using test_support::WriteFile;

template <typename F>
class PropertyLayoutTest : public test_support::ManagerFixture<F> {
 protected:
  // A file as people write them: a comment, a blank line, an unknown key
  // before port, blanks around '=' and a trailing comment.
  std::string Handwritten(const std::string& port) const {
    const std::string comment(1, F::kComment);
    return comment + " written by hand\n\n" +
           F::Body("zeta = 1\nport = " + port + "  " + comment + " web\n");
  }
  // Binds m_path read-write and registers port, which loads its value.
  void BindAndRegisterPort() {
    this->m_manager.RegisterPersistence(this->m_path, kHeader);
    this->RegisterPort();
  }

  // Nothing chosen process-wide, whatever the environment says.
  ScopedKeepLayout m_processWide{false};
};

TYPED_TEST_SUITE(PropertyLayoutTest, Flavours, FlavourNames);

TYPED_TEST(PropertyLayoutTest, WithoutChoiceRewriteWritesFileAnew) {
  typedef TypeParam F;
  WriteFile(this->m_path, this->Handwritten("8080"));
  this->BindAndRegisterPort();
  this->Set("port", "81");
  EXPECT_EQ(ReadFile(this->m_path), F::Written(kHeader, "port=81\nzeta=1\n"));
}

TYPED_TEST(PropertyLayoutTest, ManagerChoiceChangesOnlyTheValue) {
  WriteFile(this->m_path, this->Handwritten("8080"));
  PropertyLayout::SetKeepLayout(&this->m_manager, true);
  this->BindAndRegisterPort();
  EXPECT_EQ(ReadFile(this->m_path), this->Handwritten("8080"));
  this->Set("port", "81");
  EXPECT_EQ(ReadFile(this->m_path), this->Handwritten("81"));
}

TYPED_TEST(PropertyLayoutTest, NewEntryIsOneMoreLine) {
  typedef TypeParam F;
  WriteFile(this->m_path, this->Handwritten("8080"));
  PropertyLayout::SetKeepLayout(&this->m_manager, true);
  this->BindAndRegisterPort();
  this->Register(kStringType, "name", "demo");
  this->Set("name", "web");
  EXPECT_EQ(ReadFile(this->m_path), this->Handwritten("8080") + "name=web\n");
  EXPECT_EQ(F::Get(this->m_manager, "name"), "web");
}

TYPED_TEST(PropertyLayoutTest, NewFileIsWrittenAsWithoutLayoutKeeping) {
  typedef TypeParam F;
  PropertyLayout::SetKeepLayout(&this->m_manager, true);
  this->BindAndRegisterPort();
  this->Set("port", "81");
  EXPECT_EQ(ReadFile(this->m_path), F::Written(kHeader, "port=81\n"));
}

TYPED_TEST(PropertyLayoutTest, ProcessWideChoiceAppliesToManagersWithoutOwn) {
  ScopedKeepLayout keep(true);
  WriteFile(this->m_path, this->Handwritten("8080"));
  this->BindAndRegisterPort();
  this->Set("port", "81");
  EXPECT_EQ(ReadFile(this->m_path), this->Handwritten("81"));
  EXPECT_TRUE(PropertyLayout::KeepLayout(&this->m_manager));
}

TYPED_TEST(PropertyLayoutTest, ManagerChoiceOverridesProcessWideOne) {
  typedef TypeParam F;
  ScopedKeepLayout keep(true);
  PropertyLayout::SetKeepLayout(&this->m_manager, false);
  WriteFile(this->m_path, this->Handwritten("8080"));
  this->BindAndRegisterPort();
  this->Set("port", "81");
  EXPECT_EQ(ReadFile(this->m_path), F::Written(kHeader, "port=81\nzeta=1\n"));
}

TYPED_TEST(PropertyLayoutTest, BindingChoiceOverridesManagerChoice) {
  typedef TypeParam F;
  const std::string other = this->File("other");
  WriteFile(this->m_path, this->Handwritten("8080"));
  WriteFile(other, this->Handwritten("8080"));
  PropertyLayout::SetKeepLayout(&this->m_manager, true);
  this->m_manager.RegisterPersistence(this->m_path, kHeader);
  this->m_manager.RegisterPersistence(other, kHeader);
  EXPECT_TRUE(PropertyLayout::SetKeepLayout(&this->m_manager, other, false));
  this->RegisterPort();
  this->Set("port", "81");
  EXPECT_EQ(ReadFile(this->m_path), this->Handwritten("81"));
  EXPECT_EQ(ReadFile(other), F::Written(kHeader, "port=81\nzeta=1\n"));
  EXPECT_TRUE(PropertyLayout::KeepLayout(&this->m_manager, this->m_path));
  EXPECT_FALSE(PropertyLayout::KeepLayout(&this->m_manager, other));
}

TYPED_TEST(PropertyLayoutTest, ChoiceForUnboundPathIsRefused) {
  EXPECT_FALSE(
      PropertyLayout::SetKeepLayout(&this->m_manager, this->m_path, true));
  EXPECT_FALSE(PropertyLayout::KeepLayout(&this->m_manager, this->m_path));
}

TYPED_TEST(PropertyLayoutTest, BindingChoiceGoesWithTheBinding) {
  this->m_manager.RegisterPersistence(this->m_path, kHeader);
  ASSERT_TRUE(
      PropertyLayout::SetKeepLayout(&this->m_manager, this->m_path, true));
  this->m_manager.UnRegisterPersistence(this->m_path);
  this->m_manager.RegisterPersistence(this->m_path, kHeader);
  EXPECT_FALSE(PropertyLayout::KeepLayout(&this->m_manager, this->m_path));
}

TYPED_TEST(PropertyLayoutTest, ManagerChoiceGoesWithTheManager) {
  std::unique_ptr<typename TypeParam::Manager> manager = this->NewManager();
  PropertyLayout::SetKeepLayout(manager.get(), true);
  EXPECT_TRUE(PropertyLayout::KeepLayout(manager.get()));
  const void* address = manager.get();
  manager.reset();
  // A later manager at the same address starts without a choice.
  manager = this->NewManager();
  if (manager.get() != address) GTEST_SKIP() << "no manager at the address";
  EXPECT_FALSE(PropertyLayout::KeepLayout(manager.get()));
}

TYPED_TEST(PropertyLayoutTest, KeptLayoutLogsWhatARewriteAnewLogs) {
  this->BindAndRegisterPort();
  // The same text before each set: a set reads the file first.
  WriteFile(this->m_path, this->Handwritten("8080"));
  this->m_log.Clear();
  this->Set("port", "81");
  const test_support::Messages anew = this->Logged();
  WriteFile(this->m_path, this->Handwritten("8080"));
  PropertyLayout::SetKeepLayout(&this->m_manager, true);
  this->m_log.Clear();
  this->Set("port", "81");
  EXPECT_EQ(this->Logged(), anew);
}

TYPED_TEST(PropertyLayoutTest, ValueThatCannotBeKeptIsWrittenAnewWithLogLine) {
  typedef TypeParam F;
  WriteFile(this->m_path, this->Handwritten("8080"));
  PropertyLayout::SetKeepLayout(&this->m_manager, true);
  this->BindAndRegisterPort();
  this->Register(kStringType, "name", "demo");
  this->m_log.Clear();
  this->Set("name", "a\nb");
  EXPECT_EQ(ReadFile(this->m_path),
            F::Written(kHeader, "name=a\nb\nport=8080\nzeta=1\n"));
  const test_support::Messages logged = this->Logged();
  EXPECT_EQ(1, std::count(logged.begin(), logged.end(),
                          "File '" + this->m_path +
                              "' is written anew, not in its own layout: "
                              "a value holds a line break"));
}

}  // namespace
