// What is suspicious in a data set, one place at a time: never a reason to refuse it, always worth a look.
#pragma once

#include "dataset/series.h"

#include <string>

namespace vesk {

// What is wrong with one point, and whether with its date and time or with its value.
struct point_finding {
  enum class part { none, moment, value } about = part::none;
  std::string sentence;
};

// Costs the same for a series of any length.
point_finding check_point(const stored_series& series, const series_ref& ref, std::size_t row);

// A value outside the catalogue's range, which counts only where minimum is below maximum. Empty: within.
std::string range_finding(double value, double minimum, double maximum);

// A series without points, or with none in the run, although the run uses it. Empty: neither.
std::string series_finding(const prevesk_dataset_data_type& data, const series_ref& ref);
std::string used_series_finding(const prevesk_dataset_data_type& data, const stored_series& series); // of one in use

// How many of the points lie before the start or after the end of the run.
std::size_t points_outside_run(const prevesk_dataset_data_type& data, const point_list& points);

} // namespace vesk
