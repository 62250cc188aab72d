// Names the engine when an engine ends the program: by a signal, by an exception on a thread that it started, or by
// calling exit.
//
// This cannot be prevented, since the engine runs in the same process. One line on standard error names the engine, so
// that users do not blame the program.
#pragma once

#include <csignal>
#include <filesystem>
#include <memory>
#include <string>

namespace vesk {

// Call it once, on the main thread, at program start. `program`: the first word of the line; static storage. A signal
// still ends the process afterwards. An exit called by an engine ends with status 1.
void report_engine_crashes(const char* program);

// While this object lives, the engine's function is running on the thread that created it. One at a time.
class engine_at_work {
public:
  explicit engine_at_work(const std::filesystem::path& library);
  ~engine_at_work();
  engine_at_work(const engine_at_work&) = delete;
  engine_at_work& operator=(const engine_at_work&) = delete;

  // For an engine that has exited its thread, so that no thread is left to end the job. Aborts.
  [[noreturn]] void end_without_thread() const;

  const std::string& line_head() const { return line_head_; } // "vesk-run: Engine /path/to/it"

private:
  std::string line_head_;
  std::unique_ptr<char[]> signal_stack_; // a handler can't use a stack that has overflowed
  stack_t former_stack_{};
};

} // namespace vesk
