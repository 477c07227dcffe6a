// Json.h - JSON strings for propctl's --json output.
//
//   std::cout << "{" << JsonString("port") << ":" << JsonString("9090")
//             << "}";   // {"port":"9090"}
//
// Keys and values of property files are bytes, not necessarily UTF-8 text.
// A string is written so that every byte stays visible and the result is
// always valid JSON: '"' and '\' are escaped, control bytes (0x00-0x1F and
// 0x7F) are written as \u00XX, a byte sequence that is valid UTF-8 is
// passed through as it is, and every other byte from 0x80 up is written as
// \u00XX of the byte (so such a byte comes back as the character U+00XX).
// Hexadecimal digits are lower case.

#ifndef TOOLS_PROPCTL_JSON_H_
#define TOOLS_PROPCTL_JSON_H_

#include <string>

// bytes as a JSON string, with its quotes.
std::string JsonString(const std::string& bytes);

#endif  // TOOLS_PROPCTL_JSON_H_
