#include "platform/output_lock.h"
#include "temporary_folder.h"
#include "traced_process.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <functional>
#include <memory>
#include <set>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vesk {
namespace {

namespace fs = std::filesystem;

using testing::ElementsAre;
using testing::HasSubstr;

class OutputLock : public testing::Test {
protected:
  // What taking the lock is refused with; empty when it was taken, and dropped again.
  std::string refusal() const {
    try {
      const output_lock lock(base);
      EXPECT_EQ(lock.warning(), "");
    } catch (const output_lock_refused& refused) {
      return refused.what();
    }
    return "";
  }
  std::set<std::string> files() const {
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder.path)) names.insert(entry.path().filename());
    return names;
  }
  std::string lock_file() const { return folder.file(".river.run"); }

  // A child that takes the lock, does some work, and waits to be killed.
  pid_t holder(const std::function<void()>& work = [] {}) const {
    int ready[2];
    EXPECT_EQ(pipe2(ready, O_CLOEXEC), 0);
    const pid_t child = fork();
    if (child == 0) {
      const output_lock lock(base);
      work();
      close(ready[1]);
      for (;;) pause();
    }
    close(ready[1]);
    char byte;
    EXPECT_EQ(read(ready[0], &byte, 1), 0); // until the child has closed its end
    close(ready[0]);
    return child;
  }
  static void kill_and_wait(pid_t child) {
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
  }

  const temporary_folder folder;
  const fs::path base = folder.path / "river";
};

TEST_F(OutputLock, IsHeldOnceAndTheRefusalNamesTheHolder) {
  char host[256] = "";
  gethostname(host, sizeof host);
  {
    const output_lock lock(base);
    EXPECT_EQ(lock.warning(), "");
    EXPECT_THAT(files(), ElementsAre(".river.run"));
    EXPECT_THAT(refusal(), testing::MatchesRegex(
                               "The results of " + base.string() + " are being written by another run: process " +
                               std::to_string(getpid()) + " on " + host +
                               ", started [0-9-]+ [0-9:]+ UTC\\. Wait until it has ended, or run a copy of the data "
                               "file under another name\\."));
    const output_lock other(folder.path / "river_b"); // other results in the same folder
    EXPECT_EQ(other.warning(), "");
  }
  EXPECT_THAT(files(), testing::IsEmpty());
  EXPECT_EQ(refusal(), "");
}

TEST_F(OutputLock, ItEndsWithItsProcessAndIsNotInheritedByPrograms) {
  pid_t sleeper = -1;
  int number[2];
  ASSERT_EQ(pipe(number), 0);
  const pid_t child = holder([&] {
    sleeper = fork();
    if (sleeper == 0) {
      execl("/bin/sleep", "sleep", "100", nullptr);
      _exit(127);
    }
    EXPECT_EQ(write(number[1], &sleeper, sizeof sleeper), static_cast<ssize_t>(sizeof sleeper));
  });
  ASSERT_EQ(read(number[0], &sleeper, sizeof sleeper), static_cast<ssize_t>(sizeof sleeper));
  while (fs::read_symlink("/proc/" + std::to_string(sleeper) + "/exe").filename() ==
         fs::read_symlink("/proc/self/exe").filename())
    usleep(1000); // not yet the program
  EXPECT_THAT(refusal(), HasSubstr("process " + std::to_string(child) + " on "));
  kill_and_wait(child);
  EXPECT_TRUE(fs::exists(lock_file())); // left over, and locks nothing
  EXPECT_EQ(refusal(), "");
  EXPECT_THAT(files(), testing::IsEmpty());
  kill(sleeper, SIGKILL);
  for (const int end : number) close(end);
}

TEST_F(OutputLock, OnlyTheHolderRemovesWhatADeadRunLeft) {
  const std::set<std::string> dead = {"river.part-node7-1-0123456789abcdef", "river.part-node_8-4711-ffffffffffffffff"};
  std::set<std::string> others = {"river.nc",
                                  "river.part",
                                  "river.part-node7-1-0123456789abcde",
                                  "river.part-node7-1-0123456789abcdef0",
                                  "river.part-node7-1-0123456789abcdef.nc",
                                  "river.part-node7-x-0123456789abcdef",
                                  "river.part-node.7-1-0123456789abcdef",
                                  "river.part-a-1.part-node7-1-0123456789abcdef",
                                  "river_b.part-node7-1-0123456789abcdef",
                                  "xriver.part-node7-1-0123456789abcdef"};
  const pid_t child = holder();
  for (const auto& names : {dead, others})
    for (const std::string& name : names) folder.write(name, "x");
  fs::create_symlink("river.nc", folder.path / "river.part-node7-2-0123456789abcdef");
  fs::create_directory(folder.path / "river.part-node7-3-0123456789abcdef");
  others.insert({"river.part-node7-2-0123456789abcdef", "river.part-node7-3-0123456789abcdef"});
  EXPECT_NE(refusal(), "");
  EXPECT_EQ(files().size(), dead.size() + others.size() + 1);
  kill_and_wait(child);
  EXPECT_EQ(refusal(), "");
  EXPECT_EQ(files(), others);
}

