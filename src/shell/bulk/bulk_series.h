// The series of each stage of an update, in list order, and the elements that they fill in the engine's arrays.
#pragma once

#include "dataset/series.h"
#include "shell/bulk/bulk_service.h"

#include <cstddef>
#include <optional>
#include <string>

namespace vesk {

struct bulk_element {
  series_ref series;
  std::size_t index; // in the engine's array
  bool step;         // interpolated as steps
  bool used;         // false: the element gets 0.0 and the series is not evaluated
};

namespace detail {

series_kind kind_of(bulk_stage stage);

// The element of a series; none if it is outside the model. If the series belongs to a field, the field must be used.
std::optional<bulk_element> element_of(const prevesk_dataset_data_type& data, const series_ref& series);

// True if the model does not use the transport field.
bool is_unused_field(const prevesk_dataset_data_type& data, series_kind kind, std::size_t owner);

// True if the transport field is beyond the engine's last.
bool is_field_too_many(series_kind kind, std::size_t owner);

} // namespace detail

// Calls visit(element) for each series of the stage that has an element in the engine's array, and left_out(series) for
// each that has none. For a field beyond the engine's last, left_out is called once with the field's first series, even
// if the field is empty.
template <class Visit, class LeftOut>
void visit_series(const prevesk_dataset_data_type& data, bulk_stage stage, const Visit& visit,
                  const LeftOut& left_out) {
  const series_kind kind = detail::kind_of(stage);
  for (std::size_t owner = 0; owner < owner_count(data, kind); ++owner) {
    if (detail::is_unused_field(data, kind, owner)) continue;
    if (detail::is_field_too_many(kind, owner)) {
      left_out(series_ref{kind, owner, 0});
      continue;
    }
    for_each_series(data, kind, owner, [&](const series_ref& series) {
      if (const auto element = detail::element_of(data, series))
        visit(*element);
      else
        left_out(series);
    });
  }
}

// The log line about series left out by visit_series.
std::string left_out_warning(const prevesk_dataset_data_type& data, const series_ref& left_out);

} // namespace vesk
