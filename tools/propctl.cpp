// propctl.cpp - reads, changes and checks property files from the shell,
// with the library's own readers, writers, value types and file bindings, so
// that a file is read and rewritten exactly as a program using the library
// would read and rewrite it.
//
//   propctl get server.properties port
//   propctl set --type integer server.properties port 9090
//   propctl set ui.ini window title Demo
//   propctl list ui.ini
//   propctl check ui.ini
//
// The commands, options and exit codes are described in propctl.1 and by
// "propctl help".

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iostream>
#include <map>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "BooleanProperty.h"
#include "DoubleProperty.h"
#include "IniProperties.h"
#include "IniPropertiesFormat.h"
#include "IniPropertyManager.h"
#include "IntegerProperty.h"
#include "IpAddrProperty.h"
#include "JavaProperties.h"
#include "JavaPropertiesFormat.h"
#include "JavaPropertyManager.h"
#include "ListProperty.h"
#include "Properties.h"
#include "Property.h"
#include "PropertyDirectoryWatch.h"
#include "PropertyFile.h"
#include "PropertyFileLock.h"
#include "PropertyLayout.h"
#include "PropertyLayoutKeeper.h"
#include "PropertySafety.h"
#include "PropertyStrictValues.h"
#include "PropertyTextBuffer.h"
#include "StringProperty.h"
#include "propctl/FileCheck.h"
#include "propctl/Json.h"

// The tool reports every problem itself; the library's log lines (in a build
// that logs to standard error) would only mix into its output. The tool is
// linked with the library's objects, which leave Log() to the program: this
// is the tool's.
void Log(int, char*, ...) {}

