// FailingSyscalls.cpp - a preload library that makes one chosen call of the
// C library's file functions fail, to test what a program does then.
//
//   PROPERTIES_FAIL=write:3:ENOSPC LD_PRELOAD=libFailingSyscalls.so program
//
// makes the third write() fail with ENOSPC; "open:2-3:EACCES" makes the
// second and the third open fail. Four families of calls are
// counted, each with every entry point that reaches the operating system for
// it from the library or from the C++ streams it uses:
//   open:  open, open64, openat, openat64, fopen, fopen64, mkostemp,
//          mkostemp64
//   read:  read
//   write: write, pwrite, pwrite64
//   close: close, fclose (the descriptor or stream is closed all the same,
//          as the kernel does, and only the result reports the failure)
// A failing call does nothing else and returns -1 (null for fopen, EOF for
// fclose) with errno set. Errors are named ENOSPC, EIO, EACCES, ENOENT,
// EMFILE, EINTR or given as a number.
//
// Counting starts only when the program calls PropertiesFaultsStart() and
// stops at PropertiesFaultsStop(), so the calls of program start-up and exit
// do not count. A program finds these functions with dlsym(RTLD_DEFAULT, ...)
// and runs unchanged when the library is not preloaded. Not thread-safe: it
// is meant for a single-threaded test program.

#undef _FORTIFY_SOURCE

#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/types.h>
#include <unistd.h>

extern "C" {

// Starts counting calls, reading PROPERTIES_FAIL ("<family>:<n>:<error>").
void PropertiesFaultsStart(void);
// Stops counting.
void PropertiesFaultsStop(void);
// The calls of family ("open", "read", "write" or "close") counted so far;
// -1 for an unknown family.
long PropertiesFaultsCalls(const char* family);
// 1 if the chosen call has been made to fail, else 0.
int PropertiesFaultsInjected(void);

}  // extern "C"

