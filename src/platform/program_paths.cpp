#include "platform/program_paths.h"

#include <cstdlib>
#include <unistd.h>

namespace vesk {

namespace fs = std::filesystem;

fs::path program_directory() {
  std::error_code error;
  const fs::path executable = fs::read_symlink("/proc/self/exe", error);
  return error ? fs::current_path() : executable.parent_path();
}

fs::path install_prefix() {
  return program_directory().parent_path();
}

fs::path state_directory() {
  // Only an absolute path counts, as the base directory rules have it.
  if (const char* state = std::getenv("XDG_STATE_HOME"); state && *state == '/') return fs::path(state) / "vesk";
  const char* home = std::getenv("HOME");
  return fs::path(home && *home ? home : "/tmp") / ".local" / "state" / "vesk";
}

bool is_writable_directory(const fs::path& directory) {
  return access(directory.c_str(), W_OK | X_OK) == 0;
}

} // namespace vesk
