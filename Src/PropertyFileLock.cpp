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

// True if path names the file whose device and inode are those of locked.
bool Names(const propstring& path, const struct stat& locked) {
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
      m_status() {}

PropertyFileLock::~PropertyFileLock() { Release(); }

bool PropertyFileLock::Acquire(const propstring& path, Mode mode, int flags) {
  return Take(path, mode, flags, false);
}

bool PropertyFileLock::Hold(const propstring& path, int flags) {
  if (Take(path, kExclusive, flags, true) && Holds()) {
    return true;
  }
  Release();
  return false;
}

bool PropertyFileLock::NamedBy(const propstring& path) const {
  return m_fd >= 0 && Names(path, m_status);
}

bool PropertyFileLock::Take(const propstring& path, Mode mode, int flags,
                            bool holding) {
  Release();
  const long deadline = NowMilliseconds() + TimeoutMilliseconds();
  for (;;) {
    m_fd = ::open(path.c_str(), flags | O_CLOEXEC, 0666);
    if (m_fd < 0) return false;
    m_created = (flags & (O_CREAT | O_EXCL)) == (O_CREAT | O_EXCL);
    m_writable = (flags & O_ACCMODE) == O_RDWR;
    // Most locks are free: one try first, then a look at what was opened.
    const bool free = Enabled() && Wait(m_fd, mode, kNoWait);
    if (::fstat(m_fd, &m_status) != 0 || !S_ISREG(m_status.st_mode)) {
      // Only regular files are rewritten; nothing to guard.
      if (free) ::flock(m_fd, LOCK_UN);
      return true;
    }
    m_regular = true;
    if (!Enabled()) return true;
    if (!free) {
      if (!Wait(m_fd, mode, deadline)) {
        if (holding) return true;  // Not had; the caller goes another way.
        PropertyFileTroubles::Note(PropertyFileTroubles::FileTrouble::kLock,
                                   EWOULDBLOCK);
        PropertyMessages::Write(PropertyMessages::kStayedLocked, path.c_str());
        return true;
      }
      // What the file was while another held it may have changed.
      if (::fstat(m_fd, &m_status) != 0) return true;
    }
    // A reader of a file renamed over meanwhile reads a whole earlier text.
    // A writer must write the file the path names now; one that holds the
    // lock for a whole rewrite checks that before it writes.
    if (mode == kShared || holding || Names(path, m_status)) {
      m_locked = true;
      return true;
    }
    // Renamed over or removed meanwhile: lock what the path names now.
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
