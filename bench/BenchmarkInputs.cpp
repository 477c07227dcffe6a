// BenchmarkInputs.cpp - see BenchmarkInputs.h.

#include "BenchmarkInputs.h"

#include <dirent.h>
#include <signal.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <map>
#include <set>

namespace bench {

const int kSizes[4] = {50, 1000, 10000, 100000};
const char kHeader[] = "bench settings";

namespace {

// splitmix64: small, fast and the same on every platform, so the files are
// the same on every machine.
class Random {
 public:
  explicit Random(uint64_t seed) : m_state(seed) {}

  uint64_t Next() {
    uint64_t z = (m_state += 0x9e3779b97f4a7c15ULL);
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9ULL;
    z = (z ^ (z >> 27)) * 0x94d049bb133111ebULL;
    return z ^ (z >> 31);
  }
  // A number in [low, high].
  int Between(int low, int high) {
    return low +
           static_cast<int>(Next() % static_cast<uint64_t>(high - low + 1));
  }
  template <size_t N>
  const char* Pick(const char* const (&words)[N]) {
    return words[Next() % N];
  }

 private:
  uint64_t m_state;
};

const char* const kKeyWords[] = {
    "server",  "client",   "http",    "cache",   "db",       "pool",
    "worker",  "queue",    "log",     "metrics", "auth",     "session",
    "timeout", "retry",    "buffer",  "thread",  "socket",   "proxy",
    "tls",     "storage",  "index",   "backup",  "mail",     "smtp",
    "ui",      "window",   "panel",   "font",    "theme",    "locale",
    "upload",  "download", "limit",   "size",    "count",    "interval",
    "path",    "dir",      "file",    "level",   "enabled",  "port",
    "host",    "address",  "user",    "format",  "rotation", "ratio",
    "memory",  "disk",     "network", "job",     "task",     "batch",
    "replica", "shard",    "node",    "cluster", "region",   "zone",
    "sync",    "lock",     "journal", "stream",  "render",   "audio",
};
const char* const kKeySuffixes[] = {"ms",    "kb",   "max",  "min", "count",
                                    "limit", "size", "name", "mode"};
const char* const kValueWords[] = {
    "info",    "debug",   "warning",  "error",   "round",    "robin",
    "least",   "recent",  "primary",  "standby", "balanced", "strict",
    "lenient", "daily",   "hourly",   "never",   "always",   "auto",
    "manual",  "enabled", "disabled", "utf8",    "gzip",     "zstd",
    "default", "compact", "verbose",  "quiet",   "fast",     "safe",
    "Monday",  "Europe",  "Berlin",   "English", "dark",     "light",
};
const char* const kPathWords[] = {
    "var",  "lib",  "etc",    "opt",     "usr",   "share",   "app",
    "data", "logs", "cache",  "spool",   "run",   "home",    "service",
    "conf", "tmp",  "backup", "archive", "certs", "plugins",
};
const char* const kExtensions[] = {".conf", ".log",  ".db", ".pem",
                                   ".sock", ".json", ""};
const char* const kHostWords[] = {"db", "cache", "mq", "api", "auth", "mail"};
const char* const kCommentWords[] = {
    "settings", "below", "are",  "read",   "at",       "start",  "keep",
    "in",       "sync",  "with", "the",    "deployed", "values", "tuned",
    "for",      "the",   "test", "system", "do",       "not",    "change",
};

std::string MakeKey(Random& random) {
  for (;;) {
    const int segments = random.Between(2, 4);
    std::string key;
    for (int i = 0; i < segments; ++i) {
      if (i > 0) key += '.';
      key += random.Pick(kKeyWords);
      if (random.Between(0, 9) == 0) {
        key += std::to_string(random.Between(1, 16));
      } else if (i == segments - 1 && random.Between(0, 3) == 0) {
        key += '_';
        key += random.Pick(kKeySuffixes);
      }
    }
    if (key.size() >= 8 && key.size() <= 30) return key;
  }
}

std::string MakeSection(Random& random) {
  for (;;) {
    std::string name = random.Pick(kKeyWords);
    if (random.Between(0, 1) == 0) {
      name += '.';
      name += random.Pick(kKeyWords);
    }
    if (random.Between(0, 2) == 0)
      name += std::to_string(random.Between(1, 99));
    if (name.size() >= 4 && name.size() <= 24) return name;
  }
}

std::string MakeValue(Random& random, Entry::Kind* kind) {
  for (;;) {
    std::string value;
    *kind = Entry::kText;
    const int shape = random.Between(0, 9);
    if (shape <= 2) {
      *kind = Entry::kInteger;
      if (random.Between(0, 9) == 0) value = "-";
      value += std::to_string(random.Between(10000, 2000000000));
    } else if (shape == 3) {
      *kind = Entry::kDecimal;
      char text[32];
      std::snprintf(text, sizeof text, "%d.%03d", random.Between(0, 9999),
                    random.Between(0, 999));
      value = text;
    } else if (shape <= 6) {
      const int words = random.Between(1, 6);
      const char separator = " -_"[random.Between(0, 2)];
      for (int i = 0; i < words; ++i) {
        if (i > 0) value += separator;
        value += random.Pick(kValueWords);
      }
    } else if (shape <= 8) {
      const int segments = random.Between(2, 6);
      for (int i = 0; i < segments; ++i) {
        value += '/';
        value += random.Pick(kPathWords);
      }
      if (random.Between(0, 1) == 0) {
        value += "/file-" + std::to_string(random.Between(1, 999));
        value += random.Pick(kExtensions);
      }
    } else {
      value = random.Pick(kHostWords);
      value += std::to_string(random.Between(1, 40));
      value += ".cluster.example.net";
    }
    if (value.size() >= 5 && value.size() <= 60) return value;
  }
}

std::string MakeComment(Random& random) {
  std::string comment = "#";
  const int words = random.Between(2, 8);
  for (int i = 0; i < words; ++i) {
    comment += ' ';
    comment += random.Pick(kCommentWords);
  }
  return comment;
}

// Appends lines, turning every 10th line into a comment or a blank line.
class Writer {
 public:
  Writer(std::string* text, Random* random) : m_text(text), m_random(random) {}

