// FileCheck.h - finds the lines of a property file that the library reads
// differently from what they seem to say, or that its rewrite would change,
// without the library's reader
// (which never returns on a line of 512 or more characters unless long lines
// are on).
//
//   std::vector<FileFinding> findings =
//       CheckFileText(text, FileFormat::kIni);
//   for (const FileFinding& f : findings)
//     std::cout << path << ":" << f.line << ": " << f.message << "\n";

#ifndef TOOLS_PROPCTL_FILECHECK_H_
#define TOOLS_PROPCTL_FILECHECK_H_

#include <cstddef>
#include <string>
#include <vector>

// The two file formats of the library: flat key=value files (JavaProperties)
// and sectioned INI files (IniProperties).
enum class FileFormat { kFlat, kIni };

// One warning about one line of a file.
struct FileFinding {
  int line;             // Counted from 1.
  std::string message;  // Without the file name and line number.
};

// The warnings for text, the whole content of a file of format, in line
// order (several for one line in a fixed order): lines the library reads
// otherwise than they appear to be meant, and what the library's rewrite of
// the file would change. A warning whose text repeats is given once, at its
// first line, with " (also lines ...)" naming the others. Empty if there is
// nothing to say.
std::vector<FileFinding> CheckFileText(const std::string& text,
                                       FileFormat format);

// The number (from 1) of the first line of text that holds 512 or more
// characters, on which the library's reader never returns unless long lines
// are on; 0 if there is none. Sets length to that line's length (without its
// line feed).
int FindUnreadableLine(const std::string& text, size_t& length);

// True if the first line of text that is neither blank nor a comment (one
// starting with '#' or ';', the comment characters of either format) is a
// section header: '[', a name, ']', and after the last ']' nothing but
// blanks or a comment. Such a text is taken for an INI file when its name
// does not tell the format.
bool StartsWithSectionHeader(const std::string& text);

#endif  // TOOLS_PROPCTL_FILECHECK_H_
