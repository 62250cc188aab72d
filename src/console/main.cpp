#include "console/interrupts.h"
#include "console/session.h"

#include <cstdlib>
#include <exception>

int main(int argc, char** argv) {
  using namespace vesk;
  const std::vector<std::string> arguments(argv + 1, argv + argc);
  console_options options;
  try {
    options = parse_console_options(arguments);
  } catch (const usage_error& error) {
    std::fprintf(stderr, "vesk-run: %s Try vesk-run --help.\n", error.what());
    return exit_usage;
  }
  if (options.help) return std::fputs(usage_text().c_str(), stdout) < 0 ? exit_failure : exit_good;
  if (options.version) return std::puts("vesk-run " VESK_VERSION) < 0 ? exit_failure : exit_good;
  if (!options.any_work()) {
    std::fprintf(stderr, "vesk-run: There is nothing to do: no file and no work was named. Try vesk-run --help.\n");
    return exit_usage;
  }
  watch_interrupts();
  console_interface ui({options.progress, options.quiet, options.yes}, stdout, stderr);
  try {
    return session(options, ui).run();
  } catch (const std::exception& error) {
    ui.say_failure(error.what());
    std::fflush(nullptr);
    std::_Exit(exit_failure); // a job may still be at work on what would be taken down
  }
}
