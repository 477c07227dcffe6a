// PropctlTest.cpp - the commands, messages and exit codes of the propctl tool.

#include <gtest/gtest.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <memory>
#include <string>
#include <vector>

#include "support/ChildProcess.h"
#include "support/StoreTesting.h"
#include "support/TempDir.h"

namespace {

using namespace std::string_literals;

using test_support::LineOfLength;
using test_support::ProgramResult;
using test_support::Ran;

class PropctlTest : public testing::Test {
 protected:
  // The path of name in the test's own directory.
  std::string Path(const std::string& name) const { return m_dir.File(name); }
  // Writes text to name and returns its path.
  std::string Write(const std::string& name, const std::string& text) const {
    test_support::WriteFile(Path(name), text);
    return Path(name);
  }
  std::string Read(const std::string& name) const {
    return test_support::ReadFile(Path(name));
  }
  // Runs propctl with args, in the test's environment changed by
  // environment (as RunProgram takes it).
  static ProgramResult Run(const std::vector<std::string>& args,
                           const std::vector<std::string>& environment = {}) {
    std::vector<std::string> argv = {PROPERTIES_PROPCTL};
    argv.insert(argv.end(), args.begin(), args.end());
    return test_support::RunProgram(argv, environment);
  }
  // Runs propctl with args and input on its standard input.
  ProgramResult RunWithInput(const std::vector<std::string>& args,
                             const std::string& input) const {
    const std::string inputFile = Write("standard-input", input);
    std::vector<std::string> argv = {"/bin/sh", "-c",
                                     "exec \"$0\" \"$@\" < \"$PROPCTL_INPUT\"",
                                     PROPERTIES_PROPCTL};
    argv.insert(argv.end(), args.begin(), args.end());
    return test_support::RunProgram(argv, {"PROPCTL_INPUT=" + inputFile});
  }

  // Runs "propctl check" on text written to name; expects exit status 1 and
  // the report lines given (each without the "<path>:" in front), or exit
  // status 0 and no output if there are none.
  testing::AssertionResult Reports(const std::string& name,
                                   const std::string& text,
                                   const std::vector<std::string>& lines);

