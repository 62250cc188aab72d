#include "shell/callback.h"

#include "shell/current_shell.h"
#include "shell/shell_interface.h"

#include <exception>
#include <string>

namespace vesk {

namespace {

[[gnu::cold]] void report(const shell_interface& shell, const char* name, const char* cause) noexcept {
  try {
    const bool named = name[0] != '\0';
    shell.job().fail(std::string(shell.is_get ? "GET " : "PUT ") + (named ? name + 1 : "") + " failed: " + cause);
  } catch (...) { // not even the memory for the text: the failure itself must be noted
    try {
      shell.job().fail("A keyword failed.");
    } catch (...) { // the job has heard of it, and nothing more can be done here
    }
  }
}

} // namespace

void data_callback(const char* name, void* a1, void* a2, void* a3, void* a4, void* a5) noexcept {
  shell_interface* const shell = current_shell();
  if (!shell) return;
  try {
    shell->job().pass_gate();
    shell->call(name, a1, a2, a3, a4, a5);
  } catch (const std::exception& error) {
    report(*shell, name, error.what());
  } catch (...) {
    report(*shell, name, "an exception of an unknown kind");
  }
}

} // namespace vesk
