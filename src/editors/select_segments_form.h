// TSelectSegmentsForm: selects the segments with a load of one system.
#pragma once

#include "editors/editor_host.h"
#include "editors/form.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace vesk {

class TSelectSegmentsForm final : public form {
public:
  explicit TSelectSegmentsForm(editor_host& host) : host_(host) {}

  std::string_view class_name() const override { return "TSelectSegmentsForm"; }
  std::string caption() const override; // "Loads for Oxygen"

  std::size_t selected_system = 0; // set by the caller before the form is shown

  std::size_t segment_count() const;
  std::string segment_text(std::size_t segment) const; // "5: Halifax"; empty if it no longer exists
  std::vector<bool> SegmentCheckListBox;               // one per segment

  std::string message() const; // what OK would do

  // Of the data set in the list. While it is the current one, OK can be carried out.
  std::uint64_t shown_generation() const { return shown_generation_; }

  void FormShow() override;
  void data_set_replaced() override;

private:
  editor_host& host_;
  std::vector<bool> loaded_; // the list's initial state
  std::uint64_t shown_generation_ = 0;
  bool is_replaced_ = false; // by a job, while the form is open
};

} // namespace vesk
