#include "shell/job.h"

#include "shell/current_shell.h"
#include "shell/shell_interface.h"

#include <utility>

namespace vesk {

constinit thread_local shell_interface* own_shell = nullptr;
constinit std::atomic<shell_interface*> active_shell = nullptr;

engine_job_scope::engine_job_scope(engine_job& job)
    : previous_own_(std::exchange(own_shell, &job.shell())), previous_active_(nullptr) {
  own_shell->attach(job);
  previous_active_ = active_shell.exchange(own_shell, std::memory_order_acq_rel);
}

engine_job_scope::~engine_job_scope() {
  own_shell = previous_own_;
  active_shell.store(previous_active_, std::memory_order_release);
}

} // namespace vesk
