#include "shell/bulk_table.h"

#include "shell/bulk_reference.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

namespace vesk {

namespace {

constexpr double never = std::numeric_limits<double>::infinity();
constexpr double hold = -0.0; // as a row's delta: see bulk_block

// Held values need a start before every update, as far away as not to overflow a division by a bracket.
constexpr double long_ago = -bulk_time_limit;

std::int64_t seconds(const moment_type& moment) {
  return std::int64_t{moment.date} * 86400 + moment.time;
}

// True when the value at any time does not depend on how it was found.
bool is_plain_sailing(const point_list& points) {
  std::int64_t before = std::numeric_limits<std::int64_t>::min();
  bool fine = true;
  for (const moment_value_pair_type& point : points) {
    const std::int64_t now = seconds(point);
    fine &= now > before && point.value != cursor_unset && !std::isnan(point.value);
    before = now;
  }
  return fine;
}

} // namespace

void bulk_table::add(std::size_t element, const point_list& points, bool step, const series_cursors& cursors) {
  const bool fresh = cursors.cursor_next.value == cursor_unset;
  const bool small = element <= std::numeric_limits<std::uint32_t>::max();
  added_.push_back({element, points, cursors, step, !(fresh && small && is_plain_sailing(points)), 0});
}

void bulk_table::finish() {
  std::vector<std::uint32_t> order(added_.size());
  std::iota(order.begin(), order.end(), 0u);
  std::stable_sort(order.begin(), order.end(),
                   [&](std::uint32_t a, std::uint32_t b) { return added_[a].element < added_[b].element; });
  // Series of one element stay together on one side, so that their order decides.
  for (auto first = order.begin(); first != order.end();) {
    const auto last =
        std::find_if(first, order.end(), [&](std::uint32_t i) { return added_[i].element != added_[*first].element; });
    if (std::any_of(first, last, [&](std::uint32_t i) { return added_[i].plain; }))
      std::for_each(first, last, [&](std::uint32_t i) { added_[i].plain = true; });
    first = last;
  }
  std::erase_if(order, [&](std::uint32_t i) { return added_[i].plain; });
  for (std::uint32_t i = 0; i < added_.size(); ++i)
    if (added_[i].plain) plain_.push_back(i);

  rows_ = order.size();
  sources_.resize(rows_);
  elements_.resize(rows_);
  blocks_.resize((rows_ + bulk_block_rows - 1) / bulk_block_rows);
  for (bulk_block& block : blocks_)
    for (std::size_t i = 0; i < bulk_block_rows; ++i) {
      block.next[i] = never;
      block.previous[i] = long_ago;
      block.delta[i] = hold;
      block.value[i] = 0;
    }
  for (std::uint32_t row = 0; row < rows_; ++row) place(row, added_[order[row]]);
}

void bulk_table::place(std::uint32_t row, added_series& series) {
  series.row = row;
  elements_[row] = static_cast<std::uint32_t>(series.element);
  sources_[row] = {series.points.data(), static_cast<std::uint32_t>(series.points.size()), !series.step, false};
  if (series.points.empty()) return;
  bulk_block& block = blocks_[row / bulk_block_rows];
  block.next[row % bulk_block_rows] = series.points.front().date_time();
  block.value[row % bulk_block_rows] = series.points.front().value;
}

void bulk_table::update(double t, float* array) {
  for (std::size_t first = 0; first < rows_; first += chunk_rows) {
    const std::size_t rows = std::min(chunk_rows, rows_ - first);
    const bulk_block* blocks = &blocks_[first / bulk_block_rows];
    const std::size_t block_count = (rows + bulk_block_rows - 1) / bulk_block_rows;
    const std::size_t reached = kernel_(blocks, block_count, t, values_, reached_);
    if (reached != 0) {
      advance_all(first, reached, t);
      kernel_(blocks, block_count, t, values_, reached_);
    }
    write_out(first, rows, array);
  }
  for (const std::uint32_t i : plain_) {
    added_series& series = added_[i];
    array[series.element] = static_cast<float>(evaluate_series(series.points, series.step, series.cursors, t));
  }
}

void bulk_table::advance_all(std::size_t first_row, std::size_t count, double t) {
  constexpr std::size_t ahead = 24;
  for (std::size_t k = 0; k < count; ++k) {
    if (k + ahead < count) __builtin_prefetch(sources_[first_row + reached_[k + ahead]].upcoming);
    advance(first_row + reached_[k], t);
  }
}

void bulk_table::advance(std::size_t row, double t) {
  source& from = sources_[row];
  bulk_block& block = blocks_[row / bulk_block_rows];
  const std::size_t i = row % bulk_block_rows;
  double previous = block.next[i];
  for (;;) {
    const moment_value_pair_type& point = *from.upcoming;
    if (from.left <= 1) {
      from.left = 0;
      block.next[i] = never;
      block.previous[i] = previous;
      block.value[i] = point.value;
      block.delta[i] = hold;
      return;
    }
    const moment_value_pair_type& following = *++from.upcoming;
    --from.left;
    const double next = following.date_time();
    if (!(t >= next)) {
      block.next[i] = next;
      block.previous[i] = previous;
      block.value[i] = point.value;
      block.delta[i] = from.linear ? following.value - point.value : hold;
      from.bracketed = true;
      return;
    }
    previous = next;
  }
}

void bulk_table::write_out(std::size_t first_row, std::size_t rows, float* array) const {
  const std::uint32_t* elements = &elements_[first_row];
  for (std::size_t i = 0; i < rows; ++i) array[elements[i]] = values_[i];
}

series_cursors bulk_table::cursors(std::size_t position) const {
  series_cursors result;
  if (position >= added_.size()) return result;
  const added_series& series = added_[position];
  if (series.plain) return series.cursors;
  if (!sources_[series.row].bracketed) return result;
  const auto index = static_cast<std::uint32_t>(sources_[series.row].upcoming - series.points.data());
  result.cursor_next = series.points[index];
  result.cursor_previous = series.points[index - 1];
  result.cursor_index = index;
  return result;
}

} // namespace vesk
