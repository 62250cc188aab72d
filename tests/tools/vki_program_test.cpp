// The program vki, run as its users run it.
#include "dataset/vki_file.h"
#include "old_data_file.h"
#include "run_program.h"
#include "sample_data_set.h"
#include "temporary_folder.h"

#include <gtest/gtest.h>

namespace vesk {
namespace {

using namespace std::string_literals;

class VkiProgram : public ::testing::Test {
protected:
  VkiProgram() { save_data_file(file("river.vki"), sample_data_set()); }

  std::string file(const std::string& name) const { return folder_.file(name); }
  program_result vki(const std::vector<std::string>& arguments) const { return run_program(VKI, arguments); }
  // By the shell, in the folder.
  program_result shell(const std::string& command) const {
    return run_program("/bin/sh", {"-c", "cd " + folder_.path.string() + " && " + command});
  }
  std::string river() const { return folder_.read("river.vki"); }
  // A changed copy of river.vki.
  std::string changed(std::size_t offset, const std::string& piece) const {
    return river().replace(offset, piece.size(), piece);
  }

  const temporary_folder folder_;
};

TEST_F(VkiProgram, DumpAndLoadGiveTheSameBytesByFileAndByPipe) {
  const program_result piped = shell(VKI " dump river.vki | " VKI " load - - | cmp - river.vki");
  EXPECT_EQ(piped.status, 0) << piped.err;
  folder_.write("river.json", vki({"dump", file("river.vki")}).out);
  EXPECT_EQ(vki({"load", file("river.json"), file("copy.vki")}).status, 0);
  EXPECT_EQ(folder_.read("copy.vki"), river());
  const program_result iso =
      shell(VKI " dump --dates iso river.vki | tee iso.json | " VKI " load - - | cmp - river.vki");
  EXPECT_EQ(iso.status, 0) << iso.err;
  EXPECT_NE(folder_.read("iso.json").find("\"seed_date\": \"2000-01-01\""), std::string::npos);
}

TEST_F(VkiProgram, CheckNamesTheFirstThingThatIsWrong) {
  const std::string size = std::to_string(river().size());
  const struct {
    std::string bytes, line; // the line after the file's name; empty for an intact file
  } cases[] = {
      {river(), ""},
      {old_data_file(0x00010001), ""},
      {old_data_file(0x00070005), ""},
      {river().substr(0, 630), ", section 3 (segments), byte 629: 8 bytes of minimum_depth, but only 1 is left."},
      {river() + "xy", ", section 41 (project_files), byte " + size + ": the data set ends here, but 2 bytes follow."},
      {old_data_file(0x00010001) + "x", ", section 28 (bed_compaction_time_step), byte " +
                                            std::to_string(old_data_file(0x00010001).size()) +
                                            ": the data set ends here, but 1 byte follows."},
      {changed(4, "\x01\0\0\0"s), ", section 0 (header), byte 4: the offset of project_files is 1, but the section "
                                  "begins at " +
                                      std::to_string(river().size() - 36) + "."},
      {changed(8, "\x01"s), ", section 0 (header), byte 8: expected 0, found 1."},
      {changed(0, "\x08"s), ", section 0 (header), byte 0: version 7.8 is newer than 7.7, the newest known version."},
  };
  for (const auto& c : cases) {
    folder_.write("case.vki", c.bytes);
    const program_result result = vki({"check", file("case.vki")});
    EXPECT_EQ(result.status, c.line.empty() ? 0 : 1);
    EXPECT_EQ(result.err, c.line.empty() ? "" : file("case.vki") + c.line + "\n");
    EXPECT_EQ(result.out, "");
  }
}

// Read to its end it would meet the limits that are set here.
TEST_F(VkiProgram, WhatNeverEndsIsRefusedByItsFirstBytes) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) // their shadow needs all addresses
  const std::string head = "timeout 5 ";
#else
  const std::string head = "ulimit -v 500000; timeout 20 ";
#endif
  for (const char* command : {"check /dev/zero", "dump /dev/zero", "upgrade /dev/zero x.vki", "check - < /dev/zero"}) {
    const program_result result = shell(head + VKI + " " + command);
    EXPECT_EQ(result.status, 1) << command;
    EXPECT_NE(result.err.find(", section 0 (header), byte 0: "), std::string::npos) << result.err;
  }
  const program_result piped = shell("yes | (" + head + VKI + " check -)");
  EXPECT_EQ(piped.status, 1);
  EXPECT_NE(piped.err.find("0x0a790a79"), std::string::npos) << piped.err;
  const program_result json = shell(head + VKI + " load /dev/zero x.vki");
  EXPECT_EQ(json.status, 1);
  EXPECT_NE(json.err.find("line 1, column 1"), std::string::npos) << json.err;
}

