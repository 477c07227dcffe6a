// PropertyFile.cpp - see PropertyFile.h.

#include "PropertyFile.h"

#include <fcntl.h>
#include <limits.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <vector>

#include "PropertyFileLock.h"
#include "PropertyFileTroubles.h"

namespace {

// Reads fd from its current offset to its end into buffer (Size() set);
// sizeHint is where to start, the size of the regular file fd is. False
// after a read error.
bool ReadToEnd(int fd, size_t sizeHint, PropertyTextBuffer& buffer) {
  // The size is only a hint: the file may grow or shrink meanwhile. One byte
  // more than the size lets the first read see the end.
  char* data = buffer.Reserve(sizeHint + 1, 0);
  size_t filled = 0;
  for (;;) {
    if (filled == buffer.Capacity()) data = buffer.Reserve(2 * filled, filled);
    const size_t wanted = buffer.Capacity() - filled;
    const ssize_t got = ::read(fd, data + filled, wanted);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return false;
    filled += static_cast<size_t>(got);
    // A regular file gives less than asked only at its end, which a read
    // returning nothing would confirm. Files that give less before their
    // end (those of /proc and /sys) do so short of their size, or report
    // none.
    if (got == 0 || (static_cast<size_t>(got) < wanted && sizeHint > 0 &&
                     filled >= sizeHint)) {
      buffer.SetSize(filled);
      return true;
    }
  }
}

// How a writer opens the file it locks: for reading and writing, so that
// an in-place rewrite writes what it locked. A crash-safe rewrite writes
// another file, and closing one opened for writing would tell watchers of a
// write that never happened.
int LockAccess() { return PropertyFile::SafeWrites() ? O_RDONLY : O_RDWR; }

// Takes the exclusive lock of the file at path for a rewrite, creating the
// file if there is none (a rewrite is about to make it anyway), so that
// readers and other writers wait for the whole new text. A file this
// process may not write is locked all the same (its write then fails as it
// would have). Holds nothing if the file can be neither opened nor made.
void LockForWriting(const propstring& path, PropertyFileLock& lock) {
  const int access = LockAccess();
  int create = O_CREAT | O_EXCL;
  for (;;) {
    if (lock.Acquire(path, PropertyFileLock::kExclusive, access)) return;
    if (errno != ENOENT) {
      if (access != O_RDONLY) {
        lock.Acquire(path, PropertyFileLock::kExclusive, O_RDONLY);
      }
      return;
    }
    if (lock.Acquire(path, PropertyFileLock::kExclusive, access | create)) {
      return;
    }
    if (errno != EEXIST) return;
    // Another writer made it meanwhile, and the next round locks that one;
    // or path is a symbolic link to nothing, which O_EXCL never follows:
    // the next round makes its target, as a write always did.
    create = O_CREAT;
  }
}

// True if the file that lock holds still has the contents seen.
bool Unchanged(const PropertyFile::Contents& seen, PropertyFileLock& lock) {
  if (lock.Created()) return seen.state == PropertyFile::Contents::kAbsent;
  if (seen.state != PropertyFile::Contents::kBytes) return false;
  struct stat info;
  if (::fstat(lock.Fd(), &info) != 0) return false;
  if (static_cast<size_t>(info.st_size) != seen.bytes.size()) return false;
  PropertyTextBuffer now;
  return ReadToEnd(lock.Fd(), seen.bytes.size(), now) &&
         now.Size() == seen.bytes.size() &&
         std::memcmp(now.Data(), seen.bytes.data(), now.Size()) == 0;
}

// The file a rewrite has to replace: path itself, or the final target of a
// symbolic link. Empty if path is a link whose target cannot be resolved.
propstring ResolveTarget(const propstring& path) {
  struct stat info;
  if (::lstat(path.c_str(), &info) != 0 || !S_ISLNK(info.st_mode)) return path;
  char resolved[PATH_MAX];
  if (::realpath(path.c_str(), resolved) == nullptr) return propstring();
  return resolved;
}

// The process umask, read without changing it (umask() would, for a moment,
// for every thread).
mode_t CurrentUmask() {
  std::ifstream status("/proc/self/status");
  std::string line;
  while (std::getline(status, line)) {
    if (line.compare(0, 6, "Umask:") == 0) {
      return static_cast<mode_t>(std::strtoul(line.c_str() + 6, nullptr, 8));
    }
  }
  return 022;
}

// Gives a new file the mode and owner of the file it replaces (replaced is
// its stat), or, with replaced null, the mode a newly created file would get.
void CopyModeAndOwner(int fd, const struct stat* replaced) {
  if (replaced == nullptr) {
    ::fchmod(fd, 0666 & ~CurrentUmask());
    return;
  }
  ::fchmod(fd, replaced->st_mode & 07777);
  // Best effort: only a privileged process may give a file away.
  if (::fchown(fd, replaced->st_uid, replaced->st_gid) != 0) return;
}

// Tells the binding at work that a write failed, with errno's reason.
void NoteWriteFailure() {
  PropertyFileTroubles::Note(PropertyFileTroubles::FileTrouble::kWrite, errno);
}

void SyncDirectory(const propstring& directory) {
  const int fd = ::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (fd < 0) return;
  ::fsync(fd);
  ::close(fd);
}

}  // namespace

