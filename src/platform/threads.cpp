#include "platform/threads.h"

#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace vesk {

int current_thread_number() {
  return static_cast<int>(syscall(SYS_gettid));
}

// On Linux each thread has its own nice value, and PRIO_PROCESS takes a thread's number.
bool set_thread_nice(int thread_number, int nice) {
  return setpriority(PRIO_PROCESS, static_cast<id_t>(thread_number), nice) == 0;
}

} // namespace vesk
