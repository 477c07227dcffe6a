// PropertyFileLock.h - an advisory lock on a property file, shared by
// programs that use this library (and propctl), so that no reader sees a
// rewrite half done and no rewrite is lost to another one. Internal to the
// library: not installed.
//
// The lock is flock(2) on the file itself: no lock file is made, and the
// kernel releases the lock of a process that dies. A rewrite that renames a
// new file into place replaces the locked inode, so after taking the
// exclusive lock Acquire() checks that the path still names the locked file
// and starts again if not. A reader needs no such check: the file it locked
// holds a whole text, earlier at worst.
//
// A wait is bounded: after LIBPROPERTIES_LOCK_TIMEOUT_MS milliseconds
// (default 10000; read once) the caller goes on without the lock and the
// library logs "File '%s' stayed locked; going on without the lock". A
// library built with -DPROPERTIES_FILE_LOCKS=OFF takes no locks at all.
//
// Never held while code of the program runs: the holders (PropertyFile,
// and a rewrite that runs nothing but the library's own code between its
// read and its write) only read and write bytes under it.

#ifndef SRC_PROPERTYFILELOCK_H_
#define SRC_PROPERTYFILELOCK_H_

#include <sys/stat.h>

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
  // Takes the exclusive lock of the regular file at path, opened with flags
  // (O_RDONLY or O_RDWR), for a rewrite that reads, merges and writes under
  // it. Waits as Acquire() does, but logs nothing: false, holding nothing,
  // if path names no regular file that flags open or if another holder kept
  // the lock past the timeout. True means Holds(). The path is not
  // looked up again: NamedBy() tells, before a write, whether it still names
  // the file.
  bool Hold(const propstring& path, int flags);
  // True if path names the file opened now.
  bool NamedBy(const propstring& path) const;
  int Fd() const { return m_fd; }
  bool Locked() const { return m_locked; }
  // True if the regular file opened may be read and written as the lock's
  // holder: it is locked, or this build takes no locks.
  bool Holds() const { return m_locked || (m_regular && !Enabled()); }
  bool Created() const { return m_created; }
  // Whether the file opened is a regular file, and its size when it was
  // locked (0 if it is not one).
  bool Regular() const { return m_regular; }
  size_t Size() const {
    return m_regular ? static_cast<size_t>(m_status.st_size) : 0;
  }
  // Whether Fd() is open for writing too (O_RDWR).
  bool Writable() const { return m_writable; }
  // Releases the lock and closes the file.
  void Release();

  // False in a library built without file locks.
  static bool Enabled();
  // How long Acquire() waits for another holder, in milliseconds.
  static long TimeoutMilliseconds();

 private:
  PropertyFileLock(const PropertyFileLock&);
  PropertyFileLock& operator=(const PropertyFileLock&);

  // Acquire(), or for Hold() (holding): no message after the timeout, and
  // the path not looked up again.
  bool Take(const propstring& path, Mode mode, int flags, bool holding);

  int m_fd;
  bool m_locked;
  bool m_created;
  bool m_regular;
  bool m_writable;
  struct stat m_status;  // The file's, when it was locked (if regular).
};

#endif  // SRC_PROPERTYFILELOCK_H_