namespace {

enum ExitStatus { kSuccess = 0, kNegative = 1, kTrouble = 2 };

// The domains of the managers whose bindings set stores through.
const char kFlatManager[] = "propctl.flat";
const char kIniManager[] = "propctl.ini";

// The longest header text: "#" or ";" and it fill the reader's longest line.
const size_t kLongestHeader = 510;

// A mistake in the command line, reported with a hint to the help text.
struct UsageError {
  std::string command;  // "" if no command was recognised.
  std::string message;
};

// Anything else that stops a command, reported as "propctl: <message>".
struct Failure {
  std::string message;
};

// The command line, parsed.
struct Invocation {
  std::string command;
  bool help = false;
  std::optional<FileFormat> format;   // --flat or --ini, the last one given.
  std::optional<std::string> type;    // --type
  std::optional<std::string> header;  // --header
  bool once = false;                  // --once
  bool json = false;                  // --json
  bool dryRun = false;                // --dry-run
  bool normalize = false;             // --normalize
  bool version = false;               // --version
  std::vector<std::string> operands;
};

// The entry a command works on: FILE [SECTION] KEY [VALUE].
struct Target {
  std::string path;
  FileFormat format = FileFormat::kFlat;
  std::string section;  // INI files only.
  std::string key;
  std::string value;          // set only.
  bool wholeSection = false;  // del of an INI section.
};

// A --type argument: the library's type name and a text that the type
// accepts when the property is made (for a list: its choices).
struct ValueType {
  const char* typeName;
  std::string initial;
  std::string name;  // As --type names it ("list" for every list).
  std::string form;  // What the type accepts, for a refused value.
};

bool EndsWith(const std::string& text, const std::string& end) {
  return text.size() >= end.size() &&
         text.compare(text.size() - end.size(), end.size(), end) == 0;
}

std::string Quoted(const std::string& text) { return "'" + text + "'"; }

// The FILE operand that names standard input, for the commands that only
// read.
const char kStandardInput[] = "-";

// ---------------------------------------------------------------- help --

const char kToolHelp[] =
    "Usage: propctl [--flat | --ini] COMMAND [OPTIONS] FILE [SECTION] ...\n"
    "\n"
    "Reads, changes and checks property files exactly as libproperties\n"
    "reads and writes them.\n"
    "\n"
    "Commands:\n"
    "  get [--json] FILE [SECTION] KEY\n"
    "                                print the value of KEY\n"
    "  set [--type TYPE] [--header TEXT] [--normalize] [--dry-run]\n"
    "      FILE [SECTION] KEY VALUE\n"
    "                                check VALUE as TYPE and store it\n"
    "  del [--header TEXT] [--normalize] [--dry-run] FILE [SECTION] KEY\n"
    "  del [--header TEXT] [--normalize] [--dry-run] FILE SECTION\n"
    "                                remove KEY, or a whole INI SECTION\n"
    "                                (unset is the same command)\n"
    "  list [--json] FILE            print the entries as the library reads "
    "them\n"
    "  sections FILE                 print the section names of an INI file\n"
    "  check FILE                    report lines the library reads "
    "differently\n"
    "                                from what they seem to say\n"
    "  watch [--once] FILE [SECTION] [KEY...]\n"
    "                                print entries as they change\n"
    "  help [COMMAND]                show this help or a command's help\n"
    "\n"
    "Options:\n"
    "  --flat       FILE is a flat key=value file\n"
    "  --ini        FILE is a sectioned INI file (SECTION is then required)\n"
    "  --help, -h   show the help of the command given, or this help\n"
    "  --version    print \"propctl\" and its version\n"
    "The options of one command are in its help (propctl help COMMAND).\n"
    "FILE \"-\" is standard input, for get, list, sections and check (its\n"
    "format is then --flat, --ini or guessed from its content as below).\n"
    "Without --flat or --ini, a FILE whose name ends in \".ini\" is an INI\n"
    "file and one ending in \".properties\" a flat file; any other FILE is\n"
    "read as INI if its first line that is neither blank nor a comment is a\n"
    "[section] header (standard error then says so), and as a flat file\n"
    "otherwise. Options may stand anywhere before a \"--\" argument; every\n"
    "word after \"--\" is an operand.\n"
    "\n"
    "Environment:\n"
    "  LIBPROPERTIES_LONG_LINES=read   lines of 512 or more characters are\n"
    "                                  read whole, as the library then reads\n"
    "                                  them: get, list, sections, set, del\n"
    "                                  and watch take files that hold such\n"
    "                                  lines, and set may write one\n"
    "  LIBPROPERTIES_LONG_LINES=limit  lines of at most 511 characters; a\n"
    "                                  file with a longer one is refused\n"
    "                                  (the default, unless the library was\n"
    "                                  built to read long lines)\n"
    "\n"
    "Exit status: 0 success; 1 no such entry (get, del) or warnings (check);\n"
    "2 usage error, rejected value, or a file that cannot be read or "
    "written.\n";

const char kGetHelp[] =
    "Usage: propctl get [--flat | --ini] [--json] FILE [SECTION] KEY\n"
    "\n"
    "Prints the value of KEY (in an INI file: of KEY in SECTION) as the\n"
    "library reads it, followed by a line feed. FILE may be \"-\" for\n"
    "standard input.\n"
    "\n"
    "Options:\n"
    "  --json   print one line {\"key\":\"KEY\",\"value\":\"VALUE\"} instead\n"
    "           (INI: {\"section\":\"SECTION\",\"key\":...}); see propctl(1)\n"
    "           for how bytes are escaped\n"
    "\n"
    "Exit status: 0 printed; 1 no such entry (nothing is printed); 2 usage\n"
    "error, or FILE cannot be read (missing, not a regular file, or holding\n"
    "a line of 512 or more characters, on which the library never returns\n"
    "unless long lines are on: LIBPROPERTIES_LONG_LINES=read).\n";

const char kSetHelp[] =
    "Usage: propctl set [--flat | --ini] [--type TYPE] [--header TEXT]\n"
    "                   [--normalize] [--dry-run] FILE [SECTION] KEY VALUE\n"
    "\n"
    "Checks VALUE with the library's value type TYPE and stores it under KEY\n"
    "(in an INI file: in SECTION, which is created if needed) through a\n"
    "read-write binding of the library, which keeps the file's layout: only\n"
    "the line of KEY changes (a new KEY is one more line: after the last\n"
    "entry of SECTION, or with a new [SECTION] line at the end), and\n"
    "comments, blank lines, order, quotes and line ends stay. Where no such\n"
    "edit reads back as the library's own text of the file would, the file\n"
    "is written anew, and propctl says why. FILE is created if it does not\n"
    "exist. What is stored is the type's text form of VALUE (an integer 007\n"
    "is stored as 7, a list position as the element's text).\n"
    "\n"
    "Options:\n"
    "  --type TYPE     boolean, integer, double, string (the default), ip,\n"
    "                  or list:A|B|C (the choices; VALUE is one of them or\n"
    "                  its position from 0)\n"
    "  --normalize     write the file anew, as programs of the library do\n"
    "                  by default: its first comment line (see --header),\n"
    "                  then every entry in byte order (in an INI file every\n"
    "                  section in byte order); other comments, blank lines,\n"
    "                  quotes and order are lost\n"
    "  --header TEXT   write the file anew (as --normalize) starting with\n"
    "                  this comment line: one line of at most 510\n"
    "                  characters, or \"\" for none (default: the file's\n"
    "                  first line, if it is a comment line: \"#...\" in a\n"
    "                  flat file, \";...\" in an INI file)\n"
    "  --dry-run       print the text the file would be rewritten to, after\n"
    "                  every check, and change nothing\n"
    "\n"
    "A value the type rejects is reported with the library's message and a\n"
    "line that tells what the type accepts, for example\n"
    "  propctl: FILE: Property 'port' can only contain 'an integer value'\n"
    "  propctl: integer: digits with an optional leading '-', from\n"
    "  -2147483648 to 2147483647\n"
    "(for a list: its elements and their positions), and no byte of the\n"
    "file is changed: every check is made before anything is written. So\n"
    "it is for an entry that the file would read back\n"
    "differently (keys and values are written verbatim: blanks at either\n"
    "end, a leading '\"', a comment character, or a line longer than 511\n"
    "characters do not survive; with LIBPROPERTIES_LONG_LINES=read a longer\n"
    "line does, and is written).\n"
    "\n"
    "Exit status: 0 stored; 2 usage error, rejected value or entry, or FILE\n"
    "cannot be read or written (FILE is left as it was, unless the library's\n"
    "own rewrite of it failed).\n";

const char kDelHelp[] =
    "Usage: propctl del [--flat | --ini] [--header TEXT] [--normalize]\n"
    "                   [--dry-run] FILE [SECTION] KEY\n"
    "       propctl del [--ini] [--header TEXT] [--normalize] [--dry-run]\n"
    "                   FILE SECTION\n"
    "\n"
    "Removes KEY from FILE (in an INI file: from SECTION, which stays, even\n"
    "if it is then empty), or with SECTION alone a whole section of an INI\n"
    "file. \"unset\" is the same command. The file is read by the library's\n"
    "reader and rewritten under the same file locks as set, keeping its\n"
    "layout: every line of KEY goes (in an INI file, within the last\n"
    "occurrence of SECTION, the one the library reads), or for a section\n"
    "every occurrence from its header to its last entry; everything else\n"
    "stays. FILE must exist.\n"
    "\n"
    "Options:\n"
    "  --normalize     as for set: write the file anew, as programs of the\n"
    "                  library do by default\n"
    "  --header TEXT   as for set: write the file anew starting with this\n"
    "                  comment line, \"\" for none\n"
    "  --dry-run       print the text the file would be rewritten to, and\n"
    "                  change nothing\n"
    "\n"
    "Exit status: 0 removed (or printed); 1 no such entry or section, and\n"
    "nothing written or printed; 2 usage error, or FILE cannot be read or\n"
    "written (FILE is then left as it was).\n";

const char kSectionsHelp[] =
    "Usage: propctl sections [--flat | --ini] FILE\n"
    "\n"
    "Prints the name of every section of an INI file as the library reads\n"
    "it, one per line, in byte order (empty sections too). FILE may be \"-\"\n"
    "for standard input.\n"
    "\n"
    "Exit status: 0 printed; 2 usage error, FILE is a flat file, or FILE\n"
    "cannot be read (as for get).\n";

const char kListHelp[] =
    "Usage: propctl list [--flat | --ini] [--json] FILE\n"
    "\n"
    "Prints the entries of FILE as the library reads them, in the form and\n"
    "order its writer uses (without a header comment): a flat file as\n"
    "key=value lines in byte order of the keys; an INI file as each section's\n"
    "[name] line, its key=value lines and an empty line, sections in byte\n"
    "order. Comments, dropped and repeated entries do not appear. FILE may\n"
    "be \"-\" for standard input.\n"
    "\n"
    "Options:\n"
    "  --json   print one line instead: a flat file as "
    "{\"KEY\":\"VALUE\",...},\n"
    "           an INI file as {\"SECTION\":{\"KEY\":\"VALUE\",...},...}, in "
    "the\n"
    "           same order; see propctl(1) for how bytes are escaped\n"
    "\n"
    "Exit status: 0 printed; 2 usage error, or FILE cannot be read (as for\n"
    "get).\n";

const char kCheckHelp[] =
    "Usage: propctl check [--flat | --ini] FILE\n"
    "\n"
    "Reports, one per line as FILE:LINE: message, every line that the\n"
    "library reads differently from what it seems to say, or that a rewrite\n"
    "of the file anew would change (as programs of the library rewrite files\n"
    "by default, and set and del with --normalize):\n"
    "  - lines of 512 or more characters (the reader never returns on them\n"
    "    unless long lines are on; reported either way, since other programs\n"
    "    may read the file) and of exactly 511 (the longest it takes)\n"
    "  - repeated keys (the last one wins)\n"
    "  - a comment character ('#' in flat files, ';' in INI files) right\n"
    "    after other text (the value is cut there) or inside quotes\n"
    "  - lines starting with the other format's comment character ('#' in\n"
    "    INI files, ';' or '!' in flat files) that hold '=': they are entries\n"
    "  - 'key: value' lines (only '=' separates), lines without '=' that are\n"
    "    no comment or header (ignored)\n"
    "  - a trailing '\\' before an indented line or one without '='\n"
    "    (lines are never joined)\n"
    "  - quotes around a key or value, CR LF line ends (a rewrite drops them)\n"
    "  - NUL bytes and a UTF-8 byte-order mark\n"
    "  - in flat files: section headers (ignored), 'export' before a key\n"
    "  - in INI files: entries before the first section or under an empty\n"
    "    section name (dropped), lines indented deeper than the entry\n"
    "    before them (not joined to it),\n"
    "    repeated sections (the last one replaces the earlier ones), header\n"
    "    lines without ']' and text after a header's ']'\n"
    "A warning that repeats is printed once, naming the other lines.\n"
    "FILE is read as raw lines; the library's reader is not run on it. FILE\n"
    "may be \"-\" for standard input.\n"
    "\n"
    "Exit status: 0 no warnings; 1 warnings; 2 usage error, or FILE cannot\n"
    "be read.\n";

const char kWatchHelp[] =
    "Usage: propctl watch [--flat | --ini] [--once] FILE [SECTION] [KEY...]\n"
    "\n"
    "Prints one line for each entry of FILE that changes, as it changes, as\n"
    "the library reads the file: KEY=VALUE for a new or changed entry (in an\n"
    "INI file [SECTION]KEY=VALUE), and KEY alone ([SECTION]KEY) for an entry\n"
    "that is gone. A missing FILE counts as empty. With SECTION (INI files)\n"
    "or KEYs, only those entries are watched. Once it watches, it says so on\n"
    "standard error: \"propctl: watching FILE\". Edits in place, files\n"
    "renamed into place, deleted and made again are all followed.\n"
    "\n"
    "Options:\n"
    "  --once   exit after the first change it printed\n"
    "\n"
    "Exit status: 0 after --once printed a change; 2 usage error, or FILE\n"
    "cannot be watched. Without --once it runs until it is stopped.\n";

const char kHelpHelp[] =
    "Usage: propctl help [COMMAND]\n"
    "\n"
    "Shows the help of COMMAND (get, set, del, unset, list, sections, check,\n"
    "watch, help), or of propctl.\n"
    "\n"
    "Exit status: 0; 2 for an unknown COMMAND.\n";

// ------------------------------------------------------- command line --

bool IsOption(const std::string& word) {
  return word.size() > 2 && word.compare(0, 2, "--") == 0;
}

// Takes the option args[i] (and its argument, if it has one) into
// invocation.
void TakeOption(const std::vector<std::string>& args, size_t& i,
                Invocation& invocation) {
  const std::string& word = args[i];
  const size_t equals = word.find('=');
  const std::string name = word.substr(0, equals);
  auto fail = [&](const std::string& problem) {
    throw UsageError{invocation.command, "option " + Quoted(name) + problem};
  };
  if (name == "--flat" || name == "--ini" || name == "--help" ||
      name == "--once" || name == "--json" || name == "--dry-run" ||
      name == "--normalize" || name == "--version") {
    if (equals != std::string::npos) fail(" takes no argument");
    if (name == "--help") {
      invocation.help = true;
    } else if (name == "--once") {
      invocation.once = true;
    } else if (name == "--json") {
      invocation.json = true;
    } else if (name == "--dry-run") {
      invocation.dryRun = true;
    } else if (name == "--normalize") {
      invocation.normalize = true;
    } else if (name == "--version") {
      invocation.version = true;
    } else {
      invocation.format =
          name == "--ini" ? FileFormat::kIni : FileFormat::kFlat;
    }
    return;
  }
  if (name != "--type" && name != "--header") fail(" is unknown");
  if (equals == std::string::npos && i + 1 == args.size()) {
    fail(" needs an argument");
  }
  const std::string argument =
      equals != std::string::npos ? word.substr(equals + 1) : args[++i];
  (name == "--type" ? invocation.type : invocation.header) = argument;
}

Invocation ParseCommandLine(const std::vector<std::string>& args) {
  Invocation invocation;
  bool haveCommand = false;
  bool optionsEnded = false;
  for (size_t i = 0; i < args.size(); ++i) {
    if (!optionsEnded && args[i] == "--") {
      optionsEnded = true;
    } else if (!optionsEnded && IsOption(args[i])) {
      TakeOption(args, i, invocation);
    } else if (!optionsEnded && args[i] == "-h") {
      invocation.help = true;
    } else if (!haveCommand) {
      invocation.command = args[i];
      haveCommand = true;
    } else {
      invocation.operands.push_back(args[i]);
    }
  }
  return invocation;
}

std::string ReadRegularFile(const std::string& path);

// The format of the file at path. Without --flat or --ini the name decides
// where it tells: ".ini" is INI, ".properties" flat. Any other name
// (".conf", ".cfg", none) is read as INI if its first entry line is a
// section header, and standard error says so, since the same file read as
// a flat one shows other entries; otherwise, and if there is no file to
// look at, it is flat, as such a name always was.
FileFormat FormatOf(const Invocation& invocation, const std::string& path) {
  if (invocation.format) return *invocation.format;
  if (EndsWith(path, ".ini")) return FileFormat::kIni;
  if (EndsWith(path, ".properties")) return FileFormat::kFlat;
  std::string text;
  try {
    text = ReadRegularFile(path);
  } catch (const Failure&) {
    // Reported, if at all, by the command that reads or writes it.
    return FileFormat::kFlat;
  }
  if (!StartsWithSectionHeader(text)) return FileFormat::kFlat;
  std::cerr << "propctl: " << path
            << ": read as INI (first entry line is a section header); --flat "
               "or --ini decide\n";
  return FileFormat::kIni;
}

// The operand slot of target named name ("SECTION", "KEY" or "VALUE").
std::string& Slot(Target& target, const std::string& name) {
  if (name == "SECTION") return target.section;
  return name == "KEY" ? target.key : target.value;
}

// FILE and then the operands named in afterFile, of which SECTION is taken
// for INI files only.
Target TakeOperands(const Invocation& invocation,
                    const std::vector<std::string>& afterFile) {
  const std::vector<std::string>& operands = invocation.operands;
  auto fail = [&](const std::string& problem) {
    throw UsageError{invocation.command, problem};
  };
  if (operands.empty()) fail("missing FILE");
  // The library takes an empty file name for a programming error.
  if (operands[0].empty()) fail("FILE is empty");
  Target target;
  target.path = operands[0];
  target.format = FormatOf(invocation, target.path);
  std::vector<std::string> names;
  for (const std::string& name : afterFile) {
    if (name != "SECTION" || target.format == FileFormat::kIni) {
      names.push_back(name);
    }
  }
  if (operands.size() - 1 > names.size()) fail("too many operands");
  if (operands.size() - 1 < names.size()) {
    fail("missing " + names[operands.size() - 1]);
  }
  for (size_t i = 0; i < names.size(); ++i) {
    Slot(target, names[i]) = operands[i + 1];
  }
  return target;
}

// ---------------------------------------------------------------- files --

std::string SystemError(const std::string& path) {
  return path + ": " + std::strerror(errno);
}

// All of standard input, read once: a command may look at it twice, to
// guess its format and to read it.
const std::string& StandardInput() {
  static const std::string text = [] {
    std::string read;
    char buffer[65536];
    ssize_t got;
    while ((got = ::read(STDIN_FILENO, buffer, sizeof buffer)) != 0) {
      if (got < 0 && errno == EINTR) continue;
      if (got < 0) throw Failure{SystemError(kStandardInput)};
      read.append(buffer, static_cast<size_t>(got));
    }
    return read;
  }();
  return text;
}

// The whole content of the regular file at path (symbolic links followed),
// read under the file's shared lock as the library reads it, so that a
// rewrite by another program is never seen half done. Throws Failure if it
// cannot be read. Other kinds of files are refused: a device can read
// without end, and opening a FIFO can wait for ever.
std::string ReadRegularFile(const std::string& path) {
  if (path == kStandardInput) return StandardInput();
  PropertyFileLock lock;
  if (!lock.Acquire(path, PropertyFileLock::kShared, O_RDONLY | O_NONBLOCK)) {
    throw Failure{SystemError(path)};
  }
  const int fd = lock.Fd();
  struct stat status;
  const bool statFailed = ::fstat(fd, &status) != 0;
  if (statFailed || !S_ISREG(status.st_mode)) {
    throw Failure{statFailed ? SystemError(path)
                             : path + ": not a regular file"};
  }
  std::string text;
  char buffer[65536];
  ssize_t got;
  while ((got = ::read(fd, buffer, sizeof buffer)) != 0) {
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) throw Failure{SystemError(path)};
    text.append(buffer, static_cast<size_t>(got));
  }
  return text;
}

