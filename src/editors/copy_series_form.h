// TCopySeriesForm: to which systems and segments a load or a boundary is copied.
#pragma once

#include "editors/editor_host.h"
#include "editors/form.h"

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace vesk {

class TCopySeriesForm final : public form {
public:
  explicit TCopySeriesForm(editor_host& host) : host_(host) {}

  std::string_view class_name() const override { return "TCopySeriesForm"; }
  std::string caption() const override { return "Copy to"; }

  // Set by the caller before the form is shown.
  std::string source;                                         // "Points of segment 5 (Halifax), Oxygen"
  std::vector<std::size_t> offered;                           // positions of the segments in the list
  std::function<std::string(const TCopySeriesForm&)> outcome; // what OK would do

  std::vector<bool> SystemCheckListBox;  // one per system
  std::vector<bool> SegmentCheckListBox; // one per item of `offered`
  bool with_query = true;                // also the interpolation and the stored query

  std::string system_text(std::size_t system) const;
  std::string segment_text(std::size_t row) const; // "5: Halifax"
  std::string message() const;

  // Selects only the system of the source.
  void begin(std::string of_source, std::size_t system, std::vector<std::size_t> segments);

  void data_set_replaced() override { is_replaced_ = true; }

private:
  editor_host& host_;
  bool is_replaced_ = false; // by a job, while the form is open
};

} // namespace vesk
