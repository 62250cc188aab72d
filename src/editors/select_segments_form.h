// TSelectSegmentsForm: which segments have a load of one system.
#pragma once

#include "editors/editor_host.h"
#include "editors/form.h"

#include <cstddef>
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
  std::string segment_text(std::size_t segment) const; // "5: Halifax"
  std::vector<bool> SegmentCheckListBox;               // one for each segment

  void FormShow() override;
  void data_set_replaced() override { FormShow(); }

private:
  editor_host& host_;
};

} // namespace vesk
