#include "platform/processes.h"
#include "platform/program_start.h"
#include "platform/threads.h"
#include "temporary_folder.h"

#include <cerrno>
#include <chrono>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace vesk {
namespace {

namespace fs = std::filesystem;
using words = std::vector<std::string>;

TEST(Processes, ACommandLineIsPartedByItsQuotes) {
  EXPECT_EQ(split_command_line("jovik.exe \"/my rivers/a b.vki\""), (words{"jovik.exe", "/my rivers/a b.vki"}));
  EXPECT_EQ(split_command_line("  a\t\"\"  b\"c d\"e $HOME;ls "), (words{"a", "", "bc de", "$HOME;ls"}));
  EXPECT_EQ(split_command_line("\"open end"), words{"open end"});
  EXPECT_EQ(split_command_line(" "), words{});
}

TEST(ProgramStart, LetsWritesFailAndHoldsClosedStreams) {
  const pid_t child = fork();
  if (child == 0) {
    close(STDIN_FILENO);
    close(STDOUT_FILENO);
    prepare_process();
    int unread[2] = {-1, -1};
    bool good = pipe(unread) == 0 && unread[0] > STDERR_FILENO; // files get other numbers
    char byte = 0;
    good = good && write(STDOUT_FILENO, "x", 1) == -1 && read(STDIN_FILENO, &byte, 1) == -1;
    close(unread[0]);
    good = good && write(unread[1], "x", 1) == -1 && errno == EPIPE;
    restore_signals();
    if (!good) _exit(1);
    [[maybe_unused]] const auto ends_here = write(unread[1], "x", 1);
    _exit(2);
  }
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_TRUE(WIFSIGNALED(status)) << WEXITSTATUS(status);
}

class Programs : public testing::Test {
protected:
  void make(const std::string& name, const std::string& script) {
    folder.write(name, "#!/bin/sh\n" + script + "\n");
    fs::permissions(folder.path / name, fs::perms::owner_all);
  }
  // The content of a file that a program started by the test writes, once it is there.
  std::string written(const std::string& name) {
    for (int i = 0; i < 500 && !fs::exists(folder.path / name); ++i)
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    return folder.read(name);
  }
  temporary_folder folder;
};

TEST_F(Programs, AreFoundWithAndWithoutTheirEnding) {
  make("jovik", "");
  folder.write("havle", "not to be executed");
  EXPECT_EQ(find_program("jovik.EXE", folder.path), folder.path / "jovik");
  EXPECT_EQ(find_program("havle.exe", folder.path), "");
  EXPECT_EQ(find_program(folder.file("jovik.exe"), {}), folder.path / "jovik");
  EXPECT_EQ(find_program(".exe", folder.path), "");
  EXPECT_NE(find_program("sh", folder.path), "");
  make("jovik.exe", "");
  EXPECT_EQ(find_program("jovik.exe", folder.path), folder.path / "jovik.exe"); // unchanged first
}

TEST_F(Programs, StartWithoutAShellInTheirFolderAndLeaveNoZombie) {
  make("writer", "printf '%s|' \"$@\" \"$PWD\" > part; mv part done");
  EXPECT_TRUE(start_program({folder.file("writer.exe"), "a b", "$HOME", "\"'"}, folder.path));
  EXPECT_EQ(written("done"), "a b|$HOME|\"'|" + folder.path.string() + "|");
  EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1); // no child is left
  folder.write("broken", "no program");
  fs::permissions(folder.path / "broken", fs::perms::owner_all);
  EXPECT_FALSE(start_program({folder.file("broken")}));
  EXPECT_FALSE(start_program({folder.file("writer")}, folder.path / "gone"));
  EXPECT_FALSE(start_program({"no-such-program.exe"}));
  EXPECT_FALSE(start_program({}));
}

TEST(Processes, AllThreadsTakeTheNiceValue) {
  const pid_t child = fork(); // what is lowered cannot always be raised again
  if (child == 0) {
    std::atomic<int> number = 0;
    std::thread([&] {
      number = current_thread_number();
      for (;;) std::this_thread::sleep_for(std::chrono::seconds(1));
    }).detach();
    while (number == 0) std::this_thread::yield();
    const bool set = set_process_nice(7, 0);
    const auto nice_of = [](int thread) { return getpriority(PRIO_PROCESS, static_cast<id_t>(thread)); };
    _exit(set && nice_of(number) == 7 && nice_of(current_thread_number()) == 7 ? 0 : 1);
  }
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
}

} // namespace
} // namespace vesk
