// The priority of a worker on this platform: the gate slows it down, nice values speed it up.
#pragma once

#include "app/priority_control.h"
#include "engine/stack_thread.h"

namespace vesk {

// Main thread only. Must be destroyed before the worker.
class worker_priority final : public priority_platform {
public:
  explicit worker_priority(ResizableThread& worker) : worker_(worker) {}
  ~worker_priority() override; // leaves the high process class: the next job begins at the normal position

  bool suspend() override;
  bool resume() override;
  bool set_process_class(process_class wanted) override;
  bool set_thread_priority(int value) override;

private:
  ResizableThread& worker_;
  process_class class_ = process_class::normal;
};

} // namespace vesk
