#include "console/supervisor.h"

#include "platform/file_io.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vesk {

namespace {

using clock = std::chrono::steady_clock;

constexpr int passed_on[] = {SIGINT, SIGTERM, SIGHUP};
constexpr std::chrono::seconds grace(5);

volatile sig_atomic_t child = 0;
volatile sig_atomic_t has_come = 0;
volatile sig_atomic_t has_passed_on_term = 0;

// A signal of the keyboard goes to all processes of the terminal, the child included.
extern "C" void pass_on(int signal, siginfo_t* information, void*) {
  const int error = errno;
  has_come = 1;
  if (signal == SIGTERM) has_passed_on_term = 1;
  if (information->si_code != SI_KERNEL && child > 0) kill(static_cast<pid_t>(child), signal);
  errno = error;
}

class held_signals {
public:
  held_signals() {
    sigset_t held;
    sigemptyset(&held);
    for (const int signal : passed_on) sigaddset(&held, signal);
    sigprocmask(SIG_BLOCK, &held, &before_);
  }
  ~held_signals() { sigprocmask(SIG_SETMASK, &before_, nullptr); }
  held_signals(const held_signals&) = delete;
  held_signals& operator=(const held_signals&) = delete;

private:
  sigset_t before_{};
};

void watch(int signal) {
  struct sigaction action = {};
  sigaction(signal, nullptr, &action);
  if (action.sa_handler == SIG_IGN) return; // the child ignores it as well
  action = {};
  action.sa_sigaction = pass_on;
  action.sa_flags = SA_SIGINFO | SA_RESTART;
  sigemptyset(&action.sa_mask);
  sigaction(signal, &action, nullptr);
}

// Until the process has ended or the time has come. False: the time.
bool wait_until(int process, std::optional<clock::time_point> time) {
  for (;;) {
    int timeout = -1;
    if (time) {
      const auto left = std::chrono::ceil<std::chrono::milliseconds>(*time - clock::now()).count();
      if (left <= 0) return false;
      timeout = static_cast<int>(std::min<long long>(left, 1'000'000));
    }
    pollfd ended{process, POLLIN, 0};
    if (poll(&ended, 1, timeout) > 0) return true;
  }
}

child_end wait_for(pid_t process, std::optional<double> time_limit) {
  child_end end;
  const file_descriptor ended(static_cast<int>(syscall(SYS_pidfd_open, process, 0)));
  std::optional<clock::time_point> deadline;
  if (time_limit)
    deadline = clock::now() +
               std::chrono::duration_cast<clock::duration>(std::chrono::duration<double>(std::min(*time_limit, 1e9)));
  if (ended.is_open() && !wait_until(ended.get(), deadline)) {
    end.timed_out = true;
    kill(process, SIGTERM);
    if (!wait_until(ended.get(), clock::now() + grace)) kill(process, SIGKILL);
  }
  int status = 0;
  rusage used{};
  while (wait4(process, &status, 0, &used) < 0 && errno == EINTR) {
  }
  end.terminated = has_passed_on_term != 0;
  if (WIFSIGNALED(status)) end.signal = WTERMSIG(status);
  if (WIFEXITED(status)) end.status = WEXITSTATUS(status);
  for (const timeval& time : {used.ru_utime, used.ru_stime})
    end.use.processor_seconds += static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
  end.use.peak_memory_bytes = static_cast<std::uint64_t>(used.ru_maxrss) * 1024;
  return end;
}

} // namespace

bool supervision_was_interrupted() {
  return has_come != 0;
}

child_end supervise(const std::function<int()>& work, std::optional<double> time_limit) {
  std::fflush(nullptr); // else both would write what is still in the buffers
  const pid_t parent = getpid();
  pid_t process = 0;
  {
    const held_signals held; // none is lost between the fork and the handlers
    process = fork();
    if (process < 0) throw file_exception("start", "a process for the run", errno);
    child = process;
    has_come = 0;
    has_passed_on_term = 0;
    if (process > 0)
      for (const int signal : passed_on) watch(signal);
  }
  if (process > 0) return wait_for(process, time_limit);
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != parent) _exit(1);
  const int status = work();
  std::fflush(nullptr);
  _exit(status); // nothing that the parent made is taken down twice
}

} // namespace vesk