// Throws Failure if text, the content of the file at path, is one the
// library's reader would never return on: one with a line of 512 or more
// characters, unless long lines are on (LIBPROPERTIES_LONG_LINES=read, or a
// library built to read them), when the library reads such a line whole.
void RequireReadableText(const std::string& path, const std::string& text) {
  if (PropertySafety::LongLines()) return;
  size_t length = 0;
  if (const int line = FindUnreadableLine(text, length)) {
    throw Failure{path + ":" + std::to_string(line) + ": line of " +
                  std::to_string(length) +
                  " characters; the library cannot read this file (see "
                  "'propctl check')"};
  }
}

// ReadRegularFile, refusing a file that the library's reader would never
// return on.
std::string ReadPropertyFile(const std::string& path) {
  const std::string text = ReadRegularFile(path);
  RequireReadableText(path, text);
  return text;
}

// Throws Failure unless the library can read path (if it exists) and write
// it. A binding writes only the bound entries over a file it could not read,
// and reports nothing when a write fails, so both are checked first. Returns
// what the file holds ("" if there is none).
std::string RequireBindable(const std::string& path) {
  struct stat status;
  if (::stat(path.c_str(), &status) == 0) {
    std::string text = ReadPropertyFile(path);
    if (::access(path.c_str(), W_OK) != 0) throw Failure{SystemError(path)};
    return text;
  } else if (errno != ENOENT) {
    throw Failure{SystemError(path)};
  } else if (::access(PropertyFile::DirectoryOf(path).c_str(), W_OK | X_OK) !=
             0) {
    throw Failure{SystemError(path)};
  }
  return "";
}