namespace {

enum Family { kOpen, kRead, kWrite, kClose, kFamilies };

const char* const kFamilyNames[kFamilies] = {"open", "read", "write", "close"};

struct ErrorName {
  const char* name;
  int value;
};

const ErrorName kErrorNames[] = {{"ENOSPC", ENOSPC}, {"EIO", EIO},
                                 {"EACCES", EACCES}, {"ENOENT", ENOENT},
                                 {"EMFILE", EMFILE}, {"EINTR", EINTR}};

bool g_counting = false;
long g_calls[kFamilies];
int g_failFamily = -1;
long g_failAt = 0;
long g_failUntil = 0;
int g_failError = EIO;
bool g_injected = false;

int FamilyOf(const char* name, size_t length) {
  for (int family = 0; family < kFamilies; ++family) {
    if (strlen(kFamilyNames[family]) == length &&
        strncmp(kFamilyNames[family], name, length) == 0) {
      return family;
    }
  }
  return -1;
}

int ErrorOf(const char* name) {
  for (const ErrorName& error : kErrorNames) {
    if (strcmp(error.name, name) == 0) return error.value;
  }
  const int value = atoi(name);
  return value > 0 ? value : EIO;
}

// Reads "<family>:<n>[-<m>][:<error>]"; anything else configures no
// failure.
void ReadConfiguration() {
  g_failFamily = -1;
  const char* text = getenv("PROPERTIES_FAIL");
  if (text == nullptr) return;
  const char* colon = strchr(text, ':');
  if (colon == nullptr) return;
  g_failFamily = FamilyOf(text, static_cast<size_t>(colon - text));
  char* end = nullptr;
  g_failAt = strtol(colon + 1, &end, 10);
  g_failUntil = *end == '-' ? strtol(end + 1, &end, 10) : g_failAt;
  g_failError = *end == ':' ? ErrorOf(end + 1) : EIO;
}

// Counts a call of family; true (with errno set) if it is the one to fail.
bool Fails(Family family) {
  if (!g_counting) return false;
  const long call = ++g_calls[family];
  if (family != g_failFamily || call < g_failAt || call > g_failUntil) {
    return false;
  }
  g_injected = true;
  errno = g_failError;
  return true;
}

// The next definition of name after this library: the C library's, or a
// sanitizer's interceptor in front of it.
template <typename Function>
Function Next(const char* name) {
  return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

bool NeedsMode(int flags) {
  return (flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE;
}

}  // namespace

extern "C" {

void PropertiesFaultsStart(void) {
  ReadConfiguration();
  for (long& calls : g_calls) calls = 0;
  g_injected = false;
  g_counting = true;
}

void PropertiesFaultsStop(void) { g_counting = false; }

long PropertiesFaultsCalls(const char* family) {
  const int index = FamilyOf(family, strlen(family));
  return index < 0 ? -1 : g_calls[index];
}

int PropertiesFaultsInjected(void) { return g_injected ? 1 : 0; }

// The mode argument is read only when the flags say that one was passed.
#define PROPERTIES_FAULTS_MODE(flags) \
  mode_t mode = 0;                    \
  if (NeedsMode(flags)) {             \
    va_list arguments;                \
    va_start(arguments, flags);       \
    mode = va_arg(arguments, mode_t); \
    va_end(arguments);                \
  }

int open(const char* path, int flags, ...) {
  static const auto next = Next<int (*)(const char*, int, ...)>("open");
  PROPERTIES_FAULTS_MODE(flags)
  if (Fails(kOpen)) return -1;
  return next(path, flags, mode);
}

int open64(const char* path, int flags, ...) {
  static const auto next = Next<int (*)(const char*, int, ...)>("open64");
  PROPERTIES_FAULTS_MODE(flags)
  if (Fails(kOpen)) return -1;
  return next(path, flags, mode);
}

int openat(int directory, const char* path, int flags, ...) {
  static const auto next = Next<int (*)(int, const char*, int, ...)>("openat");
  PROPERTIES_FAULTS_MODE(flags)
  if (Fails(kOpen)) return -1;
  return next(directory, path, flags, mode);
}

int openat64(int directory, const char* path, int flags, ...) {
  static const auto next =
      Next<int (*)(int, const char*, int, ...)>("openat64");
  PROPERTIES_FAULTS_MODE(flags)
  if (Fails(kOpen)) return -1;
  return next(directory, path, flags, mode);
}

FILE* fopen(const char* path, const char* mode) {
  static const auto next = Next<FILE* (*)(const char*, const char*)>("fopen");
  if (Fails(kOpen)) return nullptr;
  return next(path, mode);
}

FILE* fopen64(const char* path, const char* mode) {
  static const auto next = Next<FILE* (*)(const char*, const char*)>("fopen64");
  if (Fails(kOpen)) return nullptr;
  return next(path, mode);
}

int mkostemp(char* pattern, int flags) {
  static const auto next = Next<int (*)(char*, int)>("mkostemp");
  if (Fails(kOpen)) return -1;
  return next(pattern, flags);
}

int mkostemp64(char* pattern, int flags) {
  static const auto next = Next<int (*)(char*, int)>("mkostemp64");
  if (Fails(kOpen)) return -1;
  return next(pattern, flags);
}

ssize_t read(int fd, void* buffer, size_t count) {
  static const auto next = Next<ssize_t (*)(int, void*, size_t)>("read");
  if (Fails(kRead)) return -1;
  return next(fd, buffer, count);
}

ssize_t write(int fd, const void* buffer, size_t count) {
  static const auto next = Next<ssize_t (*)(int, const void*, size_t)>("write");
  if (Fails(kWrite)) return -1;
  return next(fd, buffer, count);
}

ssize_t pwrite(int fd, const void* buffer, size_t count, off_t offset) {
  static const auto next =
      Next<ssize_t (*)(int, const void*, size_t, off_t)>("pwrite");
  if (Fails(kWrite)) return -1;
  return next(fd, buffer, count, offset);
}

ssize_t pwrite64(int fd, const void* buffer, size_t count, off64_t offset) {
  static const auto next =
      Next<ssize_t (*)(int, const void*, size_t, off64_t)>("pwrite64");
  if (Fails(kWrite)) return -1;
  return next(fd, buffer, count, offset);
}

int close(int fd) {
  static const auto next = Next<int (*)(int)>("close");
  const bool fails = Fails(kClose);
  const int result = next(fd);
  if (!fails) return result;
  errno = g_failError;
  return -1;
}

int fclose(FILE* stream) {
  static const auto next = Next<int (*)(FILE*)>("fclose");
  const bool fails = Fails(kClose);
  const int result = next(stream);
  if (!fails) return result;
  errno = g_failError;
  return EOF;
}

}  // extern "C"
