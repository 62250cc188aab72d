#include "shell/keyword_table.h"

#include "shell/rows_data_set.h"
#include "shell/rows_fields.h"
#include "shell/rows_job.h"
#include "shell/rows_outputs.h"
#include "shell/rows_segments.h"
#include "shell/rows_series.h"
#include "shell/rows_systems.h"

#include <algorithm>

namespace vesk {

namespace {

constexpr std::array<keyword_row, keyword_count> all_rows() {
  std::array<keyword_row, keyword_count> result;
  auto end = result.begin();
  for (const std::span<const keyword_row> part :
       {std::span<const keyword_row>(rows_data_set), std::span<const keyword_row>(rows_series),
        std::span<const keyword_row>(rows_segments), std::span<const keyword_row>(rows_systems),
        std::span<const keyword_row>(rows_fields), std::span<const keyword_row>(rows_job),
        std::span<const keyword_row>(rows_outputs)})
    end = std::copy(part.begin(), part.end(), end);
  std::sort(result.begin(), result.end(), [](const auto& a, const auto& b) { return a.keyword < b.keyword; });
  return result;
}

constexpr std::array<std::string_view, keyword_count> names(const std::array<keyword_row, keyword_count>& rows) {
  std::array<std::string_view, keyword_count> result;
  std::transform(rows.begin(), rows.end(), result.begin(), [](const auto& row) { return row.keyword; });
  return result;
}

} // namespace

constexpr std::array<keyword_row, keyword_count> keyword_table = all_rows();
constexpr keyword_index<keyword_count> keyword_positions{names(keyword_table)};

namespace {

constexpr std::ptrdiff_t count_modes(keyword_modes modes) {
  return std::count_if(keyword_table.begin(), keyword_table.end(), [&](const auto& row) { return row.modes == modes; });
}

template <class Holds>
constexpr bool all(Holds holds) {
  return std::all_of(keyword_table.begin(), keyword_table.end(), holds);
}

static_assert(rows_data_set.size() + rows_series.size() + rows_segments.size() + rows_systems.size() +
                  rows_fields.size() + rows_job.size() + rows_outputs.size() ==
              keyword_count);
static_assert(count_modes(put) == 23 && count_modes(get) == 29 && count_modes(get_put) == 105);
static_assert(std::adjacent_find(keyword_table.begin(), keyword_table.end(),
                                 [](const auto& a, const auto& b) { return a.keyword == b.keyword; }) ==
                  keyword_table.end(),
              "a keyword occurs twice");
static_assert(all([](const keyword_row& row) {
                return !row.keyword.empty() && row.keyword.size() <= padded_keyword::max_size &&
                       row.keyword.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ") == std::string_view::npos;
              }),
              "a keyword is 1 to 16 capital letters");
static_assert(all([](const keyword_row& row) {
                if (row.handler.count != row.variables.size()) return false;
                for (std::size_t i = 0; i < row.variables.size(); ++i)
                  if (row.handler.types[i] != row.variables[i].type) return false;
                return true;
              }),
              "a row has no handler, or one that takes other arguments than it says");
static_assert(all([](const keyword_row& row) {
                return (row.modes != get_put && row.keyword != "IMPORT") == row.refusal.starts_with("WARNING: ");
              }),
              "a keyword of one mode refuses the other with a warning; only IMPORT is silent");
static_assert(all([](const keyword_row& row) { return !row.changes_series || (row.modes & put); }));

} // namespace

} // namespace vesk