  void Line(const std::string& line) {
    if (++m_lines % 10 == 0) {
      m_text->append(m_random->Between(0, 1) == 0 ? MakeComment(*m_random)
                                                  : std::string());
      m_text->push_back('\n');
      ++m_lines;
    }
    m_text->append(line);
    m_text->push_back('\n');
  }

 private:
  std::string* m_text;
  Random* m_random;
  int m_lines = 0;
};

// n distinct keys in byte order.
std::vector<std::string> MakeKeys(Random& random, int n) {
  std::set<std::string> keys;
  while (static_cast<int>(keys.size()) < n) keys.insert(MakeKey(random));
  return std::vector<std::string>(keys.begin(), keys.end());
}

void GenerateFlat(int n, InputFile* input) {
  Random random(0x5eed0000ULL + static_cast<uint64_t>(n));
  for (const std::string& key : MakeKeys(random, n)) {
    Entry entry;
    entry.key = key;
    entry.value = MakeValue(random, &entry.kind);
    input->entries.push_back(entry);
  }
  Writer writer(&input->text, &random);
  writer.Line(std::string("#") + kHeader);
  input->canonicalText = std::string("#") + kHeader + "\n";
  for (const Entry& entry : input->entries) {
    writer.Line(entry.key + "=" + entry.value);
    input->canonicalText += entry.key + "=" + entry.value + "\n";
  }
  input->sectionCount = 0;
}

// About 20 keys per section. The header line is a '#' comment, not the ';'
// the library writes, so that every INI reader compared here (GLib's takes
// only '#') accepts the files.
void GenerateIni(int n, InputFile* input) {
  Random random(0x1a1a0000ULL + static_cast<uint64_t>(n));
  std::vector<int> counts;
  for (int left = n; left > 0;) {
    const int count = std::min(left, random.Between(15, 25));
    counts.push_back(count);
    left -= count;
  }
  std::set<std::string> sections;
  while (sections.size() < counts.size()) sections.insert(MakeSection(random));
  Writer writer(&input->text, &random);
  writer.Line(std::string("# ") + kHeader);
  input->canonicalText = std::string(";") + kHeader + "\n";
  size_t index = 0;
  for (const std::string& section : sections) {
    writer.Line("[" + section + "]");
    input->canonicalText += "[" + section + "]\n";
    for (const std::string& key : MakeKeys(random, counts[index++])) {
      Entry entry;
      entry.section = section;
      entry.key = key;
      entry.value = MakeValue(random, &entry.kind);
      input->entries.push_back(entry);
      writer.Line(key + "=" + entry.value);
      input->canonicalText += key + "=" + entry.value + "\n";
    }
    writer.Line("");
    input->canonicalText += "\n";
  }
  input->sectionCount = sections.size();
}

// Shuffles items in place (Fisher-Yates), the same way on every run.
template <typename T>
void Shuffle(std::vector<T>* items, Random& random) {
  for (size_t i = items->size(); i > 1; --i) {
    std::swap((*items)[i - 1], (*items)[random.Next() % i]);
  }
}

// Writes entry lines the way people type them. Flat and INI files differ
// only in the comment character: '#' would be part of an INI value.
class HandWriter {
 public:
  HandWriter(std::string* text, Random* random, char comment)
      : m_text(text), m_random(random), m_comment(comment) {}

