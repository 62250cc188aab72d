// The command line of vesk-run.
#pragma once

#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

namespace vesk {

// The command line is wrong: one sentence.
class usage_error : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

enum class progress_style { automatic, bar, plain, none };

struct console_options {
  std::vector<std::string> walk; // files, and options shared with the window, for the main form
  bool run = false;
  bool import = false;

  std::optional<std::string> engine;
  std::optional<std::string> catalogue;
  std::optional<std::string> import_network;
  bool read_hyd = false;
  std::optional<std::string> load_restart;
  bool check = false;
  std::optional<std::string> export_name;
  std::optional<std::string> save;
  bool log = false;
  std::optional<std::string> log_directory;
  progress_style progress = progress_style::automatic;
  bool quiet = false;
  bool no_queries = false;
  bool refresh = false;
  bool yes = false;
  bool help = false;
  bool version = false;

  // True if there is work to do besides --help and --version.
  bool any_work() const;
};

// Throws usage_error.
console_options parse_console_options(std::span<const std::string> arguments);

std::string usage_text();

} // namespace vesk
