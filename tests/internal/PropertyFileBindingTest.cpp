// PropertyFileBindingTest.cpp - the binding cycle on its own, for both
// formats: bind, unbind, load, rewrite and the log lines of file trouble and
// of rejected stored values.

#include "PropertyFileBinding.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "IniProperties.h"
#include "IniPropertiesFormat.h"
#include "IntegerProperty.h"
#include "JavaProperties.h"
#include "JavaPropertiesFormat.h"
#include "support/LogRecorder.h"
#include "support/TempDir.h"

namespace {

using test_support::LogRecorder;
using test_support::ReadFile;
using test_support::TempDir;
using test_support::WriteFile;

// What differs between the formats: a file holding the key port with the
// value 7 among others, and the text a rewrite makes of it.
struct Flat {
  typedef JavaPropertiesFormat Format;
  static constexpr const char* kFile = "#old\nother=1\nport=7\n";
  static constexpr const char* kRewritten = "#hdr\nother=1\nport=9\n";
  // kRewritten of kFile with "added=1" at its end.
  static constexpr const char* kRewrittenEdited =
      "#hdr\nadded=1\nother=1\nport=9\n";
  static constexpr const char* kRejected = "port=x\n";
  static constexpr const char* kNotFound = "Property 'port' was not found";
  static std::string Section() { return ""; }
};
struct Ini {
  typedef IniPropertiesFormat Format;
  static constexpr const char* kFile = ";old\n[s]\nother=1\nport=7\n";
  static constexpr const char* kRewritten = ";hdr\n[s]\nother=1\nport=9\n\n";
  static constexpr const char* kRewrittenEdited =
      ";hdr\n[s]\nadded=1\nother=1\nport=9\n\n";
  static constexpr const char* kRejected = "[s]\nport=x\n";
  static constexpr const char* kNotFound =
      "Property 'port' at Section 's' was not found";
  static std::string Section() { return "s"; }
};

class FormatNames {
 public:
  template <typename F>
  static std::string GetName(int) {
    return F::Section().empty() ? "Flat" : "Ini";
  }
};

template <typename F>
class PropertyFileBindingTest : public testing::Test {
 protected:
  typedef PropertyFileBinding<typename F::Format> Binding;

  PropertyFileBindingTest()
      : m_path(m_dir.File("bound")),
        m_port(new IntegerProperty("port", "1", F::Section())),
        m_binding(m_bound, m_path, m_header) {}

  TempDir m_dir;
  std::string m_path;
  std::string m_header = "hdr";
  std::unique_ptr<IntegerProperty> m_port;
  std::vector<Property*> m_bound;
  Binding m_binding;
};

typedef testing::Types<Flat, Ini> Formats;
TYPED_TEST_SUITE(PropertyFileBindingTest, Formats, FormatNames);

TYPED_TEST(PropertyFileBindingTest, BindAppendsAndLoadsTheStoredValue) {
  WriteFile(this->m_path, TypeParam::kFile);
  this->m_binding.Bind(this->m_port.get());
  EXPECT_EQ(std::vector<Property*>{this->m_port.get()}, this->m_bound);
  EXPECT_EQ("7", this->m_port->GetValue());
}

TYPED_TEST(PropertyFileBindingTest, UnbindForgetsTheFirstBindingOnly) {
  this->m_bound = {this->m_port.get(), this->m_port.get()};
  this->m_binding.Unbind(this->m_port.get());
  EXPECT_EQ(std::vector<Property*>{this->m_port.get()}, this->m_bound);
  this->m_binding.Unbind(nullptr);  // Not bound: nothing happens.
  EXPECT_EQ(1u, this->m_bound.size());
}

TYPED_TEST(PropertyFileBindingTest, RewriteMergesIntoWhatTheFileHoldsNow) {
  this->m_bound.push_back(this->m_port.get());
  this->m_port->SetValue("9");
  WriteFile(this->m_path, TypeParam::kFile);
  this->m_binding.Rewrite();
  EXPECT_EQ(TypeParam::kRewritten, ReadFile(this->m_path));
}

// A rewrite that holds the lock from its read to its write still keeps the
// update of a program that takes no lock and renames its text over the
// file meanwhile (here while the merge logs): it merges again into that.
TYPED_TEST(PropertyFileBindingTest,
           HeldRewriteKeepsAFileRenamedOverItMeanwhile) {
  typedef typename TestFixture::Binding Binding;
  Binding::SetHeldPasses(Binding::kEvery);
  this->m_bound.push_back(this->m_port.get());
  this->m_port->SetValue("9");
  WriteFile(this->m_path, TypeParam::kFile);
  const std::string edited = this->m_dir.File("edited");
  WriteFile(edited, std::string(TypeParam::kFile) + "added=1\n");
  bool renamed = false;
  LogRecorder log;
  log.OnMessage([&](const std::string&) {
    if (!renamed)
      renamed = std::rename(edited.c_str(), this->m_path.c_str()) == 0;
  });
  this->m_binding.Rewrite();
  Binding::SetHeldPasses(Binding::kWhereOnlyOwnCodeRuns);
  ASSERT_TRUE(renamed);
  EXPECT_EQ(TypeParam::kRewrittenEdited, ReadFile(this->m_path));
}

TYPED_TEST(PropertyFileBindingTest, MissingFileIsLoggedAndLeavesValues) {
  LogRecorder log;
  this->m_binding.Bind(this->m_port.get());
  EXPECT_EQ("1", this->m_port->GetValue());
  EXPECT_EQ(
      (std::vector<std::string>{"Can not read File '" + this->m_path + "'",
                                TypeParam::kNotFound}),
      log.Messages());
}

TYPED_TEST(PropertyFileBindingTest, UnwritablePathIsLogged) {
  this->m_path = this->m_dir.File("missing/bound");
  LogRecorder log;
  this->m_binding.Rewrite();
  EXPECT_EQ(
      (std::vector<std::string>{"Can not read File '" + this->m_path + "'",
                                "Can not write File '" + this->m_path + "'"}),
      log.Messages());
}

TYPED_TEST(PropertyFileBindingTest, RejectedStoredValueIsLoggedAndSkipped) {
  WriteFile(this->m_path, TypeParam::kRejected);
  typename TestFixture::Binding::Store store;
  this->m_binding.Load(store);
  LogRecorder log;
  this->m_binding.SetFromStore(this->m_port.get(), store);
  EXPECT_EQ("1", this->m_port->GetValue());
  EXPECT_EQ(std::vector<std::string>{"Format of property 'port' seems to be "
                                     "changed: 'Property 'port' can only "
                                     "contain 'an integer value''"},
            log.Messages());
}

TYPED_TEST(PropertyFileBindingTest, AbsentKeyKeepsTheValueAfterTheStoreLog) {
  typename TestFixture::Binding::Store store;
  LogRecorder log;
  this->m_binding.SetFromStore(this->m_port.get(), store);
  EXPECT_EQ("1", this->m_port->GetValue());
  EXPECT_EQ(std::vector<std::string>{TypeParam::kNotFound}, log.Messages());
}

TYPED_TEST(PropertyFileBindingTest, LoadAllGivesEveryBoundPropertyItsValue) {
  std::unique_ptr<IntegerProperty> other(
      new IntegerProperty("other", "5", TypeParam::Section()));
  this->m_bound = {this->m_port.get(), other.get()};
  WriteFile(this->m_path, TypeParam::kFile);
  this->m_binding.LoadAll();
  EXPECT_EQ("7", this->m_port->GetValue());
  EXPECT_EQ("1", other->GetValue());
}

}  // namespace
