// PropertyFile.h - replaces the whole content of a property file, the way
// every rewrite of the library does it.
//
// Two ways exist:
//  - in place: open with truncation, then write the text in one call. This
//    is the default, and what existing deployments rely on (the file keeps
//    its inode, owner, mode and hard links). A crash or a full disk in the
//    middle leaves a truncated file.
//  - atomically: write a temporary file in the same directory, flush it to
//    disk and rename it over the target (following a symbolic link to its
//    target and keeping the file's mode). A crash leaves either the old or
//    the new text. Where a rename cannot work (the target is not a regular
//    file, or no temporary file can be made in its directory) it falls back
//    to the in-place way.
// Replace() uses the atomic way in a library built with
// -DPROPERTIES_SAFE_WRITES=ON, the in-place way otherwise.

#ifndef SRC_PROPERTYFILE_H_
#define SRC_PROPERTYFILE_H_

#include "PropertyThreadGuard.h"

class PropertyFile {
 public:
  enum Result {
    kWritten,     // The file holds text.
    kNotOpened,   // The file could not be opened (or created): unchanged.
    kWriteFailed  // Opened, but writing failed (in place: file truncated).
  };

  // Replaces the content of the file at path with text, creating the file
  // (mode 0666 less the umask) if needed.
  static Result Replace(const propstring& path, const propstring& text);
  static Result ReplaceInPlace(const propstring& path, const propstring& text);
  static Result ReplaceAtomically(const propstring& path,
                                  const propstring& text);
  // True if Replace() is ReplaceAtomically() in this build.
  static bool SafeWrites();
};

#endif  // SRC_PROPERTYFILE_H_
