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
// library built with -DPROPERTIES_LOG=stderr, or a process started with
// LIBPROPERTIES_LOG=stderr, syslog or a file path (see PropertyDefaults.h),
// writes each message as one line: "libproperties[<level>]: <text>".

#ifndef SRC_PROPERTYLOG_H_
#define SRC_PROPERTYLOG_H_

#include <cstdarg>
#include <string>

// Defined with the library's Log() (hidden, and absent where a program links
// the library's objects with a Log() of its own): PropertyOwnLog is that
// Log(); PropertyOwnLogWritesNowhere() tells whether it discards every
// message.
void PropertyOwnLog(int level, char* format, ...)
    __attribute__((visibility("hidden")));
bool PropertyOwnLogWritesNowhere() __attribute__((visibility("hidden")));

class PropertyLog {
 public:
  // "libproperties[<level>]: <format formatted with args>\n".
  static std::string Line(int level, const char* format, va_list args);

  // Writes line to standard error in one write, so that lines of several
  // threads never mix.
  static void WriteToStderr(const std::string& line);
  // Sends line, without its line feed, to syslog(3) (facility user,
  // priority info).
  static void WriteToSyslog(const std::string& line);
  // Appends line to the file at path in one write. The file is opened at
  // the first line (created with mode 0600: messages hold values) and stays
  // open; if it cannot be opened, lines are dropped.
  static void WriteToFile(const char* path, const std::string& line);
};

#endif  // SRC_PROPERTYLOG_H_