// The header that a rewrite of text, a file of format, keeps: the rest of
// its first line if that is a comment line ("#..." flat, ";..." INI), which
// the library's writer writes back as it was; "" otherwise. (A first line of
// the mark alone is then not kept: the writer writes no empty header.)
std::string KeptHeader(const std::string& text, FileFormat format) {
  const char mark = format == FileFormat::kIni ? ';' : '#';
  if (text.empty() || text[0] != mark) return "";
  const size_t end = text.find('\n');
  return text.substr(1, end == std::string::npos ? end : end - 1);
}

// The header a rewrite writes: --header if given, else the file's own.
std::string HeaderFor(const Invocation& invocation, const std::string& text,
                      FileFormat format) {
  return invocation.header ? *invocation.header : KeptHeader(text, format);
}

// ------------------------------------------------------ library access --

// The library's tables, opened to propctl, which shows them whole and
// removes entries from them.
class FlatTable : public JavaProperties {
 public:
  const std::map<std::string, std::string>& Entries() const {
    return m_entries;
  }
  bool Remove(const std::string& key) { return m_entries.erase(key) != 0; }
};
class IniTable : public IniProperties {
 public:
  const std::map<std::string, std::map<std::string, std::string>>& Sections()
      const {
    return m_sections;
  }
  bool RemoveSection(const std::string& section) {
    return m_sections.erase(section) != 0;
  }
  bool Remove(const std::string& section, const std::string& key) {
    const auto found = m_sections.find(section);
    return found != m_sections.end() && found->second.erase(key) != 0;
  }
};

// The library's table of one file format: read, looked up and written with
// JavaProperties or IniProperties.
class FileStore {
 public:
  explicit FileStore(FileFormat format) : m_format(format) {}

