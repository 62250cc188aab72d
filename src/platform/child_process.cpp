#include "platform/child_process.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vesk {

namespace {

// A copy above the numbers that the program gets, so that setting those up loses none.
file_descriptor out_of_the_way(const file_descriptor* file) {
  return file ? file_descriptor(fcntl(file->get(), F_DUPFD_CLOEXEC, handed_descriptor + 1)) : file_descriptor();
}

} // namespace

int child_process::start(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                         const child_files& files) {
  const file_descriptor input = out_of_the_way(files.input), output = out_of_the_way(files.output),
                        file = out_of_the_way(files.file);
  std::vector<char*> words{const_cast<char*>(program.c_str())};
  for (const std::string& argument : arguments) words.push_back(const_cast<char*>(argument.c_str()));
  words.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  const auto connect = [&](const file_descriptor& from, int to, int mode) {
    if (from.is_open())
      posix_spawn_file_actions_adddup2(&actions, from.get(), to);
    else
      posix_spawn_file_actions_addopen(&actions, to, "/dev/null", mode, 0);
  };
  connect(input, STDIN_FILENO, O_RDONLY);
  connect(output, STDOUT_FILENO, O_WRONLY);
  posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
  if (file.is_open()) posix_spawn_file_actions_adddup2(&actions, file.get(), handed_descriptor);
  posix_spawn_file_actions_addclosefrom_np(&actions, handed_descriptor + (file.is_open() ? 1 : 0));
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  sigset_t none, piped;
  sigemptyset(&none);
  sigemptyset(&piped);
  sigaddset(&piped, SIGPIPE);
  sigaddset(&piped, SIGXFSZ);
  posix_spawnattr_setsigmask(&attributes, &none);
  posix_spawnattr_setsigdefault(&attributes, &piped);
  posix_spawnattr_setpgroup(&attributes, 0); // Ctrl+C is for this process, which decides
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETPGROUP);
  char* const no_environment[] = {nullptr};
  const int error = posix_spawn(&number_, program.c_str(), &actions, &attributes, words.data(), no_environment);
  if (error != 0) number_ = -1;
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&actions);
  return error;
}

int child_process::wait() {
  int status = 0;
  while (waitpid(number_, &status, 0) < 0 && errno == EINTR) {
  }
  number_ = -1;
  return status;
}

void child_process::stop() {
  if (number_ <= 0) return;
  kill(number_, SIGKILL);
  wait();
}

} // namespace vesk
