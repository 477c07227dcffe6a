// GermanLocale.h - puts the process into a German locale, whose decimal
// separator is a comma, for tests of locale independence. Where the system
// has no German locale installed, one is built with localedef into a fresh
// temporary directory and found through LOCPATH.

#ifndef TESTS_GERMANLOCALE_H_
#define TESTS_GERMANLOCALE_H_

#include <sys/wait.h>

#include <cerrno>
#include <clocale>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <system_error>

namespace test_support {

// Switches one locale category to de_DE.UTF-8 and undoes it again. Only one
// object at a time may be switched: the locale is process-wide.
class GermanLocale {
 public:
  GermanLocale() = default;
  ~GermanLocale() { Restore(); }

  GermanLocale(const GermanLocale&) = delete;
  GermanLocale& operator=(const GermanLocale&) = delete;

  // Sets category (LC_ALL or LC_NUMERIC) to de_DE.UTF-8 and checks that the
  // decimal point has become a comma. Returns the empty text on success,
  // otherwise what went wrong.
  std::string Switch(int category) {
    if (TrySet(category)) return "";
    std::string error = BuildLocale();
    if (!error.empty()) return error;
    if (TrySet(category)) return "";
    return "cannot switch to de_DE.UTF-8, not even with the locale built by "
           "localedef in " +
           m_dir + " (" + m_buildResult + ")";
  }

  // Back to the "C" locale for every category, LOCPATH as it was before, and
  // the built locale removed. Harmless when nothing was switched.
  void Restore() {
    std::setlocale(LC_ALL, "C");
    if (m_locPathChanged) {
      if (m_hadLocPath) {
        setenv("LOCPATH", m_oldLocPath.c_str(), 1);
      } else {
        unsetenv("LOCPATH");
      }
      m_locPathChanged = false;
    }
    if (!m_dir.empty()) {
      std::error_code ignored;
      std::filesystem::remove_all(m_dir, ignored);
      m_dir.clear();
    }
  }

 private:
  static bool TrySet(int category) {
    if (std::setlocale(category, "de_DE.UTF-8") == nullptr) return false;
    return std::strcmp(std::localeconv()->decimal_point, ",") == 0;
  }

  // Builds de_DE.UTF-8 into a new temporary directory and points LOCPATH at
  // it. Returns the empty text, or what went wrong.
  std::string BuildLocale() {
    char dir[] = "/tmp/GermanLocaleXXXXXX";
    if (mkdtemp(dir) == nullptr) {
      return std::string("mkdtemp failed: ") + std::strerror(errno);
    }
    m_dir = dir;
    const std::string command = "localedef -i de_DE -f UTF-8 '" + m_dir +
                                "/de_DE.UTF-8' >/dev/null 2>&1";
    // localedef may report warnings through its exit status and still write
    // a usable locale, so the status is only kept for the error message.
    const int status = std::system(command.c_str());
    m_buildResult =
        status != -1 && WIFEXITED(status)
            ? "localedef exit status " + std::to_string(WEXITSTATUS(status))
            : "localedef did not run to its end";

    const char* oldLocPath = std::getenv("LOCPATH");
    m_hadLocPath = oldLocPath != nullptr;
    m_oldLocPath = m_hadLocPath ? oldLocPath : "";
    setenv("LOCPATH", m_dir.c_str(), 1);
    m_locPathChanged = true;
    return "";
  }

  std::string m_dir;  // The built locale's directory; empty if none.
  std::string m_buildResult;
  bool m_locPathChanged = false;
  bool m_hadLocPath = false;
  std::string m_oldLocPath;
};

}  // namespace test_support

#endif  // TESTS_GERMANLOCALE_H_
