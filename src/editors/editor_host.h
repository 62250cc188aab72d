// Services that forms need from the program. The main form is the only host; tests have their own.
//
// Main thread only.
#pragma once

#include "dataset/dataset.h"
#include "editors/long_work.h"
#include "editors/user_questions.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace vesk {

class TFillCalculateForm;
class TImportTimeSeriesForm;

class editor_host {
public:
  virtual ~editor_host() = default;

  // The data set being edited; null without one. Only the host replaces it; it then raises the generation and notifies
  // the open forms. Compare generations after each question to the user.
  virtual prevesk_dataset_data_type* data_set() = 0;
  virtual std::uint64_t generation() const = 0;

  // The data file's folder; empty for a data set without a file. Stored queries name their files relative to it.
  virtual std::filesystem::path data_folder() const = 0;

  virtual user_questions& questions() = 0;

  // Does long work on a copy of the data set; see the function of this name in long_work.h. Also returns nothing if the
  // data set has been replaced meanwhile: the generation has then changed.
  template <class Work>
  auto with_progress(const std::string& what, Work work) {
    const std::uint64_t before = generation();
    auto result = vesk::with_progress(questions(), what, *data_set(), std::move(work));
    if (generation() != before) result.reset();
    return result;
  }

  // The picture for number cells of this kind; `setting` is its name in the settings.
  virtual std::string number_format(std::string_view setting) const = 0;

  // One user operation: a step of the history with this label. If it is not completed, the data set is restored to its
  // state at the start. Steps do not nest; typed cells with the same key merge if they follow each other closely.
  virtual void begin_step(const std::string& label, const std::string& merge_key) = 0;
  virtual void end_step(bool completed) = 0;

  // Undo and Redo reach back to the opening of the editor at most. The label is the step's; empty: nothing to undo.
  virtual std::string undo_label() const = 0;
  virtual std::string redo_label() const = 0;
  virtual void undo() = 0;
  virtual void redo() = 0;

  // One of each for the whole program.
  virtual TFillCalculateForm& fill_calculate_form() = 0;
  virtual TImportTimeSeriesForm& import_form() = 0;

  // The two diagnostics switches; an engine may have set any level.
  virtual bool logging_enabled() const = 0;
  virtual void set_logging_enabled(bool enabled) = 0;
  virtual int diagnostic_level() const = 0;
  virtual void set_diagnostic_level(int level) = 0;

  // Memory for Undo steps, in millions of bytes; 0: automatic, depending on the machine.
  virtual int undo_megabytes() const = 0;
  virtual void set_undo_megabytes(int megabytes) = 0;

  // Whether to show the results after a run.
  virtual bool show_results_after_run() const { return false; }
  virtual void set_show_results_after_run(bool) {}

  // Jobs that a form may start. The end of a job replaces the data set.
  virtual void start_load_restart_file() = 0; // asks for the file
  virtual bool restart_file_is_loading() const = 0;
  virtual void cancel_job() = 0;
};

} // namespace vesk
