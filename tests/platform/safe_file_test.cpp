#include "platform/safe_file.h"
#include "temporary_folder.h"

#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vesk {
namespace {

namespace fs = std::filesystem;

void put(safe_file& file, std::string_view text) {
  write_all(file.descriptor(), text, "", "test");
}

void save(const fs::path& path, std::string_view text) {
  safe_file file(path);
  put(file, text);
  file.commit();
}

std::ptrdiff_t entries(const fs::path& folder) {
  return std::distance(fs::directory_iterator(folder), {});
}

struct stat status_of(const std::string& path) {
  struct stat status {};
  lstat(path.c_str(), &status);
  return status;
}

TEST(SafeFile, TheOldContentStaysUntilTheCommitAndForGoodWithoutOne) {
  const temporary_folder folder;
  folder.write("a", "old");
  {
    safe_file file(folder.file("a"));
    put(file, "given up");
  }
  EXPECT_EQ(folder.read("a"), "old");
  {
    safe_file file(folder.file("a"));
    put(file, "new");
    EXPECT_EQ(folder.read("a"), "old");
    file.commit();
    EXPECT_EQ(folder.read("a"), "new");
  }
  EXPECT_EQ(folder.read("a"), "new");
  EXPECT_EQ(entries(folder.path), 1);
}

TEST(SafeFile, ModeAndOwnerStayAndNewFilesGetTheUsualMode) {
  const temporary_folder folder;
  folder.write("old", "");
  chmod(folder.file("old").c_str(), 0640);
  const bool root = geteuid() == 0;
  EXPECT_TRUE(!root || chown(folder.file("old").c_str(), 12345, 54321) == 0);
  save(folder.file("old"), "x");
  EXPECT_EQ(status_of(folder.file("old")).st_mode & 07777, 0640u);
  EXPECT_EQ(status_of(folder.file("old")).st_uid, root ? 12345u : geteuid());
  EXPECT_EQ(status_of(folder.file("old")).st_gid, root ? 54321u : getegid());
  chmod(folder.file("old").c_str(), 07755);
  save(folder.file("old"), "#!/bin/sh");
  EXPECT_EQ(status_of(folder.file("old")).st_mode & 07777, 0755u); // no program with its owner's rights
  const mode_t before = umask(027);
  save(folder.file("new"), "x");
  umask(before);
  EXPECT_EQ(status_of(folder.file("new")).st_mode & 07777, 0640u);
}

TEST(SafeFile, LinksStayAndTheirTargetsAreReplaced) {
  const temporary_folder folder;
  fs::create_directory(folder.path / "far");
  folder.write("far/target", "old");
  fs::create_symlink("far/second", folder.path / "first");
  fs::create_symlink("target", folder.path / "far/second");
  fs::create_symlink("nothing yet", folder.path / "dangling");
  save(folder.path / "first", "new");
  EXPECT_TRUE(fs::is_symlink(folder.path / "first") && fs::is_symlink(folder.path / "far/second"));
  EXPECT_EQ(folder.read("far/target"), "new");
  save(folder.path / "dangling", "made");
  EXPECT_EQ(folder.read("nothing yet"), "made");
  EXPECT_TRUE(fs::is_symlink(folder.path / "dangling"));
  fs::create_symlink("loop", folder.path / "loop");
  EXPECT_THROW(safe_file(folder.path / "loop"), file_open_exception);
}

TEST(SafeFile, AVanishedFolderIsAFailureWithACause) {
  const temporary_folder folder;
  fs::create_directory(folder.path / "sub");
  safe_file file(folder.path / "sub/a");
  put(file, "new");
  fs::remove_all(folder.path / "sub");
  std::string cause;
  try {
    file.commit();
  } catch (const file_exception& error) {
    cause = error.what();
  }
  EXPECT_EQ(cause, "Cannot write " + folder.file("sub/a") + ": No such file or directory.");
}

TEST(SafeFile, AWriterThatIsKilledLeavesTheOldFileAndNothingBeside) {
  const temporary_folder folder;
  const int unnamed = open(folder.path.c_str(), O_WRONLY | O_TMPFILE, 0600);
  if (unnamed < 0) GTEST_SKIP() << "the file system has no files without names";
  close(unnamed);
  folder.write("a", "old");
  const pid_t writer = fork();
  if (writer == 0) {
    safe_file file(folder.file("a"));
    put(file, "half");
    kill(getpid(), SIGKILL);
  }
  int status = 0;
  waitpid(writer, &status, 0);
  EXPECT_EQ(WTERMSIG(status), SIGKILL);
  EXPECT_EQ(folder.read("a"), "old");
  EXPECT_EQ(entries(folder.path), 1);
}

TEST(SafeFile, WhatWritersThatAreGoneHaveLeftIsRemovedAndNothingElse) {
  const temporary_folder folder;
  const std::string hidden = ".vesk-0123456789abcdef", other = ".vesk-0123456789abcdeg";
  folder.write(hidden, "half");
  folder.write(other, "a note");
  const int writer = open(folder.file(hidden).c_str(), O_RDONLY);
  ASSERT_EQ(flock(writer, LOCK_EX), 0);
  save(folder.path / "a", "text");
  EXPECT_EQ(folder.read(hidden), "half"); // while its writer lives
  close(writer);
  save(folder.path / "a", "text");
  EXPECT_EQ(entries(folder.path), 2);
  EXPECT_EQ(folder.read(other), "a note");
}

TEST(SafeFile, OtherHardLinksKeepTheOldContentAndNamesMayBeAsLongAsTheSystemTakes) {
  const temporary_folder folder;
  const std::string longest(255, 'x');
  folder.write(longest, "old");
  fs::create_hard_link(folder.path / longest, folder.path / "other");
  save(folder.path / longest, "new");
  EXPECT_EQ(folder.read(longest), "new");
  EXPECT_EQ(folder.read("other"), "old");
}

TEST(SafeFile, PipesAreWrittenToByTheNameTheyAreGivenBy) {
  const temporary_folder folder;
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  const std::string by_system = "/proc/self/fd/" + std::to_string(ends[1]); // as /dev/stdout is
  fs::create_symlink(by_system, folder.path / "link");
  for (const fs::path& path : {fs::path(by_system), folder.path / "link"}) {
    save(path, "text");
    char text[8] = {};
    EXPECT_EQ(read(ends[0], text, sizeof text), 4);
    EXPECT_STREQ(text, "text");
  }
  EXPECT_EQ(entries(folder.path), 1);
  close(ends[0]);
  close(ends[1]);
}

TEST(SafeFile, RightsDecideWhatIsWritten) {
  const temporary_folder folder;
  fs::permissions(folder.path, fs::perms(0755));
  fs::create_directory(folder.path / "unreadable");
  fs::permissions(folder.path / "unreadable", fs::perms(0333));
  folder.write("protected", "old");
  chmod(folder.file("protected").c_str(), 0444);
  const bool root = geteuid() == 0;
  ASSERT_TRUE(!root || seteuid(65534) == 0); // nothing is protected from root
  std::string cause;
  try {
    safe_file file(folder.file("protected"));
  } catch (const file_open_exception& error) {
    cause = error.what();
  }
  EXPECT_NO_THROW(save(folder.path / "unreadable/a", "text"));
  ASSERT_TRUE(!root || seteuid(0) == 0);
  EXPECT_EQ(cause, "Cannot write " + folder.file("protected") + ": Permission denied.");
  EXPECT_EQ(folder.read("protected"), "old");
  fs::permissions(folder.path / "unreadable", fs::perms(0755)); // for reading and removing it
  EXPECT_EQ(folder.read("unreadable/a"), "text");
}

TEST(SafeFile, ANameWithoutAFolderMeansTheCurrentOne) {
  const temporary_folder folder;
  const fs::path before = fs::current_path();
  fs::current_path(folder.path);
  save("plain", "text");
  fs::current_path(before);
  EXPECT_EQ(folder.read("plain"), "text");
}

} // namespace
} // namespace vesk
