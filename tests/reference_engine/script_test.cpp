// The script files, through the library's own functions.
#include "fake_host.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

namespace {

using testing::Contains;
using testing::HasSubstr;

class ScriptTest : public testing::Test {
protected:
  std::string path(const std::string& name) const {
    return testing::TempDir() + "reference_engine_" + testing::UnitTest::GetInstance()->current_test_info()->name() +
           "_" + name;
  }
  void write(const std::string& name, const std::string& content) {
    std::ofstream(path(name), std::ios::binary) << content;
    host.load("FILENAME \"" + path(name) + "\"");
  }
  std::string read(const std::string& name) const {
    std::ostringstream out;
    out << std::ifstream(path(name), std::ios::binary).rdbuf();
    return out.str();
  }
  std::string import_failure(const std::string& content) {
    write("bad.inp", content);
    host.failures.clear();
    import_export(&FakeHost::callback, 1);
    EXPECT_EQ(host.return_code, 3);
    const std::string all = host.failures.empty() ? "" : host.failures.back(), name = path("bad.inp");
    return all.starts_with(name) ? all.substr(name.size()) : all;
  }

  FakeHost host;
};

constexpr const char* river =
    "MODELTYPE 1\nSEEDDATE 2 29 2008\nENDJULIAN 365.25\nNUMDT 1\nDTFUNC 1 0 0.1\nNPRINT 2\nPRINTFUNC 1 0 1\n"
    "PRINTFUNC 2 0.33333334 0.5\nNUMSEG 2\nSEGNAME 1 \"Roanoke \xe2\x80\x93 upper # reach\"\nSEGNAME 2 \"caf\xe9 \\\\ "
    "\tx\"\n"
    "BOTSEG 1 2\nVOLUME 1 1.1e9\nVOLUME 2 0.1\nCONSTVALUE 21 0.25\nCONSTVALUE 11 0\nSCALEPARAM 4 1\nCONSTPARAM 1 4 "
    "0.7\n"
    "NBRKTF 3 2\nBRKTF 3 1 0 0\nBRKTF 3 2 0.5 1\nJMAS 3\nGSYSPASS 2 2\nCMAX 1 100\nINITC 4 2 8.25\nFDISS 3 1 0.5\n"
    "NOBC 4 1\nIBC 4 1 1\nNBFP 4 1 2\nBOUNDFUNC 4 1 1 0 7\nBOUNDFUNC 4 1 2 10 8\nNOWK 3 1\nIWK 3 1 2\nNBWK 3 1 2\n"
    "LOADFUNC 3 1 1 0 5\nLOADFUNC 3 1 2 4 9\nNTEX 1 1\nEXCHANGEFUNCDESC 1 1 \"tide\"\nNORS 1 1 1\nJRSEG 1 1 1 1\n"
    "IRSEG 1 1 1 2\nXAREA 1 1 1 30\nLENGTH 1 1 1 250\nNOBRKS 1 1 1\nNORFUNC 1 1 1 0 12\nNINQ 6 1\nNOQS 6 1 1\n"
    "IQ 6 1 1 1\nNBRKQ 6 1 1\nNOQFUNC 6 1 1 0 -3\nOPENABLED 1 0\nCSVOPENABLED 24 1";

TEST_F(ScriptTest, ExportImportExportGivesTheSameBytes) {
  host.load(river);
  host.load("FILENAME \"" + path("first.inp") + "\"");
  import_export(&FakeHost::callback, 0);
  ASSERT_EQ(host.return_code, 0) << host.failures.back();
  EXPECT_THAT(host.wrong_calls, testing::IsEmpty());
  const std::string first = read("first.inp");
  EXPECT_THAT(first, testing::StartsWith("MODELTYPE 1\nSEEDDATE 2 29 2008\n"));
  EXPECT_THAT(first, HasSubstr("\nSEGNAME 1 \"Roanoke \xe2\x80\x93 upper # reach\"\n"));
  EXPECT_THAT(first, HasSubstr("\nSEGNAME 2 \"caf\xc3\xa9 \\\\\\\\ \\u0009x\"\n")); // Windows-1252 became UTF-8
  EXPECT_THAT(first, HasSubstr("\nVOLUME 1 1.1e+09\nVOLUME 2 0.1\n"));
  EXPECT_THAT(first, HasSubstr("\nCONSTVALUE 11 0\nCONSTVALUE 21 0.25\n"));
  EXPECT_THAT(first, HasSubstr("\nJMAS 3\n"));
  EXPECT_THAT(first, HasSubstr("\nOPENABLED 23 1\nOPENABLED 24 1\nOPUNITS 23 ")); // 1 is off

  FakeHost other;
  other.load("MODELTYPE 2\nFILENAME \"" + path("first.inp") + "\"");
  import_export(&FakeHost::callback, 1);
  ASSERT_EQ(other.return_code, 0) << other.failures.back();
  other.load("FILENAME \"" + path("second.inp") + "\"");
  import_export(&FakeHost::callback, 0);
  EXPECT_EQ(read("second.inp"), first);
  EXPECT_EQ(other.number("CONSTPARAM 1 4"), host.number("CONSTPARAM 1 4"));
}

TEST_F(ScriptTest, ExportTellsWhatTheFormCannotCarry) {
  host.load(river);
  host.load("step LOADFUNC 3 1\nunused NINQ 6\nBRKTF 1 1 0 0\nNBRKTF 1 0\nFILENAME \"" + path("told.inp") + "\"");
  import_export(&FakeHost::callback, 0);
  EXPECT_THAT(host.infos, Contains("Step series become linear: load of system 3 in segment 2 (caf\xe9 \\\\ \tx)."));
  EXPECT_THAT(host.infos, Contains("Unused fields become used: flow field 6."));
  EXPECT_THAT(host.infos, Contains("Systems that are constant come back bypassed, as do those that are: system 2."));
  EXPECT_THAT(host.infos, Contains(HasSubstr("Time functions in use without points come back unused")));

  // Not-a-number in the only flow function does not make its field an unused one.
  host.infos.clear();
  host.load("MINDT nan\nNINQ 1 1\nNBRKQ 1 1 1\nNOQFUNC 1 1 1 0 nan");
  import_export(&FakeHost::callback, 0);
  EXPECT_THAT(host.infos, Contains("Unused fields become used: flow field 6."));
  EXPECT_THAT(host.warnings, testing::ElementsAre(path("told.inp") + ": 2 values are not finite, so the file cannot be "
                                                                     "imported as it is; the first is MINDT."));
}

// The front end's cursors do not go back: a linear series from before the start must not pass for a step series.
TEST_F(ScriptTest, SeriesThatBeginsBeforeTheStartIsStillSeenAsLinear) {
  host.load(river);
  host.load("NBWK 3 1 4\nLOADFUNC 3 1 1 -400 5\nLOADFUNC 3 1 2 -399 9\nLOADFUNC 3 1 3 -398 5\n"
            "LOADFUNC 3 1 4 30 5\nunused NINQ 6\nFILENAME \"" +
            path("early.inp") + "\"");
  import_export(&FakeHost::callback, 0);
  EXPECT_THAT(host.infos, testing::Not(Contains(HasSubstr("Step series"))));
  EXPECT_THAT(host.infos, Contains("Unused fields become used: flow field 6."));
}

TEST_F(ScriptTest, ErrorsNameFileLineAndCause) {
  EXPECT_EQ(import_failure("# a river\nMODELTYPE 1\n\nNUMSGE 3\n"),
            ", line 4: the keyword \"NUMSGE\" is unknown; the nearest one is NUMSEG.");
  EXPECT_EQ(import_failure("MODELTYPE 1\nnumsge 3"), ", line 2: the keyword \"numsge\" is unknown; the nearest one is "
                                                     "NUMSEG.");
  EXPECT_EQ(import_failure("MODELTYPE 1\nOxygen 8"), ", line 2: the keyword \"Oxygen\" is unknown.");
  EXPECT_EQ(import_failure("NUMSEG 3"), ", line 1: MODELTYPE is not the first keyword.");
  EXPECT_EQ(import_failure("MODELTYPE 9"), ", line 1: there is no model 9.");
  EXPECT_EQ(import_failure("MODELTYPE 1\nNUMSEG 2\nVOLUME 3 1"), ", line 3: there is no segment 3: NUMSEG says 2.");
  EXPECT_EQ(import_failure("MODELTYPE 1\nBRKTF 2 1 0 0"), ", line 2: there is no point 1: NBRKTF says 0.");
  EXPECT_EQ(import_failure("MODELTYPE 1\nNINQ 7 1"), ", line 2: there is no flow field 7: they are 6.");
  EXPECT_EQ(import_failure("MODELTYPE 1\nNUMSEG -1"), ", line 2: a number of -1 is not between 0 and 10000000.");
  EXPECT_EQ(import_failure("MODELTYPE 1\nNUMSEG 1\nVOLUME 1"),
            ", line 3: VOLUME takes 1 index and 1 value, but 1 words follow it.");
  EXPECT_EQ(import_failure("MODELTYPE 1\nMAXDT 1e99"),
            ", line 2: expected a finite number that single precision can hold, found \"1e99\".");
  for (const char* word : {"inf", "-inf", "nan"})
    EXPECT_EQ(import_failure(std::string("MODELTYPE 1\nNUMDT 1\nDTFUNC 1 0 ") + word),
              std::string(", line 3: expected a finite number that single precision can hold, found \"") + word +
                  "\".");
  EXPECT_EQ(import_failure("MODELTYPE 1\nNUMSEG x"), ", line 2: expected a whole number, found \"x\".");
  EXPECT_EQ(import_failure("MODELTYPE 1\nNUMSEG 1\nSEGNAME one \"a\""),
            ", line 3: expected the number of a segment, found \"one\".");
  EXPECT_EQ(import_failure("MODELTYPE 1\nSEEDDATE 2 30 2008"),
            ", line 2: not a month, day and year of the calendar: 2 30 2008.");
  EXPECT_EQ(import_failure("MODELTYPE 1\nSEEDTIME 24 0 0"), ", line 2: not an hour, minute and second: 24 0 0.");
  EXPECT_EQ(import_failure("MODELTYPE 1\nSEEDDATE 1 1 3999\nENDJULIAN 365"),
            ", line 3: 365 days after the start is not a date from 1600-01-01 to 3999-12-31.");
  const std::string named = "MODELTYPE 1\nCSVOPFILENAME 1 "; // of results: they stay in the data file's folder
  for (const char* name : {"out/../../../.bashrc", "/etc/passwd", "..\\\\run.bat", "a/"})
    EXPECT_THAT(import_failure(named + '"' + name + '"'), testing::EndsWith("\" has a path separator.")) << name;
  EXPECT_EQ(import_failure(named + "\"a/b\""), ", line 2: the name \"a/b\" has a path separator.");
  EXPECT_EQ(import_failure(named + "\"..\""), ", line 2: the name \"..\" is a folder's.");
  EXPECT_EQ(import_failure(named + "\".\""), ", line 2: the name \".\" is a folder's.");
  for (const char* name : {"a\\nb.csv", "\\u001b[2J", "a\\u007f", "\\u009b2J"})
    EXPECT_THAT(import_failure(named + '"' + name + '"'), testing::EndsWith("\" has a control character.")) << name;
  EXPECT_EQ(import_failure("\xff\xfeM"), ": is text in UTF-16. Save it as UTF-8.");
  EXPECT_EQ(import_failure("MODELTYPE 1\nNUMSEG 1\nSEGNAME 1 \"open"), ", line 3: a text has no closing quote.");
  EXPECT_EQ(import_failure("MODELTYPE 1\nNUMSEG 1\nSEGNAME 1 \"\\ud800x\""),
            ", line 3: a text contains half a surrogate pair.");
  std::filesystem::remove(path("bad.inp"));
  import_export(&FakeHost::callback, 1);
  EXPECT_EQ(host.failures.back(), path("bad.inp") + ": can't be read.");
}

TEST_F(ScriptTest, ByteOrderMarkAndSmallLettersAreUnderstood) {
  write("small.inp", "\xef\xbb\xbfmodeltype 1\nNumSeg 2\nvolume 2 3\n");
  import_export(&FakeHost::callback, 1);
  EXPECT_EQ(host.return_code, 0) << host.failures.back();
  EXPECT_EQ(host.number("VOLUME 2"), 3);
}

TEST_F(ScriptTest, NetworkIsReadByItselfAndEndsWithTheBoundaries) {
  host.load(river);
  write("net.vkn", "NUMSEG 3\r\nVOLUME 3 7 # m3\r\nSEGNAME 3 \"\\u00e9\\n\\ud83d\\ude00\"\r\nNINQ 1 1\r\nNOQS 1 1 "
                   "1\r\nIQ 1 1 1 3\r\n");
  import_network(&FakeHost::callback);
  EXPECT_EQ(host.return_code, 0);
  EXPECT_EQ(host.number("VOLUME 3"), 7);
  EXPECT_EQ(host.number("IQ 1 1 1"), 3);
  EXPECT_EQ(host.text("SEGNAME 3"), "\xc3\xa9\n\xf0\x9f\x98\x80");
  EXPECT_TRUE(host.bound_found);
  write("net.vkn", "INITC 1 1 2\n");
  import_network(&FakeHost::callback);
  EXPECT_THAT(host.failures.back(), HasSubstr("line 1: the keyword INITC does not belong in a network file (.vkn)."));
}

} // namespace
