#include "run_program.h"

#include <array>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <stdexcept>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vesk {

program_result run_program(const std::string& program, const std::vector<std::string>& arguments, int signal) {
  std::array<std::array<int, 2>, 2> pipes{};
  for (auto& p : pipes)
    if (pipe2(p.data(), O_CLOEXEC) != 0) throw std::runtime_error("pipe");
  std::vector<char*> words{const_cast<char*>(program.c_str())};
  for (const std::string& argument : arguments) words.push_back(const_cast<char*>(argument.c_str()));
  words.push_back(nullptr);

  const pid_t child = fork();
  if (child == 0) {
    const rlimit no_cores{0, 0}; // for programs that crash intentionally
    setrlimit(RLIMIT_CORE, &no_cores);
    dup2(pipes[0][1], STDOUT_FILENO);
    dup2(pipes[1][1], STDERR_FILENO);
    execv(program.c_str(), words.data());
    _exit(127);
  }
  for (auto& p : pipes) close(p[1]);

  program_result result;
  std::string* const texts[] = {&result.out, &result.err};
  std::array<pollfd, 2> open{{{pipes[0][0], POLLIN, 0}, {pipes[1][0], POLLIN, 0}}};
  while (open[0].fd >= 0 || open[1].fd >= 0) {
    poll(open.data(), open.size(), -1);
    for (std::size_t i = 0; i < open.size(); ++i) {
      if (open[i].fd < 0 || open[i].revents == 0) continue;
      std::array<char, 4096> bytes{};
      const ssize_t n = read(open[i].fd, bytes.data(), bytes.size());
      if (n > 0) {
        texts[i]->append(bytes.data(), static_cast<std::size_t>(n));
      } else {
        close(open[i].fd);
        open[i].fd = -1;
      }
    }
    if (signal != 0 && !result.out.empty()) {
      kill(child, signal);
      signal = 0;
    }
  }
  int status = 0;
  waitpid(child, &status, 0);
  result.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  return result;
}

background_program::background_program(const std::string& program, const std::vector<std::string>& arguments) {
  std::array<int, 2> pipe{};
  if (pipe2(pipe.data(), O_CLOEXEC) != 0) throw std::runtime_error("pipe");
  std::vector<char*> words{const_cast<char*>(program.c_str())};
  for (const std::string& argument : arguments) words.push_back(const_cast<char*>(argument.c_str()));
  words.push_back(nullptr);
  process_ = fork();
  if (process_ == 0) {
    dup2(pipe[1], STDOUT_FILENO);
    execv(program.c_str(), words.data());
    _exit(127);
  }
  close(pipe[1]);
  output_ = pipe[0];
}

background_program::~background_program() {
  if (process_ > 0) kill_and_wait();
  close(output_);
}

std::string background_program::read_line() {
  std::string line;
  for (char byte; read(output_, &byte, 1) == 1 && byte != '\n';) line += byte;
  return line;
}

void background_program::kill_and_wait() {
  kill(process_, SIGKILL);
  waitpid(process_, nullptr, 0);
  process_ = -1;
  for (char byte; read(output_, &byte, 1) == 1;) {
  }
}

} // namespace vesk
