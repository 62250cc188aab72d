#include "core/block_lu.h"

#include <amd.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <new>
#include <numeric>
#include <utility>

namespace reference_engine {

namespace {

// Dense blocks, [row][column], of `m` rows: a constant where it is known when this is compiled.

// into -= a b. a_is_full: else a is the diagonal of a block.
[[gnu::always_inline]] inline void subtract_product(std::size_t m, const double* a, bool a_is_full, const double* b,
                                                    double* into) {
  for (std::size_t i = 0; i < m; ++i) {
    if (!a_is_full) {
      for (std::size_t j = 0; j < m; ++j) into[i * m + j] -= a[i] * b[i * m + j];
      continue;
    }
    for (std::size_t k = 0; k < m; ++k)
      for (std::size_t j = 0; j < m; ++j) into[i * m + j] -= a[i * m + k] * b[k * m + j];
  }
}

// into = a b, where a and b may be the diagonals of blocks, but not both.
[[gnu::always_inline]] inline void set_product(std::size_t m, const double* a, bool a_is_full, const double* b,
                                               bool b_is_full, double* into) {
  for (std::size_t i = 0; i < m; ++i) {
    for (std::size_t j = 0; j < m; ++j) {
      double sum = 0;
      if (!a_is_full)
        sum = a[i] * b[i * m + j];
      else if (!b_is_full)
        sum = a[i * m + j] * b[j];
      else
        for (std::size_t k = 0; k < m; ++k) sum += a[i * m + k] * b[k * m + j];
      into[i * m + j] = sum;
    }
  }
}

// into -= a b for a vector b.
[[gnu::always_inline]] inline void subtract_from(std::size_t m, const double* a, bool a_is_full, const double* b,
                                                 double* into) {
  for (std::size_t i = 0; i < m; ++i) {
    if (!a_is_full) into[i] -= a[i] * b[i];
    for (std::size_t k = 0; a_is_full && k < m; ++k) into[i] -= a[i * m + k] * b[k];
  }
}

// By Gauss and Jordan, with the largest pivot of each column. False where there is none.
[[gnu::always_inline]] inline bool invert(std::size_t m, double* block, double* into) {
  for (std::size_t i = 0; i < m; ++i)
    for (std::size_t j = 0; j < m; ++j) into[i * m + j] = i == j ? 1 : 0;
  for (std::size_t column = 0; column < m; ++column) {
    std::size_t pivot = column;
    for (std::size_t i = column + 1; i < m; ++i)
      if (std::abs(block[i * m + column]) > std::abs(block[pivot * m + column])) pivot = i;
    const double value = block[pivot * m + column];
    if (!(std::abs(value) > 0) || !std::isfinite(value)) return false;
    for (std::size_t j = 0; j < m; ++j) {
      if (pivot != column) {
        std::swap(block[pivot * m + j], block[column * m + j]);
        std::swap(into[pivot * m + j], into[column * m + j]);
      }
      block[column * m + j] *= 1 / value;
      into[column * m + j] *= 1 / value;
    }
    for (std::size_t i = 0; i < m; ++i) {
      if (i == column) continue;
      const double factor = block[i * m + column];
      for (std::size_t j = 0; j < m; ++j) {
        block[i * m + j] -= factor * block[column * m + j];
        into[i * m + j] -= factor * into[column * m + j];
      }
    }
  }
  return true;
}

} // namespace

BlockLu::BlockLu(std::size_t segments, std::size_t size, std::span<const Pair> pairs)
    : segments_(segments), size_(size), place_(segments), where_(segments), left_(size * size), right_(size * size) {
  find_order(pairs);
  find_fill(pairs);
  find_rows();
  diagonal_.resize(segments * size * size);
  std::size_t values = 0;
  for (std::size_t entry = 0; entry < rows_.size(); ++entry) {
    value_.push_back(values);
    values += is_full_[entry] ? size * size : size;
  }
  lower_.resize(values);
  upper_.resize(values);
}

void BlockLu::find_order(std::span<const Pair> pairs) {
  std::iota(place_.begin(), place_.end(), std::size_t{0});
  if (pairs.empty()) return; // which amd refuses
  const auto number = [](std::size_t value) { return static_cast<std::int64_t>(value); };
  std::vector<std::int64_t> starts(segments_ + 1), rows(pairs.size()), order(segments_);
  for (const Pair& pair : pairs) ++starts[pair.a + 1];
  for (std::size_t i = 0; i < segments_; ++i) starts[i + 1] += starts[i];
  std::vector<std::int64_t> next = starts;
  for (const Pair& pair : pairs) rows[static_cast<std::size_t>(next[pair.a]++)] = number(pair.b);
  const auto result = amd_l_order(number(segments_), starts.data(), rows.data(), order.data(), nullptr, nullptr);
  if (result != AMD_OK && result != AMD_OK_BUT_JUMBLED) throw std::bad_alloc();
  for (std::size_t k = 0; k < segments_; ++k) place_[static_cast<std::size_t>(order[k])] = k;
}

// A column has the rows of the matrix, and those of each column whose first row it is (its children in the elimination
// tree). What comes from these is filled.
void BlockLu::find_fill(std::span<const Pair> pairs) {
  std::vector<std::vector<std::size_t>> below(segments_), children(segments_);
  for (const Pair& pair : pairs) {
    const auto [first, last] = std::minmax(place_[pair.a], place_[pair.b]);
    below[first].push_back(last);
  }
  constexpr std::size_t unseen = 0; // else 1 + the column that has seen it
  std::vector<std::size_t> filled_in(segments_, unseen), seen_in(segments_, unseen);
  starts_.assign(1, 0);
  for (std::size_t column = 0; column < segments_; ++column) {
    std::vector<std::size_t>& rows = below[column];
    for (const std::size_t row : rows) seen_in[row] = column + 1;
    for (const std::size_t child : children[column]) {
      for (std::size_t entry = starts_[child]; entry < starts_[child + 1]; ++entry) {
        const std::size_t row = rows_[entry];
        if (row == column) continue;
        filled_in[row] = column + 1;
        if (std::exchange(seen_in[row], column + 1) != column + 1) rows.push_back(row);
      }
    }
    std::ranges::sort(rows);
    for (const std::size_t row : rows) {
      rows_.push_back(row);
      column_.push_back(column);
      is_full_.push_back(filled_in[row] == column + 1);
    }
    starts_.push_back(rows_.size());
    if (!rows.empty()) children[rows.front()].push_back(column);
    std::vector<std::size_t>().swap(rows);
  }
  for (const Pair& pair : pairs) {
    const auto [first, last] = std::minmax(place_[pair.a], place_[pair.b]);
    const auto begin = rows_.begin() + static_cast<std::ptrdiff_t>(starts_[first]),
               end = rows_.begin() + static_cast<std::ptrdiff_t>(starts_[first + 1]);
    pair_entry_.push_back(static_cast<std::size_t>(std::lower_bound(begin, end, last) - rows_.begin()));
    pair_is_turned_.push_back(place_[pair.a] == last);
  }
}

void BlockLu::find_rows() {
  row_starts_.assign(segments_ + 1, 0);
  for (const std::size_t row : rows_) ++row_starts_[row + 1];
  for (std::size_t i = 0; i < segments_; ++i) row_starts_[i + 1] += row_starts_[i];
  row_list_.resize(rows_.size());
  std::vector<std::size_t> next = row_starts_;
  for (std::size_t entry = 0; entry < rows_.size(); ++entry) row_list_[next[rows_[entry]]++] = entry;
}

void BlockLu::clear() {
  for (auto* values : {&diagonal_, &lower_, &upper_}) std::ranges::fill(*values, 0.0);
}

bool BlockLu::factorise() {
  switch (size_) {
  case 1: return factorise_blocks<1>();
  case 2: return factorise_blocks<2>();
  case 3: return factorise_blocks<3>();
  case 4: return factorise_blocks<4>();
  default: return factorise_blocks<0>();
  }
}

void BlockLu::solve(double* values) {
  switch (size_) {
  case 1: return solve_blocks<1>(values);
  case 2: return solve_blocks<2>(values);
  case 3: return solve_blocks<3>(values);
  case 4: return solve_blocks<4>(values);
  default: return solve_blocks<0>(values);
  }
}

// Column by column: each takes what is due to it from the columns before, to which its row of L leads.
template <std::size_t M>
bool BlockLu::factorise_blocks() {
  const std::size_t m = M > 0 ? M : size_;
  for (std::size_t column = 0; column < segments_; ++column) {
    double* const own = &diagonal_[column * m * m];
    for (std::size_t entry = starts_[column]; entry < starts_[column + 1]; ++entry) where_[rows_[entry]] = entry;
    for (std::size_t r = row_starts_[column]; r < row_starts_[column + 1]; ++r) {
      const std::size_t first = row_list_[r], before = column_[first];
      const double* const inverse = &diagonal_[before * m * m];
      const bool is_full = is_full_[first];
      set_product(m, inverse, true, &upper_[value_[first]], is_full, right_.data());
      subtract_product(m, &lower_[value_[first]], is_full, right_.data(), own);
      if (first + 1 == starts_[before + 1]) continue;
      set_product(m, &lower_[value_[first]], is_full, inverse, true, left_.data());
      for (std::size_t entry = first + 1; entry < starts_[before + 1]; ++entry) {
        const std::size_t target = value_[where_[rows_[entry]]], from = value_[entry];
        subtract_product(m, &lower_[from], is_full_[entry], right_.data(), &lower_[target]);
        double* const above = &upper_[target];
        for (std::size_t i = 0; i < m; ++i)
          for (std::size_t j = 0; j < m; ++j) {
            if (!is_full_[entry]) above[i * m + j] -= left_[i * m + j] * upper_[from + j];
            for (std::size_t k = 0; is_full_[entry] && k < m; ++k)
              above[i * m + j] -= left_[i * m + k] * upper_[from + k * m + j];
          }
      }
    }
    std::copy_n(own, m * m, left_.data());
    if (!invert(m, left_.data(), own)) return false;
  }
  return true;
}

template <std::size_t M>
void BlockLu::solve_blocks(double* values) {
  const std::size_t m = M > 0 ? M : size_;
  double small[M > 0 ? M : 1];
  double* const sum = M > 0 ? small : left_.data(); // of one segment
  for (std::size_t column = 0; column < segments_; ++column) {
    double* const own = values + column * m;
    std::fill_n(sum, m, 0.0);
    subtract_from(m, &diagonal_[column * m * m], true, own, sum);
    for (std::size_t i = 0; i < m; ++i) own[i] = -sum[i];
    for (std::size_t entry = starts_[column]; entry < starts_[column + 1]; ++entry)
      subtract_from(m, &lower_[value_[entry]], is_full_[entry], own, values + rows_[entry] * m);
  }
  for (std::size_t column = segments_; column-- > 0;) {
    if (starts_[column] == starts_[column + 1]) continue;
    std::fill_n(sum, m, 0.0);
    for (std::size_t entry = starts_[column]; entry < starts_[column + 1]; ++entry)
      subtract_from(m, &upper_[value_[entry]], is_full_[entry], values + rows_[entry] * m, sum);
    for (std::size_t i = 0; i < m; ++i) // own - D U x, of which the sum has the sign
      for (std::size_t k = 0; k < m; ++k) values[column * m + i] += diagonal_[(column * m + i) * m + k] * sum[k];
  }
}

} // namespace reference_engine
