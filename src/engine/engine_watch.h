// Names the engine when an engine ends the program: by a signal, by an exception on one of its own threads, or by
// exit.
//
// Such an end can't be prevented, since the engine works in the same process, but it must not look like a fault of the
// program: one line on standard error names the engine.
#pragma once

#include <csignal>
#include <filesystem>
#include <memory>
#include <string>

namespace vesk {

// Call it once, at the program's start, on the main thread. `program`: the first word of the line; static
// storage. A signal goes through afterwards, so that the process ends by it. An exit that an engine calls ends with
// status 1.
void report_engine_crashes(const char* program);

// The engine's function is at work while the object lives, on the thread that made it. One at a time.
class engine_at_work {
public:
  explicit engine_at_work(const std::filesystem::path& library);
  ~engine_at_work();
  engine_at_work(const engine_at_work&) = delete;
  engine_at_work& operator=(const engine_at_work&) = delete;

  // For an engine that has exited its thread: none is left to end the job on. Aborts.
  [[noreturn]] void end_without_thread() const;

  const std::string& line_head() const { return line_head_; } // "vesk-run: Engine /path/to/it"

private:
  std::string line_head_;
  std::unique_ptr<char[]> signal_stack_; // a handler has no room on a stack that has overflowed
  stack_t former_stack_{};
};

} // namespace vesk
