// The windows of the forms. Each is made when it is first shown, and kept.
#pragma once

#include "editors/form.h"

#include <functional>
#include <map>
#include <memory>
#include <vector>

class QDialog;
class QWidget;

namespace vesk {

class editor;
class editor_host;
class network_window;

class TGraphForm;

class form_windows {
public:
  // `parent` owns the windows and must outlive this.
  explicit form_windows(QWidget& parent) : parent_(parent) {}

  // Shows the form's window and returns when it has been closed: true by OK, false also for a form that has none.
  bool show(form& shown);
  bool has_window_for(form& wanted) { return window_of(wanted).dialog != nullptr; }

  // Beside the owner's window, without waiting. It stays open after that has closed.
  void show_graph(std::shared_ptr<TGraphForm> graph, const form& owner);

  // The window of the network. A segment chosen in it is looked for in the editor that is open.
  void show_network(editor_host& host);

  // For the forms that are shown.
  void data_set_replaced();
  void job_changed(); // one has begun or ended

private:
  struct window {
    QDialog* dialog = nullptr;
    std::function<void()> reload = {};      // empty: shows nothing of the data set
    std::function<void()> job_changed = {}; // empty: jobs do not matter to it
  };
  window& window_of(form& wanted);
  window make(form& wanted);
  void tell(std::function<void()> window::*news);
  editor* open_editor() const; // the one in front; null: none

  QWidget& parent_;
  std::vector<form*> open_;           // from the back to the front
  network_window* network_ = nullptr; // until it is first wanted
  std::map<const form*, window> windows_;
};

} // namespace vesk
