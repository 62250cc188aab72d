#include "dataset/text_encoding.h"
#include "engine/engine_watch.h"
#include "platform/program_start.h"
#include "platform/settings_file.h"
#include "ui/program.h"

#include <QApplication>
#include <cstdio>
#include <cstdlib>
#include <cstring>

// Without a display Qt ends the process with a message that does not help.
static bool has_display(int argc, char** argv) {
  for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
    if (const char* value = std::getenv(name); value && *value) return true;
  for (int i = 1; i < argc; ++i)
    if (std::strcmp(argv[i], "-platform") == 0 || std::strcmp(argv[i], "--platform") == 0) return true;
  return false;
}

static constexpr const char* help = R"(Usage: vesk [FILE ...] [-RUN] [-QUIT] [-IMPORT NAME]

Builds and runs compartment models of surface-water quality, and shows their results.

  FILE          a data file (.vki) or a project (.vkp); of several the last stays open
  -RUN          minimise the window and run the model
  -QUIT         close the window when the run has ended
  -IMPORT NAME  import a text input file (.inp); a run begins after it
  --help        print this text and exit
  --version     print the version and exit

Without a display, vesk-run does the same work. The user guide opens with F1.
)";

// Handled first: neither option needs a display. Returns whether one was given.
static bool answer_at_once(int argc, char** argv) {
  for (int i = 1; i < argc; ++i) {
    const bool is_help = std::strcmp(argv[i], "--help") == 0 || std::strcmp(argv[i], "-h") == 0;
    if (!is_help && std::strcmp(argv[i], "--version") != 0) continue;
    std::fputs(is_help ? help : "vesk " VESK_VERSION "\n", stdout);
    return true;
  }
  return false;
}

int main(int argc, char** argv) {
  if (answer_at_once(argc, argv)) return std::fflush(stdout) == 0 ? 0 : 1;
  vesk::prepare_process();
  vesk::report_engine_crashes("vesk");
  if (!has_display(argc, argv)) {
    std::fputs("vesk: Cannot open a display. Use vesk-run to do the same work without one.\n", stderr);
    return 1;
  }
  QApplication application(argc, argv);
  vesk::prepare_application(application);
  try {
    vesk::program::options options;
    options.arguments.assign(argv + 1, argv + argc); // Qt has removed its own options
    options.settings_file = vesk::settings_file::default_path();
    vesk::program(application, options).run();
  } catch (const std::exception& error) {
    std::fprintf(stderr, "vesk: %s\n", vesk::printable_text(error.what()).c_str());
    return 1;
  }
}
