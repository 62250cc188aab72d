#include "shell/bulk/bulk_table.h"

#include "shell/bulk/bulk_reference.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <numeric>

namespace vesk {

namespace {

constexpr double never = std::numeric_limits<double>::infinity();
constexpr double hold = -0.0; // as a row's delta: see bulk_block

// Constant values need a `previous` before every update, as far away as possible without overflow in the division.
constexpr double long_ago = -bulk_time_limit;

// `difference` if `mask` is all ones, `hold` if it is 0; without a branch, since both kinds of rows are mixed.
double masked(double difference, std::uint64_t mask) {
  constexpr auto hold_bits = std::bit_cast<std::uint64_t>(hold);
  return std::bit_cast<double>(hold_bits ^ ((std::bit_cast<std::uint64_t>(difference) ^ hold_bits) & mask));
}

std::int64_t seconds(const moment_type& moment) {
  return std::int64_t{moment.date} * 86400 + moment.time;
}

// True if every way to compute the value gives the same bits at any time.
bool is_plain_sailing(const point_list& points) {
  std::int64_t before = std::numeric_limits<std::int64_t>::min();
  bool fine = true;
  for (const moment_value_pair_type& point : points) {
    const std::int64_t now = seconds(point);
    fine &= now >= before && point.value != cursor_unset && !std::isnan(point.value);
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
  // Series of one element are either all plain or all fast, so that their order decides.
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
  elements_.resize(rows_ + 1);
  reached_.resize(rows_ + 2 * bulk_block_rows);
  blocks_.resize((rows_ + bulk_block_rows - 1) / bulk_block_rows);
  for (bulk_block& block : blocks_)
    for (std::size_t i = 0; i < bulk_block_rows; ++i) {
      block.next[i] = never;
      block.previous[i] = long_ago;
      block.delta[i] = hold;
      block.value[i] = 0;
    }
  for (std::uint32_t row = 0; row < rows_; ++row) place(row, added_[order[row]]);
  elements_[rows_] = rows_ == 0 ? 0 : ~elements_[rows_ - 1];
}

void bulk_table::place(std::uint32_t row, added_series& series) {
  series.row = row;
  elements_[row] = static_cast<std::uint32_t>(series.element);
  if (series.points.empty()) return;
  sources_[row] = {&series.points.front(), &series.points.back(), series.step ? 0 : ~std::uint64_t{0}};
  bulk_block& block = blocks_[row / bulk_block_rows];
  block.next[row % bulk_block_rows] = series.points.front().date_time();
  block.value[row % bulk_block_rows] = series.points.front().value;
}

void bulk_table::update(double t, float* array) {
  std::size_t reached = 0; // rows still to be advanced, at the start of reached_
  for (std::size_t first = 0; first < rows_; first += chunk_rows) {
    const std::size_t rows = std::min(chunk_rows, rows_ - first);
    const std::size_t blocks = (rows + bulk_block_rows - 1) / bulk_block_rows;
    std::uint32_t* const found = &reached_[reached];
    std::size_t count = kernel_(&blocks_[first / bulk_block_rows], blocks, t, values_, found);
    for (std::size_t k = 0; k < count; ++k) found[k] += static_cast<std::uint32_t>(first);
    if (count > rows / 8) { // cheaper in one go, while the chunk is in the cache
      advance_rows(found, count, t);
      count = kernel_(&blocks_[first / bulk_block_rows], blocks, t, values_, found);
    }
    reached += count;
    write_out(first, rows, array);
  }
  // The remaining rows are far apart. They are collected over all chunks, so that many of their cache misses overlap.
  advance_rows(reached_.data(), reached, t);
  for (std::size_t k = 0; k < reached; ++k) {
    const std::size_t row = reached_[k];
    if (elements_[row + 1] != elements_[row]) array[elements_[row]] = value(row, t);
  }
  for (const std::uint32_t i : plain_) {
    added_series& series = added_[i];
    array[series.element] = static_cast<float>(evaluate_series(series.points, series.step, series.cursors, t));
  }
}

float bulk_table::value(std::size_t row, double t) const {
  const bulk_block& block = blocks_[row / bulk_block_rows];
  const std::size_t i = row % bulk_block_rows;
  const double part = (t - block.previous[i]) / (block.next[i] - block.previous[i]);
  return static_cast<float>(block.delta[i] * part + block.value[i]);
}

void bulk_table::advance_rows(const std::uint32_t* rows, std::size_t count, double t) {
  constexpr std::size_t ahead = 48;
  for (std::size_t k = 0; k < count; ++k) {
    if (k + ahead < count) __builtin_prefetch(sources_[rows[k + ahead]].upcoming + 1);
    advance(rows[k], t);
  }
}

inline void bulk_table::advance(std::size_t row, double t) {
  source& from = sources_[row];
  bulk_block& block = blocks_[row / bulk_block_rows];
  const std::size_t i = row % bulk_block_rows;
  const moment_value_pair_type* point = from.upcoming;
  double previous = block.next[i];
  for (;;) {
    if (point == from.last) return come_to_end(row, previous);
    const double next = point[1].date_time();
    if (!(t >= next)) {
      from.upcoming = point + 1;
      block.next[i] = next;
      block.previous[i] = previous;
      block.value[i] = point->value;
      block.delta[i] = masked(point[1].value - point->value, from.rise_mask);
      return;
    }
    previous = next;
    ++point;
  }
}

void bulk_table::come_to_end(std::size_t row, double last_time) {
  source& from = sources_[row];
  bulk_block& block = blocks_[row / bulk_block_rows];
  const std::size_t i = row % bulk_block_rows;
  from.upcoming = block.previous[i] == long_ago ? nullptr : from.last;
  block.next[i] = never;
  block.previous[i] = last_time;
  block.value[i] = from.last->value;
  block.delta[i] = hold;
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
  const moment_value_pair_type* upcoming = sources_[series.row].upcoming;
  if (!upcoming || upcoming == series.points.begin()) return result;
  const auto index = static_cast<std::uint32_t>(upcoming - series.points.begin());
  result.cursor_next = series.points[index];
  result.cursor_previous = series.points[index - 1];
  result.cursor_index = index;
  return result;
}

} // namespace vesk
