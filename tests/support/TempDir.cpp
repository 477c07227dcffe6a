// TempDir.cpp - see TempDir.h.

#include "support/TempDir.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <vector>

namespace test_support {

TempDir::TempDir() : TempDir(std::string()) {}

TempDir::TempDir(const std::string& base) {
  const char* tmp = std::getenv("TMPDIR");
  std::string parent = base;
  if (parent.empty()) parent = tmp != nullptr && *tmp != '\0' ? tmp : "/tmp";
  std::string pattern = parent + "/libproperties-test-XXXXXX";
  std::vector<char> buffer(pattern.begin(), pattern.end());
  buffer.push_back('\0');
  if (mkdtemp(buffer.data()) == nullptr) {
    throw std::runtime_error("mkdtemp failed for " + pattern);
  }
  m_path = buffer.data();
}

TempDir::~TempDir() {
  std::error_code ignored;
  std::filesystem::remove_all(m_path, ignored);
}

std::string TempDir::File(const std::string& name) const {
  return m_path + "/" + name;
}

std::string MemoryBackedBase() {
  return ::access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "";
}

void WriteFile(const std::string& path, const std::string& text) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(text.data(), static_cast<std::streamsize>(text.size()));
}

std::string ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream content;
  content << in.rdbuf();
  return content.str();
}

bool FileExists(const std::string& path) {
  struct stat info;
  return ::stat(path.c_str(), &info) == 0;
}

}  // namespace test_support
