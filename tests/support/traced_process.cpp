#include "traced_process.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <elf.h>
#include <sys/ptrace.h>
#include <sys/uio.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace vesk {

namespace {

constexpr int refused_status = 120;

#if defined(__x86_64__)
constexpr bool processor_known = true;
#elif defined(__aarch64__)
constexpr bool processor_known = true;
#else
constexpr bool processor_known = false;
#endif

// Both functions change the registers of a process stopped at a call: at its entry, at its exit.
bool take_call_away([[maybe_unused]] pid_t process) {
#if defined(__aarch64__)
  int none = -1;
  iovec piece{&none, sizeof none};
  return ptrace(PTRACE_SETREGSET, process, NT_ARM_SYSTEM_CALL, &piece) == 0;
#elif defined(__x86_64__)
  user_regs_struct registers{};
  if (ptrace(PTRACE_GETREGS, process, nullptr, &registers) != 0) return false;
  registers.orig_rax = ~0ULL;
  return ptrace(PTRACE_SETREGS, process, nullptr, &registers) == 0;
#else
  return false;
#endif
}

bool answer_call([[maybe_unused]] pid_t process, [[maybe_unused]] int error) {
#if defined(__aarch64__)
  user_regs_struct registers{};
  iovec piece{&registers, sizeof registers};
  if (ptrace(PTRACE_GETREGSET, process, NT_PRSTATUS, &piece) != 0) return false;
  registers.regs[0] = static_cast<std::uint64_t>(-error);
  return ptrace(PTRACE_SETREGSET, process, NT_PRSTATUS, &piece) == 0;
#elif defined(__x86_64__)
  user_regs_struct registers{};
  if (ptrace(PTRACE_GETREGS, process, nullptr, &registers) != 0) return false;
  registers.rax = static_cast<unsigned long long>(-error);
  return ptrace(PTRACE_SETREGS, process, nullptr, &registers) == 0;
#else
  return false;
#endif
}

[[noreturn]] void be_traced(const std::function<int()>& work) {
  if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) _exit(refused_status);
  raise(SIGSTOP);
  _exit(work());
}

class tracer {
public:
  tracer(pid_t process, const call_decision& decide) : process_(process), decide_(decide) {}

  traced_end follow() {
    if (!wait()) return refuse("tracing a process");
    if (ptrace(PTRACE_SETOPTIONS, process_, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL) != 0)
      return refuse("tracing system calls");
    int signal = 0;
    while (ptrace(PTRACE_SYSCALL, process_, nullptr, signal) == 0 && wait()) {
      signal = 0;
      if (WSTOPSIG(status_) != (SIGTRAP | 0x80))
        signal = WSTOPSIG(status_);
      else if (!serve_stop())
        return refuse("changing system calls");
    }
    // A process killed at a stop may refuse to continue before it is gone; until then it holds its locks.
    await_end();
    end_.status = WIFEXITED(status_) ? WEXITSTATUS(status_) : 128 + WTERMSIG(status_);
    return end_;
  }

private:
  // False when the process has ended.
  bool wait() {
    while (waitpid(process_, &status_, 0) < 0 && errno == EINTR) {
    }
    return WIFSTOPPED(status_);
  }

  void await_end() {
    while (WIFSTOPPED(status_) && wait()) {
    }
  }

  traced_end refuse(const char* what) {
    const int cause = errno;
    kill(process_, SIGKILL);
    await_end();
    end_.refusal = std::string("The system does not permit ") + what + ": " + std::strerror(cause) + ".";
    return end_;
  }

  bool serve_stop() {
    __ptrace_syscall_info info{};
    if (!processor_known || ptrace(PTRACE_GET_SYSCALL_INFO, process_, sizeof info, &info) <= 0) return false;
    if (info.op == PTRACE_SYSCALL_INFO_EXIT) {
      const int error = std::exchange(error_, 0);
      return error == 0 || answer_call(process_, error);
    }
    system_call call{calls_++, info.entry.nr, {}};
    std::memcpy(call.arguments, info.entry.args, sizeof call.arguments);
    const int decision = decide_(call);
    if (decision == kill_process) end_.killed = kill(process_, SIGKILL) == 0;
    if (decision > 0) error_ = decision;
    return decision <= 0 || take_call_away(process_);
  }

  const pid_t process_;
  const call_decision& decide_;
  int status_ = 0;
  int calls_ = 0;
  int error_ = 0; // the errno of the current call, 0 if unchanged
  traced_end end_;
};

} // namespace

traced_end run_traced(const std::function<int()>& work, const call_decision& decide) {
  const pid_t process = fork();
  if (process == 0) be_traced(work);
  return tracer(process, decide).follow();
}

} // namespace vesk
