// Works the windows as a user would.
#pragma once

#include "temporary_folder.h"
#include "ui/program.h"

#include <QWidget>
#include <functional>

namespace vesk {

// Serves events until `done`, for at most `milliseconds`; whether it came.
bool wait_for(const std::function<bool()>& done, int milliseconds = 5000);

// Does `work` while a modal window is up: `answer` is called with each modal window in turn that has come to the
// screen, until it returns true; then `work` has to end. Fails the test and closes the windows when it takes too long.
void with_dialog(const std::function<void()>& work, const std::function<bool(QWidget*)>& answer);

// Types the name into a file dialog and accepts. For with_dialog.
bool choose_file(QWidget* dialog, const QString& name);

// Presses the button with that text. False when there is none that can be pressed.
bool press(QWidget* window, const QString& text);

// The control of that name within `window`; the test fails without it.
template <class Control>
Control* find(QWidget* window, const char* name) {
  auto* control = window->findChild<Control*>(name);
  EXPECT_TRUE(control) << name;
  return control;
}

// A picture of what is on the screen, kept in the folder of screenshots.
void take_picture(QWidget* window, const QString& name);
void keep_picture(QWidget* window, const QString& name); // at once, without serving events before

// The program with its main window on the screen, and its settings in a folder of the test.
class running_program {
public:
  explicit running_program(std::vector<std::string> arguments = {}, const std::string& settings = {});
  ~running_program();

  main_window& window() { return program_.window(); }
  TPreveskMainForm& form() { return window().form(); }
  void trigger(const char* command); // by its menu item or tool button, if that is enabled

private:
  static program::options options_in(const temporary_folder& folder, std::vector<std::string> arguments,
                                     const std::string& settings);
  temporary_folder folder_;
  program program_;
};

// The first place where two texts differ; empty: nowhere.
std::string difference(const std::string& one, const std::string& other);

// A copy of the sample whose run takes many times as long.
void write_long_sample(const std::string& file);

} // namespace vesk
