// LongLinesTest.cpp - long lines (PropertySafety::SetLongLines): with them
// on, every reader of the library (both stores, from a file or a stream;
// read-write and read-only bindings of both managers) reads a line of any
// length whole, goes on with the lines after it, and logs "Line N is too
// long" for each line of more than 511 characters with its line feed, as it
// always has. With them off, a line of 512 characters still stops a load.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <sstream>
#include <string>
#include <vector>

#include "IniProperties.h"
#include "Property.h"
#include "PropertySafety.h"
#include "support/FlavourFixtures.h"
#include "support/Flavours.h"
#include "support/SafetySettings.h"
#include "support/TempDir.h"

namespace {

using namespace std::string_literals;

using test_support::FlavourNames;
using test_support::Flavours;
using test_support::kHeader;
using test_support::kIntegerType;
using test_support::kStringType;
using test_support::Messages;
using test_support::ReadFile;
using test_support::ScopedLongLines;
using test_support::WriteFile;

// A value of length characters whose every stretch differs from its
// neighbours, so that a piece read twice, lost or out of order shows.
std::string ValueOfLength(size_t length) {
  std::string value;
  for (size_t i = 0; value.size() < length; ++i) {
    value += std::to_string(i) + ",";
  }
  value.resize(length);
  return value;
}

// The entry line key=<value> of length characters (without a line feed).
std::string LineOfLength(const std::string& key, size_t length) {
  return key + "=" + ValueOfLength(length - key.size() - 1);
}

// The value of LineOfLength(key, length).
std::string ValueOfLine(const std::string& key, size_t length) {
  return ValueOfLength(length - key.size() - 1);
}

std::string TooLong(int line) {
  return "Line " + std::to_string(line) + " is too long";
}

template <typename F>
class LongLinesTest : public test_support::ManagerFixture<F> {
 protected:
  LongLinesTest() : m_longLines(true) {}

  // The "Line N is too long" messages logged so far, in order.
  Messages TooLongLogged() const {
    Messages tooLong;
    for (const std::string& message : this->Logged()) {
      if (message.compare(0, 5, "Line ") == 0 && message.size() > 12 &&
          message.compare(message.size() - 12, 12, " is too long") == 0) {
        tooLong.push_back(message);
      }
    }
    return tooLong;
  }

  // The store that loading the file at m_path with text gives, by file
  // name, with its result in *loaded.
  void LoadFile(const std::string& text, typename F::Store* store,
                bool* loaded) {
    WriteFile(this->m_path, text);
    *loaded = store->Load(this->m_path);
  }
  void LoadStream(const std::string& text, typename F::Store* store,
                  bool* loaded) {
    std::istringstream in(text);
    *loaded = store->Load(in);
  }

  // Both ways a store loads a text.
  typedef void (LongLinesTest::*Loader)(const std::string&, typename F::Store*,
                                        bool*);
  struct Way {
    const char* name;
    Loader load;
  };
  static std::vector<Way> Ways() {
    return {{"file", &LongLinesTest::LoadFile},
            {"stream", &LongLinesTest::LoadStream}};
  }

  // The body line number of the n-th line of a Body() text (from 1).
  static int BodyLine(int n) { return F::kFirstBodyLine + n - 1; }

