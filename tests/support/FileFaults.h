// FileFaults.h - makes file writes fail as on a full disk, and builds the
// messages the library logs when a bound file cannot be read or written.

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

}  // namespace test_support

#endif  // TESTS_SUPPORT_FILEFAULTS_H_
