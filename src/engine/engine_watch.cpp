#include "engine/engine_watch.h"

#include "dataset/text_encoding.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <string_view>
#include <unistd.h>

namespace vesk {

namespace {

struct fatal_signal {
  int number;
  std::string_view cause;
};
constexpr fatal_signal fatal_signals[] = {
    {SIGSEGV, " crashed: invalid memory access (SIGSEGV).\n"}, {SIGBUS, " crashed: invalid memory access (SIGBUS).\n"},
    {SIGFPE, " crashed: invalid arithmetic (SIGFPE).\n"},      {SIGILL, " crashed: invalid instruction (SIGILL).\n"},
    {SIGSYS, " crashed: forbidden system call (SIGSYS).\n"},   {SIGABRT, " ended the program: it aborted (SIGABRT).\n"},
};

const char* program_name = nullptr;
bool on_terminal = false;
struct sigaction former_actions[NSIG];
std::terminate_handler former_terminate = nullptr;
std::atomic<const engine_at_work*> at_work = nullptr;
std::atomic<bool> reported = false;

// The main thread never calls an engine, so an engine is not the cause of anything that ends the program there.
bool on_main_thread() {
  return gettid() == getpid();
}

// Safe in a signal handler.
void report(std::string_view cause) {
  const engine_at_work* const engine = at_work.load();
  if (!engine || on_main_thread() || reported.exchange(true)) return;
  for (const std::string_view piece : {std::string_view(on_terminal ? "\r\033[K" : ""), // clears a progress bar
                                       std::string_view(engine->line_head()), cause})
    [[maybe_unused]] const auto ignored = write(STDERR_FILENO, piece.data(), piece.size());
}

extern "C" void note_fatal_signal(int number, siginfo_t* information, void*) {
  const int error = errno;
  for (const fatal_signal& known : fatal_signals)
    if (known.number == number) report(known.cause);
  sigaction(number, &former_actions[number], nullptr);
  if (information->si_code <= 0) raise(number); // sent by a process; a fault comes again by itself
  errno = error;
}

extern "C" void note_exit() {
  if (!at_work.load() || on_main_thread()) return;
  report(" ended the program by calling exit.\n");
  _exit(EXIT_FAILURE); // before objects that the main thread still uses are destroyed
}

[[noreturn]] void note_terminate() {
  if (at_work.load() && !on_main_thread()) {
    try {
      if (const auto thrown = std::current_exception()) std::rethrow_exception(thrown);
    } catch (const std::exception& error) {
      report(std::string(" ended the program: an uncaught exception on a thread that it started: ") +
             printable_text(error.what()) + "\n");
    } catch (...) {
      report(" ended the program: an uncaught exception on a thread that it started.\n");
    }
    std::abort();
  }
  former_terminate();
  std::abort();
}

} // namespace

void report_engine_crashes(const char* program) {
  program_name = program;
  on_terminal = isatty(STDERR_FILENO) != 0;
  former_terminate = std::set_terminate(note_terminate);
  for (const fatal_signal& known : fatal_signals) {
    struct sigaction action = {};
    action.sa_sigaction = note_fatal_signal;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK;
    sigemptyset(&action.sa_mask);
    sigaction(known.number, &action, &former_actions[known.number]);
  }
}

engine_at_work::engine_at_work(const std::filesystem::path& library) {
  if (!program_name) return;
  line_head_ = std::string(program_name) + ": Engine " + printable_text(library.string());
  const auto size = static_cast<std::size_t>(std::max<long>(sysconf(_SC_SIGSTKSZ), 64 << 10));
  signal_stack_ = std::make_unique<char[]>(size);
  const stack_t stack{.ss_sp = signal_stack_.get(), .ss_flags = 0, .ss_size = size};
  sigaltstack(&stack, &former_stack_);
  // Registered again for each job: the function registered last is called first, before the destruction of objects that
  // were created after program start.
  std::atexit(note_exit);
  std::at_quick_exit(note_exit);
  at_work = this;
}

void engine_at_work::end_without_thread() const {
  report(" ended the program by ending its thread.\n");
  std::abort();
}

engine_at_work::~engine_at_work() {
  if (!program_name) return;
  at_work = nullptr;
  sigaltstack(&former_stack_, nullptr);
}

} // namespace vesk
