#include "platform/safe_file.h"
#include "temporary_folder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
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
