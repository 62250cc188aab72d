// A simulated user: queues keys and clicks, then sends them one by one to whatever has the focus; uses the mouse where
// asked.
#pragma once

#include <QString>
#include <deque>
#include <functional>
#include <optional>

class QWidget;

namespace vesk {

class typist {
public:
  // Directs the following keys to the window with this object name; they wait until it accepts them. Also switches
  // between open windows, which is otherwise up to the desktop.
  typist& in(const char* window);

  typist& keys(const char* sequence, int times = 1); // as in "Alt+F" or "Ctrl+Home"
  typist& text(const QString& typed);                // letter by letter
  typist& go_to(const char* control);                // by Tab, or F6 in a grid, to the control with this object name
  typist& leave_by(const char* button);              // the same to the button with this text; then Space
  typist& click(const char* control);                // with the mouse, like those below
  typist& click_cell(const char* grid, int row, int column); // positions from 0
  typist& click_node(const char* tree, std::size_t group, std::optional<std::size_t> item = {});
  typist& press(const char* button); // the button with this text; waits until it is enabled
  typist& until(const std::function<bool()>& done);
  typist& check(const std::function<void()>& look); // without a key
  typist& picture(const char* name);

  // Carries out everything queued. Fails the test and closes the open windows if a step takes too long.
  void work();

private:
  struct step {
    std::string name, window;
    std::function<bool(QWidget*)> ready; // repeated until true; may be empty
    std::function<void(QWidget*)> act;   // called once; may open a dialog in which the steps continue
  };

  typist& tab_to(std::string name, std::function<bool(const QWidget*)> is_it);
  typist& add(std::string name, std::function<bool(QWidget*)> ready, std::function<void(QWidget*)> act);
  void tick();
  void give_up(const std::string& why);

  std::deque<step> steps_;
  std::string window_;
  int waited_ = 0; // ticks, for the first step
  bool over_ = true;
};

} // namespace vesk
