// A page of the results window. To add one: derive from this, and add a line to results_window::add_views.
#pragma once

#include <QWidget>

namespace vesk {

// Both are called only while the page is visible, and when it becomes visible. A page keeps the session it was created
// with; see viewer/results_session.h.
class results_view : public QWidget {
public:
  virtual void set_results() = 0; // scenarios, their names, the baseline, the choice or loaded values have changed
  virtual void set_cursor() = 0;  // the session's cursor has moved

  // Ctrl+P and Ctrl+S anywhere in the window.
  virtual void print() {}
  virtual void save() {}
};

} // namespace vesk