TEST_F(VkiProgram, AFilesNameDoesNotCommandTheTerminal) {
  const std::string name = file("\x1b]0;owned\x07.vki"), said = file("\\x1b]0;owned\\x07.vki");
  EXPECT_EQ(vki({"check", name}).err, "Cannot open " + said + ": No such file or directory.\n");
  EXPECT_TRUE(vki({"\x1b[2J"}).err.starts_with("vki: unknown command \"\\x1b[2J\"."));
}

TEST_F(VkiProgram, LostStandardOutputEndsWith1) {
  for (const char* command : {" dump river.vki", " upgrade river.vki -", " --help", " -h", " --version"}) {
    const program_result full = shell(VKI + std::string(command) + " > /dev/full");
    EXPECT_EQ(full.status, 1) << command;
    EXPECT_EQ(full.err, "Cannot write standard output: No space left on device.\n") << command;
  }
  EXPECT_EQ(shell("(sleep 0.3; " VKI " dump river.vki; echo $? >&2) | true").err,
            "Cannot write standard output: Broken pipe.\n1\n");
}

TEST_F(VkiProgram, UpgradeRewritesAnyKnownVersionAndRefusesANewerOne) {
  folder_.write("old.vki", old_data_file(0x00070004) + "bytes after the end");
  EXPECT_EQ(vki({"upgrade", file("old.vki"), file("new.vki")}).status, 0);
  prevesk_dataset_data_type expected = old_data_set(0x00070004);
  expected.file_version = 0x00070007;
  save_data_file(file("expected.vki"), expected);
  EXPECT_EQ(folder_.read("new.vki"), folder_.read("expected.vki"));
  EXPECT_EQ(shell(VKI " upgrade - - < old.vki | cmp - new.vki").status, 0);

  folder_.write("old.vki", old_data_file(0x00070002)); // without skip date and time: 0, not the clock's
  expected = old_data_set(0x00070002);
  expected.file_version = 0x00070007;
  expected.skip_date = expected.skip_time = 0;
  EXPECT_EQ(vki({"upgrade", file("old.vki"), file("new.vki")}).status, 0);
  save_data_file(file("expected.vki"), expected);
  EXPECT_EQ(folder_.read("new.vki"), folder_.read("expected.vki"));

  folder_.write("newer.vki", changed(2, "\x08"s));
  const program_result refused = vki({"upgrade", file("newer.vki"), file("out.vki")});
  EXPECT_EQ(refused.status, 1);
  EXPECT_EQ(refused.err,
            file("newer.vki") +
                ", section 0 (header), byte 0: version 8.7 is newer than 7.7, the newest known version.\n");
  EXPECT_FALSE(std::filesystem::exists(file("out.vki")));
}

TEST_F(VkiProgram, DumpPrintsANewerFileAsFarAsPossibleAndReportsIt) {
  folder_.write("newer.vki", changed(0, "\x09"s).substr(0, 630));
  const program_result result = vki({"dump", file("newer.vki")});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.err, file("newer.vki") + ": version 7.9 is newer than 7.7; read as far as possible.\n");
  EXPECT_NE(result.out.find("\"width\": 30.25"), std::string::npos);
  EXPECT_EQ(result.out.find("\"time_functions\""), std::string::npos); // never reached
  EXPECT_EQ(result.out.find("\"query\""), std::string::npos);

  // A member of which no byte or not all of its number has come is not there.
  const std::size_t dates = river().find("runoff.nps") + 10; // seed_date, end_date, ...
  const struct {
    std::size_t length;
    std::string last; // member of the dump
  } cuts[] = {{4, "  \"file_version\": 458761\n}\n"},
              {dates, "  \"nps_file\": \"runoff.nps\"\n}\n"},
              {dates + 8, "  \"seed_date\": 36526\n}\n"},
              {dates + 15, "  \"seed_date\": 36526\n}\n"},
              {river().size() - 32, "  \"project_files\": []\n}\n"},
              {river().size() - 36, "  \"vesk_to_vesk_linkage_option\": 1\n}\n"}};
  for (const auto& cut : cuts) {
    folder_.write("newer.vki", changed(0, "\x09"s).substr(0, cut.length));
    const std::string printed = vki({"dump", file("newer.vki")}).out;
    EXPECT_TRUE(printed.ends_with(cut.last)) << cut.length << printed.substr(printed.size() - 80);
  }
}

