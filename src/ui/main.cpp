#include "dataset/text_encoding.h"
#include "engine/engine_watch.h"
#include "platform/program_start.h"
#include "platform/settings_file.h"
#include "ui/program.h"

#include <QApplication>
#include <cstdio>
#include <cstdlib>
#include <cstring>

// Without a display the toolkit ends the process with words that help nobody.
static bool has_display(int argc, char** argv) {
  for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
    if (const char* value = std::getenv(name); value && *value) return true;
  for (int i = 1; i < argc; ++i)
    if (std::strcmp(argv[i], "-platform") == 0 || std::strcmp(argv[i], "--platform") == 0) return true;
  return false;
}

int main(int argc, char** argv) {
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
    options.arguments.assign(argv + 1, argv + argc); // what the toolkit has taken for itself is gone from it
    options.settings_file = vesk::settings_file::default_path();
    vesk::program(application, options).run();
  } catch (const std::exception& error) {
    std::fprintf(stderr, "vesk: %s\n", vesk::printable_text(error.what()).c_str());
    return 1;
  }
}
