#include "platform/program_paths.h"
#include "platform/settings_file.h"
#include "temporary_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <pwd.h>
#include <thread>
#include <unistd.h>

namespace vesk {
namespace {

namespace fs = std::filesystem;

TEST(SettingsFile, AValueIsTheTextAfterTheFirstEqualsSign) {
  const temporary_folder folder;
  folder.write("a.ini", "loose=1\n[A\\B]\r\nmask=###.##;=x \r\nempty=\nnothing\n[C]\nmask=other\n");
  const settings_file file(folder.path / "a.ini");
  EXPECT_EQ(file.get("A\\B", "mask"), "###.##;=x ");
  EXPECT_EQ(file.get("A\\B", "empty"), "");
  EXPECT_EQ(file.get("C", "mask"), "other");
  EXPECT_EQ(file.get("A\\B", "nothing"), std::nullopt);
  EXPECT_EQ(file.get("A\\B", "loose"), std::nullopt);
  EXPECT_EQ(file.get("D", "mask"), std::nullopt);
}

TEST(SettingsFile, WhatNobodyAsksForStaysAtItsPlace) {
  const temporary_folder folder;
  folder.write("a.ini", "; mine\n[A]\nold=1\nunknown=#2\r\r\n\n[B]\nold=3\n");
  settings_file file(folder.path / "a.ini");
  file.set("A", "old", "one\ntwo");
  file.set("A", "new", "4");
  file.set("C", "first", "5");
  EXPECT_TRUE(file.save());
  EXPECT_EQ(folder.read("a.ini"), "; mine\n[A]\nold=one two\nunknown=#2\nnew=4\n\n[B]\nold=3\n\n[C]\nfirst=5\n");
}

TEST(SettingsFile, UpdatesAtTheSameTimeLoseNothing) {
  const temporary_folder folder;
  std::vector<std::thread> programs;
  for (const char* name : {"one", "two", "three", "four"})
    programs.emplace_back([&folder, name] {
      for (int i = 1; i <= 20; ++i)
        settings_file::update(folder.path / "new/a.ini",
                              [&](settings_file& file) { file.set("A", name + std::to_string(i), "1"); });
    });
  for (std::thread& program : programs) program.join();
  const std::string text = folder.read("new/a.ini");
  EXPECT_EQ(std::count(text.begin(), text.end(), '='), 80);
}

TEST(SettingsFile, DamageAndRefusalsAreSilent) {
  const temporary_folder folder;
  const std::string damaged("[A\0\xff]\n[A]\n=\n==\nname", 18);
  folder.write("damaged", damaged);
  settings_file file(folder.path / "damaged");
  EXPECT_EQ(file.get("A", "name"), std::nullopt);
  file.set("A", "name", "1");
  EXPECT_TRUE(file.save());
  EXPECT_EQ(folder.read("damaged"), damaged + "\nname=1\n");

  settings_file fresh(folder.path / "new/folders/a.ini");
  fresh.set("A", "name", "1");
  EXPECT_TRUE(fresh.save());
  EXPECT_EQ(folder.read("new/folders/a.ini"), "[A]\nname=1\n");
  EXPECT_FALSE(settings_file(folder.path / "damaged/a.ini").save()); // a file where the folder should be
  EXPECT_FALSE(settings_file(folder.path).save());                   // a folder where the file should be
}

// Sets a variable of the environment, or takes it away, for the life of this.
class environment {
public:
  environment(const char* name, const char* value) : name_(name) {
    if (const char* before = std::getenv(name)) before_ = before;
    set(value);
  }
  ~environment() { set(before_ ? before_->c_str() : nullptr); }

private:
  void set(const char* value) const { value ? setenv(name_, value, 1) : unsetenv(name_); }
  const char* name_;
  std::optional<std::string> before_;
};

TEST(SettingsFile, LiesInTheUsersConfigurationFolder) {
  const environment home("HOME", "/home/of/one");
  {
    const environment config("XDG_CONFIG_HOME", "/somewhere");
    EXPECT_EQ(settings_file::default_path(), "/somewhere/vesk/settings.ini");
  }
  const environment config("XDG_CONFIG_HOME", "relative"); // does not count
  EXPECT_EQ(settings_file::default_path(), "/home/of/one/.config/vesk/settings.ini");
}

// Anybody may put a link into /tmp before a log or the settings are written there.
TEST(ProgramPaths, WithoutHomeTheAccountsHomeIsTaken) {
  const fs::path home = getpwuid(getuid())->pw_dir;
  for (const char* told : {static_cast<const char*>(nullptr), "", "tmp"}) {
    const environment none("HOME", told), config("XDG_CONFIG_HOME", nullptr), state("XDG_STATE_HOME", nullptr);
    EXPECT_EQ(home_directory(), home);
    EXPECT_EQ(state_directory(), home / ".local/state/vesk");
    EXPECT_EQ(settings_file::default_path(), home / ".config/vesk/settings.ini");
  }
}

TEST(ProgramPaths, LogsStayOutOfAnInstalledProgramsFolder) {
  const temporary_folder folder;
  const environment state("XDG_STATE_HOME", "/the/state");
  fs::create_directories(folder.path / "bin");
  EXPECT_EQ(log_directory(folder.path / "bin/"), folder.path / "bin/");
  fs::create_directories(folder.path / "share/vesk");
  EXPECT_EQ(log_directory(folder.path / "bin/"), "/the/state/vesk"); // though it can be written to
}

} // namespace
} // namespace vesk
