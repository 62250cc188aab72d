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

  // Shows the form's window and returns after it closes: true on OK; false also for a form without a window.
  bool show(form& shown);
  bool has_window_for(form& wanted) { return window_of(wanted).dialog != nullptr; }

  // Beside the owner's window, without blocking. It stays open after the owner closes.
  void show_graph(std::shared_ptr<TGraphForm> graph, const form& owner);

  // The network window. Choosing a segment in it goes to that segment in the open editor.
  void show_network(editor_host& host);

  // These reach the forms that are open.
  void data_set_replaced();
  void job_changed(); // a job has started or ended

private:
  struct window {
    QDialog* dialog = nullptr;
    std::function<void()> reload = {};      // empty: shows nothing of the data set
    std::function<void()> job_changed = {}; // empty: does not depend on jobs
  };
  window& window_of(form& wanted);
  window make(form& wanted);
  void tell(std::function<void()> window::*news);
  editor* open_editor() const; // the frontmost; null: none

  QWidget& parent_;
  std::vector<form*> open_;           // from the back to the front
  network_window* network_ = nullptr; // null until first used
  std::map<const form*, window> windows_;
};

} // namespace vesk
