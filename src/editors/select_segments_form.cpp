#include "editors/select_segments_form.h"

#include "platform/counted.h"

#include <algorithm>

namespace vesk {

std::string TSelectSegmentsForm::caption() const {
  const prevesk_dataset_data_type* data = host_.data_set();
  const bool known = data && selected_system < data->systems.size();
  return "Loads for " + (known ? shown_text(data->systems[selected_system].description) : std::string());
}

std::size_t TSelectSegmentsForm::segment_count() const {
  return host_.data_set() ? host_.data_set()->segments.size() : 0;
}

std::string TSelectSegmentsForm::segment_text(std::size_t segment) const {
  if (segment >= segment_count()) return {};
  return std::to_string(segment + 1) + ": " + shown_text(host_.data_set()->segments[segment].name);
}

void TSelectSegmentsForm::FormShow() {
  is_replaced_ = false;
  shown_generation_ = host_.generation();
  SegmentCheckListBox.assign(segment_count(), false);
  const prevesk_dataset_data_type* data = host_.data_set();
  if (data && selected_system < data->systems.size())
    for (const loads_data_type& load : data->systems[selected_system].loads)
      if (load.segment >= 0 && static_cast<std::size_t>(load.segment) < SegmentCheckListBox.size())
        SegmentCheckListBox[static_cast<std::size_t>(load.segment)] = true;
  loaded_ = SegmentCheckListBox;
}

void TSelectSegmentsForm::data_set_replaced() {
  FormShow();
  is_replaced_ = true;
}

std::string TSelectSegmentsForm::message() const {
  if (SegmentCheckListBox.empty()) return "The network has no segments yet. Add them in Data > Segments.";
  std::size_t added = 0, removed = 0;
  for (std::size_t i = 0; i < SegmentCheckListBox.size() && i < loaded_.size(); ++i) {
    added += SegmentCheckListBox[i] && !loaded_[i];
    removed += loaded_[i] && !SegmentCheckListBox[i];
  }
  const auto loads = [](std::size_t count) { return counted(count, "load"); };
  std::string text = is_replaced_ ? "A job has replaced the data set; the list shows its loads. " : "";
  if (added == 0 && removed == 0)
    return text + loads(static_cast<std::size_t>(std::ranges::count(loaded_, true))) + ".";
  text += "OK ";
  if (added > 0) text += "adds " + loads(added);
  if (removed > 0)
    text += (added > 0 ? " and removes " : "removes ") + loads(removed) + (removed > 1 ? ", each" : "") +
            " after a question";
  return text + ".";
}

} // namespace vesk
