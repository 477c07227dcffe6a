// PropertyDirectoryWatch.cpp - see PropertyDirectoryWatch.h.

#include "PropertyDirectoryWatch.h"

#include <limits.h>
#include <stdlib.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <cerrno>

#include "PropertyFile.h"

namespace {

propstring NameOf(const propstring& path) {
  const size_t slash = path.rfind('/');
  return slash == propstring::npos ? path : path.substr(slash + 1);
}

// A file changes for a reader when it is written, renamed into or out of
// place, made or removed.
const uint32_t kEvents = IN_CLOSE_WRITE | IN_MODIFY | IN_MOVED_TO |
                         IN_MOVED_FROM | IN_CREATE | IN_DELETE;

}  // namespace

PropertyDirectoryWatch::PropertyDirectoryWatch()
    : m_fd(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {}

PropertyDirectoryWatch::~PropertyDirectoryWatch() {
  if (m_fd >= 0) ::close(m_fd);
}

void PropertyDirectoryWatch::Follow(const std::vector<propstring>& paths) {
  for (const propstring& path : paths) {
    Watch(path);
    char resolved[PATH_MAX];
    if (::realpath(path.c_str(), resolved) != nullptr) Watch(resolved);
  }
}

bool PropertyDirectoryWatch::TakeNotices() {
  bool relevant = false;
  alignas(struct inotify_event) char buffer[4096];
  for (;;) {
    const ssize_t got = ::read(m_fd, buffer, sizeof buffer);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return relevant;
    for (char* next = buffer; next < buffer + got;) {
      const struct inotify_event* event =
          reinterpret_cast<const struct inotify_event*>(next);
      next += sizeof(struct inotify_event) + event->len;
      if (event->mask & IN_Q_OVERFLOW) relevant = true;
      std::map<int, std::set<propstring> >::const_iterator names =
          m_names.find(event->wd);
      if (names != m_names.end() && event->len > 0 &&
          names->second.count(event->name) != 0) {
        relevant = true;
      }
    }
  }
}

void PropertyDirectoryWatch::Watch(const propstring& path) {
  if (m_fd < 0) return;
  const int wd = ::inotify_add_watch(
      m_fd, PropertyFile::DirectoryOf(path).c_str(), kEvents);
  if (wd >= 0) m_names[wd].insert(NameOf(path));
}
