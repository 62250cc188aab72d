// without_landlock PROGRAM ARGUMENT...: runs a program for which the kernel has no Landlock.
#include <cerrno>
#include <cstdio>
#include <seccomp.h>
#include <unistd.h>

int main(int, char** arguments) {
  const scmp_filter_ctx filter = seccomp_init(SCMP_ACT_ALLOW);
  if (seccomp_rule_add(filter, SCMP_ACT_ERRNO(ENOSYS), SCMP_SYS(landlock_create_ruleset), 0) != 0 ||
      seccomp_load(filter) != 0)
    return std::perror("seccomp"), 1;
  execv(arguments[1], arguments + 1);
  return std::perror(arguments[1]), 1;
}
