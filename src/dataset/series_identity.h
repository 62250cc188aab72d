// What a series belongs to, in names and numbers instead of positions, which another data set may have otherwise.
#pragma once

#include "dataset/series.h"

#include <array>
#include <cstddef>
#include <optional>
#include <string>

namespace vesk {

struct series_identity {
  series_kind kind = series_kind::print_intervals;
  // The number of the time function; of the system and the segment; or the names of the field and the function.
  std::array<std::string, 2> parts;
  // Series may have these in common: the place of this one among them, and how many there are.
  std::size_t place = 0, count = 0;

  friend bool operator==(const series_identity&, const series_identity&) = default;
};

// `ref` must exist.
series_identity identity_of(const prevesk_dataset_data_type& data, const series_ref& ref);

// Empty if the data set lacks the series, or if the number of series with the same identity has changed.
std::optional<series_ref> find_series(const prevesk_dataset_data_type& data, const series_identity& identity);

// The name of the series in charts and dialogs, with numbers from 1: "Segment 5 (Halifax), Oxygen", "Dispersion
// Function #2". `ref` must exist.
std::string series_name(const prevesk_dataset_data_type& data, const series_ref& ref);

} // namespace vesk
