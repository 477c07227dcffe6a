// Baselines.h - the yardsticks the library is measured against: the floor
// (one read() or one write() of the whole file, no parsing worth the name)
// and the straightforward code a program would have without a property
// library (std::ifstream with getline into a 512-byte buffer into a
// std::map; std::ofstream with std::endl after every line).
//
// The straightforward reader understands exactly the generated inputs:
// lines whose first non-blank byte is '#' or ';' are comments, "[name]"
// starts a section (INI), everything else is key=value split at the first
// '=' with blanks trimmed. The writers produce the text the library writes.

#ifndef BENCH_BASELINES_H_
#define BENCH_BASELINES_H_

#include <map>
#include <string>

#include "BenchmarkInputs.h"

namespace bench {

typedef std::map<std::string, std::string> FlatMap;
typedef std::map<std::string, FlatMap> SectionMap;

// Fills entries (sections) with what input holds.
void FillMap(const InputFile& input, FlatMap* entries);
void FillMap(const InputFile& input, SectionMap* sections);

// Opens path, reads it with one read() into buffer (resized to the file
// size), closes it and counts its lines with memchr. Returns the number of
// lines, or -1 if the file cannot be read.
long FloorRead(const std::string& path, std::string* buffer);
// Opens path with O_TRUNC, writes text with one write() and closes it.
// Returns false on any failure.
bool FloorWrite(const std::string& path, const std::string& text);

// Reads the flat file at path into entries (merging). Returns false if it
// cannot be opened.
bool PlainReadFlat(const std::string& path, FlatMap* entries);
// Reads the INI file at path into sections (merging). Returns false if it
// cannot be opened.
bool PlainReadIni(const std::string& path, SectionMap* sections);

// Writes "#<header>" and every entry, each line ended by std::endl.
// Returns false if path cannot be opened or a write fails.
bool PlainWriteFlat(const std::string& path, const std::string& header,
                    const FlatMap& entries);
// Writes ";<header>", then every section as "[name]", its entries and an
// empty line, each line ended by std::endl.
bool PlainWriteIni(const std::string& path, const std::string& header,
                   const SectionMap& sections);

}  // namespace bench

#endif  // BENCH_BASELINES_H_
