// SetValueChild.cpp - see SetValueChild.h.

#include "SetValueChild.h"

#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>

#include "BoundManagers.h"
#include "ChildAnswer.h"
#include "IntegerProperty.h"

namespace bench {

namespace {

const char kChildFlag[] = "--set-value-child=";
const char* const kValues[2] = {"8081", "8082"};
const int kLeastSets = 3;

double Now() {
  struct timespec now;
  ::clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<double>(now.tv_sec) + now.tv_nsec * 1e-9;
}

bool FileHolds(const std::string& path, const std::string& key,
               const char* value) {
  std::ifstream in(path);
  std::stringstream text;
  text << in.rdbuf();
  return text.str().find("\n" + key + "=" + value + "\n") != std::string::npos;
}

// Seconds per set, or -1 if the first set did not reach the file.
template <typename Manager>
double TimeSets(const std::string& path, const std::string& section,
                const std::string& key, double seconds) {
  Manager manager;
  manager.Bind(path);
  manager.Register(IntegerProperty::kTypeName, section, key);
  manager.Set(section, key, kValues[1]);
  if (!FileHolds(path, key, kValues[1])) return -1;
  const double start = Now();
  double elapsed = 0;
  long sets = 0;
  while (sets < kLeastSets || elapsed < seconds) {
    manager.Set(section, key, kValues[sets & 1]);
    ++sets;
    elapsed = Now() - start;
  }
  return elapsed / static_cast<double>(sets);
}

}  // namespace

double SetValueSecondsInChild(const std::string& program, bool ini,
                              const std::string& path,
                              const std::string& section,
                              const std::string& key, double seconds) {
  const std::string flag = std::string(kChildFlag) + (ini ? "Ini" : "Flat");
  std::string answer;
  if (!RunForAnswer(
          program, {program, flag, path, section, key, std::to_string(seconds)},
          &answer)) {
    return -1;
  }
  return std::strtod(answer.c_str(), nullptr);
}

bool RunSetValueChild(int argc, char** argv, int* exitCode) {
  const size_t flagLength = sizeof kChildFlag - 1;
  if (argc != 7 || std::strncmp(argv[1], kChildFlag, flagLength) != 0) {
    return false;
  }
  *exitCode = 1;
  const std::string format = argv[1] + flagLength;
  const double seconds = std::strtod(argv[5], nullptr);
  double each = -1;
  if (format == "Flat") {
    each = TimeSets<FlatManager>(argv[2], argv[3], argv[4], seconds);
  } else if (format == "Ini") {
    each = TimeSets<IniManager>(argv[2], argv[3], argv[4], seconds);
  }
  if (each < 0) return true;
  char answer[64];
  const int length = std::snprintf(answer, sizeof answer, "%.9g", each);
  if (::write(std::atoi(argv[6]), answer, static_cast<size_t>(length)) ==
      length) {
    *exitCode = 0;
  }
  return true;
}

}  // namespace bench
