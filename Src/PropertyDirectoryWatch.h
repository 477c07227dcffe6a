// PropertyDirectoryWatch.h - notices of changes to property files, for
// PropertyFileWatcher and propctl watch. Internal to the library: not
// installed.
//
// The directories of the files are watched (inotify), not the files
// themselves, so that a file renamed into place, deleted or made again is
// seen as well as one written in place.

#ifndef SRC_PROPERTYDIRECTORYWATCH_H_
#define SRC_PROPERTYDIRECTORYWATCH_H_

#include <map>
#include <set>
#include <vector>

#include "PropertyThreadGuard.h"

class PropertyDirectoryWatch {
 public:
  PropertyDirectoryWatch();   // Watches nothing yet.
  ~PropertyDirectoryWatch();  // Closes the descriptor.

  // Readable when a followed file may have changed; -1 if the system
  // cannot watch files.
  int Fd() const { return m_fd; }
  // Follows each of paths from now on (again: no harm), and the file a
  // symbolic link among them names.
  void Follow(const std::vector<propstring>& paths);
  // Takes the pending notices without waiting; true if one concerns a
  // followed file (or notices were lost).
  bool TakeNotices();

 private:
  PropertyDirectoryWatch(const PropertyDirectoryWatch&);
  PropertyDirectoryWatch& operator=(const PropertyDirectoryWatch&);

  void Watch(const propstring& path);

  int m_fd;
  std::map<int, std::set<propstring> > m_names;  // By watch descriptor.
};

#endif  // SRC_PROPERTYDIRECTORYWATCH_H_
