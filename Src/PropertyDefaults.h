// PropertyDefaults.h - the settings the library starts with: the choices
// made when it was built, overridden by the environment of the process.
// Each variable is read once, when its setting is first needed, so that a
// running program is not changed under its feet. Internal to the library:
// not installed.
//
//   LIBPROPERTIES_LONG_LINES  "read": readers take lines of any length
//                             whole; "limit": they keep the 511-character
//                             line read. Unset: the build's choice
//                             (-DPROPERTIES_LONG_LINES=read|limit).
//   LIBPROPERTIES_STRICT      "1": managers refuse texts that would not read
//                             back from their file; "0" or unset: they don't.
//   LIBPROPERTIES_KEEP_LAYOUT "1": rewrites keep the layout of existing files
//                             (PropertyLayout.h); "0" or unset: they don't.
//   LIBPROPERTIES_REUSE       "0": bindings parse every read anew; unset or
//                             anything else: a read of the very bytes a
//                             binding read or wrote last reuses their table
//                             (PropertyParseCache.h), which nothing else can
//                             tell apart.
//   LIBPROPERTIES_LOG         "stderr", "syslog", "none", or a file path:
//                             where Log() writes. Unset: the build's choice
//                             (-DPROPERTIES_LOG=none|stderr).
//   LIBPROPERTIES_LOCK_TIMEOUT_MS  how long to wait for another program's
//                             file lock, in milliseconds (default 10000).
//
// A value the library does not know counts as unset.

#ifndef SRC_PROPERTYDEFAULTS_H_
#define SRC_PROPERTYDEFAULTS_H_

#include "PropertyThreadGuard.h"

class PropertyDefaults {
 public:
  static bool LongLines();
  static bool StrictValues();
  static bool KeepLayout();
  static bool ReuseParses();
  static long LockTimeoutMilliseconds();

  enum LogSink { kLogNowhere, kLogToStderr, kLogToSyslog, kLogToFile };
  // Where Log() writes; for kLogToFile, *path is the file. buildSink is the
  // choice the library was built with.
  static LogSink Log(LogSink buildSink, const char** path);

 private:
  // The value of the environment variable name, or null if it is unset or
  // empty.
  static const char* Variable(const char* name);
  // True if the environment variable name is value.
  static bool Is(const char* name, const char* value);
};

#endif  // SRC_PROPERTYDEFAULTS_H_
