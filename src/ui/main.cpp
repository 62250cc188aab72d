#include "platform/settings_file.h"
#include "ui/program.h"

#include <QApplication>
#include <cstdio>

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  vesk::prepare_application(application);
  try {
    vesk::program::options options;
    options.arguments.assign(argv + 1, argv + argc); // what the toolkit has taken for itself is gone from it
    options.settings_file = vesk::settings_file::default_path();
    vesk::program(application, options).run();
  } catch (const std::exception& error) {
    std::fprintf(stderr, "vesk: %s\n", error.what());
    return 1;
  }
}
