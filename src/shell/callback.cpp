#include "shell/callback.h"

#include "shell/current_shell.h"
#include "shell/shell_interface.h"

#include <exception>
#include <string>

namespace vesk {

namespace {

// Reports the current exception to the job.
[[gnu::noinline]] void report_failure(const shell_interface& shell) noexcept {
  try {
    const std::string keyword(shell.current_keyword());
    try {
      throw;
    } catch (const std::exception& error) {
      shell.job().fail((shell.is_get ? "GET " : "PUT ") + keyword + " failed: " + error.what());
    } catch (...) {
      shell.job().fail((shell.is_get ? "GET " : "PUT ") + keyword + " failed with an exception of unknown type");
    }
  } catch (...) { // not enough memory even for the text
    try {
      shell.job().fail("A keyword failed.");
    } catch (...) { // the job has noted its failure; nothing else can be done
    }
  }
}

} // namespace

void data_callback(const char* name, void* a1, void* a2, void* a3, void* a4, void* a5) noexcept {
  shell_interface* const shell = current_shell();
  if (!shell) return;
  try {
    shell->call(name, {a1, a2, a3, a4, a5});
  } catch (...) {
    report_failure(*shell);
  }
}

} // namespace vesk
