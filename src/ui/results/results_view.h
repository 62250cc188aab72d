// A page of the results window. To add one: derive from this, and add a line to results_window::add_views.
#pragma once

#include <QWidget>

namespace vesk {

// Both are called only while the page is in sight, and when it comes into sight. A page keeps the session that it got
// when it was made; see viewer/results_session.h.
class results_view : public QWidget {
public:
  virtual void set_results() = 0; // scenarios, their names, the baseline, the choice, or values that have been read
  virtual void set_cursor() = 0;  // to the session's
};

} // namespace vesk
