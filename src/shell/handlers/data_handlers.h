// The handlers that most keywords use: for a member of a record at a place, the size of a list there, the points of a
// series there, a count.
#pragma once

#include "shell/handlers/places.h"
#include "shell/handlers/values.h"
#include "shell/keywords/typed_handler.h"

#include <cmath>
#include <utility>

namespace vesk {

namespace detail {

template <std::size_t>
using index_argument = std::int32_t&;

template <class Place, class Indices = std::make_index_sequence<Place::indices>>
struct at_place;

template <class Place, std::size_t... I>
struct at_place<Place, std::index_sequence<I...>> {
  template <auto Member, bool MarksUse>
  static void member(shell_interface& shell, index_argument<I>... index, argument_of<Member> value) {
    if (shell.is_get) {
      if (const auto* record = Place::template find<false>(shell, index...)) to_argument(shell, record->*Member, value);
    } else if (auto* record = Place::template find<true>(shell, index...)) {
      from_argument(shell, record->*Member, value);
      if constexpr (MarksUse) record->used = true;
    }
  }

  template <auto List, bool MarksUse>
  static void size(shell_interface& shell, index_argument<I>... index, std::int32_t& count) {
    if (shell.is_get) {
      if (const auto* record = Place::template find<false>(shell, index...))
        count = static_cast<std::int32_t>((record->*List).size());
    } else if (auto* record = Place::template find<true>(shell, index...)) {
      const auto wanted = shell.list_size(count, sizeof...(I));
      if (!wanted) return;
      if constexpr (MarksUse) record->used = count != 0;
      auto& list = record->*List;
      shell.data_set().apply_thread_defaults();
      list.resize(*wanted, typename std::remove_reference_t<decltype(list)>::value_type{});
    }
  }

  template <bool MarksUse>
  static void point(shell_interface& shell, index_argument<I>... index, std::int32_t& point_index, float& days,
                    float& value) {
    const double start = shell.data_set().start_date_time();
    if (shell.is_get) {
      const auto* series = Place::template find<false>(shell, index...);
      if (!series) return;
      const auto i = shell.position(point_index, series->points.size(), sizeof...(I));
      if (!i) return;
      days = static_cast<float>(series->points[*i].days_since(start));
      value = static_cast<float>(series->points[*i].value);
    } else if (auto* series = Place::template find<true>(shell, index...)) {
      const auto i = shell.position(point_index, series->points.size(), sizeof...(I));
      if (!i || !is_a_moment(shell, days)) return;
      series->points.set(*i, {moment_type::from_date_time(start + static_cast<double>(days)), value});
      if constexpr (MarksUse) series->used = true;
    }
  }

  // A point without a date would be before or after all others and distort the series, so the old point is kept.
  static bool is_a_moment(const shell_interface& shell, float days) {
    if (std::isfinite(days)) return true;
    shell.warn("days are not a number");
    return false;
  }

  static void all_points(shell_interface& shell, index_argument<I>... index, float* days, float* values) {
    const double start = shell.data_set().start_date_time();
    if (shell.is_get) {
      const auto* series = Place::template find<false>(shell, index...);
      if (!series) return;
      for (const moment_value_pair_type& point : series->points) {
        *days++ = static_cast<float>(point.days_since(start));
        *values++ = static_cast<float>(point.value);
      }
    } else if (auto* series = Place::template find<true>(shell, index...)) {
      moment_value_pair_type* points = series->points.edit_data();
      for (std::size_t i = 0; i < series->points.size(); ++i)
        if (is_a_moment(shell, days[i]))
          points[i] = {moment_type::from_date_time(start + static_cast<double>(days[i])), values[i]};
    }
  }
};

template <auto List>
void count_all(shell_interface& shell, std::int32_t& count) {
  count = static_cast<std::int32_t>((shell.data_set().*List).size());
}

template <auto List, auto Flag>
void count_flagged(shell_interface& shell, std::int32_t& count) {
  std::int32_t result = 0;
  for (const auto& record : shell.data_set().*List) result += record.*Flag ? 1 : 0;
  count = result;
}

template <auto Array>
void register_array(shell_interface& shell, float* array) {
  shell.job().arrays().*Array = array;
}

} // namespace detail

// A member of the record at a place. With `marks_use` a PUT also switches the record on.
inline constexpr bool marks_use = true;
template <class Place, auto Member, bool MarksUse = false>
inline constexpr typed_handler member = handler_of<&detail::at_place<Place>::template member<Member, MarksUse>>;

// The size of a list. A PUT appends new records or erases the last ones. With `marks_use` it also switches the record
// with the list on, or off if the list becomes empty.
template <class Place, auto List, bool MarksUse = false>
inline constexpr typed_handler list_size = handler_of<&detail::at_place<Place>::template size<List, MarksUse>>;

// The points of the series at a place.
template <class Place>
inline constexpr typed_handler point_count = list_size<Place, &stored_series::points>;

// One of its points: its number, its time in days since the model's start, its value.
template <class Place, bool MarksUse = false>
inline constexpr typed_handler point = handler_of<&detail::at_place<Place>::template point<MarksUse>>;

// All its points: an array of days and an array of values, each as long as the series.
template <class Place>
inline constexpr typed_handler all_points = handler_of<&detail::at_place<Place>::all_points>;

// The number of records in a list of the data set, all of them or those with a flag set. GET only.
template <auto List>
inline constexpr typed_handler count_of = handler_of<&detail::count_all<List>>;
template <auto List, auto Flag>
inline constexpr typed_handler count_where = handler_of<&detail::count_flagged<List, Flag>>;

// Registers an array of the engine with the bulk service. PUT only.
template <auto Array>
inline constexpr typed_handler registered = handler_of<&detail::register_array<Array>>;

} // namespace vesk
