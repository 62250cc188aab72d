// deny landlock|flock PROGRAM ARGUMENT...: runs a program as on a kernel without Landlock, or without flock.
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <seccomp.h>
#include <unistd.h>

int main(int, char** arguments) {
  const bool landlock = std::strcmp(arguments[1], "landlock") == 0;
  const int call = landlock ? SCMP_SYS(landlock_create_ruleset) : SCMP_SYS(flock);
  const scmp_filter_ctx filter = seccomp_init(SCMP_ACT_ALLOW);
  if (seccomp_rule_add(filter, SCMP_ACT_ERRNO(static_cast<unsigned>(landlock ? ENOSYS : ENOLCK)), call, 0) != 0 ||
      seccomp_load(filter) != 0)
    return std::perror("seccomp"), 1;
  execv(arguments[2], arguments + 2);
  return std::perror(arguments[2]), 1;
}
