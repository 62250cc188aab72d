#include "editors/copy_series_form.h"

namespace vesk {

void TCopySeriesForm::begin(std::string of_source, std::size_t system, std::vector<std::size_t> segments) {
  source = std::move(of_source);
  offered = std::move(segments);
  SystemCheckListBox.assign(host_.data_set()->systems.size(), false);
  SystemCheckListBox[system] = true;
  SegmentCheckListBox.assign(offered.size(), false);
  is_replaced_ = false;
}

std::string TCopySeriesForm::system_text(std::size_t system) const {
  const prevesk_dataset_data_type* data = host_.data_set();
  return data && system < data->systems.size() ? shown_text(data->systems[system].description) : std::string();
}

std::string TCopySeriesForm::segment_text(std::size_t row) const {
  const prevesk_dataset_data_type* data = host_.data_set();
  if (!data || offered[row] >= data->segments.size()) return {};
  return std::to_string(offered[row] + 1) + ": " + shown_text(data->segments[offered[row]].name);
}

std::string TCopySeriesForm::message() const {
  if (is_replaced_) return "A job has replaced the data set; OK copies nothing. Close this window and choose again.";
  return outcome ? outcome(*this) : std::string();
}

} // namespace vesk