PropertyFile::Result PropertyFile::Replace(const propstring& path,
                                           const propstring& text) {
  return Replace(path, text.data(), text.size());
}

PropertyFile::Result PropertyFile::ReplaceInPlace(const propstring& path,
                                                  const propstring& text) {
  return ReplaceInPlace(path, text.data(), text.size());
}

PropertyFile::Result PropertyFile::ReplaceAtomically(const propstring& path,
                                                     const propstring& text) {
  return ReplaceAtomically(path, text.data(), text.size());
}

PropertyFile::Result PropertyFile::Replace(const propstring& path,
                                           const char* text, size_t size) {
  PropertyFileLock lock;
  LockForWriting(path, lock);
  return ReplaceHeld(path, lock, text, size);
}

PropertyFile::Result PropertyFile::ReplaceIfUnchanged(const propstring& path,
                                                      const Contents& seen,
                                                      const char* text,
                                                      size_t size) {
  PropertyFileLock lock;
  LockForWriting(path, lock);
  // Without the lock, or without a whole earlier read to compare with,
  // nothing can be checked: the rewrite goes ahead as it always did.
  if (lock.Locked() && seen.state != Contents::kUnknown &&
      !Unchanged(seen, lock)) {
    return kChanged;
  }
  return ReplaceHeld(path, lock, text, size);
}

PropertyFile::Result PropertyFile::Write(const propstring& path,
                                         const char* text, size_t size) {
  return SafeWrites() ? ReplaceAtomically(path, text, size)
                      : ReplaceInPlace(path, text, size);
}

PropertyFile::Result PropertyFile::ReplaceInPlace(const propstring& path,
                                                  const char* text,
                                                  size_t size) {
  const int fd =
      ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  if (fd < 0) {
    NoteWriteFailure();
    return kNotOpened;
  }
  const bool written = PropertyFile::WriteAll(fd, text, size);
  if (!written) NoteWriteFailure();
  // A failing close() is ignored, as closing a written stream always was.
  ::close(fd);
  return written ? kWritten : kWriteFailed;
}

