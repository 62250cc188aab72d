// The steps that Undo reverts and Redo repeats.
//
// A step is the state before an operation. Copies of a data set share their content, so a step costs as much memory as
// the operation changed. Every operation that replaces or edits the data set adds one. Main thread only.
#pragma once

#include "dataset/dataset.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>

namespace vesk {

// The state restored by a step.
struct document {
  prevesk_dataset_data_type data_set; // with its origin
  std::string file_name;
  std::string import_file_name;
  // Number of the document: New, Open and Import begin a new one. Shows whether a job's result belongs to the document
  // for which the job was started.
  std::uint64_t number = 0;
  // What was last opened or saved, one for all steps of the document; null: nothing, or it is not needed.
  std::shared_ptr<prevesk_dataset_data_type> saved = {};
};

class history {
public:
  using clock = std::chrono::steady_clock;

  // The smaller of 1 GB and an eighth of the machine's memory.
  static std::size_t default_limit();

  // `limit`: bytes for all steps together. The oldest steps are dropped beyond it, but never the newest one.
  explicit history(std::size_t limit = default_limit()) : limit_(limit) {}

  void set_limit(std::size_t limit); // also drops steps beyond it

  // Adds a step: the operation `label` ("Open river.vki") has changed `before` to `now`. Drops the steps that could be
  // redone. A step that follows another with the same `merge_key` within two seconds is merged with it; an empty key
  // never is.
  void add(document before, std::string label, const prevesk_dataset_data_type& now, const std::string& merge_key = {},
           clock::time_point when = clock::now());

  // The document was saved: its steps take the name and origin of the file, so that a Save after Undo does not write to
  // the file that it had before a Save as.
  void set_file(std::uint64_t document_number, const std::string& file_name, const file_origin& origin);

  // Between these two calls, Undo and Redo stop at the state of the first. Not nestable.
  void begin_editing();
  void end_editing();
  bool is_editing() const { return is_editing_; }
  bool has_edits() const { return undo_.size() > undo_floor_; } // steps added since begin_editing and not undone

  // Labels of the next step; empty if there is none.
  std::string undo_label() const { return label_of_last(undo_, undo_floor_); }
  std::string redo_label() const { return label_of_last(redo_, redo_floor_); }

  // The state before the newest step, or after the step that was undone last. `now` is kept so that this can be
  // reverted. There must be such a step.
  document undo(document now) { return move_step(undo_, redo_, std::move(now)); }
  document redo(document now) { return move_step(redo_, undo_, std::move(now)); }

  std::size_t bytes() const; // of all steps: what each does not share with the next one towards the present

private:
  struct step {
    document content;
    std::string label;
    std::size_t bytes; // not shared with the next step towards the present
    std::string merge_key;
    clock::time_point when;
  };
  static std::string label_of_last(const std::deque<step>& steps, std::size_t floor) {
    return steps.size() > floor ? steps.back().label : std::string();
  }
  static document move_step(std::deque<step>& from, std::deque<step>& to, document now);
  void drop_beyond_limit();

  std::size_t limit_;
  std::deque<step> undo_, redo_; // the next step is last; dropped at both ends
  bool is_editing_ = false;
  std::size_t undo_floor_ = 0, redo_floor_ = 0; // steps that cannot be reached now
};

} // namespace vesk
