// PropertyFile.h - replaces the whole content of a property file, the way
// every rewrite of the library does it.
//
// Two ways exist:
//  - in place: truncate the file (the one opened for its lock, or opened
//    again with truncation), then write the text in one call. This is the
//    default, and what existing deployments rely on (the file keeps
//    its inode, owner, mode and hard links). A crash or a full disk in the
//    middle leaves a truncated file.
//  - atomically: write a temporary file in the same directory, flush it to
//    disk and rename it over the target (following a symbolic link to its
//    target and keeping the file's mode). A crash leaves either the old or
//    the new text. Where a rename cannot work (the target is not a regular
//    file, or no temporary file can be made in its directory) it falls back
//    to the in-place way.
// Replace() uses the atomic way in a library built with
// -DPROPERTIES_SAFE_WRITES=ON, the in-place way otherwise. Reads and
// rewrites hold the file's advisory lock (PropertyFileLock.h) while they
// touch its bytes, so that programs sharing a file see whole texts and lose
// no update.
//
// ReadWhole() reads a file in one go for the library's own loads, which then
// parse it in memory; whatever it cannot take whole is read line by line
// from the stream that OpenForLines() opens. Every open, read and write of a
// property file by the library goes through this class. Internal to the
// library: not installed.

#ifndef SRC_PROPERTYFILE_H_
#define SRC_PROPERTYFILE_H_

#include <sys/types.h>

#include <fstream>

#include "PropertyFileLock.h"
#include "PropertyTextBuffer.h"
#include "PropertyThreadGuard.h"

class PropertyFile {
 public:
  enum Result {
    kWritten,      // The file holds text.
    kNotOpened,    // The file could not be opened (or created): unchanged.
    kWriteFailed,  // Opened, but writing failed (in place: file truncated).
    kChanged       // ReplaceIfUnchanged(): changed since it was read; not
                   // written.
  };

  // What a whole read of a file found, for ReplaceIfUnchanged().
  struct Contents {
    enum State {
      kUnknown,  // Not read whole: nothing to compare with.
      kAbsent,   // There was no file.
      kBytes     // The file held bytes.
    };
    Contents() : state(kUnknown) {}
    State state;
    propstring bytes;
  };

  // Replaces the content of the file at path with text, creating the file
  // (mode 0666 less the umask) if needed, under the file's exclusive lock
  // (PropertyFileLock.h): the way of this build (see SafeWrites()).
  static Result Replace(const propstring& path, const propstring& text);
  static Result ReplaceInPlace(const propstring& path, const propstring& text);
  static Result ReplaceAtomically(const propstring& path,
                                  const propstring& text);
  // The same with the text [text, text + size).
  static Result Replace(const propstring& path, const char* text, size_t size);
  // Replace() if the file still holds what seen says, checked under the
  // lock; kChanged, writing nothing, if another program rewrote it since.
  // A rewrite that reads, merges and then writes this way loses no update
  // of another program that does the same, and holds the lock only while it
  // compares and writes bytes.
  static Result ReplaceIfUnchanged(const propstring& path, const Contents& seen,
                                   const char* text, size_t size);
  // The two ways of writing, without the lock.
  static Result ReplaceInPlace(const propstring& path, const char* text,
                               size_t size);
  static Result ReplaceAtomically(const propstring& path, const char* text,
                                  size_t size);
  // True if Replace() is ReplaceAtomically() in this build.
  static bool SafeWrites();

  enum ReadResult {
    kReadWhole,      // text holds the whole content.
    kCannotOpen,     // The file could not be opened.
    kReadLineByLine  // Opened, but not to be read whole: not a regular file
                     // (a device may never end) or a read error occurred.
  };
  // Reads the whole content of the file at path into buffer (its Size()),
  // under the file's shared lock; the byte after the content is writable.
  // If seen is not null, it records what was found: with copyBytes, the
  // bytes too; without, the caller fills seen->bytes from buffer.
  static ReadResult ReadWhole(const propstring& path,
                              PropertyTextBuffer& buffer,
                              Contents* seen = nullptr, bool copyBytes = true);
  // ReadWhole() of the file lock holds (locked, or in a build without
  // locks, opened), from where its offset stands.
  static ReadResult ReadHeld(const PropertyFileLock& lock,
                             PropertyTextBuffer& buffer,
                             Contents* seen = nullptr, bool copyBytes = true);
  // PropertyFileLock::Hold() of the file at path, opened as a rewrite of
  // this build writes it, for a rewrite that reads and writes it under that
  // one lock (ReadHeld(), ReplaceHeld()).
  static bool Hold(const propstring& path, PropertyFileLock& lock);
  // Replaces the content of the file at path, which lock holds (locked
  // exclusively, or not had in time), with [text, text + size), the way of
  // this build, without taking the lock again: in place through the file
  // lock opened, if it opened a regular file for writing.
  static Result ReplaceHeld(const propstring& path,
                            const PropertyFileLock& lock, const char* text,
                            size_t size);
  // Opens the file at path as a text input stream, for reading line by
  // line. Returns false if it cannot be opened.
  static bool OpenForLines(const propstring& path, std::ifstream& in);
  // The directory that holds path: "." for a bare name, "/" for the root.
  static propstring DirectoryOf(const propstring& path);
  // Writes all of text to fd, retrying short writes and interruptions.
  // False on the first failed write (errno tells why).
  // With at, from that offset on (pwrite()), whatever the file's offset.
  static bool WriteAll(int fd, const char* text, size_t size, off_t at = -1);

 private:
  // ReplaceAtomically() or ReplaceInPlace(), as this build writes.
  static Result Write(const propstring& path, const char* text, size_t size);
};

#endif  // SRC_PROPERTYFILE_H_
