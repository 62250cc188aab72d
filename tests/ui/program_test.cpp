// The program from start to end, as a separate process.
#include "driver.h"
#include "run_program.h"

#include <gmock/gmock.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <unistd.h>

namespace vesk {
namespace {

namespace fs = std::filesystem;
using std::chrono::steady_clock;

std::string this_program() {
  return fs::read_symlink("/proc/self/exe").string();
}

class Program : public testing::Test {
protected:
  Program() { setenv("VESK_ENGINE", ENGINE, 1); }
  temporary_folder folder;
};

TEST_F(Program, ShowsItsSplashRunsTheFileAndEndsByItself) {
  fs::copy(SAMPLE, folder.path / "river.vki");
  const auto start = steady_clock::now();
  const program_result result = run_program(VESK, {folder.file("river.vki"), "-run", "-quit"});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_GE(steady_clock::now() - start, std::chrono::seconds(5)); // of the splash
  EXPECT_TRUE(fs::exists(folder.path / "river_oxygen.csv"));
}

TEST_F(Program, AnswersHelpAndVersionAtOnceWithoutADisplay) {
  const std::string display = getenv("DISPLAY");
  unsetenv("DISPLAY");
  for (const char* option : {"--help", "--version"}) {
    const auto start = steady_clock::now();
    const program_result result = run_program(VESK, {"river.vki", option});
    EXPECT_LT(steady_clock::now() - start, std::chrono::seconds(2));
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_THAT(result.out, testing::StartsWith(std::string(option) == "--help" ? "Usage: vesk " : "vesk 0."));
  }
  setenv("DISPLAY", display.c_str(), 1);
}

TEST_F(Program, ImportsThenRunsThenQuits) {
  fs::copy(SAMPLE, folder.path / "river.vki");
  ASSERT_EQ(run_program(VESK_RUN, {folder.file("river.vki"), "--export", folder.file("old.inp")}).status, 0);
  const program_result result = run_program(VESK, {"-Import", folder.file("old.inp"), "-QUIT", "-RUN"});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_TRUE(fs::exists(folder.path / "old_oxygen.csv"));
}

TEST_F(Program, NamesTheEngineThatEndsIt) {
  setenv("VESK_ENGINE", MISBEHAVING_ENGINE, 1);
  const program_result result = run_program(VESK, {"-Import", folder.file("abort.inp")});
  EXPECT_EQ(result.status, 128 + SIGABRT);
  const std::string line =
      std::string("vesk: Engine ") + MISBEHAVING_ENGINE + " ended the program: it aborted (SIGABRT).\n";
  EXPECT_TRUE(result.err.ends_with(line)) << result.err;
}

TEST_F(Program, ClosedInTheMiddleOfAJobItEndsAtOnceWithItsSettingsSavedAndNothingHalfWritten) {
  write_long_sample(folder.file("long.vki"));
  folder.write("settings.ini", "[SOFTWARE\\TALMO\\VESK\\7.0]\nDatabaseDir=" CATALOGUE "/\n");
  const auto start = steady_clock::now();
  const program_result result =
      run_program(this_program(), {"--close-in-the-middle", folder.file("long.vki"), folder.file("settings.ini")});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_LT(steady_clock::now() - start, std::chrono::seconds(10));
  EXPECT_NE(folder.read("settings.ini").find("MainFormWindowState="), std::string::npos);
  EXPECT_FALSE(fs::exists(folder.path / "long_oxygen.csv"));
}

TEST_F(Program, ASignalClosesItWithItsSettingsSaved) {
  for (const int signal : {SIGTERM, SIGHUP, SIGINT}) {
    const std::string settings = folder.file(std::to_string(signal) + ".ini");
    const auto start = steady_clock::now();
    const program_result result = run_program(this_program(), {"--end-by-signal", std::to_string(signal), settings});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_LT(steady_clock::now() - start, std::chrono::seconds(5));
    EXPECT_THAT(folder.read(std::to_string(signal) + ".ini"), testing::ContainsRegex("MainFormWidth=[1-9]"));
  }
}

} // namespace
} // namespace vesk
