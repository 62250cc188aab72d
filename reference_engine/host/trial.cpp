#include "host/trial.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <new>
#include <stdexcept>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace reference_engine {

namespace {

// Bytes of address space in use, which a sanitizer makes many; 0 where the system does not tell.
rlim_t memory_in_use() {
  unsigned long long pages = 0;
  if (std::FILE* const file = std::fopen("/proc/self/statm", "r")) {
    if (std::fscanf(file, "%llu", &pages) != 1) pages = 0;
    std::fclose(file);
  }
  return pages * static_cast<rlim_t>(sysconf(_SC_PAGESIZE));
}

void limit(decltype(RLIMIT_CPU) what, rlim_t most) {
  const rlimit both{most, most};
  setrlimit(what, &both); // fails where the limit is lower already
}

// Nothing of the process's own is to see what happens to its copy: no handler, no file, no terminal.
void let_go() {
  for (const int number : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGTRAP, SIGSYS, SIGALRM, SIGXCPU, SIGTERM})
    std::signal(number, SIG_DFL);
  for (const int number : {SIGINT, SIGQUIT, SIGHUP}) std::signal(number, SIG_IGN); // they are meant for the process
  sigset_t all;
  sigfillset(&all);
  sigprocmask(SIG_UNBLOCK, &all, nullptr);
  const int nowhere = open("/dev/null", O_RDWR);
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) dup2(nowhere, stream);
  close_range(STDERR_FILENO + 1, ~0U, 0);
}

[[noreturn]] void work_as_copy(const std::function<void()>& work, const TrialLimits& limits) {
  let_go();
  alarm(limits.wait);
  limit(RLIMIT_CPU, limits.work);
  limit(RLIMIT_CORE, 0);
  if (const rlim_t used = memory_in_use()) limit(RLIMIT_AS, used + limits.memory);
  try {
    work();
  } catch (const std::bad_alloc&) {
    _exit(1);
  } catch (const std::length_error&) {
    _exit(1);
  } catch (...) { // the process itself will see the same
  }
  _exit(0);
}

} // namespace

bool survives(const std::function<void()>& work, const TrialLimits& limits) {
  const pid_t copy = fork();
  if (copy < 0) return true;
  if (copy == 0) work_as_copy(work, limits);
  int status = 0;
  while (waitpid(copy, &status, 0) < 0)
    if (errno != EINTR) return true;
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

} // namespace reference_engine