  // Reads text as the library reads a file.
  // REQUIRES: no line of text holds 512 or more characters, unless long
  // lines are on.
  void Parse(const std::string& text) {
    std::istringstream in(text);
    if (m_format == FileFormat::kIni) {
      m_ini.Load(in);
    } else {
      m_flat.Load(in);
    }
  }
  bool Get(const Target& target, std::string& value) const {
    return m_format == FileFormat::kIni
               ? m_ini.GetProperty(target.section, target.key, value)
               : m_flat.GetProperty(target.key, value);
  }
  void Put(const Target& target, const std::string& value) {
    if (m_format == FileFormat::kIni) {
      m_ini.SetProperty(target.section, target.key, value);
    } else {
      m_flat.SetProperty(target.key, value);
    }
  }
  // Removes target's entry, or in an INI file with no key the whole
  // section; false if there is none.
  bool Remove(const Target& target) {
    if (m_format == FileFormat::kFlat) return m_flat.Remove(target.key);
    return target.wholeSection ? m_ini.RemoveSection(target.section)
                               : m_ini.Remove(target.section, target.key);
  }
  // What the library's writer writes for the table.
  std::string Text(const std::string& header) const {
    return m_format == FileFormat::kIni ? m_ini.ToText(header)
                                        : m_flat.ToText(header);
  }
  const FlatTable& Flat() const { return m_flat; }
  const IniTable& Ini() const { return m_ini; }

  // What a rewrite of text makes of it for this table: an edit of text that
  // keeps its layout (removals: whether entries of text the table lacks
  // go), or, if none reads as the table's text does or normalize, the
  // table's text. why tells why no edit was made ("" for none asked).
  std::string Rewritten(const std::string& text, const std::string& header,
                        bool normalize, PropertyLayoutKeeper::Removals removals,
                        std::string& why) const {
    why.clear();
    if (!normalize) {
      PropertyTextBuffer edited;
      const bool kept =
          m_format == FileFormat::kIni
              ? PropertyLayoutKeeper::Edit(text.data(), text.size(), m_ini,
                                           header, edited, why, removals)
              : PropertyLayoutKeeper::Edit(text.data(), text.size(), m_flat,
                                           header, edited, why, removals);
      if (kept) return std::string(edited.Data(), edited.Size());
    }
    return Text(header);
  }

 private:
  FileFormat m_format;
  FlatTable m_flat;
  IniTable m_ini;
};

FileStore ReadStore(const Target& target) {
  FileStore store(target.format);
  store.Parse(ReadPropertyFile(target.path));
  return store;
}

ValueType TypeOf(const Invocation& invocation) {
  const std::string name = invocation.type.value_or("string");
  const std::string listPrefix = "list:";
  if (name.compare(0, listPrefix.size(), listPrefix) == 0) {
    const std::string choices = name.substr(listPrefix.size());
    // Split as the list type splits them: empty pieces are dropped.
    std::string form;
    size_t position = 0;
    for (size_t start = 0; start < choices.size();) {
      size_t end = choices.find('|', start);
      if (end == std::string::npos) end = choices.size();
      if (end > start) {
        form += (position == 0 ? "one of " : ", ") +
                choices.substr(start, end - start) + " (" +
                std::to_string(position) + ")";
        ++position;
      }
      start = end + 1;
    }
    // A list without elements takes no value at all.
    if (position == 0) {
      throw UsageError{invocation.command,
                       "the list type needs at least one element"};
    }
    return ValueType{ListProperty::kTypeName, choices, "list", form};
  }
  if (name == "boolean") {
    return ValueType{BooleanProperty::kTypeName, "false", name,
                     "true or false"};
  }
  if (name == "integer") {
    return ValueType{IntegerProperty::kTypeName, "0", name,
                     "digits with an optional leading '-', from -2147483648 "
                     "to 2147483647"};
  }
  if (name == "double") {
    return ValueType{DoubleProperty::kTypeName, "0", name,
                     "an optional sign, digits with an optional '.', and an "
                     "optional exponent (1, -0.5, .5, 2e-3); no inf, nan or "
                     "hexadecimal form; at most 1.79769313486231e308 in size "
                     "and not so small that it becomes 0"};
  }
  if (name == "string") {
    return ValueType{StringProperty::kTypeName, "", name,
                     "any text without '#'"};
  }
  if (name == "ip") {
    return ValueType{IpAddrProperty::kTypeName, "0.0.0.0", name,
                     "an IPv4 address as inet_aton reads it: a.b.c.d, or "
                     "a.b.c, a.b or a whose last part fills the rest (10.1 "
                     "is 10.0.0.1); parts decimal, octal (leading 0) or "
                     "hexadecimal (0x)"};
  }
  throw UsageError{invocation.command, "unknown type " + Quoted(name)};
}

// A property of type for target's entry that belongs to no manager.
// Throws Property::WrongValue if the library rejects the key.
std::unique_ptr<Property> NewProperty(const Target& target,
                                      const ValueType& type) {
  Properties* library = Properties::GetInstance();
  Property* property =
      target.format == FileFormat::kIni
          ? library->GetIniPropertyFactory()->CreateProperty(
                type.typeName, target.section, target.key, type.initial)
          : library->GetJavaPropertyFactory()->CreateProperty(
                type.typeName, target.key, type.initial);
  if (property == nullptr) throw Failure{"the library lacks a value type"};
  return std::unique_ptr<Property>(property);
}

// The text the library stores for target.value. The value is tried on a
// property of its own first, so that a rejected value never reaches the
// file. Throws Failure, with the library's message, if the library rejects
// the key or the type the value; for a value, a second line tells what the
// type accepts.
std::string StoredText(const Target& target, const ValueType& type) {
  std::unique_ptr<Property> property;
  try {
    property = NewProperty(target, type);
  } catch (const Property::WrongValue& rejection) {
    throw Failure{target.path + ": " + rejection.m_message};
  }
  try {
    property->SetValue(target.value);
  } catch (const Property::WrongValue& rejection) {
    throw Failure{target.path + ": " + rejection.m_message +
                  "\npropctl: " + type.name + ": " + type.form};
  }
  const std::string stored = property->GetValue();
  try {
    // A double near the largest one is written rounded up, to a text that
    // its own type then refuses when the file is read.
    property->SetValue(stored);
  } catch (const Property::WrongValue&) {
    throw Failure{target.path + ": " + Quoted(target.value) +
                  " would be stored as " + Quoted(stored) +
                  ", which the type refuses when read back"};
  }
  return stored;
}