  ScopedLongLines m_longLines;
};

TYPED_TEST_SUITE(LongLinesTest, Flavours, FlavourNames);

TYPED_TEST(LongLinesTest, LongLinesCanBeTurnedOnAndOff) {
  EXPECT_TRUE(PropertySafety::LongLines());
  ScopedLongLines off(false);
  EXPECT_FALSE(PropertySafety::LongLines());
}

// Stores.

TYPED_TEST(LongLinesTest, StoreReadsLineOf600CharactersWholeAndGoesOn) {
  typedef TypeParam F;
  const std::string text = F::Body(LineOfLength("big", 600) + "\nport=81\n");
  for (const auto& way : this->Ways()) {
    SCOPED_TRACE(way.name);
    this->m_log.Clear();
    typename F::Store store;
    bool loaded = false;
    (this->*way.load)(text, &store, &loaded);
    EXPECT_TRUE(loaded);
    EXPECT_EQ(F::Value(store, "big"), ValueOfLine("big", 600));
    EXPECT_EQ(F::Value(store, "port"), "81");
    EXPECT_EQ(this->TooLongLogged(), Messages{TooLong(this->BodyLine(1))});
  }
}

// Lengths around the 511 characters a line buffer holds, and its multiples.
TYPED_TEST(LongLinesTest, StoreReadsLinesOfEveryLengthWhole) {
  typedef TypeParam F;
  const std::vector<size_t> lengths = {511,  512,  513,  1021, 1022, 1023,
                                       1024, 1533, 1534, 1535, 5000, 70000};
  for (size_t length : lengths) {
    for (const auto& way : this->Ways()) {
      SCOPED_TRACE(std::string(way.name) + ", line of " +
                   std::to_string(length));
      typename F::Store store;
      bool loaded = false;
      (this->*way.load)(F::Body(LineOfLength("big", length) + "\nport=81\n"),
                        &store, &loaded);
      EXPECT_TRUE(loaded);
      EXPECT_EQ(F::Value(store, "big"), ValueOfLine("big", length));
      EXPECT_EQ(F::Value(store, "port"), "81");
    }
  }
}

TYPED_TEST(LongLinesTest, StoreReadsLongLastLineWithoutLineFeedWhole) {
  typedef TypeParam F;
  const std::vector<size_t> lengths = {512, 513, 1022, 1023, 1024, 2000};
  for (size_t length : lengths) {
    for (const auto& way : this->Ways()) {
      SCOPED_TRACE(std::string(way.name) + ", line of " +
                   std::to_string(length));
      this->m_log.Clear();
      typename F::Store store;
      bool loaded = false;
      (this->*way.load)(F::Body("port=81\n" + LineOfLength("big", length)),
                        &store, &loaded);
      EXPECT_TRUE(loaded);
      EXPECT_EQ(F::Value(store, "big"), ValueOfLine("big", length));
      EXPECT_EQ(F::Value(store, "port"), "81");
      EXPECT_EQ(this->TooLongLogged(), Messages{TooLong(this->BodyLine(2))});
    }
  }
}

// The line feed counts: a line of 511 characters and its line feed is too
// long, one of 510 is not; so is a last line of 512 without one.
TYPED_TEST(LongLinesTest, TooLongIsLoggedForEachLineOverTheLimitWithItsNumber) {
  typedef TypeParam F;
  const std::string text = F::Body(
      "a=1\n" + LineOfLength("b", 511) + "\n" + LineOfLength("c", 510) + "\n" +
      LineOfLength("d", 600) + "\n" + "e=5\n" + LineOfLength("f", 512));
  for (const auto& way : this->Ways()) {
    SCOPED_TRACE(way.name);
    this->m_log.Clear();
    typename F::Store store;
    bool loaded = false;
    (this->*way.load)(text, &store, &loaded);
    EXPECT_TRUE(loaded);
    EXPECT_EQ(this->TooLongLogged(),
              (Messages{TooLong(this->BodyLine(2)), TooLong(this->BodyLine(4)),
                        TooLong(this->BodyLine(6))}));
    EXPECT_EQ(F::Value(store, "a"), "1");
    EXPECT_EQ(F::Value(store, "b"), ValueOfLine("b", 511));
    EXPECT_EQ(F::Value(store, "c"), ValueOfLine("c", 510));
    EXPECT_EQ(F::Value(store, "d"), ValueOfLine("d", 600));
    EXPECT_EQ(F::Value(store, "e"), "5");
    EXPECT_EQ(F::Value(store, "f"), ValueOfLine("f", 512));
  }
}

TYPED_TEST(LongLinesTest, LastLineOf511CharactersWithoutLineFeedIsNotTooLong) {
  typedef TypeParam F;
  for (const auto& way : this->Ways()) {
    SCOPED_TRACE(way.name);
    this->m_log.Clear();
    typename F::Store store;
    bool loaded = false;
    (this->*way.load)(F::Body(LineOfLength("big", 511)), &store, &loaded);
    EXPECT_TRUE(loaded);
    EXPECT_EQ(F::Value(store, "big"), ValueOfLine("big", 511));
    EXPECT_EQ(this->TooLongLogged(), Messages{});
  }
}

// The line ends at its first NUL byte, wherever that is, as short lines do.
TYPED_TEST(LongLinesTest, LineWithNulByteEndsAtItAsShortLinesDo) {
  typedef TypeParam F;
  struct Case {
    std::string line;
    std::string value;
  };
  const std::vector<Case> cases = {
      {"a=1\0zzz"s, "1"},
      {"big=" + ValueOfLength(300) + "\0"s + ValueOfLength(300),
       ValueOfLength(300)},
      {"big=" + ValueOfLength(550) + "\0"s + ValueOfLength(100),
       ValueOfLength(550)},
      {"big=" + ValueOfLength(1100) + "\0"s + ValueOfLength(600),
       ValueOfLength(1100)},
  };
  for (const Case& c : cases) {
    for (const auto& way : this->Ways()) {
      SCOPED_TRACE(std::string(way.name) + ", line of " +
                   std::to_string(c.line.size()));
      const std::string key = c.line.substr(0, c.line.find('='));
      typename F::Store store;
      bool loaded = false;
      (this->*way.load)(F::Body(c.line + "\nport=81\n"), &store, &loaded);
      EXPECT_TRUE(loaded);
      EXPECT_EQ(F::Value(store, key), c.value);
      EXPECT_EQ(F::Value(store, "port"), "81");
    }
  }
}

TYPED_TEST(LongLinesTest, LineWithNulByteIsStillTooLongByAllItsBytes) {
  typedef TypeParam F;
  const std::string text = F::Body("big=" + ValueOfLength(10) + "\0"s +
                                   ValueOfLength(600) + "\nport=81\n");
  for (const auto& way : this->Ways()) {
    SCOPED_TRACE(way.name);
    this->m_log.Clear();
    typename F::Store store;
    bool loaded = false;
    (this->*way.load)(text, &store, &loaded);
    EXPECT_EQ(F::Value(store, "big"), ValueOfLength(10));
    EXPECT_EQ(this->TooLongLogged(), Messages{TooLong(this->BodyLine(1))});
  }
}

// Bindings.

TYPED_TEST(LongLinesTest, ReadWriteBindingLoadsLongLineWhole) {
  typedef TypeParam F;
  WriteFile(this->m_path, F::Body(LineOfLength("big", 600) + "\nport=8080\n"));
  this->m_manager.RegisterPersistence(this->m_path, kHeader);
  this->m_log.Clear();
  this->Register(kStringType, "big", "");
  // Registering a stored key loads the file and then rewrites it, which
  // reads it again first: the line is logged by each read.
  EXPECT_THAT(this->TooLongLogged(),
              testing::AllOf(testing::SizeIs(2),
                             testing::Each(TooLong(this->BodyLine(1)))));
  this->RegisterPort();
  EXPECT_EQ(this->Get("big"), ValueOfLine("big", 600));
  EXPECT_EQ(this->Get("port"), "8080");
}

TYPED_TEST(LongLinesTest, ReadWriteBindingRewritesLongLineWhole) {
  typedef TypeParam F;
  WriteFile(this->m_path, F::Body(LineOfLength("big", 600) + "\nport=8080\n"));
  this->m_manager.RegisterPersistence(this->m_path, kHeader);
  this->RegisterPort();
  this->Set("port", "81");
  EXPECT_EQ(ReadFile(this->m_path),
            F::Written(kHeader, LineOfLength("big", 600) + "\nport=81\n"));
}

TYPED_TEST(LongLinesTest, ReadOnlyBindingLoadsLongLineWhole) {
  typedef TypeParam F;
  const std::string text = F::Body(LineOfLength("big", 600) + "\nport=8080\n");
  WriteFile(this->m_path, text);
  this->m_manager.RegisterNonPersistence(this->m_path);
  this->m_log.Clear();
  this->Register(kStringType, "big", "");
  EXPECT_EQ(this->TooLongLogged(), Messages{TooLong(this->BodyLine(1))});
  this->RegisterPort();
  EXPECT_EQ(this->Get("big"), ValueOfLine("big", 600));
  EXPECT_EQ(this->Get("port"), "8080");
  EXPECT_EQ(ReadFile(this->m_path), text);
}

// A section header line has no limit either.
TEST(IniLongLinesTest, StoreReadsLongSectionLineWhole) {
  ScopedLongLines longLines(true);
  const std::string section = ValueOfLength(700);
  std::istringstream in("[" + section + "]\nport=81\n");
  IniProperties store;
  EXPECT_TRUE(store.Load(in));
  EXPECT_EQ(store.GetProperty(section, "port"), "81");
}

// With long lines off, the 511-character limit stays as it always was.

template <typename F>
class LongLinesDeathTest : public test_support::ManagerFixture<F> {};

TYPED_TEST_SUITE(LongLinesDeathTest, Flavours, FlavourNames);

TYPED_TEST(LongLinesDeathTest, BindingLoadDoesNotReturnOnLineOf512Characters) {
  typedef TypeParam F;
  ScopedLongLines off(false);
  WriteFile(this->m_path, F::Body(LineOfLength("big", 512) + "\nport=81\n"));
  this->m_manager.RegisterNonPersistence(this->m_path);
  EXPECT_EXIT(
      {
        alarm(1);
        this->Register(kIntegerType, "port", "80");
      },
      testing::KilledBySignal(SIGALRM), "");
}

TYPED_TEST(LongLinesDeathTest, StoreLoadOfFileDoesNotReturnOnLineOf512) {
  typedef TypeParam F;
  ScopedLongLines off(false);
  WriteFile(this->m_path, F::Body(LineOfLength("big", 512) + "\nport=81\n"));
  typename F::Store store;
  EXPECT_EXIT(
      {
        alarm(1);
        store.Load(this->m_path);
      },
      testing::KilledBySignal(SIGALRM), "");
}

}  // namespace
