// AssertionMessage.cpp - see AssertionMessage.h.

#include "support/AssertionMessage.h"

namespace test_support {

std::string EscapeRegex(const std::string& text) {
  std::string escaped;
  for (char c : text) {
    if (std::string("\\^$.|?*+()[]{}").find(c) != std::string::npos) {
      escaped += '\\';
    }
    escaped += c;
  }
  return escaped;
}

std::string AssertionRegex(const std::string& file, int line,
                           const std::string& function,
                           const std::string& condition) {
  return EscapeRegex(file + ":" + std::to_string(line) + ": " + function +
                     ": Assertion `" + condition + "' failed.");
}

std::string AssertionRegex(const AssertionText& assertion) {
  return AssertionRegex(assertion.file, assertion.line, assertion.function,
                        assertion.condition);
}

}  // namespace test_support