// Throws Failure unless the library reads the entry back as it writes it.
// Keys and values are written verbatim, and a line of 512 or more
// characters would make the whole file unreadable, unless long lines are on.
void RequireReadBack(const Target& target, const std::string& stored) {
  FileStore written(target.format);
  written.Put(target, stored);
  const std::string text = written.Text("");
  size_t length = 0;
  if (!PropertySafety::LongLines() && FindUnreadableLine(text, length) != 0) {
    throw Failure{target.path + ": the entry would need a line of " +
                  std::to_string(length) +
                  " characters; the library reads at most 511"};
  }
  FileStore reread(target.format);
  reread.Parse(text);
  // The text alone can read back the same with another entry in it: the
  // key "a=b" with the value "v" is written as "a=b=v", which is read as
  // the key "a" with the value "b=v" and written again as the same text.
  std::string value;
  if (reread.Text("") != text || !reread.Get(target, value) ||
      value != stored) {
    const std::string where = target.format == FileFormat::kIni
                                  ? " of section " + Quoted(target.section)
                                  : "";
    throw Failure{target.path + ": the entry " + Quoted(target.key) + " = " +
                  Quoted(stored) + where +
                  " would not read back as written (see 'propctl help set')"};
  }
}

void RequireHeader(const Invocation& invocation) {
  const std::string header = invocation.header.value_or("");
  if (header.find('\n') != std::string::npos ||
      header.size() > kLongestHeader) {
    throw UsageError{invocation.command,
                     "the header must be one line of at most 510 characters"};
  }
}

// Throws Failure if the binding's manager keeps strict values
// (LIBPROPERTIES_STRICT=1) and would refuse the stored text or the header.
// It refuses a value only when it is set, after registering a key that the
// file holds has already rewritten the file, so the same check of the
// library is made here first.
void RequireStrictEntry(const Target& target, const std::string& stored,
                        const std::string& header) {
  Properties* library = Properties::GetInstance();
  try {
    if (target.format == FileFormat::kIni) {
      const IniPropertyManager* manager =
          library->GetIniPropertyManager(kIniManager);
      PropertyStrictValues::RequireHeader(*manager, header);
      PropertyStrictValues::RequireEntry<IniPropertiesFormat>(
          *manager, &target.section, target.key, stored);
    } else {
      const JavaPropertyManager* manager =
          library->GetJavaPropertyManager(kFlatManager);
      PropertyStrictValues::RequireHeader(*manager, header);
      PropertyStrictValues::RequireEntry<JavaPropertiesFormat>(
          *manager, nullptr, target.key, stored);
    }
  } catch (const Property::WrongValue& rejection) {
    throw Failure{target.path + ": " + rejection.m_message};
  }
}

// Sets target.value through a read-write binding of the library, which
// merges it into the file and rewrites the file, keeping its layout if
// keepLayout.
void StoreThroughBinding(const Target& target, const ValueType& type,
                         const std::string& header, bool keepLayout) {
  Properties* library = Properties::GetInstance();
  PropertyLayout::SetKeepLayout(keepLayout);
  // Registering a key that the file holds loads it and rewrites the file at
  // once (a stored text the type rejects is left for the rewrite below).
  if (target.format == FileFormat::kIni) {
    IniPropertyManager* manager = library->GetIniPropertyManager(kIniManager);
    manager->RegisterPersistence(target.path, header);
    manager->RegisterProperty(type.typeName, target.section, target.key,
                              type.initial);
    manager->SetValue(target.section, target.key, target.value);
  } else {
    JavaPropertyManager* manager =
        library->GetJavaPropertyManager(kFlatManager);
    manager->RegisterPersistence(target.path, header);
    manager->RegisterProperty(type.typeName, target.key, type.initial);
    manager->SetValue(target.key, target.value);
  }
}

// ------------------------------------------------------------ commands --

// Whether set or del writes the file anew, as the library's programs do by
// default: asked for, or implied by a header to write (a file edited in its
// own layout keeps its own first lines).
bool Normalizes(const Invocation& invocation) {
  return invocation.normalize || invocation.header.has_value();
}

// Tells, on standard error, why a rewrite of target writes the file anew
// rather than in its own layout; nothing if why is empty.
void NoteWrittenAnew(const Target& target, const std::string& why) {
  if (why.empty()) return;
  std::cerr << "propctl: " << target.path
            << ": written anew, not in its own layout: " << why << '\n';
}

// Throws a usage error if path names standard input: command writes or
// watches its FILE.
void RequireNamedFile(const Invocation& invocation, const std::string& path) {
  if (path == kStandardInput) {
    throw UsageError{invocation.command,
                     "FILE '-' (standard input) is only read by get, list, "
                     "sections and check"};
  }
}

int RunGet(const Invocation& invocation) {
  const Target target = TakeOperands(invocation, {"SECTION", "KEY"});
  std::string value;
  if (!ReadStore(target).Get(target, value)) return kNegative;
  if (!invocation.json) {
    std::cout << value << '\n';
    return kSuccess;
  }
  std::cout << '{';
  if (target.format == FileFormat::kIni) {
    std::cout << "\"section\":" << JsonString(target.section) << ',';
  }
  std::cout << "\"key\":" << JsonString(target.key)
            << ",\"value\":" << JsonString(value) << "}\n";
  return kSuccess;
}

int RunSet(const Invocation& invocation) {
  if (!invocation.operands.empty()) {
    RequireNamedFile(invocation, invocation.operands[0]);
  }
  const Target target = TakeOperands(invocation, {"SECTION", "KEY", "VALUE"});
  const ValueType type = TypeOf(invocation);
  RequireHeader(invocation);
  const std::string stored = StoredText(target, type);
  RequireReadBack(target, stored);
  const std::string text = RequireBindable(target.path);
  const std::string header = HeaderFor(invocation, text, target.format);
  RequireStrictEntry(target, stored, header);
  // What the binding's rewrite makes of the file as it is now.
  FileStore store(target.format);
  store.Parse(text);
  store.Put(target, stored);
  std::string why;
  const std::string rewritten =
      store.Rewritten(text, header, Normalizes(invocation),
                      PropertyLayoutKeeper::kKeepEntries, why);
  NoteWrittenAnew(target, why);
  if (invocation.dryRun) {
    std::cout << rewritten;
    return kSuccess;
  }
  try {
    StoreThroughBinding(target, type, header, !Normalizes(invocation));
  } catch (const Property::WrongValue& rejection) {
    // A library that keeps strict values refuses before it writes.
    throw Failure{target.path + ": " + rejection.m_message};
  }
  // The library reports no failed write: read the result back.
  std::string written;
  if (!ReadStore(target).Get(target, written) || written != stored) {
    throw Failure{target.path + ": the file was not written"};
  }
  return kSuccess;
}

