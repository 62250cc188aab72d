#include "platform/threads.h"

#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace vesk {

int current_thread_number() {
  return static_cast<int>(syscall(SYS_gettid));
}

// On Linux a nice value belongs to a thread, and PRIO_PROCESS takes its number.
bool set_thread_nice(int thread_number, int nice) {
  return setpriority(PRIO_PROCESS, static_cast<id_t>(thread_number), nice) == 0;
}

} // namespace vesk