PropertyFile::Result PropertyFile::ReplaceAtomically(const propstring& path,
                                                     const char* text,
                                                     size_t size) {
  const propstring target = ResolveTarget(path);
  struct stat info;
  const bool exists = !target.empty() && ::stat(target.c_str(), &info) == 0;
  if (target.empty() || (exists && !S_ISREG(info.st_mode))) {
    return ReplaceInPlace(path, text, size);
  }
  const propstring directory = DirectoryOf(target);
  propstring name = target.substr(target.rfind('/') + 1);
  std::vector<char> temporary(directory.begin(), directory.end());
  const propstring suffix = "/." + name + ".tmp-XXXXXX";
  temporary.insert(temporary.end(), suffix.begin(), suffix.end());
  temporary.push_back('\0');
  const int fd = ::mkostemp(temporary.data(), O_CLOEXEC);
  if (fd < 0) return ReplaceInPlace(path, text, size);

  CopyModeAndOwner(fd, exists ? &info : nullptr);
  const bool written =
      PropertyFile::WriteAll(fd, text, size) && ::fsync(fd) == 0;
  const int writeErrno = errno;
  const bool closed = ::close(fd) == 0;
  if (!written) errno = writeErrno;
  if (!written || !closed) {
    NoteWriteFailure();
    // The target is untouched: a full disk loses nothing.
    ::unlink(temporary.data());
    return kWriteFailed;
  }
  if (::rename(temporary.data(), target.c_str()) != 0) {
    ::unlink(temporary.data());
    return ReplaceInPlace(path, text, size);
  }
  SyncDirectory(directory);
  return kWritten;
}

PropertyFile::ReadResult PropertyFile::ReadWhole(const propstring& path,
                                                 PropertyTextBuffer& buffer,
                                                 Contents* seen,
                                                 bool copyBytes) {
  if (seen != nullptr) *seen = Contents();
  // Shared: readers wait for a rewrite in progress, not for each other.
  PropertyFileLock lock;
  if (!lock.Acquire(path, PropertyFileLock::kShared, O_RDONLY)) {
    PropertyFileTroubles::Note(PropertyFileTroubles::FileTrouble::kRead, errno);
    if (seen != nullptr && errno == ENOENT) seen->state = Contents::kAbsent;
    return kCannotOpen;
  }
  return ReadHeld(lock, buffer, seen, copyBytes);
}

PropertyFile::ReadResult PropertyFile::ReadHeld(const PropertyFileLock& lock,
                                                PropertyTextBuffer& buffer,
                                                Contents* seen,
                                                bool copyBytes) {
  if (seen != nullptr) *seen = Contents();
  if (!lock.Regular() || !ReadToEnd(lock.Fd(), lock.Size(), buffer)) {
    return kReadLineByLine;
  }
  if (seen != nullptr) {
    seen->state = Contents::kBytes;
    if (copyBytes) seen->bytes.assign(buffer.Data(), buffer.Size());
  }
  return kReadWhole;
}

bool PropertyFile::Hold(const propstring& path, PropertyFileLock& lock) {
  return lock.Hold(path, LockAccess());
}

PropertyFile::Result PropertyFile::ReplaceHeld(const propstring& path,
                                               const PropertyFileLock& lock,
                                               const char* text, size_t size) {
  // Without the lock the path may name another file by now.
  if (SafeWrites() || !lock.Holds() || !lock.Writable()) {
    return Write(path, text, size);
  }
  // Truncating the file opened for the lock and writing from its start is
  // what opening it again with truncation would do.
  if (::ftruncate(lock.Fd(), 0) != 0) {
    NoteWriteFailure();
    return kNotOpened;
  }
  const bool written = WriteAll(lock.Fd(), text, size, 0);
  if (!written) NoteWriteFailure();
  return written ? kWritten : kWriteFailed;
}

bool PropertyFile::WriteAll(int fd, const char* text, size_t size, off_t at) {
  const char* next = text;
  size_t left = size;
  while (left > 0) {
    const ssize_t written = at < 0
                                ? ::write(fd, next, left)
                                : ::pwrite(fd, next, left, at + (next - text));
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    next += written;
    left -= static_cast<size_t>(written);
  }
  return true;
}

propstring PropertyFile::DirectoryOf(const propstring& path) {
  const size_t slash = path.rfind('/');
  if (slash == propstring::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

bool PropertyFile::OpenForLines(const propstring& path, std::ifstream& in) {
  in.open(path.c_str(), std::ios::in);
  return in.is_open();
}

bool PropertyFile::SafeWrites() {
#ifdef PROPERTIES_SAFE_WRITES
  return true;
#else
  return false;
#endif
}
