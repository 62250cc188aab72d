// A user: notes what to press, and then presses it, key by key, on whatever has the focus; with the mouse where asked
// to.
#pragma once

#include <QString>
#include <deque>
#include <functional>
#include <optional>

class QWidget;

namespace vesk {

class typist {
public:
  // The keys that follow are for the window of this object name; they wait until it can take them. Switching between
  // windows that are both open is the desktop's business, so this does it.
  typist& in(const char* window);

  typist& keys(const char* sequence, int times = 1);         // as in "Alt+F" or "Ctrl+Home"
  typist& text(const QString& typed);                        // letter by letter
  typist& go_to(const char* control);                        // by Tab, or F6 in a grid: the control of this object name
  typist& leave_by(const char* button);                      // the same to the button with this text; then Space
  typist& click(const char* control);                        // with the mouse, as all below
  typist& click_cell(const char* grid, int row, int column); // positions from 0
  typist& click_node(const char* tree, std::size_t group, std::optional<std::size_t> item = {});
  typist& press(const char* button); // the button with this text; waits until it is enabled
  typist& until(const std::function<bool()>& done);
  typist& check(const std::function<void()>& look); // without a key
  typist& picture(const char* name);

  // Presses all that has been noted. Fails the test and closes what is open when a step takes too long.
  void work();

private:
  struct step {
    std::string name, window;
    std::function<bool(QWidget*)> ready; // asked again until it is; may be empty
    std::function<void(QWidget*)> act;   // once; what it opens may go on in there
  };

  typist& tab_to(std::string name, std::function<bool(const QWidget*)> is_it);
  typist& add(std::string name, std::function<bool(QWidget*)> ready, std::function<void(QWidget*)> act);
  void tick();
  void give_up(const std::string& why);

  std::deque<step> steps_;
  std::string window_;
  int waited_ = 0; // ticks, for the step in front
  bool over_ = true;
};

} // namespace vesk
