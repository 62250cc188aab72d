// How a form communicates with the user: boxes, questions for files, other forms, charts and the clipboard. Window,
// console and tests each implement it.
//
// Main thread only. A call that shows something returns when it has been closed. A job may have ended meanwhile and
// replaced the current data set.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace vesk {

class form;
class TGraphForm;
class work_progress;

enum class box_buttons { ok, ok_cancel, yes_no, yes_no_cancel };
enum class box_answer { ok, yes, no, cancel };

// A question for a file name.
struct file_dialog {
  enum class kind { open, save } kind = kind::open;
  std::string title;  // empty: the dialog's own
  std::string filter; // pairs of a description and a pattern, all separated by "|"
  std::string default_extension;
  // Of a name to save under, as ".vki": appended to a name without it, whatever dots that has, before the user is asked
  // about replacing an existing file. Empty: nothing is appended but the default extension.
  std::string ending = {};
  std::string folder = {}; // where it begins; empty: where the last one ended
};

class user_questions {
public:
  virtual ~user_questions() = default;

  virtual box_answer message_box(const std::string& title, const std::string& text, box_buttons buttons) = 0;
  virtual std::optional<std::string> ask_file(const file_dialog& dialog) = 0; // nothing: cancelled
  // Begins at the folder `start`. Nothing: cancelled.
  virtual std::optional<std::string> ask_folder(const std::string& title, const std::string& start) = 0;

  // Shows the form in a modal window. True: closed by OK.
  virtual bool show_form(form& shown) = 0;

  // Shows a chart without waiting for it, as a child of the owner's window.
  virtual void show_graph(std::shared_ptr<TGraphForm>, const form&) {}

  // Shows the network of the data set without waiting for it. What is chosen there goes to the editor that is open.
  virtual void show_network() {}

  // Does the work and returns when it has ended: true, or false when the user has cancelled it. It may then still run
  // in another thread, unseen, so it must own what it uses. `what`: "Reading gauges.csv". Rethrows what the work
  // throws. See with_progress. Here it is done in the caller's thread.
  virtual bool run_long_work(const std::string& what, const std::function<void(work_progress&)>& work);

  virtual std::string clipboard_text() { return {}; }
  virtual void set_clipboard_text(const std::string&) {}
};

} // namespace vesk
