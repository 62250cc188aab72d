#include "console/options.h"

#include "app/file_names.h"
#include "platform/letter_case.h"
#include "platform/nearest_name.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <map>

namespace vesk {

namespace {

namespace fs = std::filesystem;

// An option of the console only. `flag` or `text` is the member that it sets; if both are null it has its own code.
struct option_row {
  const char* name;
  const char* argument; // as shown in the usage; null: no argument
  const char* help;
  bool console_options::*flag = nullptr;
  std::optional<std::string> console_options::*text = nullptr;
  std::vector<std::string> console_options::*list = nullptr; // may be given several times; any text
  bool once = false;                                         // a task: a second one would silently replace the first
};

constexpr option_row rows[] = {
    {.name = "--engine", .argument = "PATH", .help = "use this engine library", .text = &console_options::engine},
    {.name = "--catalogue",
     .argument = "DIR",
     .help = "use the model catalogue in this folder",
     .text = &console_options::catalogue},
    {.name = "--import-network",
     .argument = "NAME",
     .help = "import a network file (.vkn)",
     .text = &console_options::import_network,
     .once = true},
    {.name = "--read-hyd",
     .argument = nullptr,
     .help = "build the network from the hydrodynamic file",
     .flag = &console_options::read_hyd},
    {.name = "--load-restart",
     .argument = "NAME",
     .help = "load a restart file (.rst)",
     .text = &console_options::load_restart,
     .once = true},
    {.name = "--set",
     .argument = "PATH=VALUE",
     .help = "set a value or series; also PATH*=VALUE, PATH+=VALUE",
     .list = &console_options::set},
    {.name = "--beyond-limits",
     .argument = nullptr,
     .help = "set values also outside the catalogue's range",
     .flag = &console_options::beyond_limits},
    {.name = "--set-from",
     .argument = "FILE",
     .help = "set the values of a row of this table (.csv)",
     .text = &console_options::set_from,
     .once = true},
    {.name = "--parameters",
     .argument = "FILE",
     .help = "its columns are names of this table of parameters",
     .text = &console_options::parameters,
     .once = true},
    {.name = "--row", .argument = "N", .help = "the row, from 0", .text = &console_options::row, .once = true},
    {.name = "--rows", .argument = "A-B|-", .help = "run each of these rows; - reads their numbers"},
    {.name = "--list-paths",
     .argument = nullptr,
     .help = "list what --set can set",
     .flag = &console_options::list_paths},
    {.name = "--csv", .argument = nullptr, .help = "list it as a table of parameters", .flag = &console_options::csv},
    {.name = "--output-dir",
     .argument = "DIR",
     .help = "write all results of the run and its record to this folder",
     .text = &console_options::output_dir,
     .once = true},
    {.name = "--results",
     .argument = "DO@24,...",
     .help = "write only these series, to NAME.results.csv",
     .text = &console_options::results,
     .once = true},
    {.name = "--record",
     .argument = "FILE",
     .help = "write the record of the run to this file",
     .text = &console_options::record,
     .once = true},
    {.name = "--time-limit",
     .argument = "SECONDS",
     .help = "end the run after this time; with --record or --output-dir"},
    {.name = "--stop-with-parent",
     .argument = nullptr,
     .help = "end when the calling program ends",
     .flag = &console_options::stop_with_parent},
    {.name = "--check",
     .argument = nullptr,
     .help = "check the data set against the engine's limits",
     .flag = &console_options::check},
    {.name = "--export",
     .argument = "NAME",
     .help = "export to a text input file (.inp, .vkn)",
     .text = &console_options::export_name,
     .once = true},
    {.name = "--save",
     .argument = "FILE",
     .help = "save the data set as FILE.vki, replacing an existing file",
     .text = &console_options::save,
     .once = true},
    {.name = "--log",
     .argument = "[=DIR]",
     .help = "log all calls between engine and data set",
     .flag = &console_options::log},
    {.name = "--progress",
     .argument = "auto|bar|plain|none",
     .help = "style of progress; plain prints a line at each tenth"},
    {.name = "--quiet", .argument = nullptr, .help = "show failures only", .flag = &console_options::quiet},
    {.name = "--no-queries",
     .argument = nullptr,
     .help = "run on the stored points without executing queries",
     .flag = &console_options::no_queries},
    {.name = "--refresh",
     .argument = nullptr,
     .help = "execute all deferred queries and save",
     .flag = &console_options::refresh},
    {.name = "--yes", .argument = nullptr, .help = "answer Yes or OK to every question", .flag = &console_options::yes},
    {.name = "--help", .argument = nullptr, .help = "show this text", .flag = &console_options::help},
    {.name = "--version", .argument = nullptr, .help = "show the version", .flag = &console_options::version},
};

[[noreturn]] void unknown_option(const std::string& name) {
  std::vector<std::string_view> known{"-RUN", "-QUIT", "-EXPERT", "-IMPORT"};
  for (const option_row& row : rows) known.emplace_back(row.name);
  throw usage_error("Unknown option " + name + nearest_hint(name, known) + ".");
}

progress_style parse_progress(const std::string& word) {
  static const std::map<std::string, progress_style> words{{"auto", progress_style::automatic},
                                                           {"bar", progress_style::bar},
                                                           {"plain", progress_style::plain},
                                                           {"none", progress_style::none}};
  const auto found = words.find(word);
  if (found == words.end())
    throw usage_error("Option --progress takes auto, bar, plain or none, not \"" + word + "\".");
  return found->second;
}

double parse_seconds(const std::string& word) {
  double seconds = 0;
  const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), seconds);
  if (error != std::errc() || end != word.data() + word.size() || !(seconds > 0) || !std::isfinite(seconds))
    throw usage_error("Option --time-limit takes a number of seconds above 0, not \"" + word + "\".");
  return seconds;
}

