#include "platform/program_paths.h"

#include <cstdlib>
#include <fstream>
#include <pwd.h>
#include <string>
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

namespace {

// As in the base directory rules, relative paths are ignored.
fs::path absolute_from(const char* variable) {
  const char* value = std::getenv(variable);
  return value && *value == '/' ? fs::path(value) : fs::path();
}

bool is_installed(const fs::path& program_folder) {
  std::error_code ignored;
  return fs::exists(program_folder.lexically_normal() / ".." / "share" / "vesk", ignored);
}

// The folder in a line of user-dirs.dirs, NAME="$HOME/folder" or NAME="/folder"; empty for any other line.
fs::path folder_in_line(const std::string& line, const std::string& name, const fs::path& home) {
  const std::string head = name + "=\"", from_home = "$HOME/";
  if (!line.starts_with(head) || !line.ends_with('"') || line.size() == head.size()) return {};
  const std::string value = line.substr(head.size(), line.size() - head.size() - 1);
  if (value.starts_with(from_home)) return home / value.substr(from_home.size());
  return value.starts_with('/') ? fs::path(value) : fs::path();
}

} // namespace

fs::path home_directory() {
  if (fs::path given = absolute_from("HOME"); !given.empty()) return given;
  const passwd* const account = getpwuid(getuid());
  return account && account->pw_dir && *account->pw_dir == '/' ? fs::path(account->pw_dir) : fs::path();
}

fs::path state_directory() {
  if (const fs::path given = absolute_from("XDG_STATE_HOME"); !given.empty()) return given / "vesk";
  const fs::path home = home_directory();
  return home.empty() ? fs::path() : home / ".local/state/vesk";
}

fs::path log_directory(const fs::path& program_folder) {
  return is_writable_directory(program_folder) && !is_installed(program_folder) ? program_folder : state_directory();
}

fs::path user_data_directory() {
  if (fs::path given = absolute_from("XDG_DATA_HOME"); !given.empty()) return given;
  const fs::path home = home_directory();
  return home.empty() ? fs::path() : home / ".local/share";
}

fs::path user_documents_directory() {
  const fs::path home = home_directory();
  if (home.empty()) return {};
  const fs::path given = absolute_from("XDG_CONFIG_HOME");
  std::ifstream file((given.empty() ? home / ".config" : given) / "user-dirs.dirs");
  for (std::string line; std::getline(file, line);)
    if (fs::path folder = folder_in_line(line, "XDG_DOCUMENTS_DIR", home); !folder.empty()) return folder;
  return home / "Documents";
}

bool is_writable_directory(const fs::path& directory) {
  return access(directory.c_str(), W_OK | X_OK) == 0;
}

} // namespace vesk
