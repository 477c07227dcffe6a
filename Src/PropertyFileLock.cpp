// PropertyFileLock.cpp - see PropertyFileLock.h.

#include "PropertyFileLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "PropertyDefaults.h"
#include "PropertyFileTroubles.h"
#include "PropertyMessages.h"

namespace {

long NowMilliseconds() {
  struct timespec now;
  ::clock_gettime(CLOCK_MONOTONIC, &now);
  return now.tv_sec * 1000L + now.tv_nsec / 1000000L;
}

void SleepMilliseconds(long milliseconds) {
  struct timespec pause = {milliseconds / 1000,
                           (milliseconds % 1000) * 1000000L};
  while (::nanosleep(&pause, &pause) != 0 && errno == EINTR) {
  }
}

// The deadline of a lock that is taken only if it is free.
const long kNoWait = -1;

// Takes the lock on fd, waiting until deadline (kNoWait: not at all). False
// if another holder kept it that long, or if the file system refuses locks.
bool Wait(int fd, PropertyFileLock::Mode mode, long deadline) {
  const int operation =
      (mode == PropertyFileLock::kShared ? LOCK_SH : LOCK_EX) | LOCK_NB;
  long pause = 1;
  for (;;) {
    if (::flock(fd, operation) == 0) return true;
    if (errno == EINTR) continue;
    if (errno != EWOULDBLOCK || deadline == kNoWait) return false;
    const long left = deadline - NowMilliseconds();
    if (left <= 0) return false;
    // Holders keep the lock for one read or one write: short pauses first.
    SleepMilliseconds(pause < left ? pause : left);
    if (pause < 50) pause *= 2;
  }
}

// True if path still names the file whose status (taken under its lock) is
// locked. Writers that share the lock replace a file only by renaming
// another over it, which leaves the replaced one with one link less: a file
// with a single link is still named where it was opened, and only one with
// several links needs its path looked up again.
bool StillNamed(const propstring& path, const struct stat& locked) {
  if (locked.st_nlink == 1) return true;
  if (locked.st_nlink == 0) return false;
  struct stat named;
  return ::stat(path.c_str(), &named) == 0 && named.st_dev == locked.st_dev &&
         named.st_ino == locked.st_ino;
}

}  // namespace

PropertyFileLock::PropertyFileLock()
    : m_fd(-1),
      m_locked(false),
      m_created(false),
      m_regular(false),
      m_writable(false),
      m_size(0) {}

PropertyFileLock::~PropertyFileLock() { Release(); }

bool PropertyFileLock::Acquire(const propstring& path, Mode mode, int flags) {
  return Take(path, mode, flags, NowMilliseconds() + TimeoutMilliseconds());
}

bool PropertyFileLock::TryAcquire(const propstring& path, Mode mode,
                                  int flags) {
  if (Take(path, mode, flags, kNoWait) &&
      (m_locked || (!Enabled() && m_regular))) {
    return true;
  }
  Release();
  return false;
}

bool PropertyFileLock::Take(const propstring& path, Mode mode, int flags,
                            long deadline) {
  Release();
  for (;;) {
    m_fd = ::open(path.c_str(), flags | O_CLOEXEC, 0666);
    if (m_fd < 0) return false;
    m_created = (flags & (O_CREAT | O_EXCL)) == (O_CREAT | O_EXCL);
    m_writable = (flags & O_ACCMODE) == O_RDWR;
    // Most locks are free: one try first, then a look at what was opened.
    const bool free = Enabled() && Wait(m_fd, mode, kNoWait);
    struct stat locked;
    if (::fstat(m_fd, &locked) != 0 || !S_ISREG(locked.st_mode)) {
      // Only regular files are rewritten; nothing to guard.
      if (free) ::flock(m_fd, LOCK_UN);
      return true;
    }
    m_regular = true;
    m_size = static_cast<size_t>(locked.st_size);
    if (!Enabled()) return true;
    if (!free) {
      if (deadline == kNoWait) return true;  // Not had, and not waited for.
      if (!Wait(m_fd, mode, deadline)) {
        PropertyFileTroubles::Note(PropertyFileTroubles::FileTrouble::kLock,
                                   EWOULDBLOCK);
        PropertyMessages::Write(PropertyMessages::kStayedLocked, path.c_str());
        return true;
      }
      // What the file was while another held it may have changed.
      if (::fstat(m_fd, &locked) != 0) locked.st_nlink = 0;
      m_size = static_cast<size_t>(locked.st_size);
    }
    // A reader of a file renamed over or removed meanwhile reads a whole
    // earlier text: no writer touches a file once it has replaced it. A
    // writer must write the file the path names now.
    if (mode == kShared || StillNamed(path, locked)) {
      m_locked = true;
      return true;
    }
    // Renamed over or removed while we waited: lock what the path names now.
    Release();
    flags &= ~O_EXCL;
  }
}

void PropertyFileLock::Release() {
  if (m_fd >= 0) ::close(m_fd);  // Closing releases the lock.
  m_fd = -1;
  m_locked = false;
  m_created = false;
  m_regular = false;
  m_writable = false;
  m_size = 0;
}

bool PropertyFileLock::Enabled() {
#ifdef PROPERTIES_NO_FILE_LOCKS
  return false;
#else
  return true;
#endif
}

long PropertyFileLock::TimeoutMilliseconds() {
  return PropertyDefaults::LockTimeoutMilliseconds();
}
