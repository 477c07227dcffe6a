// PropertyMessages.h - the fixed texts the library emits: the formats of its
// log lines and the assertion failures it aborts with. Internal to the
// library: not installed.
//
// These are message texts that existing log readers and crash tooling match,
// not source positions: an assertion names the same file, line and function
// text wherever the code that checks it moves. Each text is written once, in
// PropertyMessages.cpp.

#ifndef SRC_PROPERTYMESSAGES_H_
#define SRC_PROPERTYMESSAGES_H_

#include <cstdarg>

#include "PropertyThreadGuard.h"

class PropertyMessages {
 public:
  // Log formats. Arrays, not pointers to constants: Log() takes char* for
  // compatibility with existing programs that define their own.
  static char kErrorReading[];          // line number
  static char kLineTooLong[];           // line number
  static char kRedefinesProperty[];     // line number
  static char kRedefinesSection[];      // line number
  static char kLoadingEntry[];          // key, value
  static char kLoadingSectionEntry[];   // key, section, value
  static char kSettingEntry[];          // key, value
  static char kSettingSectionEntry[];   // key, section, value
  static char kNotFound[];              // key (store and manager alike)
  static char kSectionEntryNotFound[];  // key, section
  static char kFormatChanged[];         // key, message
  static char kCanNotRead[];            // path
  static char kCanNotWrite[];           // path
  static char kStayedLocked[];          // path
  static char kLayoutNotKept[];         // path, reason
  // Refusals of strict values (PropertySafety), as logged and as thrown.
  static char kRefused[];           // key, reason
  static char kRefusedInSection[];  // key, section, reason
  static char kRefusedHeader[];     // header, reason

  // Logs one message at the level the library uses for all of them (1),
  // unless a Silence is open on the calling thread.
  template <typename... Args>
  static void Write(char* format, Args... args) {
    if (m_silences == 0) Log(1, format, args...);
  }

  // While one is alive, Write() logs nothing on the thread that made it: for
  // reads the library makes only to check its own work, which a program's
  // Log() must not see as loads. Scopes nest.
  class Silence {
   public:
    Silence();
    ~Silence();

    Silence(const Silence&) = delete;
    Silence& operator=(const Silence&) = delete;
  };
  // The text of format with args, as a logging Log() prints it.
  static propstring Format(const char* format, ...);
  static propstring FormatList(const char* format, va_list args);

  // The library's assertions, by the operation that checks them.
  enum Assertion {
    kJavaPropertiesLoad,
    kJavaPropertiesStore,
    kIniPropertiesLoad,
    kIniPropertiesStore,
    kManagerRegisterProperty,
    kManagerUnregisterProperty,
    kManagerRegisterClient,
    kManagerUnregisterClient,
    kManagerAddRegistryListener,
    kManagerRemoveRegistryListener,
    kManagerAddChangeListener,
    kManagerRemoveChangeListener,
    kManagerNotifyChangeListeners,
    kJavaManagerRegisterProperty,
    kIniManagerRegisterProperty,
    kJavaPersistenceRegisteredProperty,
    kJavaPersistenceUnregisterProperty,
    kJavaPersistenceAddingProperty,
    kJavaPersistenceRemovingProperty,
    kJavaPersistencePropertyChanged,
    kJavaPersistenceSetValue,
    kIniPersistenceRegisteredProperty,
    kIniPersistenceUnregisterProperty,
    kIniPersistenceAddingProperty,
    kIniPersistenceRemovingProperty,
    kIniPersistencePropertyChanged,
    kIniPersistenceSetValue,
    kAssertionCount
  };

  // Aborts through the C library's assertion handler with the fixed
  // expression, file, line and function text of assertion. In every build
  // type: these failures are the library's answer to a programming error.
  [[noreturn]] static void Fail(Assertion assertion);
  // Fail(assertion) unless holds.
  static void Require(bool holds, Assertion assertion) {
    if (!holds) Fail(assertion);
  }

 private:
  static thread_local int m_silences;  // Silence scopes open on this thread.
};

#endif  // SRC_PROPERTYMESSAGES_H_
