// A settings file: sections in brackets, then a line "name=value" for each value.
//
// The value is the text after the first "=" to the end of the line; there are no comments in it. Unknown lines are
// kept.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vesk {

class settings_file {
public:
  // Reads the file. A file that is missing or unreadable counts as empty.
  explicit settings_file(std::filesystem::path path);

  // $XDG_CONFIG_HOME/vesk/settings.ini, or ~/.config/vesk/settings.ini.
  static std::filesystem::path default_path();

  std::optional<std::string> get(std::string_view section, std::string_view name) const;

  // Changes the value in memory. A line feed in it becomes a blank, since a value is a single line.
  void set(std::string_view section, std::string_view name, std::string_view value);

  // Reads the current file, calls `change` to set values, and saves it. Programs that do this at the same time wait for
  // each other, so that no change is lost. False as for `save`.
  static bool update(const std::filesystem::path& path, const std::function<void(settings_file&)>& change);

  // Writes the file, creating its folder if needed. False on failure, and if the file exists but could not be read; the
  // old file is then kept.
  bool save() const;

private:
  // The line of a value, or where in its section it would be added; nothing if there is no such section.
  struct place {
    std::size_t line;
    bool found;
  };
  std::optional<place> find(std::string_view section, std::string_view name) const;

  std::filesystem::path path_;
  std::vector<std::string> lines_;
  bool hidden_ = false; // exists but is unreadable; its content must not be lost
};

} // namespace vesk
