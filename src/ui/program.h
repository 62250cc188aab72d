// The desktop program, from its first window to its last.
#pragma once

#include "ui/end_signals.h"
#include "ui/main_window.h"
#include "ui/splash_form.h"

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

class QApplication;

namespace vesk {

// Sets title, version, style and number formats of the process. Call it first.
void prepare_application(QApplication& application);

class program {
public:
  struct options {
    std::vector<std::string> arguments; // of the command line, without the program name
    std::filesystem::path settings_file;
    int splash_time = TPreveskMainForm::splash_time; // milliseconds
  };

  // Creates the windows and shows the splash screen; the main window follows when the event loop runs.
  program(QApplication& application, const options& wanted);
  ~program();

  main_window& window() { return *window_; }

  // Runs until the main window has closed. Does not return: the process ends with the engine's return code, and a
  // running job ends with it.
  [[noreturn]] void run();

private:
  QApplication& application_;
  std::unique_ptr<QObject> bell_; // wakes the main thread for the workers
  std::unique_ptr<main_window> window_;
  std::unique_ptr<splash_form> splash_;
  std::unique_ptr<end_signals> signals_; // closes the main window, so that the settings are saved
};

} // namespace vesk
