// PropertyFileLock.h - an advisory lock on a property file, shared by
// programs that use this library (and propctl), so that no reader sees a
// rewrite half done and no rewrite is lost to another one. Internal to the
// library: not installed.
//
// The lock is flock(2) on the file itself: no lock file is made, and the
// kernel releases the lock of a process that dies. A rewrite that renames a
// new file into place replaces the locked inode, so after taking the lock
// Acquire() checks that the path still names the locked file and starts
// again if not.
//
// A wait is bounded: after LIBPROPERTIES_LOCK_TIMEOUT_MS milliseconds
// (default 10000; read once) the caller goes on without the lock and the
// library logs "File '%s' stayed locked; going on without the lock". A
// library built with -DPROPERTIES_FILE_LOCKS=OFF takes no locks at all.
//
// Never held while code of the program runs: the holders (PropertyFile)
// only read and write bytes under it.

#ifndef SRC_PROPERTYFILELOCK_H_
#define SRC_PROPERTYFILELOCK_H_

#include "PropertyThreadGuard.h"

class PropertyFileLock {
 public:
  enum Mode { kShared, kExclusive };

  PropertyFileLock();   // Holds nothing.
  ~PropertyFileLock();  // Releases the lock and closes the file, if any.

  // Opens the file at path with flags (O_CLOEXEC is added; a file that
  // O_CREAT makes gets mode 0666 less the umask) and, if it is a regular
  // file, locks it in mode. Returns false, holding nothing, if the file
  // cannot be opened (errno tells why); true otherwise, with Fd() open,
  // Locked() telling whether the lock was had in time and Created() whether
  // this call made the file.
  bool Acquire(const propstring& path, Mode mode, int flags);
  int Fd() const { return m_fd; }
  bool Locked() const { return m_locked; }
  bool Created() const { return m_created; }
  // Releases the lock and closes the file.
  void Release();

  // False in a library built without file locks.
  static bool Enabled();
  // How long Acquire() waits for another holder, in milliseconds.
  static long TimeoutMilliseconds();

 private:
  PropertyFileLock(const PropertyFileLock&);
  PropertyFileLock& operator=(const PropertyFileLock&);

  int m_fd;
  bool m_locked;
  bool m_created;
};

#endif  // SRC_PROPERTYFILELOCK_H_
