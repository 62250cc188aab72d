// What files from strangers try on who opens them, from the file to what is on the disk afterwards. The bundled engine.
#include "run_program.h"
#include "temporary_folder.h"

#include <gtest/gtest.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vesk {
namespace {

class Attack : public testing::Test {
protected:
  Attack() {
    setenv("XDG_CONFIG_HOME", folder.path.c_str(), 1); // not the settings of who runs the tests
    std::filesystem::create_directories(folder.path / "home/models/out");
    folder.write("home/.bashrc", "alias ll='ls -l'\n");
  }
  std::string model() const { return folder.file("home/models/river.inp"); }

  // A tank of one segment that is called `name`, washed out in a day.
  static std::string tank(const std::string& name) {
    return "MODELTYPE 2\nSEEDDATE 6 1 2024\nSEEDTIME 0 0 0\nENDJULIAN 1\nNPRINT 1\nPRINTFUNC 1 0 0.5\n"
           "NUMSEG 1\nVOLUME 1 86400\nSEGNAME 1 \"" +
           name +
           "\"\nNINQ 1 1\nNOQS 1 1 2\nJQ 1 1 1 0\nIQ 1 1 1 1\nJQ 1 1 2 1\nIQ 1 1 2 0\nNBRKQ 1 1 1\n"
           "NOQFUNC 1 1 1 0 1\nSOLUTIONTYPE 2\nNUMDT 1\nDTFUNC 1 0 0.01\nCSVOPENABLED 11 1\n";
  }

  const temporary_folder folder;
};

TEST_F(Attack, ANameOfResultsReplacesNoFileElsewhere) {
  const std::string command = "$(touch owned)"; // the first line of the results would be the first of .bashrc
  folder.write("home/models/river.inp", tank(command));
  ASSERT_EQ(run_program(VESK_RUN, {"-IMPORT", model(), "-RUN"}).status, 0);
  ASSERT_NE(folder.read("home/models/river_tracer.csv").find(command), std::string::npos);

  for (const std::string name : {"out/../../.bashrc", "/../../.bashrc"}) {
    std::filesystem::create_directories(folder.path / "home/models/river_out");
    folder.write("home/models/river.inp", tank(command) + "CSVOPFILENAME 11 \"" + name + "\"\n");
    const program_result result = run_program(VESK_RUN, {"-IMPORT", model(), "-RUN"});
    EXPECT_EQ(result.err, "vesk-run: " + model() + ", line 22: the name \"" + name + "\" has a path separator.\n");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(folder.read("home/.bashrc"), "alias ll='ls -l'\n");
  }
}

TEST_F(Attack, ANameThatIsAFormulaComesBackAsAName) {
  folder.write("home/models/river.inp", tank("=HYPERLINK(A1)"));
  ASSERT_EQ(run_program(VESK_RUN, {"-IMPORT", model(), "-RUN"}).status, 0);
  EXPECT_TRUE(folder.read("home/models/river_tracer.csv").starts_with("time,'=HYPERLINK(A1)\n"));
}

// Pipes would stop the NetCDF library for ever, were it to read its settings from the current folder.
TEST_F(Attack, SettingsOfTheNetcdfLibraryInAFolderOfModelsAreNotRead) {
  folder.write("home/models/river.inp", tank("tank") + "OPENABLED 11 1\n");
  const std::string models = folder.file("home/models");
  for (const char* name : {".ncrc", ".daprc", ".dodsrc"}) ASSERT_EQ(mkfifo((models + "/" + name).c_str(), 0600), 0);
  const program_result result =
      run_program("/bin/sh", {"-c", "cd '" + models + "' && exec timeout 20 " VESK_RUN " -IMPORT river.inp -RUN"});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_TRUE(std::filesystem::exists(models + "/river.nc"));
}

// Without HOME logs once went to /tmp, where anybody may have put a link or a folder of that name.
TEST_F(Attack, WithoutHomeNothingIsWrittenToTmp) {
  const std::string home = getpwuid(getuid())->pw_dir;
  if (std::filesystem::exists(home)) GTEST_SKIP() << "would write to the home of who runs the tests";
  folder.write("home/models/river.inp", tank("tank"));
  const program_result result = run_program(
      "/usr/bin/env", {"-u", "HOME", "-u", "XDG_STATE_HOME", VESK_RUN, "-IMPORT", model(), "-RUN", "--log"});
  EXPECT_EQ(result.status, 0);
  EXPECT_TRUE(result.err.find(" " + home + "/.local/state/vesk/LOG.TXT: ") != std::string::npos) << result.err;
  EXPECT_FALSE(std::filesystem::exists("/tmp/.local"));
}

} // namespace
} // namespace vesk
