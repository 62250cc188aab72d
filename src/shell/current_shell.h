// How the callback finds the shell of the job that a call belongs to.
#pragma once

#include <atomic>

namespace vesk {

class shell_interface;

// Set by engine_job_scope. own_shell belongs to the thread; active_shell serves threads created by an engine.
extern constinit thread_local shell_interface* own_shell [[gnu::tls_model("initial-exec")]];
extern std::atomic<shell_interface*> active_shell;

// The shell of the calling thread's own job or, on a thread created by the engine, of the one active job. Null if there
// is none.
inline shell_interface* current_shell() {
  if (shell_interface* own = own_shell) [[likely]]
    return own;
  return active_shell.load(std::memory_order_acquire);
}

} // namespace vesk
