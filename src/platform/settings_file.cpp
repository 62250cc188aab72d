#include "platform/settings_file.h"

#include "platform/program_paths.h"
#include "platform/safe_file.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <sys/file.h>
#include <thread>

namespace vesk {

namespace fs = std::filesystem;

namespace {

constexpr std::chrono::milliseconds longest_wait(1000), pause(5);

// Locks the folder until the descriptor is closed; not the file, since saving replaces it. The wait has a limit: a
// program that hangs while saving must not keep others from ending.
file_descriptor lock_folder(const fs::path& folder) {
  file_descriptor locked(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  const auto until = std::chrono::steady_clock::now() + longest_wait;
  while (locked.is_open() && ::flock(locked.get(), LOCK_EX | LOCK_NB) != 0) {
    const bool is_locked = errno == EWOULDBLOCK || errno == EINTR; // otherwise the file system has no locks
    if (!is_locked || std::chrono::steady_clock::now() > until) break;
    std::this_thread::sleep_for(pause);
  }
  return locked;
}

} // namespace

settings_file::settings_file(fs::path path) : path_(std::move(path)) {
  std::ifstream file(path_, std::ios::binary);
  std::error_code ignored;
  hidden_ = !file && fs::exists(path_, ignored);
  for (std::string line; std::getline(file, line);) {
    while (line.ends_with('\r')) line.pop_back();
    lines_.push_back(std::move(line));
  }
  if (file.bad()) hidden_ = true; // content that could not be read must not be overwritten
}

fs::path settings_file::default_path() {
  const char* config = std::getenv("XDG_CONFIG_HOME");
  const fs::path folder = config && *config == '/' ? fs::path(config) : "/" / home_directory() / ".config";
  return folder / "vesk" / "settings.ini";
}

std::optional<settings_file::place> settings_file::find(std::string_view section, std::string_view name) const {
  const std::string head = "[" + std::string(section) + "]";
  const auto first = std::find(lines_.begin(), lines_.end(), head);
  if (first == lines_.end()) return {};
  auto end = static_cast<std::size_t>(first - lines_.begin()) + 1; // after the section's last line with content
  for (std::size_t i = end; i < lines_.size() && !lines_[i].starts_with('['); ++i) {
    if (lines_[i].substr(0, lines_[i].find('=')) == name && lines_[i].size() > name.size()) return place{i, true};
    if (!lines_[i].empty()) end = i + 1;
  }
  return place{end, false};
}

std::optional<std::string> settings_file::get(std::string_view section, std::string_view name) const {
  const auto at = find(section, name);
  if (!at || !at->found) return {};
  return lines_[at->line].substr(name.size() + 1);
}

void settings_file::set(std::string_view section, std::string_view name, std::string_view value) {
  std::string line = std::string(name) + "=" + std::string(value);
  std::replace_if(
      line.begin(), line.end(), [](char c) { return c == '\n' || c == '\r'; }, ' ');
  auto at = find(section, name);
  if (!at) {
    if (!lines_.empty() && !lines_.back().empty()) lines_.emplace_back();
    lines_.push_back("[" + std::string(section) + "]");
    at = place{lines_.size(), false};
  }
  if (at->found)
    lines_[at->line] = std::move(line);
  else
    lines_.insert(lines_.begin() + static_cast<std::ptrdiff_t>(at->line), std::move(line));
}

bool settings_file::update(const fs::path& path, const std::function<void(settings_file&)>& change) {
  std::error_code ignored; // saving reports the cause
  fs::create_directories(path.parent_path(), ignored);
  const file_descriptor locked = lock_folder(path.parent_path());
  settings_file file(path);
  change(file);
  return file.save();
}

bool settings_file::save() const {
  if (hidden_) return false;
  std::string text;
  for (const std::string& line : lines_) text += line + "\n";
  try {
    fs::create_directories(path_.parent_path());
    safe_file file(path_);
    write_all(file.descriptor(), text, {}, path_.string());
    file.commit();
    return true;
  } catch (const std::exception&) {
    return false;
  }
}

} // namespace vesk
