#include "editors/select_segments_form.h"

namespace vesk {

std::string TSelectSegmentsForm::caption() const {
  const prevesk_dataset_data_type* data = host_.data_set();
  const bool known = data && selected_system < data->systems.size();
  return "Loads for " + (known ? data->systems[selected_system].description.str() : std::string());
}

std::size_t TSelectSegmentsForm::segment_count() const {
  return host_.data_set() ? host_.data_set()->segments.size() : 0;
}

std::string TSelectSegmentsForm::segment_text(std::size_t segment) const {
  return std::to_string(segment + 1) + ": " + host_.data_set()->segments[segment].name.str();
}

void TSelectSegmentsForm::FormShow() {
  SegmentCheckListBox.assign(segment_count(), false);
  const prevesk_dataset_data_type* data = host_.data_set();
  if (!data || selected_system >= data->systems.size()) return;
  for (const loads_data_type& load : data->systems[selected_system].loads)
    if (load.segment >= 0 && static_cast<std::size_t>(load.segment) < SegmentCheckListBox.size())
      SegmentCheckListBox[static_cast<std::size_t>(load.segment)] = true;
}

} // namespace vesk
