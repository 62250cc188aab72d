// What the engine makes of a helper program that fails, in whatever way, and what it gives it. What a good one reads is
// tested with the engine.
#include "run_program.h"
#include "temporary_folder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <fcntl.h>
#include <unistd.h>

namespace {

class HydroReaderTest : public testing::Test {
protected:
  HydroReaderTest() {
    folder.write("river.hyd", "letters");
    std::filesystem::copy_file(READ_HYDRO, folder.path / "read_hydro");
  }

  // Lets a script stand in for the helper; its standard input is the socket.
  void let_helper(const std::string& script) const {
    folder.write("vesk-hyd", "#!/bin/sh\n" + script + "\n");
    std::filesystem::permissions(folder.path / "vesk-hyd", std::filesystem::perms::owner_all);
  }
  std::string outcome(const std::string& what = "content") const {
    return vesk::run_program(folder.file("read_hydro"), {what, folder.file("river.hyd")}).out;
  }

  const vesk::temporary_folder folder;
  const std::string file = folder.file("river.hyd"), damaged = file + ": is damaged: the NetCDF library fails on it.\n";
};

TEST_F(HydroReaderTest, AHelperThatFailsIsToldInOneSentence) {
  EXPECT_EQ(outcome(), file + ": the program that reads hydrodynamic files can't be started: " +
                           folder.file("vesk-hyd") + ": No such file or directory.\n");
  for (const char* script : {"kill -SEGV $$", "exit 0", "exec sleep 100", "printf short >&0",
                             "head -c 8 /dev/zero >&0; printf '\\377\\377\\377\\377\\377\\377\\377\\377' >&0",
                             "head -c 8 /dev/zero >&0; printf '\\010\\0\\0\\0\\0\\0\\0\\0aaaaaaaa' >&0"}) {
    let_helper(script);
    EXPECT_EQ(outcome(), damaged) << script;
  }
}

TEST_F(HydroReaderTest, OneThatFailsBetweenTwoRowsIsTold) {
  let_helper("head -c 8 /dev/zero >&0; printf '\\040\\0\\0\\0\\0\\0\\0\\0' >&0; head -c 32 /dev/zero >&0; exit 0");
  EXPECT_EQ(outcome("rows"), damaged + damaged);
}

TEST_F(HydroReaderTest, WaitingCanBeEnded) {
  let_helper("exec sleep 100");
  const auto began = std::chrono::steady_clock::now();
  EXPECT_EQ(outcome("wait"), "gave up\n");
  EXPECT_LT(std::chrono::steady_clock::now() - began, std::chrono::seconds(30));
}

// The environment of this process names something, and one of its files is open.
TEST_F(HydroReaderTest, TheHelperGetsTheOpenFileAndNothingElse) {
  const int open_here = fcntl(STDIN_FILENO, F_DUPFD, 40); // inherited by the program, not by its helper
  setenv("LD_DEBUG", "unused", 1);
  let_helper("exec 9>\"${0%/*}/told\"; cat /proc/$$/environ >&9; echo \"$#\" >&9; cat <&3 >&9; "
             "for f in /proc/$$/fd/*; do printf ' %s' ${f##*/} >&9; done");
  EXPECT_EQ(outcome(), damaged);
  unsetenv("LD_DEBUG");
  close(open_here);
  EXPECT_EQ(folder.read("told").substr(0, 13), "0\nletters 0 1");
  EXPECT_EQ(folder.read("told").find(" 40"), std::string::npos);
}

TEST_F(HydroReaderTest, AFileThatIsNoRegularOneIsNotWaitedFor) {
  std::filesystem::remove(file);
  ASSERT_EQ(mkfifo(file.c_str(), 0600), 0);
  EXPECT_EQ(outcome(), file + ": can't be read: Invalid argument.\n");
}

} // namespace
