// Tour.cpp - the short tour of the README as a complete program.
//
//   Tour
//
// Works in a new directory under $TMPDIR (or /tmp): binds a flat domain and
// a sectioned domain to files there, registers, sets and reads properties,
// shows a rejected value, file trouble and a read-only binding, prints each
// file the library wrote, then removes the directory. Exits 0 when everything
// behaved as the README says, 1 otherwise. It uses the installed headers
// only, so it builds the same against an installed libproperties.

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "Properties.h"
#include "PropertySafety.h"

namespace {

// Prints every change of the properties of the domains it listens to.
class PrintingListener : public PropertyChangeListener {
 public:
  void PropertyChanged(Property* property) override {
    std::cout << "  changed: "
              << (property->GetSection().empty() ? ""
                                                 : property->GetSection() + "/")
              << property->GetKey() << " = " << property->GetValue() << "\n";
  }
};

int failures = 0;

void Expect(bool ok, const std::string& what) {
  if (!ok) {
    std::cout << "UNEXPECTED: " << what << "\n";
    ++failures;
  }
}

std::string ReadFile(const std::string& path) {
  std::ifstream in(path.c_str(), std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

void ShowFile(const std::string& path) {
  std::cout << "--- " << path << "\n" << ReadFile(path) << "---\n";
}

// A new, empty directory under $TMPDIR or /tmp; "" if none can be made.
std::string MakeTemporaryDirectory() {
  const char* tmp = std::getenv("TMPDIR");
  const std::string pattern =
      std::string(tmp != nullptr && *tmp != '\0' ? tmp : "/tmp") +
      "/libproperties-tour-XXXXXX";
  std::vector<char> name(pattern.begin(), pattern.end());
  name.push_back('\0');
  if (mkdtemp(name.data()) == nullptr) return "";
  return name.data();
}

}  // namespace

int main() {
  const std::string dir = MakeTemporaryDirectory();
  if (dir.empty()) {
    std::perror("Tour: mkdtemp");
    return 1;
  }
  std::cout << "working in " << dir << "\n";
  const std::string serverFile = dir + "/server.properties";
  const std::string uiFile = dir + "/ui.ini";
  const std::string siteFile = dir + "/site.properties";
  PrintingListener myListener;

  std::cout << "\n== a flat domain bound to " << serverFile << "\n";
  // 1. Get the manager of a domain. The library owns it; it lives until exit.
  JavaPropertyManager* server =
      Properties::GetInstance()->GetJavaPropertyManager("server");

  // 2. Bind it to a file: stored values are loaded from now on, and every
  //    change rewrites the file ("server settings" becomes its "#" line).
  server->RegisterPersistence(serverFile, "server settings");

  // 3. Register the properties the program uses: type, key, default. If the
  //    file holds the key, the stored value replaces the default at once.
  server->RegisterProperty("PROPERTY_TYPE_INTEGER", "port", "8080");
  server->RegisterProperty("PROPERTY_TYPE_LIST", "level", "debug|info|error");

  // 4. Listen to changes (the listener is not owned; keep it alive).
  server->AddChangeListener(&myListener);  // PropertyChanged(Property*)

  // 5. Set and get values as text; a rejected text throws and changes nothing.
  try {
    server->SetValue("port", "9090");  // rewrites the file
    server->SetValue("level", "2");    // a list takes a position, too
    server->SetValue("port", "eighty");
  } catch (Property::WrongValue& e) {
    std::cout << "  rejected: " << e.m_message << "\n";
  }
  std::string port = server->GetValue("port");  // "9090"

  // 6. File trouble (a missing directory, a read-only file) never throws:
  //    ask for it. Each binding reports its last failed read, write or lock.
  for (const PropertySafety::FileTrouble& trouble :
       PropertySafety::FileTroubles(server)) {
    if (trouble.operation != PropertySafety::FileTrouble::kNone) {
      std::cout << trouble.path << ": " << trouble.errorText << "\n";
    }
  }

  std::cout << "port = " << port << ", level = " << server->GetValue("level")
            << "\n";
  Expect(port == "9090", "port should be 9090");
  Expect(server->GetValue("level") == "error", "level should be error");
  ShowFile(serverFile);
  Expect(ReadFile(serverFile) == "#server settings\nlevel=error\nport=9090\n",
         "unexpected text in " + serverFile);

  std::cout << "\n== a sectioned domain bound to " << uiFile << "\n";
  // The sectioned flavour is the same with a section before the key:
  IniPropertyManager* ui =
      Properties::GetInstance()->GetIniPropertyManager("ui");
  ui->AddChangeListener(&myListener);
  ui->RegisterPersistence(uiFile, "user interface");
  ui->RegisterProperty("PROPERTY_TYPE_INTEGER", "window", "width", "800");
  ui->SetValue("window", "width", "1024");

  std::cout << "window/width = " << ui->GetValue("window", "width") << "\n";
  Expect(ui->GetValue("window", "width") == "1024", "width should be 1024");
  ShowFile(uiFile);
  Expect(ReadFile(uiFile) == ";user interface\n[window]\nwidth=1024\n\n",
         "unexpected text in " + uiFile);

  std::cout
      << "\n== file trouble: a binding in a directory that is not there\n";
  JavaPropertyManager* lost =
      Properties::GetInstance()->GetJavaPropertyManager("lost");
  const std::string lostFile = dir + "/missing/lost.properties";
  lost->RegisterPersistence(lostFile, "");
  lost->RegisterProperty("PROPERTY_TYPE_INTEGER", "port", "8080");
  lost->SetValue("port", "9090");  // works in memory; the write fails
  const PropertySafety::FileTrouble trouble =
      PropertySafety::FileTroubles(lost).at(0);
  std::cout << "port = " << lost->GetValue("port") << "; writing "
            << trouble.path << " failed: " << trouble.errorText << "\n";
  Expect(trouble.operation == PropertySafety::FileTrouble::kWrite &&
             trouble.errorText == "No such file or directory",
         "the failed write should be reported");
  lost->UnRegisterPersistence(lostFile);

  std::cout << "\n== a read-only binding of " << siteFile << "\n";
  std::ofstream(siteFile.c_str()) << "# written by hand\ntimeout = 2.5\n";
  JavaPropertyManager* client =
      Properties::GetInstance()->GetJavaPropertyManager("client");
  client->RegisterNonPersistence(siteFile);  // loads, never writes
  client->RegisterProperty("PROPERTY_TYPE_DOUBLE", "timeout", "10");
  std::cout << "timeout = " << client->GetValue("timeout")
            << " (from the file)\n";
  client->SetValue("timeout", "0.5");
  std::cout << "timeout = " << client->GetValue("timeout")
            << " (in memory; the file is unchanged)\n";
  Expect(client->GetValue("timeout") == "0.5", "timeout should be 0.5");
  Expect(ReadFile(siteFile) == "# written by hand\ntimeout = 2.5\n",
         "a read-only binding wrote " + siteFile);

  // Unbind before the files go; the managers themselves live until exit.
  server->RemoveChangeListener(&myListener);
  ui->RemoveChangeListener(&myListener);
  server->UnRegisterPersistence(serverFile);
  ui->UnRegisterPersistence(uiFile);
  client->UnRegisterPersistence(siteFile);
  for (const std::string& path : {serverFile, uiFile, siteFile}) {
    std::remove(path.c_str());
  }
  if (rmdir(dir.c_str()) != 0) {
    std::perror("Tour: rmdir");
    ++failures;
  }
  std::cout << "\nremoved " << dir << "\n";
  return failures == 0 ? 0 : 1;
}