  test_support::TempDir m_dir;
};

testing::AssertionResult PropctlTest::Reports(
    const std::string& name, const std::string& text,
    const std::vector<std::string>& lines) {
  const std::string file = Write(name, text);
  std::string out;
  for (const std::string& line : lines) out += file + ":" + line + "\n";
  return Ran(Run({"check", file}), lines.empty() ? 0 : 1, out, "");
}

const char kFlat[] = "port = 8080\n# comment\nname=demo\n";

// Long lines on and off, whatever the test's own environment and the
// library's build say.
const char kRead[] = "LIBPROPERTIES_LONG_LINES=read";
const char kLimit[] = "LIBPROPERTIES_LONG_LINES=limit";
const char kIni[] = "[window]\nwidth=1024\n\n[panel]\nwidth=240\n";

// The second line of a refused value: what the type accepts.
const std::string kIntegerForm =
    "propctl: integer: digits with an optional leading '-', from -2147483648 "
    "to 2147483647\n";
const std::string kBooleanForm = "propctl: boolean: true or false\n";
const std::string kDoubleForm =
    "propctl: double: an optional sign, digits with an optional '.', and an "
    "optional exponent (1, -0.5, .5, 2e-3); no inf, nan or hexadecimal form; "
    "at most 1.79769313486231e308 in size and not so small that it becomes "
    "0\n";
const std::string kIpForm =
    "propctl: ip: an IPv4 address as inet_aton reads it: a.b.c.d, or a.b.c, "
    "a.b or a whose last part fills the rest (10.1 is 10.0.0.1); parts "
    "decimal, octal (leading 0) or hexadecimal (0x)\n";
const std::string kStringForm = "propctl: string: any text without '#'\n";

// get ----------------------------------------------------------------------

TEST_F(PropctlTest, GetPrintsValueOfFlatKey) {
  const std::string file = Write("f.properties", kFlat);
  EXPECT_TRUE(Ran(Run({"get", file, "port"}), 0, "8080\n", ""));
}

TEST_F(PropctlTest, GetPrintsValueOfKeyInSection) {
  const std::string file = Write("f.ini", kIni);
  EXPECT_TRUE(Ran(Run({"get", file, "panel", "width"}), 0, "240\n", ""));
}

TEST_F(PropctlTest, GetPrintsValueAsLibraryReadsIt) {
  const std::string file = Write("f.properties", "k = \" a b \"  # note\n");
  EXPECT_TRUE(Ran(Run({"get", file, "k"}), 0, " a b \n", ""));
}

TEST_F(PropctlTest, GetOfAbsentKeyPrintsNothingAndExitsOne) {
  const std::string file = Write("f.properties", kFlat);
  EXPECT_TRUE(Ran(Run({"get", file, "comment"}), 1, "", ""));
}

TEST_F(PropctlTest, GetOfKeyOfAnotherSectionExitsOne) {
  const std::string file = Write("f.ini", "[a]\nk=1\n");
  EXPECT_TRUE(Ran(Run({"get", file, "b", "k"}), 1, "", ""));
}

TEST_F(PropctlTest, IniOptionReadsFileOfAnyNameAsIni) {
  const std::string file = Write("f.conf", kIni);
  EXPECT_TRUE(
      Ran(Run({"--ini", "get", file, "window", "width"}), 0, "1024\n", ""));
}

TEST_F(PropctlTest, FlatOptionReadsIniNamedFileAsFlat) {
  const std::string file = Write("f.ini", "[s]\nk=v\n");
  EXPECT_TRUE(Ran(Run({"get", "--flat", file, "k"}), 0, "v\n", ""));
}

// The format by content ---------------------------------------------------

const char kGuessedIni[] =
    ": read as INI (first entry line is a section header); --flat or --ini "
    "decide\n";

TEST_F(PropctlTest, ConfFileStartingWithSectionHeaderIsReadAsIniAndSaysSo) {
  const std::string file =
      Write("pip.conf", "# pip\n\n  ; note\n[global] ; all\ntimeout=60\n");
  EXPECT_TRUE(Ran(Run({"get", file, "global", "timeout"}), 0, "60\n",
                  "propctl: " + file + kGuessedIni));
}

TEST_F(PropctlTest, FileWithoutSuffixStartingWithSectionHeaderIsReadAsIni) {
  const std::string file = Write("config", "[s]\nk=v\n");
  EXPECT_TRUE(Ran(Run({"list", file}), 0, "[s]\nk=v\n\n",
                  "propctl: " + file + kGuessedIni));
}

TEST_F(PropctlTest, CfgFileStartingWithEntryIsReadAsFlatWithoutNote) {
  const std::string file = Write("f.cfg", "a=1\n[s]\nk=v\n");
  EXPECT_TRUE(Ran(Run({"get", file, "k"}), 0, "v\n", ""));
}

TEST_F(PropctlTest, BracketedKeyOfFlatFileIsNoSectionHeader) {
  const std::string file = Write("f.conf", "[a]=1\n");
  EXPECT_TRUE(Ran(Run({"get", file, "[a]"}), 0, "1\n", ""));
}

TEST_F(PropctlTest, FlatOptionDecidesForConfFileAndSilencesTheNote) {
  const std::string file = Write("f.conf", "[s]\nk=v\n");
  EXPECT_TRUE(Ran(Run({"--flat", "get", file, "k"}), 0, "v\n", ""));
}

TEST_F(PropctlTest, IniOptionSilencesTheNote) {
  const std::string file = Write("f.conf", "[s]\nk=v\n");
  EXPECT_TRUE(Ran(Run({"--ini", "get", file, "s", "k"}), 0, "v\n", ""));
}

TEST_F(PropctlTest, PropertiesFileIsFlatWhateverItHolds) {
  const std::string file = Write("f.properties", "[s]\nk=v\n");
  EXPECT_TRUE(Ran(Run({"get", file, "k"}), 0, "v\n", ""));
}

TEST_F(PropctlTest, SetIntoConfFileStartingWithSectionHeaderWritesIni) {
  const std::string file = Write("f.conf", "[s]\nk = 1\n");
  EXPECT_TRUE(Ran(Run({"set", file, "t", "k", "2"}), 0, "",
                  "propctl: " + file + kGuessedIni));
  EXPECT_EQ("[s]\nk = 1\n[t]\nk=2\n", Read("f.conf"));
}

TEST_F(PropctlTest, SetCreatesMissingConfFileAsFlatFile) {
  EXPECT_TRUE(Ran(Run({"set", Path("new.conf"), "k", "v"}), 0, "", ""));
  EXPECT_EQ("k=v\n", Read("new.conf"));
}

TEST_F(PropctlTest, CheckOfConfFileStartingWithSectionHeaderChecksIni) {
  const std::string file = Write("f.conf", "[s]\na=1\na=2\n");
  EXPECT_TRUE(Ran(Run({"check", file}), 1,
                  file + ":3: key 'a' repeats line 2 in section 's': the last "
                         "value wins\n",
                  "propctl: " + file + kGuessedIni));
}

TEST_F(PropctlTest, GetRefusesFileWithLineTheLibraryNeverReads) {
  const std::string file =
      Write("f.properties", "a=1\n" + LineOfLength(512) + "\n");
  EXPECT_TRUE(Ran(Run({"get", file, "a"}, {kLimit}), 2, "",
                  "propctl: " + file +
                      ":2: line of 512 characters; the library cannot read "
                      "this file (see 'propctl check')\n"));
}

TEST_F(PropctlTest, GetOfMissingFileExitsTwo) {
  const std::string file = Path("missing.properties");
  EXPECT_TRUE(Ran(Run({"get", file, "a"}), 2, "",
                  "propctl: " + file + ": No such file or directory\n"));
}

TEST_F(PropctlTest, GetRefusesDirectory) {
  EXPECT_TRUE(Ran(Run({"get", m_dir.path(), "a"}), 2, "",
                  "propctl: " + m_dir.path() + ": not a regular file\n"));
}

// set ----------------------------------------------------------------------

TEST_F(PropctlTest, SetRejectsPlusSignedIntegerAndLeavesFileUnchanged) {
  const std::string file = Write("f.properties", kFlat);
  EXPECT_TRUE(
      Ran(Run({"set", "--type", "integer", file, "port", "+5"}), 2, "",
          "propctl: " + file +
              ": Property 'port' can only contain 'an integer value'\n" +
              kIntegerForm));
  EXPECT_EQ(kFlat, Read("f.properties"));
}

TEST_F(PropctlTest, SetOfListPositionStoresElementText) {
  const std::string file = Write("f.properties", "");
  EXPECT_TRUE(
      Ran(Run({"set", "--type=list:red|green|blue", file, "color", "1"}), 0, "",
          ""));
  EXPECT_EQ("color=green\n", Read("f.properties"));
}

TEST_F(PropctlTest, SetChangesOnlyTheLineOfItsKey) {
  const std::string file =
      Write("f.properties", "# server\n\nport = 8080  # web\nname=demo\n");
  EXPECT_TRUE(Ran(Run({"set", file, "port", "9090"}), 0, "", ""));
  EXPECT_EQ("# server\n\nport = 9090  # web\nname=demo\n",
            Read("f.properties"));
}

TEST_F(PropctlTest, SetOfNewKeyAddsOneLine) {
  const std::string file = Write("f.ini", "; ui\n[s]\nk = 1\n\n; end\n");
  EXPECT_TRUE(Ran(Run({"set", file, "s", "j", "2"}), 0, "", ""));
  EXPECT_EQ("; ui\n[s]\nk = 1\nj=2\n\n; end\n", Read("f.ini"));
}

TEST_F(PropctlTest, SetSaysWhenItWritesTheFileAnew) {
  // The file's key '"a"' reads back from the library's text as 'a': no edit
  // of the file reads as that text does.
  const std::string file = Write("f.properties", "\"\"a\"\"=1\nb=2\n");
  EXPECT_TRUE(Ran(Run({"set", file, "b", "3"}), 0, "",
                  "propctl: " + file +
                      ": written anew, not in its own layout: the table "
                      "lacks an entry of the file\n"));
  EXPECT_EQ("\"a\"=1\nb=3\n", Read("f.properties"));
}

TEST_F(PropctlTest, SetNormalizeWritesFlatFileAsLibraryRewritesIt) {
  const std::string file = Write("f.properties", kFlat);
  EXPECT_TRUE(
      Ran(Run({"set", "--normalize", file, "banner", "hello"}), 0, "", ""));
  EXPECT_EQ("banner=hello\nname=demo\nport=8080\n", Read("f.properties"));
}

TEST_F(PropctlTest, SetReplacesStoredTextThatTypeRejects) {
  const std::string file = Write("f.properties", "port=abc\nx=1\n");
  EXPECT_TRUE(
      Ran(Run({"set", "--type", "integer", file, "port", "9090"}), 0, "", ""));
  EXPECT_EQ("port=9090\nx=1\n", Read("f.properties"));
}

TEST_F(PropctlTest, SetCreatesSectionOfIniFile) {
  const std::string file = Write("f.ini", "[window]\nwidth = 1024\n");
  EXPECT_TRUE(Ran(Run({"set", file, "panel", "width", "240"}), 0, "", ""));
  EXPECT_EQ("[window]\nwidth = 1024\n[panel]\nwidth=240\n", Read("f.ini"));
}

TEST_F(PropctlTest, SetCreatesMissingFile) {
  EXPECT_TRUE(Ran(Run({"set", Path("new.properties"), "k", "v"}), 0, "", ""));
  EXPECT_EQ("k=v\n", Read("new.properties"));
}

TEST_F(PropctlTest, SetWritesHeaderGiven) {
  const std::string file = Write("f.ini", ";old header\n[s]\nk=1\n");
  EXPECT_TRUE(
      Ran(Run({"set", "--header", "user interface", file, "s", "k", "2"}), 0,
          "", ""));
  EXPECT_EQ(";user interface\n[s]\nk=2\n\n", Read("f.ini"));
}

TEST_F(PropctlTest, SetNormalizeKeepsFirstCommentLineOfFlatFileAsHeader) {
  const std::string file =
      Write("f.properties", "#server settings\nport=1\n# note\n");
  EXPECT_TRUE(Ran(Run({"set", "--normalize", file, "port", "2"}), 0, "", ""));
  EXPECT_EQ("#server settings\nport=2\n", Read("f.properties"));
}

TEST_F(PropctlTest, SetNormalizeKeepsFirstCommentLineOfIniFileAsHeader) {
  const std::string file = Write("f.ini", ";user interface\n[s]\nk=1\n");
  EXPECT_TRUE(Ran(Run({"set", "--normalize", file, "s", "k", "2"}), 0, "", ""));
  EXPECT_EQ(";user interface\n[s]\nk=2\n\n", Read("f.ini"));
}

TEST_F(PropctlTest, SetNormalizeKeepsNoHeaderWhenFirstLineIsNoComment) {
  const std::string file = Write("f.properties", "port=1\n#later\n");
  EXPECT_TRUE(Ran(Run({"set", "--normalize", file, "port", "2"}), 0, "", ""));
  EXPECT_EQ("port=2\n", Read("f.properties"));
}

TEST_F(PropctlTest, SetNormalizeKeepsOnlyCommentLineOfTheFormatAsHeader) {
  const std::string file = Write("f.ini", "#not a comment here\n[s]\nk=1\n");
  EXPECT_TRUE(Ran(Run({"set", "--normalize", file, "s", "k", "2"}), 0, "", ""));
  EXPECT_EQ("[s]\nk=2\n\n", Read("f.ini"));
}

TEST_F(PropctlTest, SetWithEmptyHeaderOptionDropsTheHeader) {
  const std::string file = Write("f.properties", "#old\nport=1\n");
  EXPECT_TRUE(Ran(Run({"set", "--header=", file, "port", "2"}), 0, "", ""));
  EXPECT_EQ("port=2\n", Read("f.properties"));
}

TEST_F(PropctlTest, SetStoresTextFormOfType) {
  const std::string file = Write("f.properties", "");
  EXPECT_TRUE(
      Ran(Run({"set", "--type", "ip", file, "addr", "10.1"}), 0, "", ""));
  EXPECT_EQ("addr=10.0.0.1\n", Read("f.properties"));
}

TEST_F(PropctlTest, SetTakesWordsAfterDoubleDashAsOperands) {
  const std::string file = Write("f.properties", "");
  EXPECT_TRUE(Ran(Run({"set", file, "--", "k", "--x"}), 0, "", ""));
  EXPECT_EQ("k=--x\n", Read("f.properties"));
}

TEST_F(PropctlTest, SetTakesNegativeIntegerAsOperand) {
  const std::string file = Write("f.properties", "");
  EXPECT_TRUE(
      Ran(Run({"set", "--type", "integer", file, "n", "-12"}), 0, "", ""));
  EXPECT_EQ("n=-12\n", Read("f.properties"));
}

TEST_F(PropctlTest, SetRejectsHashInStringAndLeavesFileUnchanged) {
  const std::string file = Write("f.properties", kFlat);
  EXPECT_TRUE(Ran(Run({"set", file, "name", "a#b"}), 2, "",
                  "propctl: " + file +
                      ": Property values can not contain character \"#\"\n" +
                      kStringForm));
  EXPECT_EQ(kFlat, Read("f.properties"));
}

TEST_F(PropctlTest, SetRejectsKeyTheLibraryRejects) {
  const std::string file = Write("f.properties", kFlat);
  EXPECT_TRUE(Ran(Run({"set", file, "a=b#", "v"}), 2, "",
                  "propctl: " + file +
                      ": Property key can not contain characters: '= #'\n"));
  EXPECT_EQ(kFlat, Read("f.properties"));
}

TEST_F(PropctlTest, SetRejectsEntryThatWouldReadBackDifferently) {
  const std::string file = Write("f.properties", kFlat);
  EXPECT_TRUE(Ran(Run({"set", file, "name", " x"}), 2, "",
                  "propctl: " + file +
                      ": the entry 'name' = ' x' would not read back as "
                      "written (see 'propctl help set')\n"));
  EXPECT_EQ(kFlat, Read("f.properties"));
}

TEST_F(PropctlTest, SetRejectsEmptySectionName) {
  const std::string file = Write("f.ini", kIni);
  EXPECT_TRUE(Ran(Run({"set", file, "", "k", "v"}), 2, "",
                  "propctl: " + file +
                      ": the entry 'k' = 'v' of section '' would not read "
                      "back as "
                      "written (see 'propctl help set')\n"));
  EXPECT_EQ(kIni, Read("f.ini"));
}

TEST_F(PropctlTest, SetRejectsEntryNeedingLineBeyondLimit) {
  const std::string file = Write("f.properties", kFlat);
  EXPECT_TRUE(Ran(Run({"set", file, "k", std::string(510, 'v')}, {kLimit}), 2,
                  "",
                  "propctl: " + file +
                      ": the entry would need a line of 512 characters; "
                      "the library reads at most 511\n"));
  EXPECT_EQ(kFlat, Read("f.properties"));
}

TEST_F(PropctlTest, SetAcceptsEntryOfLongestLine) {
  const std::string file = Write("f.properties", "");
  EXPECT_TRUE(Ran(Run({"set", file, "k", std::string(509, 'v')}), 0, "", ""));
  EXPECT_EQ("k=" + std::string(509, 'v') + "\n", Read("f.properties"));
}

TEST_F(PropctlTest, SetRejectsDoubleWrittenBeyondLargestDouble) {
  const std::string file = Write("f.properties", kFlat);
  EXPECT_TRUE(
      Ran(Run({"set", "--type", "double", file, "d", "1.7976931348623157e308"}),
          2, "",
          "propctl: " + file +
              ": '1.7976931348623157e308' would be stored as "
              "'1.79769313486232e+308', which the type refuses when read "
              "back\n"));
  EXPECT_EQ(kFlat, Read("f.properties"));
}

TEST_F(PropctlTest, SetRefusesFileWithLineTheLibraryNeverReads) {
  const std::string text = LineOfLength(600) + "\n";
  const std::string file = Write("f.properties", text);
  EXPECT_TRUE(Ran(Run({"set", file, "a", "1"}, {kLimit}), 2, "",
                  "propctl: " + file +
                      ":1: line of 600 characters; the library cannot read "
                      "this file (see 'propctl check')\n"));
  EXPECT_EQ(text, Read("f.properties"));
}

// A refused set changes no byte of the file, whatever refuses it.

TEST_F(PropctlTest, SetRefusesFlatKeyHoldingEqualsAndLeavesFileUnchanged) {
  const std::string file = Write("f.properties", kFlat);
  EXPECT_TRUE(Ran(Run({"set", file, "a=b", "v"}), 2, "",
                  "propctl: " + file +
                      ": the entry 'a=b' = 'v' would not read back as "
                      "written (see 'propctl help set')\n"));
  EXPECT_EQ(kFlat, Read("f.properties"));
}

TEST_F(PropctlTest, SetRefusesIniKeyHoldingEqualsAndLeavesFileUnchanged) {
  const std::string file = Write("f.ini", kIni);
  EXPECT_TRUE(Ran(Run({"set", file, "window", "a=b", "v"}), 2, "",
                  "propctl: " + file +
                      ": the entry 'a=b' = 'v' of section 'window' would not "
                      "read back as written (see 'propctl help set')\n"));
  EXPECT_EQ(kIni, Read("f.ini"));
}

TEST_F(PropctlTest, SetRefusesIniKeyThatReadsAsSectionHeader) {
  const std::string file = Write("f.ini", kIni);
  EXPECT_TRUE(Ran(Run({"set", file, "window", "[k", "v"}), 2, "",
                  "propctl: " + file +
                      ": the entry '[k' = 'v' of section 'window' would not "
                      "read back as written (see 'propctl help set')\n"));
  EXPECT_EQ(kIni, Read("f.ini"));
}

TEST_F(PropctlTest, SetRefusesSectionHoldingCommentCharacter) {
  const std::string file = Write("f.ini", kIni);
  EXPECT_TRUE(Ran(Run({"set", file, "a;b", "k", "v"}), 2, "",
                  "propctl: " + file +
                      ": the entry 'k' = 'v' of section 'a;b' would not read "
                      "back as "
                      "written (see 'propctl help set')\n"));
  EXPECT_EQ(kIni, Read("f.ini"));
}

TEST_F(PropctlTest, SetRefusesValueHoldingLineBreak) {
  const std::string file = Write("f.properties", kFlat);
  EXPECT_TRUE(Ran(Run({"set", file, "k", "x\ny=z"}), 2, "",
                  "propctl: " + file +
                      ": the entry 'k' = 'x\ny=z' would not read back as "
                      "written (see 'propctl help set')\n"));
  EXPECT_EQ(kFlat, Read("f.properties"));
}

TEST_F(PropctlTest, SetRefusesKeyHoldingLineBreak) {
  const std::string file = Write("f.properties", kFlat);
  EXPECT_TRUE(Ran(Run({"set", file, "a\nb", "v"}), 2, "",
                  "propctl: " + file +
                      ": the entry 'a\nb' = 'v' would not read back as "
                      "written (see 'propctl help set')\n"));
  EXPECT_EQ(kFlat, Read("f.properties"));
}

TEST_F(PropctlTest, SetRejectsIntegerOutOfRangeAndLeavesFileUnchanged) {
  const std::string file = Write("f.properties", kFlat);
  EXPECT_TRUE(
      Ran(Run({"set", "--type", "integer", file, "port", "2147483648"}), 2, "",
          "propctl: " + file +
              ": Property 'port' can only contain 'an integer value'\n" +
              kIntegerForm));
  EXPECT_EQ(kFlat, Read("f.properties"));
}

TEST_F(PropctlTest, SetRejectsBooleanOtherThanTrueOrFalse) {
  const std::string file = Write("f.ini", kIni);
  EXPECT_TRUE(Ran(
      Run({"set", "--type", "boolean", file, "window", "on", "yes"}), 2, "",
      "propctl: " + file +
          ": Property 'on' can only contain 'true or false'\n" + kBooleanForm));
  EXPECT_EQ(kIni, Read("f.ini"));
}

TEST_F(PropctlTest, SetRejectsTextThatIsNoDouble) {
  const std::string file = Write("f.properties", kFlat);
  EXPECT_TRUE(Ran(Run({"set", "--type", "double", file, "d", "1,5"}), 2, "",
                  "propctl: " + file +
                      ": Property 'd' can only contain 'a double value'\n" +
                      kDoubleForm));
  EXPECT_EQ(kFlat, Read("f.properties"));
}

TEST_F(PropctlTest, SetRejectsTextThatIsNoIpAddress) {
  const std::string file = Write("f.properties", kFlat);
  EXPECT_TRUE(Ran(
      Run({"set", "--type", "ip", file, "addr", "10.0.0.256"}), 2, "",
      "propctl: " + file +
          ": Property 'addr' can only contain 'an ip address'\n" + kIpForm));
  EXPECT_EQ(kFlat, Read("f.properties"));
}

TEST_F(PropctlTest, SetRejectsValueOutsideTheList) {
  const std::string file = Write("f.properties", kFlat);
  EXPECT_TRUE(Ran(Run({"set", "--type", "list:a|b|c", file, "l", "3"}), 2, "",
                  "propctl: " + file +
                      ": Property 'l' can only contain 'a value of the list "
                      "or a number of the selected element'\n"
                      "propctl: list: one of a (0), b (1), c (2)\n"));
  EXPECT_EQ(kFlat, Read("f.properties"));
}

TEST_F(PropctlTest, SetRejectsValueOfListWithItsElementsAndPositions) {
  const std::string file = Write("f.ini", kIni);
  EXPECT_TRUE(
      Ran(Run({"set", "--type", "list:debug||info|error", file, "s", "level",
               "warn"}),
          2, "",
          "propctl: " + file +
              ": Property 'level' can only contain 'a value of the list or "
              "a number of the selected element'\n"
              "propctl: list: one of debug (0), info (1), error (2)\n"));
  EXPECT_EQ(kIni, Read("f.ini"));
}

TEST_F(PropctlTest, SetRefusesListTypeWithoutElements) {
  const std::string file = Write("f.properties", kFlat);
  EXPECT_TRUE(Ran(Run({"set", "--type", "list:|", file, "k", "0"}), 2, "",
                  "propctl set: the list type needs at least one element; "
                  "try 'propctl help set'\n"));
  EXPECT_EQ(kFlat, Read("f.properties"));
}

// A library that keeps strict values refuses a value only when it is set,
// after registering a key that the file holds has rewritten the file.
TEST_F(PropctlTest, SetRefusesWhatStrictValuesRefuseBeforeAnyRewrite) {
  const std::string text = "k = 1\n# note\n";
  const std::string file = Write("f.properties", text);
  EXPECT_TRUE(Ran(Run({"set", file, "k", "a\rb"}, {"LIBPROPERTIES_STRICT=1"}),
                  2, "",
                  "propctl: " + file +
                      ": Property 'k' can not be kept in its file: the value "
                      "holds a line break\n"));
  EXPECT_EQ(text, Read("f.properties"));
}

TEST_F(PropctlTest, SetRefusesWhatStrictValuesRefuseInIniFile) {
  const std::string text = "[s]\nk = 1\n; note\n";
  const std::string file = Write("f.ini", text);
  EXPECT_TRUE(Ran(
      Run({"set", file, "s", "k", "a\rb"}, {"LIBPROPERTIES_STRICT=1"}), 2, "",
      "propctl: " + file +
          ": Property 'k' of section 's' can not be kept in its file: the "
          "value holds a line break\n"));
  EXPECT_EQ(text, Read("f.ini"));
}

TEST_F(PropctlTest, SetRefusesListElementThatStrictValuesRefuse) {
  const std::string file = Write("f.properties", kFlat);
  EXPECT_TRUE(Ran(Run({"set", "--type", "list: a|b", file, "k", "b"},
                      {"LIBPROPERTIES_STRICT=1"}),
                  2, "",
                  "propctl: " + file +
                      ": Property 'k' can not be kept in its file: the value "
                      "starts or ends with a blank\n"));
  EXPECT_EQ(kFlat, Read("f.properties"));
}

TEST_F(PropctlTest, SetStoresUnderStrictValuesWhatTheyAccept) {
  const std::string file = Write("f.properties", "k = 1\n");
  EXPECT_TRUE(
      Ran(Run({"set", file, "k", "2"}, {"LIBPROPERTIES_STRICT=1"}), 0, "", ""));
  EXPECT_EQ("k = 2\n", Read("f.properties"));
}

TEST_F(PropctlTest, SetRejectsHeaderLongerThanALineAndLeavesFileUnchanged) {
  const std::string file = Write("f.properties", kFlat);
  EXPECT_TRUE(Ran(
      Run({"set", "--header", std::string(511, 'h'), file, "k", "v"}), 2, "",
      "propctl set: the header must be one line of at most 510 "
      "characters; try 'propctl help set'\n"));
  EXPECT_EQ(kFlat, Read("f.properties"));
}

TEST_F(PropctlTest, SetOfUnknownTypeLeavesFileUnchanged) {
  const std::string file = Write("f.properties", kFlat);
  EXPECT_EQ(2, Run({"set", "--type", "int", file, "port", "1"}).status);
  EXPECT_EQ(kFlat, Read("f.properties"));
}

TEST_F(PropctlTest, SetRefusesDirectoryAndLeavesItEmpty) {
  const std::string dir = Path("d.properties");
  ASSERT_EQ(0, ::mkdir(dir.c_str(), 0700));
  EXPECT_TRUE(Ran(Run({"set", dir, "k", "v"}), 2, "",
                  "propctl: " + dir + ": not a regular file\n"));
  EXPECT_EQ(0, ::rmdir(dir.c_str()));
}

// Long lines -------------------------------------------------------------

TEST_F(PropctlTest, GetReadsFileWithLongLineWhenLongLinesAreOn) {
  const std::string file =
      Write("f.properties", "a=1\n" + LineOfLength(600) + "\nb=2\n");
  EXPECT_TRUE(Ran(Run({"get", file, "k"}, {kRead}), 0,
                  std::string(598, 'x') + "\n", ""));
  EXPECT_TRUE(Ran(Run({"get", file, "b"}, {kRead}), 0, "2\n", ""));
}

TEST_F(PropctlTest, GetReadsIniFileWithLongLineWhenLongLinesAreOn) {
  const std::string file =
      Write("f.ini", "[s]\n" + LineOfLength(600) + "\nb=2\n");
  EXPECT_TRUE(Ran(Run({"get", file, "s", "k"}, {kRead}), 0,
                  std::string(598, 'x') + "\n", ""));
}

TEST_F(PropctlTest, GetRefusesFileWithLongLineUnderTheLimit) {
  const std::string file =
      Write("f.properties", "a=1\n" + LineOfLength(600) + "\n");
  EXPECT_TRUE(Ran(Run({"get", file, "a"}, {kLimit}), 2, "",
                  "propctl: " + file +
                      ":2: line of 600 characters; the library cannot read "
                      "this file (see 'propctl check')\n"));
}

TEST_F(PropctlTest, ListPrintsLongEntryWhenLongLinesAreOn) {
  const std::string file =
      Write("f.properties", "b=2\n" + LineOfLength(600) + "\na=1\n");
  EXPECT_TRUE(Ran(Run({"list", file}, {kRead}), 0,
                  "a=1\nb=2\n" + LineOfLength(600) + "\n", ""));
}

TEST_F(PropctlTest, ListRefusesFileWithLongLineUnderTheLimit) {
  const std::string file = Write("f.ini", "[s]\n" + LineOfLength(600) + "\n");
  EXPECT_TRUE(Ran(Run({"list", file}, {kLimit}), 2, "",
                  "propctl: " + file +
                      ":2: line of 600 characters; the library cannot read "
                      "this file (see 'propctl check')\n"));
}

TEST_F(PropctlTest, SetKeepsLongEntryOfFileWhenLongLinesAreOn) {
  const std::string file = Write("f.properties", LineOfLength(600) + "\na=1\n");
  EXPECT_TRUE(Ran(Run({"set", file, "a", "2"}, {kRead}), 0, "", ""));
  EXPECT_EQ(LineOfLength(600) + "\na=2\n", Read("f.properties"));
}

TEST_F(PropctlTest, SetStoresEntryOfLongLineWhenLongLinesAreOn) {
  const std::string file = Write("f.ini", "[s]\na=1\n");
  const std::string value(600, 'v');
  EXPECT_TRUE(Ran(Run({"set", file, "s", "k", value}, {kRead}), 0, "", ""));
  EXPECT_EQ("[s]\na=1\nk=" + value + "\n", Read("f.ini"));
  EXPECT_TRUE(Ran(Run({"get", file, "s", "k"}, {kRead}), 0, value + "\n", ""));
}

TEST_F(PropctlTest, SetRefusesEntryOfLongLineUnderTheLimit) {
  const std::string file = Write("f.properties", kFlat);
  EXPECT_TRUE(Ran(Run({"set", file, "k", std::string(600, 'v')}, {kLimit}), 2,
                  "",
                  "propctl: " + file +
                      ": the entry would need a line of 602 characters; "
                      "the library reads at most 511\n"));
  EXPECT_EQ(kFlat, Read("f.properties"));
}

TEST_F(PropctlTest, SetRefusesFileWithLongLineUnderTheLimit) {
  const std::string text = "a=1\n" + LineOfLength(600) + "\n";
  const std::string file = Write("f.properties", text);
  EXPECT_TRUE(Ran(Run({"set", file, "a", "2"}, {kLimit}), 2, "",
                  "propctl: " + file +
                      ":2: line of 600 characters; the library cannot read "
                      "this file (see 'propctl check')\n"));
  EXPECT_EQ(text, Read("f.properties"));
}

TEST_F(PropctlTest, CheckReportsLongLineWhenLongLinesAreOn) {
  const std::string file =
      Write("f.properties", "a=1\n" + LineOfLength(600) + "\n");
  EXPECT_TRUE(Ran(Run({"check", file}, {kRead}), 1,
                  file + ":2: line of 600 characters: the library's reader "
                         "never returns on a line of 512 or more unless "
                         "LIBPROPERTIES_LONG_LINES=read\n",
                  ""));
}

TEST_F(PropctlTest, SetIntoMissingDirectoryExitsTwo) {
  const std::string file = Path("missing/f.properties");
  EXPECT_TRUE(Ran(Run({"set", file, "a", "1"}), 2, "",
                  "propctl: " + file + ": No such file or directory\n"));
}

TEST_F(PropctlTest, SetRejectsUnknownType) {
  const std::string file = Write("f.properties", kFlat);
  EXPECT_TRUE(Ran(Run({"set", "--type", "int", file, "port", "1"}), 2, "",
                  "propctl set: unknown type 'int'; try 'propctl help set'\n"));
}

TEST_F(PropctlTest, SetRejectsHeaderOfTwoLines) {
  const std::string file = Write("f.properties", kFlat);
  EXPECT_TRUE(Ran(Run({"set", "--header", "a\nb=c", file, "k", "v"}), 2, "",
                  "propctl set: the header must be one line of at most 510 "
                  "characters; try 'propctl help set'\n"));
  EXPECT_EQ(kFlat, Read("f.properties"));
}

TEST_F(PropctlTest, SetInIniFileNeedsSection) {
  const std::string file = Write("f.ini", kIni);
  EXPECT_TRUE(Ran(Run({"set", file, "width", "5"}), 2, "",
                  "propctl set: missing VALUE; try 'propctl help set'\n"));
}

// --dry-run ----------------------------------------------------------------

TEST_F(PropctlTest, SetDryRunPrintsTheNewTextAndChangesNothing) {
  const std::string text = "#server\nport = 8080\n# comment\nname=demo\n";
  const std::string file = Write("f.properties", text);
  EXPECT_TRUE(Ran(Run({"set", "--dry-run", file, "port", "9090"}), 0,
                  "#server\nport = 9090\n# comment\nname=demo\n", ""));
  EXPECT_EQ(text, Read("f.properties"));
}

TEST_F(PropctlTest, SetDryRunMakesNoMissingFile) {
  EXPECT_TRUE(Ran(Run({"set", "--dry-run", Path("new.ini"), "s", "k", "v"}), 0,
                  "[s]\nk=v\n\n", ""));
  EXPECT_FALSE(test_support::FileExists(Path("new.ini")));
}

TEST_F(PropctlTest, SetDryRunRefusesWhatSetRefuses) {
  const std::string file = Write("f.properties", kFlat);
  EXPECT_TRUE(Ran(Run({"set", "--dry-run", file, "a=b", "v"}), 2, "",
                  "propctl: " + file +
                      ": the entry 'a=b' = 'v' would not read back as "
                      "written (see 'propctl help set')\n"));
  EXPECT_EQ(kFlat, Read("f.properties"));
}

// del ----------------------------------------------------------------------

TEST_F(PropctlTest, DelRemovesFlatKeyAndKeepsEverythingElse) {
  const std::string file =
      Write("f.properties", "#server\nport = 8080\n# comment\nname=demo\n");
  EXPECT_TRUE(Ran(Run({"del", file, "port"}), 0, "", ""));
  EXPECT_EQ("#server\n# comment\nname=demo\n", Read("f.properties"));
}

TEST_F(PropctlTest, DelNormalizeKeepsTheHeaderOnly) {
  const std::string file =
      Write("f.properties", "#server\nport = 8080\n# comment\nname=demo\n");
  EXPECT_TRUE(Ran(Run({"del", "--normalize", file, "port"}), 0, "", ""));
  EXPECT_EQ("#server\nname=demo\n", Read("f.properties"));
}

TEST_F(PropctlTest, DelRemovesKeyOfSectionAndKeepsTheEmptySection) {
  const std::string file = Write("f.ini", kIni);
  EXPECT_TRUE(Ran(Run({"del", file, "panel", "width"}), 0, "", ""));
  EXPECT_EQ("[window]\nwidth=1024\n\n[panel]\n", Read("f.ini"));
}

TEST_F(PropctlTest, DelRemovesWholeSectionOfIniFile) {
  const std::string file = Write("f.ini", ";ui\n" + std::string(kIni));
  EXPECT_TRUE(Ran(Run({"del", file, "window"}), 0, "", ""));
  EXPECT_EQ(";ui\n\n[panel]\nwidth=240\n", Read("f.ini"));
}

TEST_F(PropctlTest, UnsetRemovesKeyAsDelDoes) {
  const std::string file = Write("f.properties", kFlat);
  EXPECT_TRUE(Ran(Run({"unset", file, "name"}), 0, "", ""));
  EXPECT_EQ("port = 8080\n# comment\n", Read("f.properties"));
}

TEST_F(PropctlTest, DelWithHeaderOptionWritesThatHeader) {
  const std::string file = Write("f.properties", "#old\na=1\nb=2\n");
  EXPECT_TRUE(Ran(Run({"del", "--header", "new", file, "a"}), 0, "", ""));
  EXPECT_EQ("#new\nb=2\n", Read("f.properties"));
}

TEST_F(PropctlTest, DelOfAbsentKeyExitsOneAndLeavesFileUnchanged) {
  const std::string file = Write("f.properties", kFlat);
  EXPECT_TRUE(Ran(Run({"del", file, "comment"}), 1, "", ""));
  EXPECT_EQ(kFlat, Read("f.properties"));
}

TEST_F(PropctlTest, DelOfAbsentSectionExitsOneAndLeavesFileUnchanged) {
  const std::string file = Write("f.ini", kIni);
  EXPECT_TRUE(Ran(Run({"del", file, "missing"}), 1, "", ""));
  EXPECT_TRUE(Ran(Run({"del", file, "missing", "width"}), 1, "", ""));
  EXPECT_EQ(kIni, Read("f.ini"));
}

TEST_F(PropctlTest, DelOfMissingFileExitsTwoAndMakesNoFile) {
  const std::string file = Path("missing.properties");
  EXPECT_TRUE(Ran(Run({"del", file, "a"}), 2, "",
                  "propctl: " + file + ": No such file or directory\n"));
  EXPECT_FALSE(test_support::FileExists(file));
}

TEST_F(PropctlTest, DelRefusesFileWithLongLineUnderTheLimit) {
  const std::string text = "a=1\n" + LineOfLength(600) + "\n";
  const std::string file = Write("f.properties", text);
  EXPECT_TRUE(Ran(Run({"del", file, "a"}, {kLimit}), 2, "",
                  "propctl: " + file +
                      ":2: line of 600 characters; the library cannot read "
                      "this file (see 'propctl check')\n"));
  EXPECT_EQ(text, Read("f.properties"));
}

TEST_F(PropctlTest, DelRejectsHeaderOfTwoLinesAndLeavesFileUnchanged) {
  const std::string file = Write("f.properties", kFlat);
  EXPECT_TRUE(Ran(Run({"del", "--header", "a\nb", file, "port"}), 2, "",
                  "propctl del: the header must be one line of at most 510 "
                  "characters; try 'propctl help del'\n"));
  EXPECT_EQ(kFlat, Read("f.properties"));
}

TEST_F(PropctlTest, SetRefusesStandardInputBeforeReadingIt) {
  EXPECT_TRUE(Ran(RunWithInput({"set", "-", "s", "k", "v"}, "[s]\nk=1\n"), 2,
                  "",
                  "propctl set: FILE '-' (standard input) is only read by "
                  "get, list, sections and check; try 'propctl help set'\n"));
}

TEST_F(PropctlTest, DelDryRunPrintsTheNewTextAndChangesNothing) {
  const std::string file = Write("f.ini", kIni);
  EXPECT_TRUE(Ran(Run({"del", "--dry-run", file, "window", "width"}), 0,
                  "[window]\n\n[panel]\nwidth=240\n", ""));
  EXPECT_EQ(kIni, Read("f.ini"));
}

TEST_F(PropctlTest, DelOfFlatFileNeedsKey) {
  EXPECT_TRUE(Ran(Run({"del", Write("f.properties", kFlat)}), 2, "",
                  "propctl del: missing KEY; try 'propctl help del'\n"));
}

TEST_F(PropctlTest, DelOfIniFileTakesAtMostSectionAndKey) {
  const std::string file = Write("f.ini", kIni);
  EXPECT_TRUE(Ran(Run({"del", file, "a", "b", "c"}), 2, "",
                  "propctl del: too many operands; try 'propctl help del'\n"));
  EXPECT_EQ(kIni, Read("f.ini"));
}

// sections -----------------------------------------------------------------

TEST_F(PropctlTest, SectionsPrintsNamesInByteOrderWithEmptyOnes) {
  const std::string file = Write("f.ini", "[b]\nk=1\n[a]\n[]\nx=1\n");
  EXPECT_TRUE(Ran(Run({"sections", file}), 0, "a\nb\n", ""));
}

TEST_F(PropctlTest, SectionsOfFlatFileExitsTwo) {
  const std::string file = Write("f.properties", kFlat);
  EXPECT_TRUE(Ran(Run({"sections", file}), 2, "",
                  "propctl: " + file +
                      ": a flat file has no sections (--ini reads it as "
                      "INI)\n"));
}

// --json -------------------------------------------------------------------

TEST_F(PropctlTest, GetJsonPrintsKeyAndValue) {
  const std::string file = Write("f.properties", kFlat);
  EXPECT_TRUE(Ran(Run({"get", "--json", file, "port"}), 0,
                  "{\"key\":\"port\",\"value\":\"8080\"}\n", ""));
}

TEST_F(PropctlTest, GetJsonOfIniFilePrintsSectionToo) {
  const std::string file = Write("f.ini", kIni);
  EXPECT_TRUE(
      Ran(Run({"get", "--json", file, "panel", "width"}), 0,
          "{\"section\":\"panel\",\"key\":\"width\",\"value\":\"240\"}\n", ""));
}

TEST_F(PropctlTest, GetJsonOfAbsentKeyPrintsNothingAndExitsOne) {
  const std::string file = Write("f.properties", kFlat);
  EXPECT_TRUE(Ran(Run({"get", "--json", file, "nope"}), 1, "", ""));
}

TEST_F(PropctlTest, ListJsonOfFlatFileIsOneObject) {
  const std::string file = Write("f.properties", kFlat);
  EXPECT_TRUE(Ran(Run({"list", "--json", file}), 0,
                  "{\"name\":\"demo\",\"port\":\"8080\"}\n", ""));
}

TEST_F(PropctlTest, ListJsonOfIniFileIsObjectOfSections) {
  const std::string file = Write("f.ini", kIni + std::string("[empty]\n"));
  EXPECT_TRUE(Ran(Run({"list", "--json", file}), 0,
                  "{\"empty\":{},\"panel\":{\"width\":\"240\"},"
                  "\"window\":{\"width\":\"1024\"}}\n",
                  ""));
}

TEST_F(PropctlTest, ListJsonOfEmptyFileIsEmptyObject) {
  const std::string file = Write("f.properties", "");
  EXPECT_TRUE(Ran(Run({"list", "--json", file}), 0, "{}\n", ""));
}

TEST_F(PropctlTest, JsonEscapesQuotesBackslashesAndControlBytes) {
  const std::string file = Write("f.properties", "k=a\"b\\c\x01\td\x7f\n");
  EXPECT_TRUE(Ran(
      Run({"get", "--json", file, "k"}), 0,
      "{\"key\":\"k\",\"value\":\"a\\\"b\\\\c\\u0001\\u0009d\\u007f\"}\n", ""));
}

TEST_F(PropctlTest, JsonPassesValidUtf8AndEscapesOtherHighBytes) {
  // e-acute, the euro sign and U+1F600 pass; a lone 0xFF, an overlong
  // "/" (C0 AF) and a surrogate (ED A0 80) are escaped byte by byte.
  const std::string file =
      Write("f.properties",
            "k=\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\xFF\xC0\xAF\xED\xA0\x80\n");
  EXPECT_TRUE(Ran(Run({"list", "--json", file}), 0,
                  "{\"k\":\"\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\\u00ff"
                  "\\u00c0\\u00af\\u00ed\\u00a0\\u0080\"}\n",
                  ""));
}

TEST_F(PropctlTest, JsonBelongsToGetAndList) {
  EXPECT_TRUE(Ran(Run({"check", "--json", Path("f.properties")}), 2, "",
                  "propctl check: option '--json' belongs to 'get' and "
                  "'list'; try 'propctl help check'\n"));
}

TEST_F(PropctlTest, DryRunBelongsToSetAndDel) {
  EXPECT_TRUE(Ran(Run({"get", "--dry-run", Path("f.properties"), "k"}), 2, "",
                  "propctl get: option '--dry-run' belongs to 'set' and "
                  "'del'; try 'propctl help get'\n"));
}

// Standard input -----------------------------------------------------------

TEST_F(PropctlTest, GetReadsStandardInputAsFlatFile) {
  EXPECT_TRUE(Ran(RunWithInput({"get", "-", "port"}, kFlat), 0, "8080\n", ""));
}

TEST_F(PropctlTest, IniOptionReadsStandardInputAsIni) {
  EXPECT_TRUE(Ran(RunWithInput({"--ini", "get", "-", "panel", "width"}, kIni),
                  0, "240\n", ""));
}

TEST_F(PropctlTest, ListGuessesFormatOfStandardInputFromItsContent) {
  EXPECT_TRUE(Ran(RunWithInput({"list", "-"}, "[s]\nk=v\n"), 0, "[s]\nk=v\n\n",
                  "propctl: -" + std::string(kGuessedIni)));
}

TEST_F(PropctlTest, SectionsReadsStandardInput) {
  EXPECT_TRUE(Ran(RunWithInput({"--ini", "sections", "-"}, kIni), 0,
                  "panel\nwindow\n", ""));
}

TEST_F(PropctlTest, CheckReadsStandardInput) {
  EXPECT_TRUE(Ran(RunWithInput({"check", "-"}, "a=1\na=2\n"), 1,
                  "-:2: key 'a' repeats line 1: the last value wins\n", ""));
}

TEST_F(PropctlTest, SetRefusesStandardInput) {
  EXPECT_TRUE(Ran(RunWithInput({"set", "-", "k", "v"}, ""), 2, "",
                  "propctl set: FILE '-' (standard input) is only read by "
                  "get, list, sections and check; try 'propctl help set'\n"));
}

TEST_F(PropctlTest, DelRefusesStandardInput) {
  EXPECT_TRUE(Ran(RunWithInput({"--flat", "del", "-", "k"}, "k=v\n"), 2, "",
                  "propctl del: FILE '-' (standard input) is only read by "
                  "get, list, sections and check; try 'propctl help del'\n"));
}

TEST_F(PropctlTest, WatchRefusesStandardInput) {
  EXPECT_TRUE(Ran(RunWithInput({"watch", "-"}, ""), 2, "",
                  "propctl watch: FILE '-' (standard input) is only read by "
                  "get, list, sections and check; try 'propctl help "
                  "watch'\n"));
}

// list ---------------------------------------------------------------------

TEST_F(PropctlTest, ListPrintsFlatEntriesInKeyOrder) {
  const std::string file =
      Write("f.properties", "b=2\n# c=3\na = \"1\"\nb=3\njunk\n");
  EXPECT_TRUE(Ran(Run({"list", file}), 0, "a=1\nb=3\n", ""));
}

TEST_F(PropctlTest, ListPrintsIniSectionsAsLibraryWritesThem) {
  const std::string file =
      Write("f.ini", "x=0\n[b]\nk=1\n[a]\nk=2\nj=3\n[]\ny=4\n");
  EXPECT_TRUE(Ran(Run({"list", file}), 0, "[a]\nj=3\nk=2\n\n[b]\nk=1\n\n", ""));
}

// check --------------------------------------------------------------------

TEST_F(PropctlTest, CheckReportsLineTheLibraryNeverReadsWithItsNumber) {
  EXPECT_TRUE(Reports("f.properties", "a=1\n" + LineOfLength(512) + "\nb=2\n",
                      {"2: line of 512 characters: the library's reader "
                       "never returns on a line of 512 or more unless "
                       "LIBPROPERTIES_LONG_LINES=read"}));
}

TEST_F(PropctlTest, CheckReportsLineOfLongestLength) {
  EXPECT_TRUE(Reports("f.properties", LineOfLength(511) + "\n",
                      {"1: line of 511 characters: the longest the reader "
                       "takes; one more and the file cannot be read"}));
}

TEST_F(PropctlTest, CheckAcceptsLineOneShorterThanLongest) {
  EXPECT_TRUE(Reports("f.properties", LineOfLength(510) + "\n", {}));
}

TEST_F(PropctlTest, CheckReportsRepeatedFlatKey) {
  EXPECT_TRUE(Reports("f.properties", "a=1\nb=2\n a = 3\n",
                      {"3: key 'a' repeats line 1: the last value wins"}));
}

TEST_F(PropctlTest, CheckReportsRepeatedKeyWithinOneSectionOnly) {
  EXPECT_TRUE(Reports("f.ini", "[s]\na=1\n[t]\na=2\na=3\n",
                      {"5: key 'a' repeats line 4 in section 't': the last "
                       "value wins"}));
}

TEST_F(PropctlTest, CheckReportsRepeatedSection) {
  EXPECT_TRUE(Reports("f.ini", "[s]\na=1\n[t]\n[s]\nb=2\n",
                      {"4: section 's' repeats line 1: the earlier entries "
                       "are dropped"}));
}

TEST_F(PropctlTest, CheckReportsEntryBeforeFirstSection) {
  EXPECT_TRUE(Reports("f.ini", ";header\na=1\n[s]\nb=2\n",
                      {"2: entry before the first section: dropped"}));
}

TEST_F(PropctlTest, CheckReportsEntryUnderEmptySectionName) {
  EXPECT_TRUE(Reports("f.ini", "[s]\na=1\n[]\nb=2\n",
                      {"4: entry under an empty section name: dropped"}));
}

TEST_F(PropctlTest, CheckReportsFlatLineWithoutEquals) {
  EXPECT_TRUE(Reports("f.properties", "#header\n\n \t\njunk\na=1\n",
                      {"4: no '=': the line is ignored"}));
}

TEST_F(PropctlTest, CheckReportsIniLineWithoutEqualsThatIsNoHeader) {
  EXPECT_TRUE(Reports("f.ini", ";header\n[s]\n  ; note\njunk\n",
                      {"4: no '=': the line is ignored"}));
}

TEST_F(PropctlTest, CheckReportsHashInsideQuotesOfFlatValue) {
  EXPECT_TRUE(Reports("f.properties", "a=\"x#y\"\nb=\"x\" # note\n",
                      {"1: '#' inside quotes starts a comment: the rest of "
                       "the line is ignored",
                       "2: a rewrite drops the quotes around the value"}));
}

TEST_F(PropctlTest, CheckReportsSemicolonInsideQuotesOfIniValue) {
  EXPECT_TRUE(Reports("f.ini", "[s]\na = \"x;y\"\nb=\"#\"\n",
                      {"2: ';' inside quotes starts a comment: the rest of "
                       "the line is ignored",
                       "3: a rewrite drops the quotes around the value"}));
}

TEST_F(PropctlTest, CheckReportsHeaderWithoutClosingBracket) {
  EXPECT_TRUE(Reports("f.ini", "[abc\na=1\n",
                      {"1: section header without ']': read as section "
                       "'abc'"}));
}

TEST_F(PropctlTest, CheckReportsTextAfterHeader) {
  EXPECT_TRUE(Reports("f.ini", "[s] x=1\n", {"1: text after ']' is ignored"}));
}

TEST_F(PropctlTest, CheckReportsNulByte) {
  EXPECT_TRUE(Reports("f.properties", "a=12\0003\n"s,
                      {"1: NUL byte: the reader ignores the rest of the "
                       "line"}));
}

TEST_F(PropctlTest, CheckReportsByteOrderMarkInFrontOfFirstKey) {
  EXPECT_TRUE(Reports("f.properties", "\xEF\xBB\xBFname=x\n",
                      {"1: UTF-8 byte-order mark: read as the start of the "
                       "key 'name'"}));
}

TEST_F(PropctlTest, CheckReportsByteOrderMarkThatHidesFirstIniHeader) {
  EXPECT_TRUE(Reports("f.ini", "\xEF\xBB\xBF[s]\na=1\nb=2\n[t]\nc=3\n",
                      {"1: UTF-8 byte-order mark: this section header is not "
                       "read as one",
                       "2: entry before the first section: dropped (also "
                       "line 3)"}));
}

TEST_F(PropctlTest, CheckReportsByteOrderMarkOnOtherFirstLine) {
  EXPECT_TRUE(Reports("f.properties", "\xEF\xBB\xBF\na=1\n",
                      {"1: UTF-8 byte-order mark: read as part of the first "
                       "line"}));
}

TEST_F(PropctlTest, CheckReportsCrLfLineEndsOnceForTheFile) {
  EXPECT_TRUE(Reports("f.ini", "[s]\r\na=1\r\nb=2\n; note\r\n",
                      {"1: CR LF line end: a rewrite ends lines with LF "
                       "alone (also lines 2 and 4)"}));
}

TEST_F(PropctlTest, CheckReportsCommentCharacterRightAfterValueText) {
  EXPECT_TRUE(Reports("f.ini",
                      "[s]\npath = /var/lib/php;extra\nrun=sh -c \"a; b\"\n",
                      {"2: ';' starts a comment here: the value is read as "
                       "'/var/lib/php'",
                       "3: ';' starts a comment here: the value is read as "
                       "'sh -c \"a'"}));
  EXPECT_TRUE(Reports("f.properties", "color=#fff\nurl=http://x/#top\n",
                      {"1: '#' starts a comment here: the value is read as "
                       "''",
                       "2: '#' starts a comment here: the value is read as "
                       "'http://x/'"}));
}

TEST_F(PropctlTest, CheckTakesCommentAfterBlankAsTrailingComment) {
  EXPECT_TRUE(Reports("f.ini", "[s]\ntimeout = 60 ; seconds\n", {}));
  EXPECT_TRUE(Reports("f.properties", "timeout = 60\t# seconds\n", {}));
}

TEST_F(PropctlTest, CheckReportsCommentCharacterBeforeEquals) {
  EXPECT_TRUE(Reports("f.properties", "a#b=c\n",
                      {"1: '#' starts a comment before the '=': the line is "
                       "ignored"}));
}

TEST_F(PropctlTest, CheckReportsHashLineWithEqualsInIniSection) {
  EXPECT_TRUE(Reports("f.ini", "#port = 1\n[s]\n# port = 3306\n",
                      {"3: '#' starts no comment in INI files: read as the "
                       "key '# port'"}));
}

TEST_F(PropctlTest, CheckTakesHashLinesWithoutEqualsInIniAsComments) {
  EXPECT_TRUE(Reports("f.ini", "# server\n[s]\n  # no equals here\na=1\n", {}));
}

TEST_F(PropctlTest, CheckReportsSemicolonAndBangLinesWithEqualsInFlatFile) {
  EXPECT_TRUE(Reports("f.properties", "; note\n! note\n;a=1\n!b = 2\n",
                      {"3: ';' starts no comment in flat files: read as the "
                       "key ';a'",
                       "4: '!' starts no comment in flat files: read as the "
                       "key '!b'"}));
}

TEST_F(PropctlTest, CheckReportsColonSeparatedLines) {
  EXPECT_TRUE(Reports("f.ini", "[s]\nname: demo\nurl: http://h/?a=b\nnote:\n",
                      {"2: ':' is no separator (only '=' is): the line is "
                       "ignored (also line 4)",
                       "3: ':' is no separator (only '=' is): the key is "
                       "read as 'url: http://h/?a'"}));
}

TEST_F(PropctlTest, CheckReportsBackslashThatJoinsNoLine) {
  EXPECT_TRUE(Reports("f.properties", "list=a, \\\n  b, \\\r\n  c\nx=1\n",
                      {"1: '\\' at the end joins no line: the value keeps "
                       "the '\\', and lines 2-3 are ignored (a rewrite drops "
                       "them)",
                       "2: CR LF line end: a rewrite ends lines with LF "
                       "alone"}));
  EXPECT_TRUE(Reports("f.properties", "a=1 \\\n  b=2\n",
                      {"1: '\\' at the end joins no line: the value keeps "
                       "the '\\', and line 2 is read on its own"}));
}

TEST_F(PropctlTest, CheckTakesEvenBackslashesAsEscapedBackslash) {
  EXPECT_TRUE(Reports("f.properties", "dir=C:\\\\\nb=2\n", {}));
}

TEST_F(PropctlTest, CheckReportsSectionHeaderInFlatFile) {
  EXPECT_TRUE(Reports("f.properties", "[a]\nk=1\n[b]\nk=2\n",
                      {"1: section header in a flat file: ignored, so the "
                       "keys of all sections are read as one (--ini reads it "
                       "as INI) (also line 3)",
                       "4: key 'k' repeats line 2: the last value wins"}));
}

TEST_F(PropctlTest, CheckReportsQuotesThatRewriteDrops) {
  EXPECT_TRUE(Reports("os-release",
                      "NAME=\"Debian\"\nID=debian\n\"KEY\"=x\nV=\"\"\n",
                      {"1: a rewrite drops the quotes around the value (also "
                       "line 4)",
                       "3: a rewrite drops the quotes around the key"}));
}

TEST_F(PropctlTest, CheckReportsQuotesWhoseValueReadsBackOtherwise) {
  EXPECT_TRUE(Reports("f.properties", "a=\" x \"\n",
                      {"1: a rewrite drops the quotes around the value ' x ', "
                       "which then reads back as 'x'"}));
}

TEST_F(PropctlTest, CheckReportsIndentedLinesAfterIniEntry) {
  EXPECT_TRUE(Reports("setup.ini",
                      "[options]\npackages =\n    one\n    two\n\nx=1\n",
                      {"3: indented line: not joined to the entry above, the "
                       "line is ignored (also line 4)"}));
}

TEST_F(PropctlTest, CheckReportsIndentedEntryLinesAfterIniEntry) {
  EXPECT_TRUE(Reports("f.ini", "[s]\nneeds =\n    lib>=2\n    x\ny=1\n",
                      {"3: indented line: not joined to the entry above, read "
                       "as the key 'lib>'",
                       "4: indented line: not joined to the entry above, the "
                       "line is ignored"}));
}

TEST_F(PropctlTest, CheckTakesEntriesIndentedAlikeAsEntries) {
  EXPECT_TRUE(Reports("f.ini", "[core]\n\tbare = false\n\tname = x\n", {}));
}

TEST_F(PropctlTest, CheckTakesBackslashBeforeAnEntryAsPartOfTheValue) {
  EXPECT_TRUE(Reports("f.ini", "[p]\ndir=D:\\data\\\nx=1\n", {}));
}

TEST_F(PropctlTest, CheckReportsExportInFrontOfFlatKeys) {
  EXPECT_TRUE(
      Reports("f.env", "export A=1\nexport\tB=2\nexports=3\n",
              {"1: 'export' is read as part of the key (also line 2)"}));
}

TEST_F(PropctlTest, CheckGroupsRepeatedWarningsNamingEveryLine) {
  std::string text;
  for (int i = 0; i < 12; ++i) text += i % 3 == 2 ? "a=1\n" : "junk\n";
  EXPECT_TRUE(Reports(
      "f.properties", text,
      {"1: no '=': the line is ignored (also lines 2, 4-5, 7-8 and 10-11)",
       "6: key 'a' repeats line 3: the last value wins",
       "9: key 'a' repeats line 6: the last value wins",
       "12: key 'a' repeats line 9: the last value wins"}));
}

TEST_F(PropctlTest, CheckNamesEightPlacesOfARepeatedWarningAndCountsTheRest) {
  std::string text;
  for (int i = 0; i < 21; ++i) text += i % 2 == 0 ? "junk\n" : "\n";
  EXPECT_TRUE(Reports("f.properties", text,
                      {"1: no '=': the line is ignored (also lines 3, 5, 7, "
                       "9, 11, 13, 15, 17 and 2 more)"}));
}

TEST_F(PropctlTest, CheckAcceptsCleanIniFile) {
  EXPECT_TRUE(Reports("f.ini",
                      ";header\n\n[ s ] ; note\n# note\nk = v ; note\n"
                      "x=[1]\n\n\"[t]\"\nk=v\n",
                      {}));
}

TEST_F(PropctlTest, CheckAcceptsCleanFlatFile) {
  EXPECT_TRUE(Reports("f.properties", "#header\na=b=c\nk = v  # note\n", {}));
}

TEST_F(PropctlTest, CheckOfMissingFileExitsTwo) {
  const std::string file = Path("missing.ini");
  EXPECT_TRUE(Ran(Run({"check", file}), 2, "",
                  "propctl: " + file + ": No such file or directory\n"));
}

// help and usage -----------------------------------------------------------

TEST_F(PropctlTest, EveryFormOfHelpPrintsTheSameTextAndExitsZero) {
  for (const std::string command :
       {"get", "set", "del", "list", "sections", "check", "help"}) {
    const ProgramResult help = Run({"help", command});
    EXPECT_EQ(0, help.status);
    EXPECT_EQ("Usage: propctl " + command,
              help.out.substr(0, help.out.find(' ', 15)));
    EXPECT_TRUE(Ran(Run({command, "--help"}), 0, help.out, "")) << command;
  }
}

TEST_F(PropctlTest, ToolHelpIsPrintedByOptionAndCommand) {
  const ProgramResult help = Run({"--help"});
  EXPECT_EQ(
      "Usage: propctl [--flat | --ini] COMMAND [OPTIONS] FILE [SECTION] "
      "...",
      help.out.substr(0, help.out.find('\n')));
  EXPECT_TRUE(Ran(Run({"help"}), 0, help.out, ""));
}

TEST_F(PropctlTest, UnsetHelpIsDelHelp) {
  const ProgramResult help = Run({"help", "del"});
  EXPECT_TRUE(Ran(Run({"help", "unset"}), 0, help.out, ""));
}

TEST_F(PropctlTest, ShortHelpOptionIsHelpOption) {
  EXPECT_TRUE(Ran(Run({"-h"}), 0, Run({"--help"}).out, ""));
  EXPECT_TRUE(Ran(Run({"set", "-h"}), 0, Run({"help", "set"}).out, ""));
}

TEST_F(PropctlTest, VersionPrintsNameAndProjectVersion) {
  EXPECT_TRUE(
      Ran(Run({"--version"}), 0, "propctl " PROPERTIES_VERSION "\n", ""));
}

TEST_F(PropctlTest, NoArgumentsExitsTwoWithHint) {
  EXPECT_TRUE(
      Ran(Run({}), 2, "", "propctl: missing command; try 'propctl --help'\n"));
}

TEST_F(PropctlTest, UnknownCommandExitsTwoWithHint) {
  EXPECT_TRUE(Ran(Run({"frob"}), 2, "",
                  "propctl: unknown command 'frob'; try 'propctl --help'\n"));
}

TEST_F(PropctlTest, HelpOfUnknownCommandExitsTwo) {
  EXPECT_TRUE(Ran(Run({"help", "frob"}), 2, "",
                  "propctl: unknown command 'frob'; try 'propctl --help'\n"));
}

TEST_F(PropctlTest, MissingOperandIsNamed) {
  EXPECT_TRUE(Ran(Run({"get", Path("f.properties")}), 2, "",
                  "propctl get: missing KEY; try 'propctl help get'\n"));
}

TEST_F(PropctlTest, SectionForFlatFileIsOneOperandTooMany) {
  EXPECT_TRUE(Ran(Run({"get", Path("f.properties"), "s", "k"}), 2, "",
                  "propctl get: too many operands; try 'propctl help get'\n"));
}

TEST_F(PropctlTest, UnknownOptionExitsTwoWithHint) {
  EXPECT_TRUE(Ran(Run({"list", "--bogus", Path("f.properties")}), 2, "",
                  "propctl list: option '--bogus' is unknown; try 'propctl "
                  "help list'\n"));
}

TEST_F(PropctlTest, OptionOfSetIsRefusedByOtherCommands) {
  EXPECT_TRUE(Ran(Run({"get", "--type", "integer", Path("f.properties"), "k"}),
                  2, "",
                  "propctl get: option '--type' belongs to 'set'; try "
                  "'propctl help get'\n"));
}

TEST_F(PropctlTest, OptionWithoutItsArgumentExitsTwo) {
  EXPECT_TRUE(Ran(Run({"set", "--header"}), 2, "",
                  "propctl set: option '--header' needs an argument; try "
                  "'propctl help set'\n"));
}

// propctl watch runs until a change comes; the test waits for it to say
// that it watches, changes the file, and collects what it printed.
class PropctlWatchTest : public PropctlTest {
 protected:
  static const int kWaitMs = 10000;

