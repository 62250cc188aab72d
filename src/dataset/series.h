// The series of a data set, each named by its kind and positions.
//
// A reference is a value: it stays usable when the data set is copied or replaced, and may then name a series that is
// no longer there.
#pragma once

#include "dataset/dataset.h"

#include <cstddef>
#include <string>

namespace vesk {

enum class series_kind {
  print_intervals,
  time_steps,
  time_function,
  load,              // of a system
  boundary,          // of a system
  exchange_function, // of a field
  flow_function,     // of a field
};

struct series_ref {
  series_kind kind = series_kind::print_intervals;
  std::size_t owner = 0; // position of the system or field; 0 for the others
  std::size_t index = 0; // position in the owner's list, or among the time functions; 0 for the first two kinds

  friend bool operator==(const series_ref&, const series_ref&) = default;
};

// The series, or null where the data set has none at this position. The pointer holds until the data set is changed.
const stored_series* find_series(const prevesk_dataset_data_type& data, const series_ref& ref);

// The series for changing, the data set's own from now on. `ref` must name one. The reference must not outlive the
// statement.
stored_series& edit_series(prevesk_dataset_data_type& data, const series_ref& ref);

// 0 linear, any other value step. Print intervals and time steps are steps.
std::uint32_t interpolation_of(const prevesk_dataset_data_type& data, const series_ref& ref);

// What messages about stored queries call the series.
std::string query_label(const prevesk_dataset_data_type& data, const series_ref& ref);

// Brings the points into ascending order of date and time; equal ones stay in theirs. Returns where the point at `row`
// is afterwards. Costs little when only that point is out of place.
std::size_t sort_by_moment(point_list& points, std::size_t row = 0);

// True unless two neighbours have the same date and time.
bool moments_unique(const point_list& points);

// Calls visit(ref) for every series, in the order in which stored queries are executed: print intervals, time steps,
// time functions, the loads and boundaries of each system, exchange functions, flow functions. `visit` may change the
// series but not their number.
template <class Visit>
void for_each_series(const prevesk_dataset_data_type& data, const Visit& visit) {
  visit(series_ref{series_kind::print_intervals, 0, 0});
  visit(series_ref{series_kind::time_steps, 0, 0});
  for (std::size_t i = 0; i < data.time_functions.size(); ++i) visit(series_ref{series_kind::time_function, 0, i});
  for (std::size_t s = 0; s < data.systems.size(); ++s) {
    for (std::size_t i = 0; i < data.systems[s].loads.size(); ++i) visit(series_ref{series_kind::load, s, i});
    for (std::size_t i = 0; i < data.systems[s].boundaries.size(); ++i) visit(series_ref{series_kind::boundary, s, i});
  }
  const auto visit_fields = [&](const auto& fields, series_kind kind) {
    for (std::size_t f = 0; f < fields.size(); ++f)
      for (std::size_t i = 0; i < fields[f].functions.size(); ++i) visit(series_ref{kind, f, i});
  };
  visit_fields(data.exchange_fields, series_kind::exchange_function);
  visit_fields(data.flow_fields, series_kind::flow_function);
}

} // namespace vesk
