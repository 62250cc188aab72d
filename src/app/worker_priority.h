// The priority of a worker as this platform keeps it: the gate holds it up, nice values hurry it on.
#pragma once

#include "app/priority_control.h"
#include "engine/stack_thread.h"

namespace vesk {

// Main thread only; to be destroyed while the worker lives.
class worker_priority final : public priority_platform {
public:
  explicit worker_priority(ResizableThread& worker) : worker_(worker) {}
  ~worker_priority() override; // a high class goes with the job: the next one begins at the normal position

  bool suspend() override;
  bool resume() override;
  bool set_process_class(process_class wanted) override;
  bool set_thread_priority(int value) override;

private:
  ResizableThread& worker_;
  process_class class_ = process_class::normal;
};

} // namespace vesk