class parser {
public:
  explicit parser(std::span<const std::string> arguments) : arguments_(arguments) {}

  console_options parse() {
    for (; at_ < arguments_.size(); ++at_) {
      const std::string& argument = arguments_[at_];
      if (argument.starts_with("--"))
        long_option(argument);
      else if (argument == "-h")
        options_.help = true;
      else if (argument.size() > 1 && argument[0] == '-')
        window_option(argument);
      else
        options_.walk.push_back(argument);
    }
    check_rules();
    return std::move(options_);
  }

private:
  // What options need of each other.
  void check_rules() const {
    const console_options& o = options_;
    const auto require = [](bool good, const char* sentence) {
      if (!good) throw usage_error(sentence);
    };
    require(!o.time_limit || o.reports(), "Option --time-limit requires --record or --output-dir.");
    require(!o.results || o.run, "Option --results requires -RUN.");
    require(!o.csv || o.list_paths, "Option --csv requires --list-paths.");
    require(o.set_from.has_value() == (o.row || o.rows),
            "Option --set-from requires --row or --rows, and they require it.");
    require(!o.parameters || o.set_from, "Option --parameters requires --set-from.");
    if (!o.rows) return;
    require(!o.row, "Options --row and --rows exclude each other.");
    require(o.run && o.output_dir, "Option --rows requires -RUN and --output-dir.");
    require(!o.import && !o.import_network && !o.read_hyd && !o.load_restart && !o.check && !o.refresh &&
                !o.export_name && !o.save && !o.list_paths,
            "With --rows there can be no other job than a run, and no --save.");
  }

  // Recognised in any letter case, as in the window.
  void window_option(const std::string& argument) {
    const std::string word = upper_case(argument);
    if (word != "-RUN" && word != "-QUIT" && word != "-EXPERT" && word != "-IMPORT") unknown_option(argument);
    options_.walk.push_back(argument);
    if (word == "-RUN") options_.run = true;
    if (word != "-IMPORT") return;
    options_.import = true;
    if (at_ + 1 == arguments_.size()) return; // the main form refuses it
    options_.walk.push_back(arguments_[++at_]);
    check_value(argument, options_.walk.back());
  }

