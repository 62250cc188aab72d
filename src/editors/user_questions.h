// Communication of a form with the user: boxes, file questions, other forms, charts and the clipboard. Implemented by
// the windows, the console and the tests.
//
// Main thread only. A call that shows something returns after it has closed. Meanwhile a job may have ended and
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
  // For saving, such as ".vki": appended to a name that does not end in it, even if it contains dots, before the user
  // is asked about replacing an existing file. Empty: only the default extension is appended.
  std::string ending = {};
  std::string folder = {}; // initial folder; empty: the last one used
};

class user_questions {
public:
  virtual ~user_questions() = default;

  virtual box_answer message_box(const std::string& title, const std::string& text, box_buttons buttons) = 0;
  virtual std::optional<std::string> ask_file(const file_dialog& dialog) = 0; // nothing: cancelled
  // Starts in the folder `start`. Nothing: cancelled.
  virtual std::optional<std::string> ask_folder(const std::string& title, const std::string& start) = 0;

  // Shows the form in a modal window. True: closed with OK.
  virtual bool show_form(form& shown) = 0;

  // Shows a chart without blocking, as a child of the owner's window.
  virtual void show_graph(std::shared_ptr<TGraphForm>, const form&) {}

  // Shows the data set's network without blocking. Choices in it go to the open editor.
  virtual void show_network() {}

  // Runs the work and returns when it has ended: true, or false if the user has cancelled it. Cancelled work may keep
  // running in another thread, so it must own what it uses. `what`: "Reading gauges.csv". Rethrows exceptions from the
  // work. See with_progress. This default runs it in the caller's thread.
  virtual bool run_long_work(const std::string& what, const std::function<void(work_progress&)>& work);

  virtual std::string clipboard_text() { return {}; }
  virtual void set_clipboard_text(const std::string&) {}
};

} // namespace vesk
