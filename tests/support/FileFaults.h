// FileFaults.h - makes file writes fail as on a full disk, builds the
// messages the library logs when a bound file cannot be read or written, and
// tells which way the library under test rewrites files.

#ifndef TESTS_SUPPORT_FILEFAULTS_H_
#define TESTS_SUPPORT_FILEFAULTS_H_

#include <sys/resource.h>

#include <string>

namespace test_support {

// While alive, every write that would make a file grow fails (as on a full
// disk), whereas opening a file for writing still succeeds. It lowers the
// process's file size limit and ignores SIGXFSZ; both are restored on
// destruction.
class ScopedFullDisk {
 public:
  ScopedFullDisk();
  ~ScopedFullDisk();

  ScopedFullDisk(const ScopedFullDisk&) = delete;
  ScopedFullDisk& operator=(const ScopedFullDisk&) = delete;

 private:
  struct rlimit m_saved;
  void (*m_savedHandler)(int);
};

// "Can not read File '<path>'".
std::string CanNotRead(const std::string& path);
// "Can not write File '<path>'".
std::string CanNotWrite(const std::string& path);

// True if the library under test was built to rewrite files the crash-safe
// way (-DPROPERTIES_SAFE_WRITES=ON: a new file renamed over the old one),
// false if it rewrites them in place. The test build is told the same option
// through PROPERTIES_TEST_SAFE_WRITES.
bool RewritesAreCrashSafe();

}  // namespace test_support

#endif  // TESTS_SUPPORT_FILEFAULTS_H_
