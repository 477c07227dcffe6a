// FileFaults.cpp - see FileFaults.h.

#include "support/FileFaults.h"

#include <signal.h>

namespace test_support {

ScopedFullDisk::ScopedFullDisk() {
  getrlimit(RLIMIT_FSIZE, &m_saved);
  m_savedHandler = signal(SIGXFSZ, SIG_IGN);
  struct rlimit limit = m_saved;
  limit.rlim_cur = 0;
  setrlimit(RLIMIT_FSIZE, &limit);
}

ScopedFullDisk::~ScopedFullDisk() {
  setrlimit(RLIMIT_FSIZE, &m_saved);
  signal(SIGXFSZ, m_savedHandler);
}

std::string CanNotRead(const std::string& path) {
  return "Can not read File '" + path + "'";
}

std::string CanNotWrite(const std::string& path) {
  return "Can not write File '" + path + "'";
}

bool RewritesAreCrashSafe() {
#ifdef PROPERTIES_TEST_SAFE_WRITES
  return true;
#else
  return false;
#endif
}

}  // namespace test_support
