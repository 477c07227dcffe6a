// AssertionMessage.h - regular expressions for death tests that match the
// message glibc prints when an assert() of the library fails, e.g.
//
//   Src/PropertyManager.cpp:53: void PropertyManager::RegisterProperty(
//   Property*): Assertion `property' failed.
//
// (on one line, after the program name).

#ifndef TESTS_SUPPORT_ASSERTIONMESSAGE_H_
#define TESTS_SUPPORT_ASSERTIONMESSAGE_H_

#include <string>

namespace test_support {

// The regular expression that matches text literally: every character that a
// death-test regex would read as an operator is escaped.
std::string EscapeRegex(const std::string& text);

// The regular expression that matches the failure of condition at file:line
// in function, each given as glibc prints it, e.g.
// AssertionRegex("Src/PropertyManager.cpp", 53,
//                "void PropertyManager::RegisterProperty(Property*)",
//                "property").
std::string AssertionRegex(const std::string& file, int line,
                           const std::string& function,
                           const std::string& condition);

// One assertion of the library, with its four texts as glibc prints them.
struct AssertionText {
  const char* file;
  int line;
  const char* function;
  const char* condition;
};

// AssertionRegex() of the four texts of assertion.
std::string AssertionRegex(const AssertionText& assertion);

}  // namespace test_support

#endif  // TESTS_SUPPORT_ASSERTIONMESSAGE_H_
