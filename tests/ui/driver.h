// Operates the windows as a user would.
#pragma once

#include "temporary_folder.h"
#include "ui/program.h"

#include <QWidget>
#include <functional>

namespace vesk {

// Serves events until `done`, for at most `milliseconds`; returns whether it became true.
bool wait_for(const std::function<bool()>& done, int milliseconds = 5000);

// Runs `work`, which opens modal windows: calls `answer` with each modal window that appears, until it returns true;
// `work` must then end. Fails the test and closes the windows if it takes too long.
void with_dialog(const std::function<void()>& work, const std::function<bool(QWidget*)>& answer);

// Types the name into a file dialog and accepts. For with_dialog.
bool choose_file(QWidget* dialog, const QString& name);

// Presses the button with that text. False if no enabled one is visible.
bool press(QWidget* window, const QString& text);

// The control with this name in `window`; the test fails if it is missing.
template <class Control>
Control* find(QWidget* window, const char* name) {
  auto* control = window->findChild<Control*>(name);
  EXPECT_TRUE(control) << name;
  return control;
}

// Saves a screenshot in the folder of screenshots.
void take_picture(QWidget* window, const QString& name);
void keep_picture(QWidget* window, const QString& name); // at once, without serving events first

// The program with its main window open, and its settings in a folder of the test.
class running_program {
public:
  explicit running_program(std::vector<std::string> arguments = {}, const std::string& settings = {});
  ~running_program();

  main_window& window() { return program_.window(); }
  TPreveskMainForm& form() { return window().form(); }
  void trigger(const char* command); // through its menu item or tool button, if enabled

private:
  static program::options options_in(const temporary_folder& folder, std::vector<std::string> arguments,
                                     const std::string& settings);
  temporary_folder folder_;
  program program_;
};

// The first difference between two texts; empty: none.
std::string difference(const std::string& one, const std::string& other);

// A copy of the sample that takes many times as long to run.
void write_long_sample(const std::string& file);

} // namespace vesk
