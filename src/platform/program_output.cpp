#include "platform/program_output.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vesk {

namespace {

// A process that is killed and waited for by the destructor.
class child_process {
public:
  explicit child_process(pid_t number) : number_(number) {}
  ~child_process() {
    if (number_ > 0) {
      kill(number_, SIGKILL);
      wait();
    }
  }
  child_process(const child_process&) = delete;
  child_process& operator=(const child_process&) = delete;

  // Waits for the process to end; returns its status as given by `waitpid`.
  int wait() {
    int status = 0;
    while (waitpid(number_, &status, 0) < 0 && errno == EINTR) {
    }
    number_ = -1;
    return status;
  }

private:
  pid_t number_;
};

// A copy above the descriptors that the program will get, so that setting those up overwrites none.
file_descriptor out_of_the_way(const file_descriptor& file) {
  return file_descriptor(fcntl(file.get(), F_DUPFD_CLOEXEC, handed_descriptor + 1));
}

int spawn(const std::filesystem::path& program, const std::vector<std::string>& arguments, int file, int output,
          pid_t& child) {
  std::vector<char*> words{const_cast<char*>(program.c_str())};
  for (const std::string& argument : arguments) words.push_back(const_cast<char*>(argument.c_str()));
  words.push_back(nullptr);
  posix_spawn_file_actions_t files;
  posix_spawn_file_actions_init(&files);
  posix_spawn_file_actions_addopen(&files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_adddup2(&files, output, STDOUT_FILENO);
  posix_spawn_file_actions_addopen(&files, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_adddup2(&files, file, handed_descriptor);
  posix_spawn_file_actions_addclosefrom_np(&files, handed_descriptor + 1);
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  sigset_t none, piped;
  sigemptyset(&none);
  sigemptyset(&piped);
  sigaddset(&piped, SIGPIPE);
  sigaddset(&piped, SIGXFSZ);
  posix_spawnattr_setsigmask(&attributes, &none);
  posix_spawnattr_setsigdefault(&attributes, &piped);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
  char* const no_environment[] = {nullptr};
  const int error = posix_spawn(&child, program.c_str(), &files, &attributes, words.data(), no_environment);
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&files);
  return error;
}

} // namespace

program_end read_program(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                         const file_descriptor& file, std::chrono::milliseconds longest_silence,
                         const std::function<bool(std::string_view)>& take) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) return {program_end::way::not_started, errno};
  const file_descriptor reading(ends[0]);
  file_descriptor writing(ends[1]);
  pid_t number = -1;
  {
    const file_descriptor handed = out_of_the_way(file), output = out_of_the_way(writing);
    if (const int error = spawn(program, arguments, handed.get(), output.get(), number))
      return {program_end::way::not_started, error};
  }
  child_process child(number);
  writing = file_descriptor();

  std::array<char, std::size_t{64} << 10> piece;
  using clock = std::chrono::steady_clock;
  constexpr int between_asking = 100; // milliseconds
  for (auto heard = clock::now();;) {
    pollfd ready{reading.get(), POLLIN, 0};
    const int events = poll(&ready, 1, between_asking);
    if (events < 0 && errno == EINTR) continue;
    if (events == 0) {
      if (clock::now() - heard >= longest_silence) return {program_end::way::silent, 0};
      if (!take({})) return {program_end::way::stopped, 0};
      continue;
    }
    heard = clock::now();
    const ssize_t got = read(reading.get(), piece.data(), piece.size());
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) break;
    if (!take({piece.data(), static_cast<std::size_t>(got)})) return {program_end::way::stopped, 0};
  }
  const int status = child.wait();
  if (WIFSIGNALED(status)) return {program_end::way::signalled, WTERMSIG(status)};
  return {program_end::way::exited, WEXITSTATUS(status)};
}

} // namespace vesk
