#include "sandbox/confine.h"

#include <fcntl.h>
#include <linux/landlock.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstring>

#ifndef SANDBOX_WITHOUT_FILTER
#include <seccomp.h>
#endif

namespace sandbox {

namespace {

std::string failure(const char* step) {
  return std::string(step) + ": " + std::strerror(errno);
}

// glibc has no functions for Landlock.
long landlock_version() {
  return syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
}

// All rights known to the kernel's version of Landlock: rights that are not handled remain allowed.
std::uint64_t rights_of(long version) {
  std::uint64_t rights = (LANDLOCK_ACCESS_FS_MAKE_SYM << 1) - 1; // all of version 1
  if (version >= 2) rights |= std::uint64_t{1} << 13;            // to move files to another folder
  if (version >= 3) rights |= std::uint64_t{1} << 14;            // to truncate
  if (version >= 5) rights |= std::uint64_t{1} << 15;            // ioctl on devices
  return rights;
}

std::string restrict_files(int file) {
  const long version = landlock_version();
  if (version < 0) return errno == ENOSYS || errno == EOPNOTSUPP ? "" : failure("Landlock");
  const landlock_ruleset_attr handled{.handled_access_fs = rights_of(version)};
  const int rules = static_cast<int>(syscall(SYS_landlock_create_ruleset, &handled, sizeof handled, 0));
  if (rules < 0) return failure("Landlock");
  const landlock_path_beneath_attr the_file{.allowed_access = LANDLOCK_ACCESS_FS_READ_FILE, .parent_fd = file};
  const bool done = syscall(SYS_landlock_add_rule, rules, LANDLOCK_RULE_PATH_BENEATH, &the_file, 0) == 0 &&
                    syscall(SYS_landlock_restrict_self, rules, 0) == 0;
  std::string cause = done ? "" : failure("Landlock");
  close(rules);
  return cause;
}

#ifdef SANDBOX_WITHOUT_FILTER

std::string restrict_calls() {
  return {};
}

#else

// The calls needed to read, compute and allocate.
constexpr int allowed_calls[] = {SCMP_SYS(brk),          SCMP_SYS(clock_gettime),  SCMP_SYS(close),
                                 SCMP_SYS(exit),         SCMP_SYS(exit_group),     SCMP_SYS(flock),
                                 SCMP_SYS(fstat),        SCMP_SYS(futex),          SCMP_SYS(getcwd),
                                 SCMP_SYS(getpid),       SCMP_SYS(getrandom),      SCMP_SYS(getrusage),
                                 SCMP_SYS(gettid),       SCMP_SYS(gettimeofday),   SCMP_SYS(lseek),
                                 SCMP_SYS(lstat),        SCMP_SYS(madvise),        SCMP_SYS(mremap),
                                 SCMP_SYS(munmap),       SCMP_SYS(newfstatat),     SCMP_SYS(pread64),
                                 SCMP_SYS(preadv),       SCMP_SYS(read),           SCMP_SYS(readlink),
                                 SCMP_SYS(readlinkat),   SCMP_SYS(readv),          SCMP_SYS(restart_syscall),
                                 SCMP_SYS(rt_sigaction), SCMP_SYS(rt_sigprocmask), SCMP_SYS(rt_sigreturn),
                                 SCMP_SYS(sched_yield),  SCMP_SYS(stat),           SCMP_SYS(statx),
                                 SCMP_SYS(sysinfo),      SCMP_SYS(time),           SCMP_SYS(write),
                                 SCMP_SYS(writev)};

// Allowed if an argument has none of these bits, or is 0.
struct limited_call {
  int call;
  unsigned argument;
  std::uint64_t forbidden;
};
constexpr std::uint64_t to_write = O_ACCMODE | O_CREAT | O_TRUNC;
constexpr limited_call limited_calls[] = {{SCMP_SYS(open), 1, to_write},
                                          {SCMP_SYS(openat), 2, to_write},
                                          {SCMP_SYS(mmap), 2, PROT_EXEC},
                                          {SCMP_SYS(mprotect), 2, PROT_EXEC},
                                          {SCMP_SYS(prlimit64), 0, ~std::uint64_t{0}} /* this process alone */};

// Refuses a call instead of killing the process: another version of a library may try a call that it does not need.
std::string restrict_calls() {
  const scmp_filter_ctx filter = seccomp_init(SCMP_ACT_ERRNO(EPERM));
  int error = filter ? 0 : -ENOMEM;
  for (const int call : allowed_calls)
    if (error == 0) error = seccomp_rule_add(filter, SCMP_ACT_ALLOW, call, 0);
  for (const limited_call& it : limited_calls)
    if (error == 0)
      error = seccomp_rule_add(filter, SCMP_ACT_ALLOW, it.call, 1,
                               scmp_arg_cmp{it.argument, SCMP_CMP_MASKED_EQ, it.forbidden, 0});
  if (error == 0) error = seccomp_load(filter);
  seccomp_release(filter);
  errno = -error;
  return error == 0 ? "" : failure("seccomp");
}

#endif

} // namespace

bool die_with_parent(int channel) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  pollfd other_side{channel, 0, 0};
  return poll(&other_side, 1, 0) == 0;
}

std::string confine_to(int file) {
  if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0) return failure("no new privileges");
  if (std::string cause = restrict_files(file); !cause.empty()) return cause;
  return restrict_calls();
}

std::string name_of(int file) {
  return "/proc/self/fd/" + std::to_string(file);
}

} // namespace sandbox