  void Comment() {
    std::string line = MakeComment(*m_random);
    line[0] = m_comment;
    if (m_random->Between(0, 4) == 0) m_text->append("  ");
    m_text->append(line);
    m_text->push_back('\n');
  }

  // A block of comments, as at the top of a file or before a section.
  void Comments(int low, int high) {
    for (int i = m_random->Between(low, high); i > 0; --i) Comment();
  }

  void Blank() {
    // Some editors leave blanks on an empty line.
    if (m_random->Between(0, 5) == 0) m_text->append(" \t");
    m_text->push_back('\n');
  }

  // key=value with blanks around '=' and at either end of some lines, and
  // now and then a comment or a blank line before it, as between groups.
  void Line(const std::string& key, const std::string& value) {
    const int gap = m_random->Between(0, 11);
    if (gap == 0) {
      Blank();
    } else if (gap == 1) {
      Blank();
      Comment();
    } else if (gap == 2) {
      Comment();
    }
    static const char* const kIndents[] = {"", "", "", "", "", "", "  ", "\t"};
    static const char* const kBefore[] = {"", "", " ", " ", " ", "\t", "  "};
    static const char* const kAfter[] = {"", "", " ", " ", " ", "  ", "\t"};
    static const char* const kEnds[] = {"", "", "", "", "", "", " ", "\t"};
    m_text->append(m_random->Pick(kIndents));
    m_text->append(key);
    m_text->append(m_random->Pick(kBefore));
    m_text->push_back('=');
    m_text->append(m_random->Pick(kAfter));
    m_text->append(value);
    m_text->append(m_random->Pick(kEnds));
    m_text->push_back('\n');
  }