  void long_option(const std::string& argument) {
    const std::size_t equals = argument.find('=');
    const std::string name = argument.substr(0, equals);
    std::optional<std::string> value;
    if (equals != std::string::npos) value = argument.substr(equals + 1);
    const auto row = std::find_if(std::begin(rows), std::end(rows), [&](const auto& r) { return name == r.name; });
    if (row == std::end(rows)) unknown_option(name);
    if (name == "--progress") {
      options_.progress = parse_progress(argument_of(name, value));
    } else if (name == "--time-limit") {
      options_.time_limit_text = argument_of(name, value);
      options_.time_limit = parse_seconds(options_.time_limit_text);
    } else if (name == "--rows") {
      options_.rows = text_of(name, value); // "-": standard input
    } else if (name == "--row") {
      options_.row = text_of(name, value); // a hyphen before it is not the beginning of a file's name
    } else if (name == "--log") {
      options_.log = true;
      options_.log_directory = value;
      if (value) check_value(name, *value);
    } else if (row->list) {
      (options_.*(row->list)).push_back(text_of(name, value));
    } else if (row->text) {
      if (row->once && options_.*(row->text)) throw usage_error("Option " + name + " is given more than once.");
      options_.*(row->text) = argument_of(name, value);
      if (name == "--save") check_file_to_save(*(options_.*(row->text)));
    } else {
      if (value) throw usage_error("Option " + name + " takes no value, found \"" + *value + "\".");
      options_.*(row->flag) = true;
    }
  }

  std::string text_of(const std::string& name, const std::optional<std::string>& value) {
    if (!value && at_ + 1 == arguments_.size()) throw usage_error("Option " + name + " requires a value.");
    return value ? *value : arguments_[++at_];
  }

  std::string argument_of(const std::string& name, const std::optional<std::string>& value) {
    std::string taken = text_of(name, value);
    check_value(name, taken);
    return taken;
  }

  // An option instead of a value means that the value was forgotten.
  static void check_value(const std::string& name, const std::string& value) {
    if (value.empty()) throw usage_error("Option " + name + " requires a value.");
    if (value[0] == '-')
      throw usage_error("Option " + name + " requires a value, found \"" + value + "\"; a file of that name is ./" +
                        value + ".");
    std::error_code ignored;
    const fs::file_status status = fs::status(value, ignored);
    if (fs::is_character_file(status) || fs::is_block_file(status))
      throw usage_error("Option " + name + " does not accept a device, found \"" + value + "\".");
  }

  // Standard output may be a file or a pipe. Its names under /dev are then not devices, but still not files to save to.
  static void check_file_to_save(const std::string& value) {
    std::error_code ignored;
    if ((value.starts_with("/dev/") && !value.starts_with("/dev/shm/")) || fs::is_fifo(value, ignored))
      throw usage_error("Option --save does not accept a device or pipe, found \"" + value + "\".");
    const std::string file = fs::path(value).filename();
    if (file.empty() || file == "." || file == "..")
      throw usage_error("Option --save requires the name of a file, found \"" + value + "\".");
  }

  std::span<const std::string> arguments_;
  std::size_t at_ = 0;
  console_options options_;
};

} // namespace

bool console_options::any_work() const {
  return !walk.empty() || import_network || read_hyd || load_restart || check || export_name || save || refresh;
}

bool asks_for_report(std::span<const std::string> arguments) {
  return std::ranges::any_of(arguments, [](const std::string& argument) {
    const std::string name = argument.substr(0, argument.find('='));
    return name == "--record" || name == "--output-dir";
  });
}

console_options parse_console_options(std::span<const std::string> arguments) {
  return parser(arguments).parse();
}

std::string usage_text() {
  std::string text = "Usage: vesk-run [options] [FILE ...] [-RUN] [-QUIT] [-EXPERT] [-IMPORT NAME]\n\n"
                     "Opens data files (.vki) and projects (.vkp) and runs the engine on the last of them.\n\n"
                     "  -RUN                            run the model\n"
                     "  -IMPORT NAME                    import a text input file (.inp) first\n"
                     "  -QUIT, -EXPERT                  accepted, no effect\n\n";
  for (const option_row& row : rows) {
    std::string left = std::string("  ") + row.name;
    if (row.flag == &console_options::help) left += ", -h";
    if (row.argument) left += (row.argument[0] == '[' ? "" : " ") + std::string(row.argument);
    left.resize(std::max<std::size_t>(left.size() + 1, 34), ' ');
    text += left + row.help + "\n";
  }
  text +=
      "\nOrder of tasks: files, -IMPORT, network, hydrodynamic file, restart, set, check, queries, run, export,\n"
      "save. Exit status: 0 success, 1 failure, 2 wrong usage, 130 cancelled, else the engine's return code.\n"
      "With --record or --output-dir: 64 usage, path or row, 65 data refused, 66 input missing, 69 engine or\n"
      "catalogue missing, 70 crash, 73, 74 cannot write, 75 try again, 124 time limit, 130, 143 cancelled, else the\n"
      "engine's return code, 1 to 63.\n";
  return text;
}

} // namespace vesk
