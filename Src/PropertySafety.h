// PropertySafety.h - opt-in protections for programs that store text from
// untrusted sources, read files of other programs, or must know when their
// files cannot be written. Everything here is off unless a program or an
// operator turns it on; the library then behaves as it always has.
//
// Operators choose without a rebuild through the environment, read once
// when first needed: LIBPROPERTIES_STRICT=1, LIBPROPERTIES_LONG_LINES=read
// (or =limit), LIBPROPERTIES_LOG=stderr|syslog|<file path>. A program's own
// calls below take precedence over the environment.
//
// Thread safety: every function may be called from any thread.

#ifndef SRC_PROPERTYSAFETY_H_
#define SRC_PROPERTYSAFETY_H_

#include <vector>

#include "PropertyManager.h"
#include "PropertyThreadGuard.h"

class PropertySafety {
 public:
  // Strict values. When on for a manager, its RegisterProperty and SetValue
  // refuse, with Property::WrongValue and a message naming the key and the
  // reason, any key, section or value that would not read back from the
  // manager's file exactly as given: line breaks (line feed or carriage
  // return), NUL bytes, the format's comment character ('#' flat, ';' INI),
  // '=' in a key, a key starting with '[' (INI), leading or trailing
  // blanks, a leading '"', an empty section, or an entry whose line would be
  // 512 characters or longer. A list property's every element is checked
  // when it is registered. Nothing is registered, set, notified or written
  // when a text is refused, and RegisterPersistence refuses a header with a
  // line break or NUL byte the same way. A property's own SetValue, called
  // directly, is not checked: only the manager knows the file's format.
  //
  // The process-wide choice (starts as LIBPROPERTIES_STRICT=1 says) applies
  // to every manager without a choice of its own.
  static void SetStrictValues(bool on);
  static bool StrictValues();
  // The choice for one manager, which then ignores the process-wide one.
  // manager must not be null.
  static void SetStrictValues(PropertyManager* manager, bool on);
  static bool StrictValues(const PropertyManager* manager);

  // Long lines. When on, every reader of the library (both stores, both
  // bindings) reads a line of any length whole, and logs "Line %d is too
  // long" for each line of more than 511 characters with its line feed. When
  // off, a line of 512 or more characters makes a load read empty lines for
  // ever: files and programs written for the 511-character limit rely on it.
  // Starts as LIBPROPERTIES_LONG_LINES says, or as the library was built
  // (-DPROPERTIES_LONG_LINES=read), else off. Applies to loads that start
  // after the call.
  static void SetLongLines(bool on);
  static bool LongLines();

  // The last trouble a file binding met: what failed, on which file, and
  // why, as the system told it.
  struct FileTrouble {
    enum Operation {
      kNone,   // Nothing has failed (since ForgetFileTroubles()).
      kRead,   // The file exists but could not be read, or its directory
               // is missing. A missing file alone is not trouble: a
               // read-write binding makes it at its first write.
      kWrite,  // A rewrite could not write the file; it holds what it held.
      kLock    // Another program held the file's lock too long; the library
               // went on without it.
    };
    propstring path;       // The bound path, as given to the manager.
    Operation operation;   // What failed last.
    int error;             // The errno value, 0 for kNone.
    propstring errorText;  // strerror() of error, "" for kNone.
  };
  // One entry per file binding of manager (read-write and read-only), in
  // the order they were made, each with its last trouble. Reports without
  // throwing (except std::bad_alloc). Takes the manager's mutex.
  static std::vector<FileTrouble> FileTroubles(PropertyManager* manager);
  // Forgets the troubles of manager's bindings: from now on only new ones
  // are reported. Takes the manager's mutex.
  static void ForgetFileTroubles(PropertyManager* manager);

  // Not client interface: a manager's choice dies with it.
 private:
  friend class PropertyManager;
  static void ForgetManager(const PropertyManager* manager);
};

#endif  // SRC_PROPERTYSAFETY_H_
