#include "console/interrupts.h"
#include "console/session.h"
#include "console/supervised_run.h"
#include "engine/engine_watch.h"
#include "platform/file_io.h"
#include "platform/program_start.h"

#include <algorithm>
#include <cstdlib>
#include <exception>
#include <functional>
#include <iostream>
#include <optional>
#include <sys/prctl.h>
#include <sysexits.h>
#include <unistd.h>
#include <utility>

namespace {

using namespace vesk;

int work(const console_options& options, console_interface& ui, const run_record& head,
         const record_taker& take_record) {
  watch_interrupts();
  report_engine_crashes("vesk-run");
  try {
    return session(options, ui, head, take_record).run();
  } catch (const std::exception& error) {
    ui.say_failure(error.what());
    std::fflush(nullptr);
    std::_Exit(options.reports() ? EX_SOFTWARE
                                 : exit_failure); // a job may still be at work on what would be taken down
  }
}

// False: the caller is gone already.
bool stop_with_parent() {
  const pid_t parent = getppid();
  prctl(PR_SET_PDEATHSIG, SIGTERM);
  return getppid() == parent;
}

// The numbers of rows as they are asked for: standard input may be written while rows run. All others are checked
// before anything is begun, since each row gets a folder.
std::function<std::optional<std::size_t>()> next_row_of(const console_options& options) {
  if (*options.rows == "-") return [] { return read_row_number(std::cin); };
  std::vector<std::size_t> rows = parse_row_numbers(*options.rows);
  run_table(read_csv_table(*options.set_from)).require(std::ranges::max(rows), "--rows asks for " + *options.rows);
  return [numbers = std::move(rows), next = std::size_t{0}]() mutable -> std::optional<std::size_t> {
    if (next == numbers.size()) return {};
    return numbers[next++];
  };
}

// A row names its folder, as it does among many.
void choose_row(console_options& options, run_record& head) {
  const std::vector<std::size_t> rows = parse_row_numbers(*options.row);
  if (rows.size() != 1) throw value_error("Option --row takes one number, not \"" + *options.row + "\".");
  head.row = static_cast<std::int64_t>(rows.front());
  if (!options.output_dir) return;
  const run_table table(read_csv_table(*options.set_from));
  table.require(rows.front(), "--row asks for " + *options.row);
  options.output_dir = (std::filesystem::path(*options.output_dir) / table.folder(rows.front())).native();
}

} // namespace

int main(int argc, char** argv) {
  prepare_process();
  const std::vector<std::string> arguments(argv + 1, argv + argc);
  console_options options;
  try {
    options = parse_console_options(arguments);
  } catch (const usage_error& error) {
    console_interface({}, stdout, stderr).say_failure(std::string(error.what()) + " Try vesk-run --help.");
    return asks_for_report(arguments) ? EX_USAGE : exit_usage;
  }
  console_interface ui({options.progress, options.quiet, options.yes}, stdout, stderr);
  if (options.help || options.version) {
    ui.write(options.help ? usage_text() : "vesk-run " VESK_VERSION "\n");
    return ui.lost_output() ? exit_failure : exit_good;
  }
  if (!options.any_work()) {
    std::fprintf(stderr, "vesk-run: Nothing to do: no file and no task was given. Try vesk-run --help.\n");
    return options.reports() ? EX_USAGE : exit_usage;
  }
  if (options.stop_with_parent && !stop_with_parent()) return exit_cancelled;
  run_record head = record_of_this_program("vesk-run", VESK_VERSION, {argv, argv + argc});
  head.started = utc_now();
  try {
    if (options.rows) return session(options, ui, head).run_rows(next_row_of(options));
    if (options.row) choose_row(options, head);
    if (!options.reports()) return work(options, ui, head, {});
    return run_supervised(options, ui, head,
                          [&](const record_taker& take_record) { return work(options, ui, head, take_record); });
  } catch (const value_error& error) { // a wrong row; nothing was begun
    ui.say_failure(error.what());
    return options.reports() ? EX_USAGE : exit_usage;
  } catch (const file_exception& error) { // the table cannot be read
    ui.say_failure(error.what());
    return options.reports() ? EX_NOINPUT : exit_failure;
  } catch (const std::exception& error) { // no process or no memory for it
    ui.say_failure(error.what());
    return EX_TEMPFAIL;
  }
}
