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

// Whether a command line, which may be wrong, asks for a record or an output folder.
bool asks_for_report(std::span<const std::string> arguments);

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
  std::vector<std::string> set; // "PATH=VALUE"
  bool beyond_limits = false;
  std::optional<std::string> output_dir;
  std::optional<std::string> results; // "DO@24,CBOD@24"
  std::optional<std::string> record;
  std::optional<double> time_limit; // seconds
  std::string time_limit_text;      // as it was given
  bool stop_with_parent = false;
  std::optional<std::string> set_from;   // a table of values
  std::optional<std::string> parameters; // a table of parameters, whose names the other's header has
  std::optional<std::string> row, rows;  // row: one number; rows: numbers, or "-" for standard input
  bool list_paths = false;
  bool csv = false;
  progress_style progress = progress_style::automatic;
  bool quiet = false;
  bool no_queries = false;
  bool refresh = false;
  bool yes = false;
  bool help = false;
  bool version = false;

  // True if there is work to do besides --help and --version.
  bool any_work() const;

  // True when other programs read the end: a record is always written, and the exit status is one of sysexits.h.
  bool reports() const { return output_dir || record; }
};

// Throws usage_error.
console_options parse_console_options(std::span<const std::string> arguments);

std::string usage_text();

} // namespace vesk
