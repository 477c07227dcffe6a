// PropertyFileWatcher.h - follows outside changes of the files a manager is
// bound to, for programs that share their files with other programs or
// with an operator (propctl, an editor).
//
// The library starts no thread: the program polls the watcher from its own
// event loop and calls ProcessChanges() on its own thread when the
// watcher's descriptor is readable:
//
//   PropertyFileWatcher watcher(manager);   // after RegisterPersistence
//   struct pollfd pfd = {watcher.FileDescriptor(), POLLIN, 0};
//   while (running) {
//     if (poll(&pfd, 1, -1) > 0) watcher.ProcessChanges();
//   }
//
// On a change, the new values are loaded into the bound properties under
// the manager's mutex, and change listeners hear of each property whose
// value text changed, and of no other. A stored value a property rejects is
// logged as a load logs it. The program's own rewrites change no value, so
// they notify nobody. Files edited in place, replaced by a rename, deleted
// and made again are all followed, for read-write and read-only bindings of
// both flavours; files bound after the watcher was made are followed from
// the next ProcessChanges() on.
//
// Thread safety: ProcessChanges() and Reload() take the manager's mutex;
// one watcher must not be used from two threads at once.

#ifndef SRC_PROPERTYFILEWATCHER_H_
#define SRC_PROPERTYFILEWATCHER_H_

#include "PropertyManager.h"
#include "PropertyThreadGuard.h"

class PropertyDirectoryWatch;

class PropertyFileWatcher {
 public:
  // Watches the files bound to manager. Not owned: manager must outlive the
  // watcher (managers of Properties live until the process ends).
  explicit PropertyFileWatcher(PropertyManager* manager);
  ~PropertyFileWatcher();

  // Reloads every file binding of manager from its file now, as
  // ProcessChanges() does on a change.
  static void Reload(PropertyManager* manager);

  // A descriptor that becomes readable when a watched file may have
  // changed, for poll(2), select(2) or epoll(7). Owned by the watcher. -1 if
  // the system cannot watch files (then ProcessChanges() reloads on every
  // call).
  int FileDescriptor() const;
  // Takes the pending change notices without waiting and, if one concerns a
  // bound file, reloads the bindings. Returns true if it reloaded.
  bool ProcessChanges();

  PropertyFileWatcher(const PropertyFileWatcher&) = delete;
  PropertyFileWatcher& operator=(const PropertyFileWatcher&) = delete;

 private:
  PropertyManager* m_manager;         // Not owned.
  PropertyDirectoryWatch* m_watches;  // Owned.
};

#endif  // SRC_PROPERTYFILEWATCHER_H_