 private:
  std::string* m_text;
  Random* m_random;
  char m_comment;
};

void GenerateHandFlat(const InputFile& sorted, InputFile* input) {
  Random random(0x4a4d0000ULL + sorted.entries.size());
  input->entries = sorted.entries;
  Shuffle(&input->entries, random);
  HandWriter writer(&input->text, &random, '#');
  writer.Comments(2, 6);
  writer.Blank();
  for (const Entry& entry : input->entries) {
    writer.Line(entry.key, entry.value);
  }
  input->canonicalText = sorted.canonicalText;
  input->sectionCount = 0;
}

// Sections in no order, each once (a second occurrence of a section would
// replace the first), with its keys in no order.
void GenerateHandIni(const InputFile& sorted, InputFile* input) {
  Random random(0x4a4e0000ULL + sorted.entries.size());
  std::vector<std::vector<Entry>> sections;
  for (const Entry& entry : sorted.entries) {
    if (sections.empty() || sections.back().front().section != entry.section) {
      sections.emplace_back();
    }
    sections.back().push_back(entry);
  }
  Shuffle(&sections, random);
  HandWriter writer(&input->text, &random, ';');
  writer.Comments(2, 6);
  for (std::vector<Entry>& section : sections) {
    Shuffle(&section, random);
    writer.Blank();
    writer.Comments(0, 2);
    input->text += "[" + section.front().section + "]\n";
    for (const Entry& entry : section) {
      writer.Line(entry.key, entry.value);
      input->entries.push_back(entry);
    }
  }
  input->canonicalText = sorted.canonicalText;
  input->sectionCount = sorted.sectionCount;
}

std::string g_directory;
std::map<int, InputFile> g_flat;
std::map<int, InputFile> g_ini;
std::map<int, InputFile> g_handFlat;
std::map<int, InputFile> g_handIni;
// Every path handed out, for the signal handler: it may only unlink.
std::vector<std::string> g_paths;

void RemoveOnSignal(int signal) {
  for (const std::string& path : g_paths) ::unlink(path.c_str());
  if (!g_directory.empty()) ::rmdir(g_directory.c_str());
  ::signal(signal, SIG_DFL);
  ::raise(signal);
}

bool WriteFile(const std::string& path, const std::string& text) {
  FILE* file = std::fopen(path.c_str(), "wb");
  if (file == nullptr) return false;
  const bool written =
      std::fwrite(text.data(), 1, text.size(), file) == text.size();
  return std::fclose(file) == 0 && written;
}

std::string MakeDirectory() {
  for (const char* base : {"/dev/shm", "/tmp"}) {
    if (::access(base, W_OK) != 0) continue;
    std::string pattern = std::string(base) + "/properties-bench-XXXXXX";
    if (::mkdtemp(&pattern[0]) != nullptr) return pattern;
  }
  return std::string();
}

// Sets what input is and where it lives (name in the scratch directory).
InputFile& Named(InputFile* input, Format format, bool handWritten,
                 const std::string& name) {
  input->format = format;
  input->handWritten = handWritten;
  input->path = ScratchPath(name);
  return *input;
}

}  // namespace

bool CreateInputs() {
  g_directory = MakeDirectory();
  if (g_directory.empty()) {
    std::fprintf(stderr,
                 "cannot make a scratch directory in /dev/shm or /tmp\n");
    return false;
  }
  std::atexit(RemoveInputs);
  for (int signal : {SIGINT, SIGTERM, SIGHUP}) ::signal(signal, RemoveOnSignal);
  for (int n : kSizes) {
    const std::string size = std::to_string(n);
    InputFile& flat =
        Named(&g_flat[n], Format::kFlat, false, "flat-" + size + ".properties");
    GenerateFlat(n, &flat);
    InputFile& ini =
        Named(&g_ini[n], Format::kIni, false, "sections-" + size + ".ini");
    GenerateIni(n, &ini);
    InputFile& handFlat = Named(&g_handFlat[n], Format::kFlat, true,
                                "hand-" + size + ".properties");
    GenerateHandFlat(flat, &handFlat);
    InputFile& handIni = Named(&g_handIni[n], Format::kIni, true,
                               "hand-sections-" + size + ".ini");
    GenerateHandIni(ini, &handIni);
    if (!WriteFile(flat.path, flat.text) || !WriteFile(ini.path, ini.text) ||
        !WriteFile(handFlat.path, handFlat.text) ||
        !WriteFile(handIni.path, handIni.text)) {
      std::fprintf(stderr, "cannot write the inputs into %s\n",
                   g_directory.c_str());
      return false;
    }
  }
  return true;
}

void RemoveInputs() {
  if (g_directory.empty()) return;
  if (DIR* directory = ::opendir(g_directory.c_str())) {
    while (const dirent* entry = ::readdir(directory)) {
      const std::string name = entry->d_name;
      if (name != "." && name != "..") {
        ::unlink((g_directory + "/" + name).c_str());
      }
    }
    ::closedir(directory);
  }
  ::rmdir(g_directory.c_str());
  g_directory.clear();
}

const InputFile& Input(Format format, int entries) {
  return (format == Format::kFlat ? g_flat : g_ini).at(entries);
}

const InputFile& HandInput(Format format, int entries) {
  return (format == Format::kFlat ? g_handFlat : g_handIni).at(entries);
}

std::string ScratchPath(const std::string& name) {
  const std::string path = g_directory + "/" + name;
  g_paths.push_back(path);
  return path;
}

bool CopyFile(const std::string& from, const std::string& to) {
  FILE* in = std::fopen(from.c_str(), "rb");
  if (in == nullptr) return false;
  std::fclose(in);
  return WriteFile(to, ReadFile(from));
}

std::string ReadFile(const std::string& path) {
  std::string text;
  FILE* in = std::fopen(path.c_str(), "rb");
  if (in == nullptr) return text;
  char buffer[65536];
  size_t got;
  while ((got = std::fread(buffer, 1, sizeof buffer, in)) > 0) {
    text.append(buffer, got);
  }
  std::fclose(in);
  return text;
}

void AllSizes(benchmark::internal::Benchmark* benchmark) {
  for (int n : kSizes) benchmark->Arg(n);
  benchmark->UseRealTime()->Unit(benchmark::kMicrosecond);
}

void SetCounters(benchmark::State& state, size_t bytes, size_t entries) {
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes));
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * entries));
}

}  // namespace bench
