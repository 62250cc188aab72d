// Suspicious values in a data set, one at a time: never an error, always worth a look.
#pragma once

#include "dataset/series.h"

#include <algorithm>
#include <string>

namespace vesk {

// The fault of one point, and whether it is in its date and time or in its value.
struct point_finding {
  enum class part { none, moment, value } about = part::none;
  std::string sentence;
};

inline constexpr const char* not_finite_finding = "The value is not a finite number.";

// Whether a run uses the series: its field or function is used, or its system is not bypassed.
bool is_used(const prevesk_dataset_data_type& data, const series_ref& ref);

// Takes the same time for a series of any length.
point_finding check_point(const stored_series& series, const series_ref& ref, std::size_t row);

std::string missing_segment_finding(std::int32_t segment); // segment: its position, from 0

// A warning about one end of a pair, with the other, in a network of `segments`; empty: none.
std::string pair_end_finding(std::int32_t end, std::int32_t other, std::size_t segments);

// A value outside the catalogue's range, which is used only if minimum is below maximum. Empty if within.
std::string range_finding(double value, double minimum, double maximum);

// A series without points, or without points in the run, although the run uses it. Empty if neither.
std::string series_finding(const prevesk_dataset_data_type& data, const series_ref& ref);
std::string used_series_finding(const prevesk_dataset_data_type& data, const stored_series& series); // of one in use

// An exchange or flow field with pairs that is not used. Empty for all others.
template <class Field>
std::string field_finding(const Field& field) {
  const auto has_pairs = [](const auto& function) { return !function.pairs.empty(); };
  if (field.used || std::none_of(field.functions.begin(), field.functions.end(), has_pairs)) return {};
  return "This field is not used: its functions and pairs have no effect on a run.";
}

// Number of points before the start or after the end of the run.
std::size_t points_outside_run(const prevesk_dataset_data_type& data, const point_list& points);

} // namespace vesk
