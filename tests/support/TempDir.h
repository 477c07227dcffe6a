// TempDir.h - a fresh temporary directory per test, removed with everything
// in it when the object goes away, and small whole-file helpers.

#ifndef TESTS_SUPPORT_TEMPDIR_H_
#define TESTS_SUPPORT_TEMPDIR_H_

#include <string>

namespace test_support {

class TempDir {
 public:
  TempDir();  // Creates a new directory under $TMPDIR or /tmp.
  // Creates a new directory under base; under $TMPDIR or /tmp if base is "".
  explicit TempDir(const std::string& base);
  ~TempDir();  // Removes it recursively.

  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  const std::string& path() const { return m_path; }
  // path() + "/" + name.
  std::string File(const std::string& name) const;

 private:
  std::string m_path;
};

// "/dev/shm" where the system has a writable one, else "". A test that
// rewrites one file hundreds of times runs there: on a disk file system every
// truncating rewrite can start a write-back and cost milliseconds.
std::string MemoryBackedBase();

// Replaces the file's whole content with text (bytes as they stand).
void WriteFile(const std::string& path, const std::string& text);
// The file's whole content; "" if it cannot be read.
std::string ReadFile(const std::string& path);
bool FileExists(const std::string& path);

}  // namespace test_support

#endif  // TESTS_SUPPORT_TEMPDIR_H_
