// The helper programs as they are shipped, taken over from inside by a preloaded library.
#include "temporary_folder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <fcntl.h>
#include <linux/landlock.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vesk {
namespace {

#ifdef WITH_FILTER
constexpr bool with_filter = true;
#else
constexpr bool with_filter = false; // of a sanitizer build
#endif

bool kernel_has_landlock() {
  return syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION) > 0;
}

// Of vesk-hyd, vesk-mdb and vesk-nc, by their paths.
class Confinement : public testing::TestWithParam<const char*> {
protected:
  Confinement() {
    prctl(PR_SET_CHILD_SUBREAPER, 1);
    folder.write("file", std::string(4096, 'x'));
  }

  // Starts the helper with the intruder in it, as a child of this process or of one that it returns. Of `ends` the
  // helper has the second.
  pid_t start(const int (&ends)[2]) const {
    const pid_t child = fork();
    if (child != 0) return child;
    dup2(ends[1], 0);
    dup2(ends[1], 1);
    dup2(open(folder.file("file").c_str(), O_RDONLY), 3);
    close_range(4, ~0U, CLOSE_RANGE_CLOEXEC);
    std::string preload = "LD_PRELOAD=" INTRUDER, sanitizer = "ASAN_OPTIONS=verify_asan_link_order=0";
    std::string program = GetParam(), work = "tables";
    char* const words[] = {program.data(), program == VESK_MDB_HELPER ? work.data() : nullptr, nullptr};
    char* const environment[] = {preload.data(), sanitizer.data(), nullptr};
    execve(words[0], words, environment);
    _exit(127);
  }

  static std::string report(int channel) {
    std::string text;
    for (char byte; !text.ends_with("end\n") && read(channel, &byte, 1) == 1;) text += byte;
    return text;
  }
  static std::string status_line(pid_t process, const std::string& name) {
    std::ifstream status("/proc/" + std::to_string(process) + "/status");
    for (std::string line; std::getline(status, line);)
      if (line.starts_with(name + ":\t")) return line.substr(name.size() + 2);
    return "";
  }
  // The signal that ended a process, this one's child by now.
  static int end_of(pid_t process) {
    int status = 0;
    return waitpid(process, &status, 0) == process && WIFSIGNALED(status) ? WTERMSIG(status) : 0;
  }

  temporary_folder folder;
};

TEST_P(Confinement, NothingButReadingTheFileSucceeds) {
  int ends[2];
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
  const pid_t process = start(ends);
  close(ends[1]);
  std::string expected = "read its file\n";
  if (!kernel_has_landlock()) expected += "read another file\nlist a folder\n";
  if (!with_filter)
    expected +=
        "open in a new way\nreach the network\nreach another process\nstart a process\nsend a signal\nmake code\n";
  EXPECT_EQ(report(ends[0]), expected + "end\n");
  EXPECT_EQ(status_line(process, "NoNewPrivs"), "1");
  EXPECT_EQ(status_line(process, "Seccomp"), with_filter ? "2" : "0");
  EXPECT_EQ(folder.read("file"), std::string(4096, 'x'));
  kill(process, SIGKILL);
  EXPECT_EQ(end_of(process), SIGKILL);
  close(ends[0]);
}

TEST_P(Confinement, AHelperInALoopDiesWithItsParent) {
  int ends[2], number[2];
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
  ASSERT_EQ(pipe(number), 0);
  const pid_t parent = fork();
  if (parent == 0) {
    const pid_t process = start(ends);
    [[maybe_unused]] const ssize_t told = write(number[1], &process, sizeof process);
    pause();
    _exit(1);
  }
  close(ends[1]);
  pid_t process = -1;
  ASSERT_EQ(read(number[0], &process, sizeof process), static_cast<ssize_t>(sizeof process));
  EXPECT_THAT(report(ends[0]), testing::EndsWith("end\n"));
  kill(parent, SIGKILL);
  EXPECT_EQ(end_of(parent), SIGKILL);
  EXPECT_EQ(end_of(process), SIGKILL);
  for (const int file : {ends[0], number[0], number[1]}) close(file);
}

TEST_P(Confinement, WithoutItsParentItEndsAtOnce) {
  int ends[2];
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
  close(ends[0]);
  ends[0] = -1;
  const pid_t process = start(ends);
  int status = 0;
  ASSERT_EQ(waitpid(process, &status, 0), process);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 1) << status;
  close(ends[1]);
}

INSTANTIATE_TEST_SUITE_P(Helpers, Confinement, testing::Values(VESK_HYD_HELPER, VESK_MDB_HELPER, VESK_NC_HELPER),
                         [](const auto& instance) {
                           const std::string path = instance.param;
                           return path.substr(path.find_last_of('-') + 1);
                         });

} // namespace
} // namespace vesk
