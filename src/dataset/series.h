// The series of a data set, each identified by its kind and positions.
//
// A reference is a value: it can still be used after the data set is copied or replaced, but its series may not exist
// there.
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

// The series, or null if the data set has none at this position. Valid until the data set is changed.
const stored_series* find_series(const prevesk_dataset_data_type& data, const series_ref& ref);

// The series for changing, no longer shared with copies. `ref` must exist. Use the result only within the statement.
stored_series& edit_series(prevesk_dataset_data_type& data, const series_ref& ref);

// 0 linear, any other value step. Print intervals and time steps are steps.
std::uint32_t interpolation_of(const prevesk_dataset_data_type& data, const series_ref& ref);

// The same for changing, with the rules of `edit_series`; not for print intervals and time steps.
std::uint32_t& edit_interpolation(prevesk_dataset_data_type& data, const series_ref& ref);

// The name of the series in messages about stored queries.
std::string query_label(const prevesk_dataset_data_type& data, const series_ref& ref);

// Sorts the points by date and time; equal ones keep their order. Returns the new position of the point at `row`. Fast
// if only that point is out of order.
std::size_t sort_by_moment(point_list& points, std::size_t row = 0);

// True if no two neighbours have the same date and time.
bool moments_unique(const point_list& points);

// Gives the series that still have their default points for the period of `before` those for the period of `data`, but
// not the time steps, which have none. Default points are all zero, so no value of a series changes.
void move_default_points(prevesk_dataset_data_type& data, const prevesk_dataset_data_type& before);

// The position of a run's interpolation in the series; null for time steps, which are never interpolated, and if the
// data set has no such series. Valid until the data set is changed.
const series_cursors* find_cursors(const prevesk_dataset_data_type& data, const series_ref& ref);

// The same for changing, with the rules of `edit_series`.
series_cursors& edit_cursors(prevesk_dataset_data_type& data, const series_ref& ref);

// Number of owners of a kind: the systems, or the fields; 1 for kinds without an owner.
std::size_t owner_count(const prevesk_dataset_data_type& data, series_kind kind);

// Number of series of a kind that an owner has. `owner` must be less than owner_count.
std::size_t series_count(const prevesk_dataset_data_type& data, series_kind kind, std::size_t owner);

// Calls visit(ref) for each series of a kind of one owner, in order. `visit` may change a series but not their number.
template <class Visit>
void for_each_series(const prevesk_dataset_data_type& data, series_kind kind, std::size_t owner, const Visit& visit) {
  const std::size_t count = series_count(data, kind, owner);
  for (std::size_t i = 0; i < count; ++i) visit(series_ref{kind, owner, i});
}

// The same for all owners of a kind.
template <class Visit>
void for_each_series(const prevesk_dataset_data_type& data, series_kind kind, const Visit& visit) {
  const std::size_t owners = owner_count(data, kind);
  for (std::size_t owner = 0; owner < owners; ++owner) for_each_series(data, kind, owner, visit);
}

// The same for every series, in the order in which stored queries are executed: print intervals, time steps, time
// functions, the loads and boundaries of each system, exchange functions, flow functions.
template <class Visit>
void for_each_series(const prevesk_dataset_data_type& data, const Visit& visit) {
  for_each_series(data, series_kind::print_intervals, visit);
  for_each_series(data, series_kind::time_steps, visit);
  for_each_series(data, series_kind::time_function, visit);
  for (std::size_t system = 0; system < data.systems.size(); ++system) {
    for_each_series(data, series_kind::load, system, visit);
    for_each_series(data, series_kind::boundary, system, visit);
  }
  for_each_series(data, series_kind::exchange_function, visit);
  for_each_series(data, series_kind::flow_function, visit);
}

} // namespace vesk