// del FILE KEY, or in an INI file del FILE SECTION [KEY].
Target TakeDelOperands(const Invocation& invocation) {
  const std::vector<std::string>& operands = invocation.operands;
  if (operands.empty() || operands[0].empty()) {
    return TakeOperands(invocation, {"KEY"});  // Reports the mistake.
  }
  const FileFormat format = FormatOf(invocation, operands[0]);
  Invocation decided = invocation;
  decided.format = format;
  if (format == FileFormat::kIni && operands.size() == 2) {
    Target target = TakeOperands(decided, {"SECTION"});
    target.wholeSection = true;
    return target;
  }
  return TakeOperands(decided, {"SECTION", "KEY"});
}

// The number of passes a rewrite makes while other programs keep rewriting
// the file between its read and its write, as in the library's bindings;
// the last one writes without comparing.
const int kMaxPasses = 100;

// Removes target's entry (or INI section) the way the library's bindings
// rewrite a file: read whole under its shared lock and by the library's
// reader, written by its writer under the exclusive lock only if no other
// program rewrote the file meanwhile, or else read again. Returns false,
// writing nothing, if there is no such entry.
bool RemoveThroughRewrite(const Invocation& invocation, const Target& target) {
  for (int pass = 1;; ++pass) {
    PropertyTextBuffer buffer;
    PropertyFile::Contents seen;
    if (PropertyFile::ReadWhole(target.path, buffer, &seen) !=
        PropertyFile::kReadWhole) {
      throw Failure{target.path + ": the file cannot be read"};
    }
    const std::string text = buffer.Size() == 0
                                 ? std::string()
                                 : std::string(buffer.Data(), buffer.Size());
    RequireReadableText(target.path, text);
    FileStore store(target.format);
    store.Parse(text);
    if (!store.Remove(target)) return false;
    std::string why;
    const std::string written = store.Rewritten(
        text, HeaderFor(invocation, text, target.format),
        Normalizes(invocation), PropertyLayoutKeeper::kRemoveEntries, why);
    if (pass == 1) NoteWrittenAnew(target, why);
    if (pass == kMaxPasses) seen = PropertyFile::Contents();
    const PropertyFile::Result result = PropertyFile::ReplaceIfUnchanged(
        target.path, seen, written.data(), written.size());
    if (result == PropertyFile::kWritten) return true;
    if (result != PropertyFile::kChanged) {
      throw Failure{target.path + ": the file was not written"};
    }
  }
}

int RunDel(const Invocation& invocation) {
  // Before the format is guessed, which reads the file.
  if (!invocation.operands.empty()) {
    RequireNamedFile(invocation, invocation.operands[0]);
  }
  const Target target = TakeDelOperands(invocation);
  RequireHeader(invocation);
  // Nothing is made: a missing file is reported as one.
  const std::string text = ReadPropertyFile(target.path);
  if (invocation.dryRun) {
    FileStore store(target.format);
    store.Parse(text);
    if (!store.Remove(target)) return kNegative;
    std::string why;
    std::cout << store.Rewritten(
        text, HeaderFor(invocation, text, target.format),
        Normalizes(invocation), PropertyLayoutKeeper::kRemoveEntries, why);
    NoteWrittenAnew(target, why);
    return kSuccess;
  }
  RequireBindable(target.path);
  return RemoveThroughRewrite(invocation, target) ? kSuccess : kNegative;
}

int RunList(const Invocation& invocation) {
  const Target target = TakeOperands(invocation, {});
  const FileStore store = ReadStore(target);
  if (!invocation.json) {
    std::cout << store.Text("");
    return kSuccess;
  }
  // Keys, and sections, in the byte order the writer uses.
  auto printEntries = [](const std::map<std::string, std::string>& entries) {
    std::cout << '{';
    const char* separator = "";
    for (const auto& entry : entries) {
      std::cout << separator << JsonString(entry.first) << ':'
                << JsonString(entry.second);
      separator = ",";
    }
    std::cout << '}';
  };
  if (target.format == FileFormat::kFlat) {
    printEntries(store.Flat().Entries());
  } else {
    std::cout << '{';
    const char* separator = "";
    for (const auto& section : store.Ini().Sections()) {
      std::cout << separator << JsonString(section.first) << ':';
      printEntries(section.second);
      separator = ",";
    }
    std::cout << '}';
  }
  std::cout << '\n';
  return kSuccess;
}

int RunSections(const Invocation& invocation) {
  const Target target = TakeOperands(invocation, {});
  if (target.format != FileFormat::kIni) {
    throw Failure{target.path +
                  ": a flat file has no sections (--ini reads it as INI)"};
  }
  const FileStore store = ReadStore(target);
  for (const auto& section : store.Ini().Sections()) {
    std::cout << section.first << '\n';
  }
  return kSuccess;
}

int RunCheck(const Invocation& invocation) {
  const Target target = TakeOperands(invocation, {});
  // Raw lines only: without long lines the library's reader never returns
  // on an over-long one, and a file is checked for every program that may
  // read it, whatever this process reads.
  const std::vector<FileFinding> findings =
      CheckFileText(ReadRegularFile(target.path), target.format);
  for (const FileFinding& finding : findings) {
    std::cout << target.path << ':' << finding.line << ": " << finding.message
              << '\n';
  }
  return findings.empty() ? kSuccess : kNegative;
}

// Every entry of a file, by section ("" in flat files) and key.
typedef std::map<std::pair<std::string, std::string>, std::string> Entries;

// What watch looks at: FILE, and the SECTION and KEYs it is narrowed to.
struct WatchTarget {
  std::string path;
  FileFormat format = FileFormat::kFlat;
  std::optional<std::string> section;
  std::vector<std::string> keys;

  bool Wants(const std::pair<std::string, std::string>& entry) const {
    if (section && entry.first != *section) return false;
    return keys.empty() ||
           std::find(keys.begin(), keys.end(), entry.second) != keys.end();
  }
};

// The entries of the file that target wants; none if there is no file.
Entries ReadWatchedEntries(const WatchTarget& target) {
  Entries entries;
  struct stat status;
  if (::stat(target.path.c_str(), &status) != 0 && errno == ENOENT) {
    return entries;
  }
  FileStore store(target.format);
  store.Parse(ReadPropertyFile(target.path));
  Entries all;
  if (target.format == FileFormat::kIni) {
    for (const auto& section : store.Ini().Sections()) {
      for (const auto& entry : section.second) {
        all[{section.first, entry.first}] = entry.second;
      }
    }
  } else {
    for (const auto& entry : store.Flat().Entries()) {
      all[{std::string(), entry.first}] = entry.second;
    }
  }
  for (const auto& entry : all) {
    if (target.Wants(entry.first)) entries.insert(entry);
  }
  return entries;
}

