// PropertyFileWatcher.cpp - see PropertyFileWatcher.h.

#include "PropertyFileWatcher.h"

#include <fcntl.h>
#include <limits.h>
#include <stdlib.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <cerrno>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "PropertyManagerOperations.h"

namespace {

propstring DirectoryOf(const propstring& path) {
  const size_t slash = path.rfind('/');
  if (slash == propstring::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

propstring NameOf(const propstring& path) {
  const size_t slash = path.rfind('/');
  return slash == propstring::npos ? path : path.substr(slash + 1);
}

// A file changes for a reader when it is written and closed, renamed into
// place, made, removed or renamed away; its directory is watched, so that a
// rename or a new file of the same name is seen too.
const uint32_t kEvents = IN_CLOSE_WRITE | IN_MOVED_TO | IN_MOVED_FROM |
                         IN_CREATE | IN_DELETE | IN_MODIFY;

}  // namespace

// The directories watched, and the names in them that are bound files.
class PropertyFileWatcher::Watches {
 public:
  Watches() : m_fd(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {}
  ~Watches() {
    if (m_fd >= 0) ::close(m_fd);
  }

  int Fd() const { return m_fd; }

  // Watches the directory of every bound path, and of the file a symbolic
  // link names, so that edits of the link's target are seen as well.
  void Follow(const std::vector<propstring>& paths) {
    for (const propstring& path : paths) {
      Watch(path);
      char resolved[PATH_MAX];
      if (::realpath(path.c_str(), resolved) != nullptr) Watch(resolved);
    }
  }

  // Drains the pending events; true if one names a bound file.
  bool TakeEvents() {
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
        auto names = m_names.find(event->wd);
        if (names != m_names.end() && event->len > 0 &&
            names->second.count(event->name) != 0) {
          relevant = true;
        }
      }
    }
  }

 private:
  void Watch(const propstring& path) {
    if (m_fd < 0) return;
    const int wd =
        ::inotify_add_watch(m_fd, DirectoryOf(path).c_str(), kEvents);
    if (wd >= 0) m_names[wd].insert(NameOf(path));
  }

  int m_fd;
  std::map<int, std::set<std::string>> m_names;  // By watch descriptor.
};

PropertyFileWatcher::PropertyFileWatcher(PropertyManager* manager)
    : m_manager(manager), m_watches(new Watches()) {
  m_watches->Follow(PropertyManagerOperations::BoundPaths(*manager));
}

PropertyFileWatcher::~PropertyFileWatcher() { delete m_watches; }

void PropertyFileWatcher::Reload(PropertyManager* manager) {
  PropertyManagerOperations::Reload(*manager);
}

int PropertyFileWatcher::FileDescriptor() const { return m_watches->Fd(); }

bool PropertyFileWatcher::ProcessChanges() {
  const bool changed = m_watches->Fd() < 0 || m_watches->TakeEvents();
  // Files bound since the last call are watched from now on.
  m_watches->Follow(PropertyManagerOperations::BoundPaths(*m_manager));
  if (!changed) return false;
  Reload(m_manager);
  return true;
}
