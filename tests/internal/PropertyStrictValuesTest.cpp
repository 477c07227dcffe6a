// PropertyStrictValuesTest.cpp - the formats' rule for what reads back
// (Unreadable), against reading back what the format writes; and how
// refused texts are shown in messages.

#include "PropertyStrictValues.h"

#include <gtest/gtest.h>

#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "IniProperties.h"
#include "IniPropertiesFormat.h"
#include "JavaProperties.h"
#include "JavaPropertiesFormat.h"
#include "support/LogRecorder.h"

namespace {

using test_support::LogRecorder;

// The entry written by the flat writer and read back by its reader: true if
// the table read is exactly {key: value}.
bool FlatReadsBack(const std::string&, const std::string& key,
                   const std::string& value) {
  JavaProperties written;
  written.SetProperty(key, value);
  std::istringstream in(written.ToText(""));
  JavaProperties read;
  read.Load(in);
  return read.ToText("") == written.ToText("") &&
         read.GetProperty(key) == value;
}

bool IniReadsBack(const std::string& section, const std::string& key,
                  const std::string& value) {
  IniProperties written;
  written.SetProperty(section, key, value);
  std::istringstream in(written.ToText(""));
  IniProperties read;
  read.Load(in);
  return read.ToText("") == written.ToText("") &&
         read.GetProperty(section, key) == value;
}

struct Case {
  std::string section;
  std::string key;
  std::string value;
  std::string reason;
};

TEST(PropertyStrictValuesTest, FlatRuleNamesThePartAndTheReason) {
  const std::vector<Case> cases = {
      {"", "nickname", "eve", ""},
      {"", "nickname", "eve\nadmin=true", "the value holds a line break"},
      {"", "nick\nname", "eve", "the key holds a line break"},
      {"", "k", "a\rb", "the value holds a line break"},
      {"", "k", std::string("a\0b", 3), "the value holds a NUL byte"},
      {"", "k#", "v", "the key holds '#'"},
      {"", "k", "v#w", "the value holds '#'"},
      {"", "k", "v;w", ""},
      {"", "a=b", "v", "the key holds '='"},
      {"", "k", "a=b", ""},
      {"", " k", "v", "the key starts or ends with a blank"},
      {"", "k\t", "v", "the key starts or ends with a blank"},
      {"", "k", " v", "the value starts or ends with a blank"},
      {"", "k", "v ", "the value starts or ends with a blank"},
      {"", "\"k", "v", "the key starts with '\"'"},
      {"", "k", "\"v\"", "the value starts with '\"'"},
      {"", "k", "v\"", ""},
      {"", "", "", ""},
      {"", "[k]", "v", ""},
      {"", "k", std::string(509, 'v'), ""},
      {"", "k", std::string(510, 'v'),
       "its line would be 512 characters or "
       "longer"}};
  for (const Case& c : cases) {
    EXPECT_EQ(c.reason,
              JavaPropertiesFormat::Unreadable(c.section, c.key, c.value))
        << c.key << "=" << c.value;
  }
}

TEST(PropertyStrictValuesTest, IniRuleNamesThePartAndTheReason) {
  const std::vector<Case> cases = {
      {"net", "nickname", "eve", ""},
      {"net", "nickname", "eve\nadmin=true", "the value holds a line break"},
      {"", "k", "v", "the section is empty"},
      {"n\net", "k", "v", "the section holds a line break"},
      {"n;et", "k", "v", "the section holds ';'"},
      {std::string("n\0t", 3), "k", "v", "the section holds a NUL byte"},
      {" net ", "k", "v", ""},
      {"\"net\"", "k", "v", ""},
      {"[net]", "k", "v", ""},
      {"net", "k;", "v", "the key holds ';'"},
      {"net", "k", "v;w", "the value holds ';'"},
      {"net", "k#", "v#w", ""},
      {"net", "a=b", "v", "the key holds '='"},
      {"net", "[k", "v", "the key starts with '['"},
      {"net", "k[", "v]", ""},
      {"net", " k", "v", "the key starts or ends with a blank"},
      {"net", "k", "v\t", "the value starts or ends with a blank"},
      {"net", "\"k", "v", "the key starts with '\"'"},
      {"net", "k", "\"v", "the value starts with '\"'"},
      {"net", "k", std::string(509, 'v'), ""},
      {"net", "k", std::string(510, 'v'),
       "its line would be 512 characters or longer"},
      {std::string(509, 's'), "k", "v", ""},
      {std::string(510, 's'), "k", "v",
       "its section line would be 512 characters or longer"}};
  for (const Case& c : cases) {
    EXPECT_EQ(c.reason,
              IniPropertiesFormat::Unreadable(c.section, c.key, c.value))
        << "[" << c.section << "]" << c.key << "=" << c.value;
  }
}

// A text of up to four bytes from those that matter to the readers.
std::string RandomText(std::mt19937& random) {
  static const char kBytes[] = {'a', ' ', '\t', '"',  '#',  ';', '=',
                                '[', ']', '\n', '\r', '\0', '\v'};
  std::string text;
  const size_t length = random() % 5;
  for (size_t i = 0; i < length; ++i) {
    text += kBytes[random() % sizeof kBytes];
  }
  return text;
}

// Whatever a rule accepts reads back exactly; so a program that keeps
// strict values never finds another entry in its file than it set.
TEST(PropertyStrictValuesTest, WhatTheRulesAcceptReadsBackExactly) {
  LogRecorder quiet;
  std::mt19937 random(20261123);
  int accepted[2] = {0, 0};
  for (int round = 0; round < 50000; ++round) {
    const std::string section = RandomText(random);
    const std::string key = RandomText(random);
    const std::string value = RandomText(random);
    if (JavaPropertiesFormat::Unreadable(section, key, value).empty()) {
      ++accepted[0];
      ASSERT_TRUE(FlatReadsBack(section, key, value))
          << "[" << key << "]=[" << value << "]";
    }
    if (IniPropertiesFormat::Unreadable(section, key, value).empty()) {
      ++accepted[1];
      ASSERT_TRUE(IniReadsBack(section, key, value))
          << "[" << section << "] [" << key << "]=[" << value << "]";
    }
  }
  // Enough of both to mean something.
  EXPECT_GT(accepted[0], 1000);
  EXPECT_GT(accepted[1], 1000);
}

TEST(PropertyStrictValuesTest, PrintableEscapesControlBytes) {
  EXPECT_EQ("plain text", PropertyStrictValues::Printable("plain text"));
  EXPECT_EQ("eve\\nadmin=true",
            PropertyStrictValues::Printable("eve\nadmin=true"));
  EXPECT_EQ("a\\rb\\tc\\0d\\x01\\x7f\\x1b",
            PropertyStrictValues::Printable(
                std::string("a\rb\tc\0d\x01\x7f\x1b", 10)));
  EXPECT_EQ("caf\xc3\xa9", PropertyStrictValues::Printable("caf\xc3\xa9"));
}

}  // namespace
