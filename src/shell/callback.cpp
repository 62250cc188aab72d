#include "shell/callback.h"

#include "platform/millisecond_clock.h"
#include "shell/current_shell.h"
#include "shell/shell_interface.h"

#include <exception>
#include <string>

namespace vesk {

namespace {

// Tells the job of the exception that is being handled.
[[gnu::noinline]] void report_failure() noexcept {
  const shell_interface& shell = *current_shell();
  try {
    const std::string keyword(shell.current_keyword());
    try {
      throw;
    } catch (const std::exception& error) {
      shell.job().fail((shell.is_get ? "GET " : "PUT ") + keyword + " failed: " + error.what());
    } catch (...) {
      shell.job().fail((shell.is_get ? "GET " : "PUT ") + keyword + " failed with an exception of an unknown kind");
    }
  } catch (...) { // not even the memory for the text
    try {
      shell.job().fail("A keyword failed.");
    } catch (...) { // the job has been told; there is nothing more to be done
    }
  }
}

// A call with everything that may belong to it. Out of the way, so that the usual call saves no registers for it.
[[gnu::noinline]] void whole_call(const char* name, void* a1, void* a2, void* a3, void* a4, void* a5) noexcept {
  shell_interface* const shell = current_shell();
  if (!shell) return;
  try {
    shell->call(name, {a1, a2, a3, a4, a5});
  } catch (...) {
    report_failure();
  }
}

} // namespace

void data_callback(const char* name, void* a1, void* a2, void* a3, void* a4, void* a5) noexcept {
  shell_interface* const shell = own_shell;
  function_description* function = nullptr;
  keyword_handler handler = nullptr;
  const auto shortcut = shell ? shell->take_shortcut(name, function, handler) : shell_interface::shortcut::none;
  if (shortcut == shell_interface::shortcut::none) return whole_call(name, a1, a2, a3, a4, a5);
  if (shortcut == shell_interface::shortcut::nothing_to_do) return;
  const std::uint32_t before = millisecond_clock::now();
  try {
    handler(*shell, a1, a2, a3, a4, a5);
  } catch (...) {
    report_failure();
  }
  if (const std::uint32_t after = millisecond_clock::now(); after != before) function->elapsed_ms += after - before;
}

} // namespace vesk
