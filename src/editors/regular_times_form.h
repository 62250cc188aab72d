// TRegularTimesForm: asks for the period and the step of the points to add to a series.
#pragma once

#include "dataset/dataset.h"
#include "editors/entry_field.h"
#include "editors/form.h"
#include "editors/series_tools.h"

#include <array>

namespace vesk {

class TRegularTimesForm final : public form {
public:
  std::string_view class_name() const override { return "TRegularTimesForm"; }
  std::string caption() const override { return "Regular Times"; }
  static constexpr std::string_view explanation =
      "Adds a point at each of these times that has none yet. Its value is interpolated between its neighbours.";

  // Starts with the run's period and steps of a day.
  void begin(const prevesk_dataset_data_type& data);
  bool FormCloseQuery(bool by_ok) override;

  regular_times times() const;
  std::string message() const; // why OK is refused; empty: accepted

  entry_field StartDateField{"StartDateField", "Start date", {cell_kind::date}};
  entry_field StartTimeField{"StartTimeField", "Start time", {cell_kind::time}};
  entry_field StepField{"StepField", "Step (1 d, 6 h, 5 min)", {cell_kind::number, "#####.######", {}, true}};
  entry_field EndDateField{"EndDateField", "End date", {cell_kind::date}};
  entry_field EndTimeField{"EndTimeField", "End time", {cell_kind::time}};

  std::array<entry_field*, 5> entry_fields() {
    return {&StartDateField, &StartTimeField, &StepField, &EndDateField, &EndTimeField};
  }
  std::array<const entry_field*, 5> entry_fields() const {
    return {&StartDateField, &StartTimeField, &StepField, &EndDateField, &EndTimeField};
  }
};

} // namespace vesk
