#include "console/interrupts.h"
#include "console/session.h"
#include "engine/engine_watch.h"
#include "platform/program_start.h"

#include <cstdlib>
#include <exception>

int main(int argc, char** argv) {
  using namespace vesk;
  prepare_process();
  const std::vector<std::string> arguments(argv + 1, argv + argc);
  console_options options;
  try {
    options = parse_console_options(arguments);
  } catch (const usage_error& error) {
    console_interface({}, stdout, stderr).say_failure(std::string(error.what()) + " Try vesk-run --help.");
    return exit_usage;
  }
  console_interface ui({options.progress, options.quiet, options.yes}, stdout, stderr);
  if (options.help || options.version) {
    ui.write(options.help ? usage_text() : "vesk-run " VESK_VERSION "\n");
    return ui.lost_output() ? exit_failure : exit_good;
  }
  if (!options.any_work()) {
    std::fprintf(stderr, "vesk-run: Nothing to do: no file and no task was given. Try vesk-run --help.\n");
    return exit_usage;
  }
  watch_interrupts();
  report_engine_crashes("vesk-run");
  try {
    return session(options, ui).run();
  } catch (const std::exception& error) {
    ui.say_failure(error.what());
    std::fflush(nullptr);
    std::_Exit(exit_failure); // no cleanup: a job may still be using objects
  }
}
