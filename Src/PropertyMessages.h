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
#include <cstddef>
#include <string>
#include <vector>

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

  class Recording;

  // Logs one message at the level the library uses for all of them (1),
  // unless a Silence is open on the calling thread; a Recording open on the
  // calling thread keeps it either way.
  template <typename... Args>
  static void Write(char* format, Args... args) {
    const Audience audience = ThisThreadsAudience();
    if (audience.recording != nullptr) {
      audience.recording->Add(format, args...);
    }
    if (audience.log) Log(1, format, args...);
  }

  // Writes the "Loading" lines of one read as Write() does, but looks only
  // once, at the first, whether anyone takes them: that depends only on the
  // thread's Silence and Recording scopes, opened and closed around whole
  // reads, and on LogDiscardsAll(), decided once, so it stays so for the
  // rest of the read.
  class LoadingLines {
   public:
    LoadingLines() : m_taken(-1) {}
    template <typename... Args>
    void Write(char* format, Args... args) {
      if (m_taken < 0) m_taken = Taken() ? 1 : 0;
      if (m_taken != 0) PropertyMessages::Write(format, args...);
    }

   private:
    int m_taken;  // -1 until the first line.
  };

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
  // Messages kept to be written again: what reading some bytes logs, for a
  // binding that reuses what it read from the same bytes before, so that a
  // program's Log() sees every message it would have seen.
  class Recording {
   public:
    Recording() : m_complete(true) {}

    // While one is alive, the messages written on the thread that made it
    // are added to recording (an inner Scope takes them from an outer one).
    class Scope {
     public:
      explicit Scope(Recording& recording);
      ~Scope();

      Scope(const Scope&) = delete;
      Scope& operator=(const Scope&) = delete;

     private:
      Recording* m_outer;
    };

    // False if a message of another shape than the readers' (a number; two
    // or three texts) was written: it was not kept, and Replay() would miss
    // it.
    bool Complete() const { return m_complete; }
    // Writes every kept message again, in order, with its arguments.
    void Replay() const;
    // About the memory the kept messages take.
    size_t Bytes() const;

   private:
    friend class PropertyMessages;
    struct Message {
      char* format;
      int number;    // The argument of a one-number message.
      int texts;     // 0, or the count of text arguments (2 or 3).
      size_t at[3];  // Where each text starts in m_texts (NUL-ended).
    };

    void Add(char* format, int number);
    void Add(char* format, const char* a, const char* b);
    void Add(char* format, const char* a, const char* b, const char* c);
    template <typename... Args>
    void Add(char*, Args...) {
      m_complete = false;
    }
    size_t Keep(const char* text);

    std::vector<Message> m_messages;
    std::string m_texts;
    bool m_complete;
  };

  // True if Log() is the library's own and writes nowhere: then no message
  // can be seen, and none needs to be written again. Decided once.
  static bool LogDiscardsAll();

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
  // Who takes a message written on the calling thread now.
  struct Audience {
    Recording* recording;  // The innermost Recording::Scope's, or null.
    bool log;  // Log(): no Silence is open and it may write somewhere.
  };
  // Looked up once per message. The thread-local state is touched in
  // PropertyMessages.cpp alone: thread_local members reached from other
  // translation units go through wrappers that some sanitizer builds get
  // wrong in new threads.
  static Audience ThisThreadsAudience();
  // True if a message written now on this thread is recorded or logged.
  static bool Taken();

  static thread_local int m_silences;  // Silence scopes open on this thread.
  // The Recording of the innermost Recording::Scope of this thread, if any.
  static thread_local Recording* m_recording;
};

#endif  // SRC_PROPERTYMESSAGES_H_
