// PropertiesDemo.cpp - libproperties doing its job: typed settings of a small
// service, bound to a flat .properties file and a sectioned .ini file.
//
//   PropertiesDemo [--keep] [DIR]
//
// Without DIR the demo works in a new directory under $TMPDIR (or /tmp) and
// then starts itself a second time on it, to show a later run of the
// service picking up what the first run stored; it removes the directory at
// the end unless --keep is given. With DIR it uses (and creates, and keeps)
// that directory: run it twice on one directory to see the same. Lines
// starting with "  (" explain what may surprise.

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>

#include "Properties.h"

namespace {

// Prints every change of a domain's properties.
class PrintingListener : public PropertyChangeListener {
 public:
  void PropertyChanged(Property* property) override {
    std::cout << "  [changed] " << property->GetSection()
              << (property->GetSection().empty() ? "" : "/")
              << property->GetKey() << " = " << property->GetValue() << "\n";
  }
};

bool Exists(const std::string& path) {
  struct stat info;
  return stat(path.c_str(), &info) == 0;
}

void ShowFile(const std::string& title, const std::string& path) {
  std::ifstream in(path.c_str());
  std::stringstream text;
  text << in.rdbuf();
  std::cout << "--- " << title << ": " << path << "\n" << text.str() << "---\n";
}

// One short line on something that may surprise.
void Explain(const std::string& why) { std::cout << "  (" << why << ")\n"; }

// Sets value and says what happened and, if given, why.
void TrySet(JavaPropertyManager* manager, const std::string& key,
            const std::string& value, const std::string& why = "") {
  std::cout << "set " << key << " = \"" << value << "\"\n";
  try {
    manager->SetValue(key, value);
  } catch (Property::WrongValue& e) {
    std::cout << "  [rejected] " << e.m_message << "\n";
  }
  if (!why.empty()) Explain(why);
}

// The flat domain: all six types. An operator's file is seeded on the first
// run with a key this program does not know, which every rewrite keeps.
void RunServer(const std::string& dir, bool firstRun,
               PrintingListener* listener) {
  const std::string path = dir + "/server.properties";
  if (firstRun) {
    std::ofstream(path.c_str()) << "# edited by the operator\n"
                                   "log.retention.days = 30\n"
                                   "port = 8081\n";
  }
  JavaPropertyManager* server =
      Properties::GetInstance()->GetJavaPropertyManager("server");
  server->AddChangeListener(listener);
  server->RegisterPersistence(path, "server settings");
  ShowFile("server file before registration", path);

  server->RegisterProperty("PROPERTY_TYPE_INTEGER", "port", "8080");
  Explain(firstRun ? "the file's port replaced the default 8080; loading a "
                     "stored value counts as a change"
                   : "every stored value loaded counts as a change");
  server->RegisterProperty("PROPERTY_TYPE_BOOLEAN", "tls", "false");
  server->RegisterProperty("PROPERTY_TYPE_DOUBLE", "timeout", "2.5");
  server->RegisterProperty("PROPERTY_TYPE_STRING", "banner", "hello");
  server->RegisterProperty("PROPERTY_TYPE_IP_ADDR", "listen", "127.1");
  server->RegisterProperty("PROPERTY_TYPE_LIST", "level",
                           "debug|info|warning|error");
  std::cout << "port=" << server->GetValue("port")
            << " tls=" << server->GetValue("tls")
            << " timeout=" << server->GetValue("timeout")
            << " banner=" << server->GetValue("banner")
            << " listen=" << server->GetValue("listen")
            << " level=" << server->GetValue("level") << "\n";
  if (!firstRun) return;

  ShowFile("server file after registration", path);
  Explain(
      "loading port changed it, so the file was rewritten: unknown keys "
      "stay, comments and spacing go");
  TrySet(server, "port", "+80",
         "an integer is digits with an optional leading '-', no '+'");
  TrySet(server, "banner", "use # sparingly",
         "'#' would start a comment in the file, so strings refuse it");
  TrySet(server, "level", "3",
         "a list takes an element or its position from 0: 3 is 'error'");
  TrySet(server, "tls", "true");
  TrySet(server, "timeout", "0.25");
  ShowFile("server file after the changes", path);
}

// The sectioned domain: the same key in two sections.
void RunUi(const std::string& dir, bool firstRun, PrintingListener* listener) {
  const std::string path = dir + "/ui.ini";
  IniPropertyManager* ui =
      Properties::GetInstance()->GetIniPropertyManager("ui");
  ui->AddChangeListener(listener);
  ui->RegisterPersistence(path, "user interface");
  ui->RegisterProperty("PROPERTY_TYPE_STRING", "window", "title", "Demo");
  ui->RegisterProperty("PROPERTY_TYPE_INTEGER", "window", "width", "800");
  ui->RegisterProperty("PROPERTY_TYPE_INTEGER", "panel", "width", "200");
  std::cout << "window/title=" << ui->GetValue("window", "title")
            << " window/width=" << ui->GetValue("window", "width")
            << " panel/width=" << ui->GetValue("panel", "width") << "\n";
  if (!firstRun) return;

  ui->SetValue("window", "width", "1024");
  ui->SetValue("panel", "width", "240");
  ShowFile("ui file after the changes", path);
}

int SecondRun(const char* self, const std::string& dir) {
  std::cout.flush();
  const pid_t child = fork();
  if (child == 0) {
    char* const args[] = {const_cast<char*>(self),
                          const_cast<char*>(dir.c_str()), nullptr};
    execvp(self, args);
    _exit(127);
  }
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : 1;
}

// A new directory under $TMPDIR or /tmp, or "" if none can be made.
std::string MakeTemporaryDirectory() {
  const char* tmp = std::getenv("TMPDIR");
  std::string name =
      std::string(tmp != nullptr && *tmp != '\0' ? tmp : "/tmp") +
      "/libproperties-demo-XXXXXX";
  return mkdtemp(&name[0]) != nullptr ? name : "";
}

// Removes the demo's two files and its directory.
void RemoveDirectory(const std::string& dir) {
  std::remove((dir + "/server.properties").c_str());
  std::remove((dir + "/ui.ini").c_str());
  if (rmdir(dir.c_str()) == 0) {
    std::cout << "\nremoved " << dir << " (--keep keeps it)\n";
  } else {
    std::perror(("PropertiesDemo: " + dir).c_str());
  }
}

}  // namespace

int main(int argc, char** argv) {
  bool keep = false;
  int arg = 1;
  if (arg < argc && std::strcmp(argv[arg], "--keep") == 0) {
    keep = true;
    ++arg;
  }
  std::string dir;
  const bool own = arg >= argc;  // The demo made the directory itself.
  if (!own) {
    dir = argv[arg];
    mkdir(dir.c_str(), 0777);
  } else {
    dir = MakeTemporaryDirectory();
    if (dir.empty()) {
      std::perror("PropertiesDemo: mkdtemp");
      return 1;
    }
  }
  const bool firstRun = !Exists(dir + "/server.properties");
  std::cout << "=== " << (firstRun ? "first" : "later") << " run in " << dir
            << "\n";
  PrintingListener listener;
  RunServer(dir, firstRun, &listener);
  RunUi(dir, firstRun, &listener);
  if (!own || !firstRun) return 0;
  std::cout << "\n=== starting the program again on " << dir << "\n";
  const int status = SecondRun(argv[0], dir);
  if (!keep) RemoveDirectory(dir);
  return status;
}
