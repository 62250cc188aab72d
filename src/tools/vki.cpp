// vki: dump, build, check and upgrade data files.
#include "dataset/file_version_text.h"
#include "dataset/text_encoding.h"
#include "dataset/vki_file.h"
#include "dataset/vki_reader.h"
#include "platform/program_start.h"
#include "platform/safe_file.h"
#include "tools/clockless_data_set.h"
#include "tools/data_file_check.h"
#include "tools/dataset_json.h"

#include <cerrno>
#include <cstdio>
#include <new>
#include <string>
#include <string_view>
#include <unistd.h>
#include <vector>

namespace {

using namespace vesk;

enum exit_status { success = 0, failed_file = 1, wrong_usage = 2 };

constexpr std::string_view standard_stream = "-";

constexpr const char* usage =
    "usage: vki dump [--dates iso] FILE   print a data file as JSON\n"
    "       vki load IN.json OUT.vki      write a data file from JSON\n"
    "       vki check FILE                test whether a data file is intact\n"
    "       vki upgrade IN OUT            rewrite a data file in the current layout\n"
    "       vki --help | --version\n"
    "\n"
    "  --dates iso    print dates and times as \"2011-10-01\" and \"06:30:00\" instead of day numbers\n"
    "\n"
    "\"-\" is standard input or output. An existing file is replaced only when the new one is complete.\n"
    "Exit status: 0 success, 1 failure, 2 wrong usage.\n";

void complain(const std::string& text) {
  std::fprintf(stderr, "%s\n", printable_text(text).c_str());
}

// The name of an input in messages.
std::string shown(const std::string& name) {
  return name == standard_stream ? "standard input" : name;
}

data_file open_input(const std::string& name) {
  return name == standard_stream ? data_file(STDIN_FILENO, shown(name)) : data_file(name);
}

std::string read_text(const std::string& name) {
  // The parser refuses anything else, and such an input may be endless.
  const auto may_be_json = [](std::string_view text) {
    const std::size_t first = text.find_first_not_of(" \t\r\n");
    return first == text.npos || text[first] == '{' || text[first] == '\xef'; // '\xef' begins a byte order mark
  };
  if (name == standard_stream) return read_to_end(STDIN_FILENO, shown(name), may_be_json);
  return read_to_end(open_for_reading(name).get(), name, may_be_json);
}

void save(const std::string& name, const prevesk_dataset_data_type& data) {
  if (name != standard_stream) {
    save_data_file(name, data);
    return;
  }
  binary_writer output(STDOUT_FILENO, "standard output");
  data.write(output);
}

struct request {
  std::vector<std::string> files;
  json_dates dates = json_dates::numbers;
};

void dump(const request& asked) {
  const std::string& name = asked.files[0];
  data_file input = open_input(name);
  prevesk_dataset_data_type data = clockless_data_set();
  const vki_facts facts = read_vki(input.reader(), data);
  binary_writer output(STDOUT_FILENO, "standard output");
  write_json(output, data, facts.last_section.number, asked.dates);
  if (facts.version > data.current_file_version())
    complain(shown(name) + ": version " + file_version_text(facts.version) + " is newer than " +
             file_version_text(data.current_file_version()) + "; read as far as possible.");
}

void load(const request& asked) {
  const std::string json = read_text(asked.files[0]);
  try {
    save(asked.files[1], read_json(json));
  } catch (const json_exception& error) {
    throw json_exception(shown(asked.files[0]) + ": " + error.what());
  }
}

void check(const request& asked) {
  check_data_file(open_input(asked.files[0]).reader());
}

void upgrade(const request& asked) {
  data_file input = open_input(asked.files[0]);
  prevesk_dataset_data_type data = clockless_data_set();
  const vki_facts facts = read_vki(input.reader(), data);
  refuse_newer_version(input.reader(), facts.version);
  data.file_version = data.current_file_version();
  save(asked.files[1], data);
}

struct command {
  std::string_view name;
  std::size_t files;
  bool takes_dates = false;
  void (*run)(const request& asked);
};

constexpr command commands[] = {
    {.name = "dump", .files = 1, .takes_dates = true, .run = dump},
    {.name = "load", .files = 2, .run = load},
    {.name = "check", .files = 1, .run = check},
    {.name = "upgrade", .files = 2, .run = upgrade},
};

int fail_usage(const std::string& cause) {
  complain("vki: " + cause);
  std::fputs(usage, stderr);
  return wrong_usage;
}

int run(const command& chosen, const std::vector<std::string>& words) {
  request asked;
  for (std::size_t i = 0; i < words.size(); ++i) {
    const std::string& word = words[i];
    if (word == "--dates" && chosen.takes_dates) {
      if (++i == words.size() || words[i] != "iso") return fail_usage("option --dates requires the value iso.");
      asked.dates = json_dates::iso;
    } else if (word.empty() || (word[0] == '-' && word != standard_stream)) {
      return fail_usage("\"" + word + "\" is neither an option of " + std::string(chosen.name) + " nor a file name.");
    } else {
      asked.files.push_back(word);
    }
  }
  if (asked.files.size() != chosen.files)
    return fail_usage(std::string(chosen.name) + " requires " + (chosen.files == 1 ? "one file." : "two files."));
  try {
    chosen.run(asked);
    return success;
  } catch (const std::bad_alloc&) {
    complain(memory_failure(shown(asked.files[0])));
    return failed_file;
  } catch (const std::exception& error) {
    complain(error.what());
    return failed_file;
  }
}

int print(const char* text) {
  if (std::fputs(text, stdout) >= 0 && std::fflush(stdout) == 0) return success;
  complain(file_failure("write", "standard output", errno));
  return failed_file;
}

} // namespace

int main(int count, char** arguments) {
  prepare_process();
  const std::vector<std::string> words(arguments + 1, arguments + count);
  if (words.empty()) return fail_usage("no command given.");
  if (words[0] == "--help" || words[0] == "-h") return print(usage);
  if (words[0] == "--version") return print("vki " VESK_VERSION "\n");
  for (const command& known : commands)
    if (words[0] == known.name) return run(known, {words.begin() + 1, words.end()});
  return fail_usage("unknown command \"" + words[0] + "\".");
}
