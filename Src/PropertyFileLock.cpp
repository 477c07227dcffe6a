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

// Takes the lock on fd, waiting until deadline. False if another holder
// kept it that long, or if the file system refuses locks.
bool Wait(int fd, PropertyFileLock::Mode mode, long deadline) {
  const int operation =
      (mode == PropertyFileLock::kShared ? LOCK_SH : LOCK_EX) | LOCK_NB;
  long pause = 1;
  for (;;) {
    if (::flock(fd, operation) == 0) return true;
    if (errno == EINTR) continue;
    if (errno != EWOULDBLOCK) return false;
    const long left = deadline - NowMilliseconds();
    if (left <= 0) return false;
    // Holders keep the lock for one read or one write: short pauses first.
    SleepMilliseconds(pause < left ? pause : left);
    if (pause < 50) pause *= 2;
  }
}

bool SameFile(const struct stat& a, const struct stat& b) {
  return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

}  // namespace

PropertyFileLock::PropertyFileLock()
    : m_fd(-1), m_locked(false), m_created(false) {}

PropertyFileLock::~PropertyFileLock() { Release(); }

bool PropertyFileLock::Acquire(const propstring& path, Mode mode, int flags) {
  Release();
  const long deadline = NowMilliseconds() + TimeoutMilliseconds();
  for (;;) {
    m_fd = ::open(path.c_str(), flags | O_CLOEXEC, 0666);
    if (m_fd < 0) return false;
    m_created = (flags & (O_CREAT | O_EXCL)) == (O_CREAT | O_EXCL);
    struct stat locked;
    if (!Enabled() || ::fstat(m_fd, &locked) != 0 || !S_ISREG(locked.st_mode)) {
      return true;  // Only regular files are rewritten; nothing to guard.
    }
    if (!Wait(m_fd, mode, deadline)) {
      PropertyFileTroubles::Note(PropertyFileTroubles::FileTrouble::kLock,
                                 EWOULDBLOCK);
      PropertyMessages::Write(PropertyMessages::kStayedLocked, path.c_str());
      return true;
    }
    struct stat named;
    if (::stat(path.c_str(), &named) == 0 && SameFile(named, locked)) {
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
