// All communication of the program with its user. Window, console and tests each implement it.
#pragma once

#include "editors/user_questions.h"

#include <optional>
#include <string>
#include <vector>

namespace vesk {

struct import_query_descriptor;
struct query_report;

enum : int { icon_plain = 0, icon_note = 1, icon_failure = 2 };

// The groups of commands that are enabled; see TPreveskMainForm::update_menus.
struct command_conditions {
  bool idle = true;       // no job runs
  bool has_data = false;  // there is a data set
  bool has_model = false; // and it has a model
  bool ready = false;     // and its end is after its start
  bool running = false;   // a job of any kind can be cancelled
  std::string undo = {};  // the step that Undo reverts, such as "Open river.vki"; empty: none
  std::string redo = {};  // the step that Redo repeats

  friend bool operator==(const command_conditions&, const command_conditions&) = default;
};

// Position and size of the main window, and height of its results grid, in the toolkit's units.
struct window_geometry {
  int results_table_height = 0;
  int left = 0;
  int top = 0;
  int width = 0;
  int height = 0;
  int state = window_normal;

  enum : int { window_normal = 0, window_minimised = 1, window_maximised = 2 };
  friend bool operator==(const window_geometry&, const window_geometry&) = default;
};

// All members are called on the main thread.
class user_interface : public user_questions {
public:
  virtual bool boxes_stay_in_sight() const { return false; } // true for printed lines
  virtual void set_busy(bool busy) = 0;                      // the hourglass

  // The main window. `set_commands` also makes PreveskMainMenu its menu.
  virtual void set_caption(const std::string& caption) = 0;
  virtual void set_commands(const command_conditions& conditions) = 0;
  virtual void close_main_window() = 0;

  // Start and end of the main window. A front end without a window overrides none of these.
  virtual window_geometry geometry() { return {}; }
  virtual void set_geometry(const window_geometry&) {}
  virtual void minimise_main_window() {}
  virtual void hide_splash() {}
  virtual void show_administration_menu(bool) {}
  virtual void add_documentation_item(const std::string&) {} // its caption, without a mnemonic
  virtual void set_priority_position(int) {}                 // of the track bar, 0 to 6

  // The current data set was replaced: forms show outdated values, and their positions may be out of range.
  virtual void data_set_replaced() {}

  // Shows results in a window beside the others: opens the file there, or reads it anew. An empty name: the window
  // alone. `after_run`: it has just been written; a window that the user does not want after a run is not opened for
  // it, but one that is open follows. False: this front end has no such window.
  virtual bool show_results(const std::string&, bool /*after_run*/) { return false; }
  virtual void recent_files_changed() {} // those of the settings

  // Names the file of the following messages, for a front end that shows them without their context; empty: none.
  virtual void set_subject(const std::string&) {}

  // Shows an HTML file of the program in a window. False: this front end has none.
  virtual bool show_page(const std::string&) { return false; }

  // The info list.
  virtual void add_info_line(const std::string& text, int icon) = 0;
  virtual void select_last_info_line() {}
  virtual void clear_info_lines() = 0;
  // The messages that follow are those of a job. Its heading gets the outcome at its end.
  virtual void begin_job_messages(const std::string& /*heading*/) {}
  virtual void end_job_messages(const std::string& /*outcome*/) {}

  // The progress panel.
  virtual void set_progress(int percent) = 0; // 0 to 100
  virtual void set_info_label(const std::string& text) = 0;
  virtual void set_time_remaining_label(const std::string& text) = 0;

  // A deferred query was executed for the series. A report without points counts as a failure.
  virtual void query_executed(const std::string&, const import_query_descriptor&, const query_report&) {}

  // The queries of this many series, each reported before, found no rows. Returns whether to continue; if not, it has
  // given the reason.
  virtual bool may_go_on_without_rows(int /*series*/) { return true; }

  // A job has set the name of a hydrodynamic file, and the box about the running job was shown.
  virtual void hydrodynamic_file_named() {}

  // A run begins or has ended: the run button becomes cancel or run, the priority track bar appears or disappears.
  virtual void show_run_controls(bool running) = 0;

  // The results grid, a view on the engine's array.
  virtual void initialize_grid(const std::vector<std::string>& column_labels, int rows) = 0;
  virtual void show_results_grid(bool visible) = 0;
  virtual void repaint_results_grid() = 0;
};

} // namespace vesk
