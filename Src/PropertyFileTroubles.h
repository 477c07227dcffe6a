// PropertyFileTroubles.h - the last failure each file binding met, kept
// beside the bindings (whose layout programs depend on) for
// PropertySafety::FileTroubles(). Internal to the library: not installed.
//
// The code that meets a failure (opening, reading, writing, locking) does
// not know which binding it works for: a binding opens a Scope around its
// loads and rewrites, and a failure noted on that thread meanwhile is that
// binding's. Outside a scope (the stores used on their own, propctl) notes
// go nowhere.
//
// Thread-safe: the table has its own mutex, scopes are per thread.

#ifndef SRC_PROPERTYFILETROUBLES_H_
#define SRC_PROPERTYFILETROUBLES_H_

#include "PropertySafety.h"
#include "PropertyThreadGuard.h"

class PropertyFileTroubles {
 public:
  typedef PropertySafety::FileTrouble FileTrouble;

  // Failures noted on this thread while a scope lives are binding's (any
  // address that names the binding for its lifetime); path is its file and
  // must outlive the scope (it is not copied: loads are frequent, failures
  // rare). Scopes nest: the innermost one takes the notes.
  class Scope {
   public:
    Scope(const void* binding, const propstring& path);
    ~Scope();

   private:
    Scope(const Scope&);
    Scope& operator=(const Scope&);

    const void* m_binding;
    const propstring& m_path;
    Scope* m_outer;
    friend class PropertyFileTroubles;
  };

  // Records that operation failed with error for the binding of this
  // thread's innermost scope, if any. A read that finds no file is
  // recorded only if the file's directory is missing too.
  static void Note(FileTrouble::Operation operation, int error);

  // The last trouble recorded for binding (kNone if none), for path.
  static FileTrouble Last(const void* binding, const propstring& path);
  // Forgets binding's trouble: when it is unbound, or on request.
  static void Forget(const void* binding);
};

#endif  // SRC_PROPERTYFILETROUBLES_H_