TEST_F(OutputLock, NothingThatStrangersPutInItsPlaceIsWrittenTo) {
  folder.write("victim", "precious");
  const std::string refused =
      lock_file() + " is not a regular file, so the results of " + base.string() + " cannot be locked. Delete it.";
  fs::create_symlink("victim", lock_file());
  EXPECT_EQ(refusal(), refused);
  fs::remove(lock_file());
  fs::create_symlink("nothing yet", lock_file());
  EXPECT_EQ(refusal(), refused);
  fs::remove(lock_file());
  fs::create_directory(lock_file());
  EXPECT_EQ(refusal(), refused);
  fs::remove(lock_file());
  ASSERT_EQ(mkfifo(lock_file().c_str(), 0600), 0);
  EXPECT_EQ(refusal(), refused);
  fs::remove(lock_file());
  fs::create_hard_link(folder.path / "victim", lock_file());
  EXPECT_EQ(refusal(), "");
  EXPECT_EQ(folder.read("victim"), "precious");
  EXPECT_THAT(files(), ElementsAre("victim"));

  folder.write(".river.run", "process 1\x1b]52;c;x\x07 on \xc2\x9b\nsecond line");
  const file_descriptor stranger(open(lock_file().c_str(), O_RDWR));
  struct flock whole {};
  whole.l_type = F_WRLCK;
  ASSERT_TRUE(flock(stranger.get(), LOCK_EX) == 0 || fcntl(stranger.get(), F_OFD_SETLK, &whole) == 0);
  EXPECT_THAT(refusal(), HasSubstr("another run: process 1?]52;c;x? on ??. Wait"));
}

TEST_F(OutputLock, AForkedChildThatEndsLeavesItsParentsLockAlone) {
  auto* const lock = new output_lock(base);
  const pid_t child = fork();
  if (child == 0) {
    delete lock;
    _exit(0);
  }
  waitpid(child, nullptr, 0);
  EXPECT_TRUE(fs::exists(lock_file()));
  EXPECT_NE(refusal(), "");
  delete lock;
  EXPECT_FALSE(fs::exists(lock_file()));
}

// Processes that take and drop the lock as fast as they can, and now and then are killed with it.
TEST_F(OutputLock, ThereIsNeverMoreThanOneHolder) {
  const auto work = [&] {
    for (int taken = 0;;) {
      try {
        const output_lock lock(base);
        const int inside = open(folder.file("inside").c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0600);
        if (inside < 0 || !lock.warning().empty()) _exit(1);
        close(inside);
        unlink(folder.file("inside").c_str());
        if (++taken == 200) _exit(0);
        if (taken == 20 && getpid() % 3 == 0) kill(getpid(), SIGKILL);
      } catch (const output_lock_refused&) {
      }
    }
  };
  std::vector<pid_t> children;
  for (int k = 0; k < 8; ++k)
    if (children.push_back(fork()); children.back() == 0) work();
  for (const pid_t child : children) {
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFSIGNALED(status) || WEXITSTATUS(status) == 0);
  }
  EXPECT_EQ(refusal(), "");
}

// Another run comes between the opening of the file and its locking, finds it unlocked, and deletes it as left over.
TEST_F(OutputLock, AFileThatWasDeletedBeforeItWasLockedCountsForNothing) {
  std::unique_ptr<output_lock> other;
  const traced_end end = run_traced([this] { return refusal().empty() ? 0 : 1; },
                                    [&](const system_call& call) {
                                      if (call.number == SYS_flock && !other)
                                        other = std::make_unique<output_lock>(base);
                                      return 0;
                                    });
  if (!end.refusal.empty()) GTEST_SKIP() << end.refusal;
  EXPECT_EQ(other->warning(), "");
  EXPECT_EQ(end.status, 1);
}

TEST_F(OutputLock, WithoutLocksThereIsAWarningAndNothingIsRemoved) {
  folder.write("river.part-node7-1-0123456789abcdef", "perhaps of a run that goes");
  const std::string warning = "The results of " + base.string() +
                              " cannot be locked (No locks available). Make sure that no other run writes to them.";
  const traced_end end = run_traced([&] { return output_lock(base).warning() == warning ? 0 : 1; },
                                    [](const system_call& call) {
                                      const bool locks = call.number == SYS_flock ||
                                                         (call.number == SYS_fcntl && call.arguments[1] == F_OFD_SETLK);
                                      return locks ? ENOLCK : 0;
                                    });
  if (!end.refusal.empty()) GTEST_SKIP() << end.refusal;
  EXPECT_EQ(end.status, 0);
  EXPECT_THAT(files(), ElementsAre("river.part-node7-1-0123456789abcdef"));
  const output_lock nowhere(folder.path / "gone" / "river");
  EXPECT_THAT(nowhere.warning(), HasSubstr("/gone/river cannot be locked (No such file or directory)"));
}

} // namespace
} // namespace vesk
