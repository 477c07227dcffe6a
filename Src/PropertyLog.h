// PropertyLog.h - where the library's Log() sends its messages. Internal to
// the library: not installed.
//
// Log() itself is declared in PropertyThreadGuard.h and defined in
// PropertyLog.cpp, alone: a program may define its own Log() and take the
// place of the library's, and no other source file of the library defines
// a function it calls, so that every call goes to whichever Log() the
// program runs with.
//
// By default Log() discards everything and never reads its arguments. A
// library built with -DPROPERTIES_LOG=stderr writes each message to
// standard error as one line: "libproperties[<level>]: <formatted text>".

#ifndef SRC_PROPERTYLOG_H_
#define SRC_PROPERTYLOG_H_

#include <cstdarg>

class PropertyLog {
 public:
  // Writes "libproperties[<level>]: <format formatted with args>\n" to
  // standard error in one write, so that lines of several threads never mix.
  static void WriteToStderr(int level, const char* format, va_list args);
};

#endif  // SRC_PROPERTYLOG_H_
