#include "dataset/series.h"

#include <algorithm>
#include <chrono>

namespace vesk {

namespace {

template <class List>
const typename List::value_type* at(const List& list, std::size_t i) {
  return i < list.size() ? &list[i] : nullptr;
}

template <class Owners, class List>
auto at(const Owners& owners, std::size_t owner, List Owners::value_type::*list, std::size_t i) -> const
    typename List::value_type* {
  return owner < owners.size() ? at(owners[owner].*list, i) : nullptr;
}

const time_series_block* find_block(const prevesk_dataset_data_type& data, const series_ref& ref) {
  switch (ref.kind) {
  case series_kind::time_function: return at(data.time_functions, ref.index);
  case series_kind::load: return at(data.systems, ref.owner, &system_data_type::loads, ref.index);
  case series_kind::boundary: return at(data.systems, ref.owner, &system_data_type::boundaries, ref.index);
  case series_kind::exchange_function:
    return at(data.exchange_fields, ref.owner, &exchange_field_data_type::functions, ref.index);
  case series_kind::flow_function: return at(data.flow_fields, ref.owner, &flow_field_data_type::functions, ref.index);
  default: return nullptr;
  }
}

time_series_block& edit_block(prevesk_dataset_data_type& data, const series_ref& ref) {
  switch (ref.kind) {
  case series_kind::time_function: return data.time_functions.edit(ref.index);
  case series_kind::load: return data.systems.edit(ref.owner).loads.edit(ref.index);
  case series_kind::boundary: return data.systems.edit(ref.owner).boundaries.edit(ref.index);
  case series_kind::exchange_function: return data.exchange_fields.edit(ref.owner).functions.edit(ref.index);
  default: return data.flow_fields.edit(ref.owner).functions.edit(ref.index);
  }
}

template <class Record>
std::string segment_label(const char* kind, const system_data_type& system, const Record& record) {
  return std::string(kind) + " for system '" + shown_text(system.description) +
         "' segment id: " + std::to_string(record.segment);
}

template <class Field>
std::string function_label(const char* kind, const char* field_kind, const Field& field, std::size_t index) {
  return std::string(kind) + " function '" + shown_text(field.functions[index].description) + "' for " + field_kind +
         " field '" + shown_text(field.description) + "'";
}

} // namespace

fill_time fill_time::now() {
  const auto since_1970 = std::chrono::system_clock::now().time_since_epoch();
  return {std::chrono::duration_cast<std::chrono::nanoseconds>(since_1970).count()};
}

const stored_series* find_series(const prevesk_dataset_data_type& data, const series_ref& ref) {
  if (ref.kind == series_kind::print_intervals) return &data.print_intervals;
  if (ref.kind == series_kind::time_steps) return &data.time_steps;
  return find_block(data, ref);
}

stored_series& edit_series(prevesk_dataset_data_type& data, const series_ref& ref) {
  if (ref.kind == series_kind::print_intervals) return data.print_intervals;
  if (ref.kind == series_kind::time_steps) return data.time_steps;
  return edit_block(data, ref);
}

const series_cursors* find_cursors(const prevesk_dataset_data_type& data, const series_ref& ref) {
  if (ref.kind == series_kind::print_intervals) return &data.print_intervals;
  return find_block(data, ref);
}

series_cursors& edit_cursors(prevesk_dataset_data_type& data, const series_ref& ref) {
  if (ref.kind == series_kind::print_intervals) return data.print_intervals;
  return edit_block(data, ref);
}

std::uint32_t interpolation_of(const prevesk_dataset_data_type& data, const series_ref& ref) {
  const time_series_block* block = find_block(data, ref);
  return block ? block->interpolation_type : interpolation_step;
}

std::uint32_t& edit_interpolation(prevesk_dataset_data_type& data, const series_ref& ref) {
  return edit_block(data, ref).interpolation_type;
}

std::size_t owner_count(const prevesk_dataset_data_type& data, series_kind kind) {
  switch (kind) {
  case series_kind::load:
  case series_kind::boundary: return data.systems.size();
  case series_kind::exchange_function: return data.exchange_fields.size();
  case series_kind::flow_function: return data.flow_fields.size();
  default: return 1;
  }
}

std::size_t series_count(const prevesk_dataset_data_type& data, series_kind kind, std::size_t owner) {
  switch (kind) {
  case series_kind::time_function: return data.time_functions.size();
  case series_kind::load: return data.systems[owner].loads.size();
  case series_kind::boundary: return data.systems[owner].boundaries.size();
  case series_kind::exchange_function: return data.exchange_fields[owner].functions.size();
  case series_kind::flow_function: return data.flow_fields[owner].functions.size();
  default: return 1;
  }
}

std::string query_label(const prevesk_dataset_data_type& data, const series_ref& ref) {
  switch (ref.kind) {
  case series_kind::print_intervals: return "Print Interval";
  case series_kind::time_steps: return "Time step";
  case series_kind::time_function: return "Time function: " + shown_text(data.time_functions[ref.index].description);
  case series_kind::load:
    return segment_label("Loads", data.systems[ref.owner], data.systems[ref.owner].loads[ref.index]);
  case series_kind::boundary:
    return segment_label("Boundaries", data.systems[ref.owner], data.systems[ref.owner].boundaries[ref.index]);
  case series_kind::exchange_function:
    return function_label("Exchange", "exchange", data.exchange_fields[ref.owner], ref.index);
  case series_kind::flow_function: break;
  }
  return function_label("Flow", "flow", data.flow_fields[ref.owner], ref.index);
}

namespace {

// Moves the point at `row` to its position in time. All other points must be in order.
std::size_t move_into_place(point_list& points, std::size_t row) {
  moment_value_pair_type* all = points.edit_data();
  const moment_value_pair_type moved = all[row];
  if (row > 0 && moved < all[row - 1]) {
    auto* place = std::upper_bound(all, all + row, moved);
    std::move_backward(place, all + row, all + row + 1);
    *place = moved;
    return static_cast<std::size_t>(place - all);
  }
  auto* place = std::lower_bound(all + row + 1, all + points.size(), moved);
  std::move(all + row + 1, place, all + row);
  *(place - 1) = moved;
  return static_cast<std::size_t>(place - 1 - all);
}

} // namespace

std::size_t sort_by_moment(point_list& points, std::size_t row) {
  if (points.size() < 2 || std::is_sorted(points.begin(), points.end())) return row;
  const moment_value_pair_type* all = points.data();
  const auto in_order = [&](std::size_t from, std::size_t to) { return std::is_sorted(all + from, all + to); };
  if (row < points.size()) {
    const bool rest_in_order = in_order(0, row) && in_order(row + 1, points.size()) &&
                               (row == 0 || row + 1 == points.size() || !(all[row + 1] < all[row - 1]));
    if (rest_in_order) return move_into_place(points, row);
  }
  std::size_t place = row;
  if (row < points.size()) { // stable: after all earlier points, and after equal ones that precede it
    place = 0;
    for (std::size_t i = 0; i < points.size(); ++i)
      if (all[i] < all[row] || (i < row && !(all[row] < all[i]))) ++place;
  }
  moment_value_pair_type* sorted = points.edit_data();
  std::stable_sort(sorted, sorted + points.size());
  return place;
}

bool moments_unique(const point_list& points) {
  const auto same_moment = [](const moment_type& a, const moment_type& b) { return a == b; };
  return std::adjacent_find(points.begin(), points.end(), same_moment) == points.end();
}

// Only the series that move are edited, so that the others keep sharing their points with copies.
void move_default_points(prevesk_dataset_data_type& data, const prevesk_dataset_data_type& before) {
  const auto defaults_of = [](const prevesk_dataset_data_type& of) {
    return point_list{{moment_type::from_date_time(of.start_date_time()), 0},
                      {moment_type::from_date_time(of.end_date_time()), 0}};
  };
  const point_list old_points = defaults_of(before), new_points = defaults_of(data);
  if (old_points == new_points) return;
  for_each_series(data, [&](const series_ref& ref) {
    if (ref.kind != series_kind::time_steps && find_series(data, ref)->points == old_points)
      edit_series(data, ref).points = new_points;
  });
}

} // namespace vesk
