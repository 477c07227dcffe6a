// PropertyFileTroubles.cpp - see PropertyFileTroubles.h.

#include "PropertyFileTroubles.h"

#include <string.h>
#include <sys/stat.h>

#include <cerrno>
#include <map>
#include <mutex>

#include "PropertyFile.h"

namespace {

struct Recorded {
  PropertySafety::FileTrouble::Operation operation;
  int error;
};

// Bindings are few and failures rare: one map under one mutex. Never
// destroyed, so that bindings deleted at process exit may still forget.
std::mutex& TableMutex() {
  static std::mutex* mutex = new std::mutex;
  return *mutex;
}

std::map<const void*, Recorded>& Table() {
  static std::map<const void*, Recorded>* table =
      new std::map<const void*, Recorded>;
  return *table;
}

thread_local PropertyFileTroubles::Scope* t_innermost = nullptr;

bool DirectoryExists(const propstring& path) {
  struct stat info;
  return ::stat(PropertyFile::DirectoryOf(path).c_str(), &info) == 0 &&
         S_ISDIR(info.st_mode);
}

}  // namespace

PropertyFileTroubles::Scope::Scope(const void* binding, const propstring& path)
    : m_binding(binding), m_path(path), m_outer(t_innermost) {
  t_innermost = this;
}

PropertyFileTroubles::Scope::~Scope() { t_innermost = m_outer; }

void PropertyFileTroubles::Note(FileTrouble::Operation operation, int error) {
  const Scope* scope = t_innermost;
  if (scope == nullptr) return;
  // The caller may still report errno to its own caller.
  const int savedErrno = errno;
  if (operation != FileTrouble::kRead || error != ENOENT ||
      !DirectoryExists(scope->m_path)) {
    std::lock_guard<std::mutex> lock(TableMutex());
    Table()[scope->m_binding] = Recorded{operation, error};
  }
  errno = savedErrno;
}

PropertyFileTroubles::FileTrouble PropertyFileTroubles::Last(
    const void* binding, const propstring& path) {
  FileTrouble trouble = {path, FileTrouble::kNone, 0, propstring()};
  std::lock_guard<std::mutex> lock(TableMutex());
  std::map<const void*, Recorded>::const_iterator it = Table().find(binding);
  if (it == Table().end()) return trouble;
  trouble.operation = it->second.operation;
  trouble.error = it->second.error;
  char buffer[256];
  // The GNU strerror_r, which returns the text (not always in buffer).
  trouble.errorText = ::strerror_r(it->second.error, buffer, sizeof buffer);
  return trouble;
}

void PropertyFileTroubles::Forget(const void* binding) {
  std::lock_guard<std::mutex> lock(TableMutex());
  Table().erase(binding);
}