TEST_F(VkiProgram, FailuresLeaveTheOldFileAndNothingBeside) {
  folder_.write("bad.json", "{\"model_typ\": 1}");
  const program_result bad = vki({"load", file("bad.json"), file("river.vki")});
  EXPECT_EQ(bad.status, 1);
  EXPECT_EQ(bad.err, file("bad.json") + ": model_typ: unknown member; the nearest is model_type.\n");
  const std::string before = river();
  folder_.write("good.json", "{}");
  EXPECT_EQ(shell("ulimit -f 0; trap '' XFSZ; " VKI " load good.json river.vki").err,
            "Cannot write river.vki: File too large.\n");
  EXPECT_EQ(river(), before);
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder_.path), {}), 3);
  const program_result full = shell(VKI " dump river.vki > /dev/full");
  EXPECT_EQ(full.status, 1);
  EXPECT_EQ(full.err, "Cannot write standard output: No space left on device.\n");
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__) // which reserve more than any limit
TEST_F(VkiProgram, LackOfMemoryIsReportedInOneSentence) {
  folder_.write("long.vki", river() + "bytes after the end");
  folder_.write("wild.vki", changed(12, "\xff\xff\xff\x1f"s)); // 536870911 points
  for (const char* name : {"long.vki", "wild.vki"}) std::filesystem::resize_file(file(name), 9000000000);
  const program_result wild = shell("ulimit -v 1000000; " VKI " upgrade wild.vki new.vki");
  EXPECT_EQ(wild.status, 1);
  EXPECT_EQ(wild.err, "wild.vki: not enough memory for its contents.\n");
  // What does not need much memory is read, however large the file.
  EXPECT_EQ(shell("ulimit -v 1000000; " VKI " upgrade long.vki new.vki").err, "");
  EXPECT_EQ(folder_.read("new.vki"), river());
}
#endif

TEST_F(VkiProgram, ExitStatusDistinguishesAFailedFileFromWrongUsage) {
  const struct {
    std::vector<std::string> arguments;
    int status;
    std::string start; // of standard error
  } cases[] = {
      {{}, 2, "vki: no command given.\nusage: vki dump [--dates iso] FILE"},
      {{"dumb", "a"}, 2, "vki: unknown command \"dumb\".\n"},
      {{"check"}, 2, "vki: check requires one file.\n"},
      {{"load", "a"}, 2, "vki: load requires two files.\n"},
      {{"dump", "--all"}, 2, "vki: \"--all\" is neither an option of dump nor a file name.\n"},
      {{"check", "--dates", "iso"}, 2, "vki: \"--dates\" is neither an option of check nor a file name.\n"},
      {{"dump", "--dates", "a.vki"}, 2, "vki: option --dates requires the value iso.\n"},
      {{"dump", "a.vki", "--dates"}, 2, "vki: option --dates requires the value iso.\n"},
      {{"dump", "/no/such"}, 1, "Cannot open /no/such: No such file or directory.\n"},
      {{"check", "/"}, 1, "Cannot open /: Is a directory.\n"},
      {{"load", "/no/such", "x"}, 1, "Cannot open /no/such: No such file or directory.\n"},
      {{"upgrade", file("river.vki"), "/no/such"}, 1, "Cannot write /no/such: No such file or directory.\n"},
      {{"--help"}, 0, ""},
      {{"--version"}, 0, ""},
  };
  for (const auto& c : cases) {
    const program_result result = vki(c.arguments);
    EXPECT_EQ(result.status, c.status);
    EXPECT_EQ(result.err.substr(0, c.start.size()), c.start);
    EXPECT_EQ(result.err.empty(), c.start.empty());
  }
  EXPECT_EQ(vki({"--version"}).out.substr(0, 4), "vki ");
}

} // namespace
} // namespace vesk
