#include "query/row_points.h"

#include "query/query_engine.h"

#include <algorithm>
#include <cmath>

namespace vesk {

namespace {

constexpr std::size_t moment_column = 0, value_column = 1;

} // namespace

bool row_points::take(result_set& rows) {
  std::string first_text; // in the place of a number
  for (bool has_number = false; rows.next();) {
    ++report_.rows;
    const double moment = rows.is_missing(moment_column) ? 0 : rows.date_and_time(moment_column);
    if (std::floor(moment) == 0) {
      ++report_.without_moment;
    } else if (const auto value = rows.number(value_column)) {
      has_number = true;
      first_text.clear();
      if (!add({moment, *value})) return false;
    } else {
      if (!has_number && first_text.empty() && !rows.is_missing(value_column)) first_text = rows.text(value_column);
      ++report_.without_value;
    }
  }
  if (!first_text.empty()) rows.refuse(value_column, first_text, "a number"); // the field is not one of values
  make_points_of_kept();
  end_point();
  points_.shrink_to_fit();
  report_.points = points_.size();
  return true;
}

bool row_points::add(const row& next) {
  constexpr std::size_t most_kept = 1 << 16;
  if (!in_order_ && !last_) {
    if (kept_.empty()) kept_.reserve(most_kept); // what is not used of it takes no memory
    if (kept_.size() < most_kept) {
      kept_.push_back(next);
      return true;
    }
    if (!std::is_sorted(kept_.begin(), kept_.end(), is_earlier)) return false;
    last_ = kept_.back().moment;
    make_points_of_kept();
  }
  if (!in_order_ && next.moment < *last_) return false;
  last_ = next.moment;
  make_point(next);
  return true;
}

void row_points::make_points_of_kept() {
  if (!std::is_sorted(kept_.begin(), kept_.end(), is_earlier)) std::stable_sort(kept_.begin(), kept_.end(), is_earlier);
  for (const row& kept : kept_) make_point(kept);
  kept_ = {};
}

// Dates and times are compared exactly: rows of one second may be several points.
void row_points::make_point(const row& next) {
  if (!average_ || next.moment != moment_) end_point();
  moment_ = next.moment;
  sum_ += next.value;
  ++count_;
}

void row_points::end_point() {
  if (count_ > 0) points_.push_back({moment_type::from_date_time(moment_), sum_ / static_cast<double>(count_)});
  sum_ = 0;
  count_ = 0;
}

} // namespace vesk