// Prints a line for each entry that differs between before and after;
// returns true if it printed one.
bool PrintChanges(const Entries& before, const Entries& after,
                  FileFormat format) {
  std::map<std::pair<std::string, std::string>, const std::string*> changed;
  for (const auto& entry : after) {
    auto old = before.find(entry.first);
    if (old == before.end() || old->second != entry.second) {
      changed[entry.first] = &entry.second;
    }
  }
  for (const auto& entry : before) {
    if (after.count(entry.first) == 0) changed[entry.first] = nullptr;
  }
  for (const auto& entry : changed) {
    if (format == FileFormat::kIni) {
      std::cout << '[' << entry.first.first << ']';
    }
    std::cout << entry.first.second;
    if (entry.second != nullptr) std::cout << '=' << *entry.second;
    std::cout << '\n';
  }
  std::cout.flush();
  return !changed.empty();
}

int RunWatch(const Invocation& invocation) {
  const std::vector<std::string>& operands = invocation.operands;
  if (operands.empty()) throw UsageError{invocation.command, "missing FILE"};
  if (operands[0].empty())
    throw UsageError{invocation.command, "FILE is empty"};
  RequireNamedFile(invocation, operands[0]);
  WatchTarget target;
  target.path = operands[0];
  target.format = FormatOf(invocation, target.path);
  size_t next = 1;
  if (target.format == FileFormat::kIni && next < operands.size()) {
    target.section = operands[next++];
  }
  target.keys.assign(operands.begin() + static_cast<long>(next),
                     operands.end());

  PropertyDirectoryWatch watch;
  watch.Follow({target.path});
  if (watch.Fd() < 0) throw Failure{target.path + ": cannot be watched"};
  Entries seen = ReadWatchedEntries(target);
  std::cerr << "propctl: watching " << target.path << std::endl;
  for (;;) {
    struct pollfd ready = {watch.Fd(), POLLIN, 0};
    if (::poll(&ready, 1, -1) < 0) {
      if (errno == EINTR) continue;
      throw Failure{SystemError(target.path)};
    }
    if (!watch.TakeNotices()) continue;
    watch.Follow({target.path});  // A symbolic link may name another file.
    Entries now;
    try {
      now = ReadWatchedEntries(target);
    } catch (const Failure& failure) {
      // A file that cannot be read for now is watched on.
      std::cerr << "propctl: " << failure.message << '\n';
      continue;
    }
    const bool printed = PrintChanges(seen, now, target.format);
    seen = now;
    if (printed && invocation.once) return kSuccess;
  }
}

int RunHelp(const Invocation& invocation);

struct Command {
  const char* name;
  int (*run)(const Invocation&);
  const char* help;
};

const Command kCommands[] = {
    {"get", RunGet, kGetHelp},       {"set", RunSet, kSetHelp},
    {"del", RunDel, kDelHelp},       {"unset", RunDel, kDelHelp},
    {"list", RunList, kListHelp},    {"sections", RunSections, kSectionsHelp},
    {"check", RunCheck, kCheckHelp}, {"watch", RunWatch, kWatchHelp},
    {"help", RunHelp, kHelpHelp},
};

// The command named name, or null.
const Command* FindCommand(const std::string& name) {
  for (const Command& command : kCommands) {
    if (name == command.name) return &command;
  }
  return nullptr;
}

int RunHelp(const Invocation& invocation) {
  if (invocation.operands.size() > 1) {
    throw UsageError{invocation.command, "too many operands"};
  }
  const Command* command = invocation.operands.empty()
                               ? nullptr
                               : FindCommand(invocation.operands[0]);
  if (!invocation.operands.empty() && command == nullptr) {
    throw UsageError{"", "unknown command " + Quoted(invocation.operands[0])};
  }
  std::cout << (command != nullptr ? command->help : kToolHelp);
  return kSuccess;
}

// Each option belongs to the commands it changes.
void RequireOwnOptions(const Invocation& invocation) {
  const std::string& command = invocation.command;
  const bool rewrites =
      command == "set" || command == "del" || command == "unset";
  auto require = [&](bool given, bool owned, const std::string& option,
                     const std::string& owners) {
    if (given && !owned) {
      throw UsageError{command,
                       "option " + Quoted(option) + " belongs to " + owners};
    }
  };
  require(invocation.once, command == "watch", "--once", "'watch'");
  require(invocation.type.has_value(), command == "set", "--type", "'set'");
  require(invocation.header.has_value(), rewrites, "--header",
          "'set' and 'del'");
  require(invocation.dryRun, rewrites, "--dry-run", "'set' and 'del'");
  require(invocation.normalize, rewrites, "--normalize", "'set' and 'del'");
  require(invocation.json, command == "get" || command == "list", "--json",
          "'get' and 'list'");
}

int Run(const Invocation& invocation) {
  if (invocation.version) {
    std::cout << "propctl " << PROPCTL_VERSION << '\n';
    return kSuccess;
  }
  if (invocation.command.empty() && invocation.help) {
    std::cout << kToolHelp;
    return kSuccess;
  }
  if (invocation.command.empty()) throw UsageError{"", "missing command"};
  const Command* command = FindCommand(invocation.command);
  if (command == nullptr) {
    throw UsageError{"", "unknown command " + Quoted(invocation.command)};
  }
  if (invocation.help) {
    std::cout << command->help;
    return kSuccess;
  }
  RequireOwnOptions(invocation);
  return command->run(invocation);
}

void ReportUsageError(const UsageError& error) {
  if (error.command.empty() || FindCommand(error.command) == nullptr) {
    std::cerr << "propctl: " << error.message << "; try 'propctl --help'\n";
  } else {
    std::cerr << "propctl " << error.command << ": " << error.message
              << "; try 'propctl help " << error.command << "'\n";
  }
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return Run(
        ParseCommandLine(std::vector<std::string>(argv + 1, argv + argc)));
  } catch (const UsageError& error) {
    ReportUsageError(error);
  } catch (const Failure& failure) {
    std::cerr << "propctl: " << failure.message << '\n';
  } catch (const Property::WrongValue& rejection) {
    // The commands report the library's refusals with the file's name; this
    // is for one that none expected.
    std::cerr << "propctl: " << rejection.m_message << '\n';
  }
  return kTrouble;
}
