// FollowingDaemon.cpp - a daemon that follows its settings file live: an
// operator changes the file from another process (as `propctl set` does),
// and the daemon's listener hears of it from its own event loop, with no
// thread of the library's.
//
//   FollowingDaemon
//
// Works in a new directory under $TMPDIR (or /tmp) and removes it at the
// end. Exits 0 when the operator's value reached the daemon and survived the
// daemon's own next change, 1 otherwise.

#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>

#include "JavaProperties.h"
#include "Properties.h"
#include "PropertyFileWatcher.h"

namespace {

class PrintingListener : public PropertyChangeListener {
 public:
  void PropertyChanged(Property* property) override {
    std::cout << "daemon: " << property->GetKey() << " is now "
              << property->GetValue() << "\n";
  }
};

std::string ReadFile(const std::string& path) {
  std::ifstream in(path.c_str(), std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

// The operator, in a process of its own: reads the file, changes one entry
// and writes it back (with the library's locks, as propctl does).
void OperatorSets(const std::string& path, const std::string& key,
                  const std::string& value) {
  const pid_t child = ::fork();
  if (child == 0) {
    JavaProperties file;
    file.Load(path);
    file.SetProperty(key, value);
    ::_exit(file.Store(path, "daemon settings") ? 0 : 1);
  }
  ::waitpid(child, nullptr, 0);
}

}  // namespace

int main() {
  const char* base = std::getenv("TMPDIR");
  std::string dir = std::string(base != nullptr && *base ? base : "/tmp") +
                    "/following-daemon-XXXXXX";
  if (::mkdtemp(&dir[0]) == nullptr) return 1;
  const std::string path = dir + "/daemon.properties";

  // The daemon binds its file and listens to its own settings.
  JavaPropertyManager* settings =
      Properties::GetInstance()->GetJavaPropertyManager("daemon");
  settings->RegisterPersistence(path, "daemon settings");
  settings->RegisterProperty("PROPERTY_TYPE_INTEGER", "port", "8080");
  settings->RegisterProperty("PROPERTY_TYPE_LIST", "level", "info|debug|error");
  settings->SetValue("port", "8080");  // Writes the file.
  PrintingListener listener;
  settings->AddChangeListener(&listener);
  PropertyFileWatcher watcher(settings);

  OperatorSets(path, "port", "9090");

  // The daemon's event loop, bounded for the example: poll the watcher's
  // descriptor, and process its changes on this thread.
  const auto deadline =
      std::chrono::steady_clock::now() + std::chrono::seconds(10);
  while (settings->GetValue("port") != "9090" &&
         std::chrono::steady_clock::now() < deadline) {
    struct pollfd ready = {watcher.FileDescriptor(), POLLIN, 0};
    if (::poll(&ready, 1, 1000) == 1) watcher.ProcessChanges();
  }

  // The daemon's own next change keeps the operator's value.
  settings->SetValue("level", "debug");
  const std::string text = ReadFile(path);
  std::cout << "--- " << path << "\n" << text << "---\n";

  std::remove(path.c_str());
  ::rmdir(dir.c_str());
  const bool kept = text.find("port=9090\n") != std::string::npos;
  std::cout << (kept ? "the operator's port reached the daemon and stayed\n"
                     : "UNEXPECTED: the operator's port was lost\n");
  return kept ? 0 : 1;
}