  // Starts "propctl watch --once" with args (in the test's environment
  // changed by environment) and waits until it watches.
  std::unique_ptr<test_support::StartedProgram> Watch(
      const std::vector<std::string>& args,
      const std::vector<std::string>& environment = {}) {
    std::vector<std::string> argv = {PROPERTIES_PROPCTL, "watch", "--once"};
    argv.insert(argv.end(), args.begin(), args.end());
    std::unique_ptr<test_support::StartedProgram> watch(
        new test_support::StartedProgram(argv, environment));
    EXPECT_TRUE(watch->WaitForError("propctl: watching ", kWaitMs));
    return watch;
  }
};

TEST_F(PropctlWatchTest, PrintsTheChangedEntryOfAFlatFile) {
  const std::string path = Write("a.properties", "port=1\nlevel=info\n");
  auto watch = Watch({path});
  ASSERT_EQ(0, Run({"set", path, "port", "9"}).status);
  const ProgramResult result = watch->Finish(kWaitMs);
  EXPECT_EQ(0, result.status) << result.err;
  EXPECT_EQ("port=9\n", result.out);
}

TEST_F(PropctlWatchTest, PrintsSectionAndKeyOfAnIniFileAndGoneEntries) {
  const std::string path = Write("a.ini", "[s]\nk=1\nold=2\n");
  auto watch = Watch({path, "s"});
  // One step: the file renamed into place.
  Write("next", "[s]\nk=5\n[t]\nk=7\n");
  ASSERT_EQ(0, ::rename(Path("next").c_str(), path.c_str()));
  const ProgramResult result = watch->Finish(kWaitMs);
  EXPECT_EQ(0, result.status) << result.err;
  EXPECT_EQ("[s]k=5\n[s]old\n", result.out);
}

TEST_F(PropctlWatchTest, IgnoresEntriesItWasNotAskedFor) {
  const std::string path = Write("a.properties", "port=1\nlevel=info\n");
  auto watch = Watch({path, "port"});
  ASSERT_EQ(0, Run({"set", path, "level", "debug"}).status);
  ASSERT_EQ(0, Run({"set", path, "port", "2"}).status);
  const ProgramResult result = watch->Finish(kWaitMs);
  EXPECT_EQ(0, result.status) << result.err;
  EXPECT_EQ("port=2\n", result.out);
}

TEST_F(PropctlWatchTest, WatchesConfFileStartingWithSectionHeaderAsIni) {
  const std::string path = Write("a.conf", "[s]\nk=1\n");
  auto watch = Watch({path, "s", "k"});
  ASSERT_EQ(0, Run({"set", path, "s", "k", "2"}).status);
  const ProgramResult result = watch->Finish(kWaitMs);
  EXPECT_EQ(0, result.status) << result.err;
  EXPECT_EQ("[s]k=2\n", result.out);
  EXPECT_EQ(
      "propctl: " + path + kGuessedIni + "propctl: watching " + path + "\n",
      result.err);
}

TEST_F(PropctlWatchTest, PrintsAnEntryThatDelRemoved) {
  const std::string path = Write("a.properties", "port=1\nlevel=info\n");
  auto watch = Watch({path});
  ASSERT_EQ(0, Run({"unset", path, "level"}).status);
  const ProgramResult result = watch->Finish(kWaitMs);
  EXPECT_EQ(0, result.status) << result.err;
  EXPECT_EQ("level\n", result.out);
}

TEST_F(PropctlWatchTest, FollowsAFileMadeAfterItStarted) {
  const std::string path = Path("new.properties");
  auto watch = Watch({path});
  ASSERT_EQ(0, Run({"set", path, "k", "v"}).status);
  const ProgramResult result = watch->Finish(kWaitMs);
  EXPECT_EQ("k=v\n", result.out);
}

TEST_F(PropctlWatchTest, PrintsAChangedLongEntryWhenLongLinesAreOn) {
  const std::string path =
      Write("a.properties", "a=1\n" + LineOfLength(600) + "\n");
  auto watch = Watch({path}, {"LIBPROPERTIES_LONG_LINES=read"});
  const std::string value(700, 'y');
  ASSERT_EQ(
      0,
      Run({"set", path, "k", value}, {"LIBPROPERTIES_LONG_LINES=read"}).status);
  const ProgramResult result = watch->Finish(kWaitMs);
  EXPECT_EQ(0, result.status) << result.err;
  EXPECT_EQ("k=" + value + "\n", result.out);
}

TEST_F(PropctlTest, WatchRefusesFileWithLongLineUnderTheLimit) {
  const std::string file =
      Write("f.properties", "a=1\n" + LineOfLength(600) + "\n");
  EXPECT_TRUE(Ran(Run({"watch", "--once", file}, {kLimit}), 2, "",
                  "propctl: " + file +
                      ":2: line of 600 characters; the library cannot read "
                      "this file (see 'propctl check')\n"));
}

TEST_F(PropctlTest, OnceBelongsToWatch) {
  const ProgramResult result = Run({"get", "--once", "f", "k"});
  EXPECT_EQ(2, result.status);
  EXPECT_EQ(
      "propctl get: option '--once' belongs to 'watch'; try 'propctl help "
      "get'\n",
      result.err);
}

}  // namespace
