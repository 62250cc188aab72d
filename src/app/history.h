// The steps that Undo takes back and Redo brings again.
//
// A step is what was there before an operation: copies share their content, so it costs what the operation has changed.
// Every operation that replaces or edits the data set adds one step, whoever does it. Main thread only.
#pragma once

#include "dataset/dataset.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace vesk {

// All that one step puts back.
struct document {
  prevesk_dataset_data_type data_set; // with its origin
  std::string file_name;
  std::string import_file_name;
  // Which document it is: New, Open and Import begin another one. A job's result that arrives in another document than
  // the one it began in is not what that document's file holds.
  std::uint64_t number = 0;
};

class history {
public:
  // The lesser of 1 GB and an eighth of the machine's memory.
  static std::size_t default_limit();

  // `limit`: in bytes, for all steps together. The oldest are dropped beyond it, but never the newest.
  explicit history(std::size_t limit = default_limit()) : limit_(limit) {}

  // Adds a step: `before` is what the operation `label` ("Open river.vki") has made `now` of. What could be redone until
  // now is dropped.
  void add(document before, std::string label, const prevesk_dataset_data_type& now);

  // Labels of the next step; empty when there is none.
  std::string undo_label() const { return undo_.empty() ? std::string() : undo_.back().label; }
  std::string redo_label() const { return redo_.empty() ? std::string() : redo_.back().label; }

  // What was there before the newest step, or after the one that was taken back last. `now` is kept for the way back.
  // There must be such a step.
  document undo(document now) { return move_step(undo_, redo_, std::move(now)); }
  document redo(document now) { return move_step(redo_, undo_, std::move(now)); }

  std::size_t bytes() const; // what the steps hold that their neighbour towards the present does not

private:
  struct step {
    document content;
    std::string label;
    std::size_t bytes; // not shared with the neighbour towards the present
  };
  static document move_step(std::vector<step>& from, std::vector<step>& to, document now);
  void drop_beyond_limit();

  std::size_t limit_;
  std::vector<step> undo_, redo_; // the next one last
};

} // namespace vesk
