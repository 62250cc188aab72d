// A text file of settings: sections in brackets, a line "name=value" for each value.
//
// The text after the first "=" is the value, to the end of the line; nothing in it is a comment. Lines that nobody
// asks for stay as they are.
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
  // Reads the file. One that is missing or cannot be read counts as empty.
  explicit settings_file(std::filesystem::path path);

  // $XDG_CONFIG_HOME/vesk/settings.ini, or ~/.config/vesk/settings.ini.
  static std::filesystem::path default_path();

  std::optional<std::string> get(std::string_view section, std::string_view name) const;

  // Changes the value in memory. A line feed in it becomes a blank, since a value is one line.
  void set(std::string_view section, std::string_view name, std::string_view value);

  // Reads the file as it is now, lets `change` set values, and saves it. Programs that do this at the same time wait
  // for each other, so that none loses what another one has saved. False as for `save`.
  static bool update(const std::filesystem::path& path, const std::function<void(settings_file&)>& change);

  // Writes the file, making its folder where it is missing. False when that fails, and for a file that is there but
  // could not be read; the old file then stays.
  bool save() const;

private:
  // The line of a value, or where in the section it would be added; nothing without the section.
  struct place {
    std::size_t line;
    bool found;
  };
  std::optional<place> find(std::string_view section, std::string_view name) const;

  std::filesystem::path path_;
  std::vector<std::string> lines_;
  bool hidden_ = false; // there, but not readable: what it holds must not be lost
};

} // namespace vesk
