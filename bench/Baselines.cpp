// Baselines.cpp - see Baselines.h.

#include "Baselines.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <fstream>

namespace bench {

namespace {

bool IsBlank(char c) {
  return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\v' ||
         c == '\f';
}

// Trims [begin, end) in place and returns the result as a string.
std::string Trimmed(const char* begin, const char* end) {
  while (begin < end && IsBlank(*begin)) ++begin;
  while (end > begin && IsBlank(end[-1])) --end;
  return std::string(begin, end);
}

// The line without its leading blanks; null for a comment or an empty line.
const char* Content(const char* line) {
  while (IsBlank(*line)) ++line;
  if (*line == '\0' || *line == '#' || *line == ';') return nullptr;
  return line;
}

// Splits line at its first '=' and inserts the trimmed key and value.
void Insert(const char* line, FlatMap* entries) {
  const char* equals = std::strchr(line, '=');
  if (equals == nullptr) return;
  (*entries)[Trimmed(line, equals)] =
      Trimmed(equals + 1, equals + 1 + std::strlen(equals + 1));
}

}  // namespace

void FillMap(const InputFile& input, FlatMap* entries) {
  for (const Entry& entry : input.entries) (*entries)[entry.key] = entry.value;
}

void FillMap(const InputFile& input, SectionMap* sections) {
  for (const Entry& entry : input.entries) {
    (*sections)[entry.section][entry.key] = entry.value;
  }
}

long FloorRead(const std::string& path, std::string* buffer) {
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return -1;
  struct stat info;
  if (::fstat(fd, &info) != 0) {
    ::close(fd);
    return -1;
  }
  buffer->resize(static_cast<size_t>(info.st_size));
  const ssize_t got = ::read(fd, &(*buffer)[0], buffer->size());
  ::close(fd);
  if (got != static_cast<ssize_t>(buffer->size())) return -1;
  long lines = 0;
  const char* next = buffer->data();
  const char* end = next + buffer->size();
  while (const void* newline = std::memchr(next, '\n', end - next)) {
    ++lines;
    next = static_cast<const char*>(newline) + 1;
  }
  return lines;
}

bool FloorWrite(const std::string& path, const std::string& text) {
  const int fd =
      ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
  if (fd < 0) return false;
  const ssize_t written = ::write(fd, text.data(), text.size());
  return ::close(fd) == 0 && written == static_cast<ssize_t>(text.size());
}

bool PlainReadFlat(const std::string& path, FlatMap* entries) {
  std::ifstream in(path);
  if (!in.is_open()) return false;
  char line[512];
  while (in.getline(line, sizeof line)) {
    if (const char* content = Content(line)) Insert(content, entries);
  }
  return true;
}

bool PlainReadIni(const std::string& path, SectionMap* sections) {
  std::ifstream in(path);
  if (!in.is_open()) return false;
  char line[512];
  FlatMap* section = nullptr;
  while (in.getline(line, sizeof line)) {
    const char* content = Content(line);
    if (content == nullptr) continue;
    if (*content == '[') {
      const char* close = std::strrchr(content, ']');
      if (close == nullptr) close = content + std::strlen(content);
      section = &(*sections)[std::string(content + 1, close)];
    } else if (section != nullptr) {
      Insert(content, section);
    }
  }
  return true;
}

bool PlainWriteFlat(const std::string& path, const std::string& header,
                    const FlatMap& entries) {
  std::ofstream out(path, std::ios::out | std::ios::trunc);
  if (!out.is_open()) return false;
  out << '#' << header << std::endl;
  for (const auto& entry : entries) {
    out << entry.first << '=' << entry.second << std::endl;
  }
  return out.good();
}

bool PlainWriteIni(const std::string& path, const std::string& header,
                   const SectionMap& sections) {
  std::ofstream out(path, std::ios::out | std::ios::trunc);
  if (!out.is_open()) return false;
  out << ';' << header << std::endl;
  for (const auto& section : sections) {
    out << '[' << section.first << ']' << std::endl;
    for (const auto& entry : section.second) {
      out << entry.first << '=' << entry.second << std::endl;
    }
    out << std::endl;
  }
  return out.good();
}

}  // namespace bench
