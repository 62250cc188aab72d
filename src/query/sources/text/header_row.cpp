#include "query/sources/text/header_row.h"

#include "dataset/text_encoding.h"
#include "query/sources/text/column_form.h"
#include "query/sources/text/number_text.h"

#include <algorithm>
#include <map>

namespace vesk {

namespace {

std::size_t filled(const sample_row& row) {
  return static_cast<std::size_t>(
      std::count_if(row.texts.begin(), row.texts.end(), [](const std::string& text) { return !text.empty(); }));
}

// The number of cells filled in most rows. Rows of one cell are titles and notes, unless almost all rows are like that.
std::size_t usual_filling(const std::vector<sample_row>& sample) {
  std::map<std::size_t, std::size_t> rows_by_filling;
  for (const sample_row& row : sample) ++rows_by_filling[filled(row)];
  if (rows_by_filling[1] * 10 > sample.size() * 9) return 1;
  std::size_t usual = 1, most = 0;
  for (const auto& [filling, rows] : rows_by_filling)
    if (filling > 1 && rows >= most) {
      usual = filling;
      most = rows;
    }
  return usual;
}

// A text of digits may be a code in its column, but not a unit.
bool has_only_texts(const sample_row& row) {
  return row.values == 0 && filled(row) > 0 &&
         std::none_of(row.texts.begin(), row.texts.end(),
                      [](const std::string& text) { return read_number(text, false).has_value(); });
}

// Whether the columns contain numbers or dates, judging by the rows from `first` on.
std::vector<bool> columns_of_values(const std::vector<sample_row>& sample, std::size_t first, std::size_t width) {
  std::vector<column_votes> votes(width);
  for (std::size_t i = first; i < sample.size(); ++i)
    for (std::size_t c = 0; c < sample[i].texts.size(); ++c) votes[c].add(sample[i].texts[c]);
  std::vector<bool> result;
  for (const column_votes& vote : votes) result.push_back(vote.settle().type != field_type::string);
  return result;
}

// The number of rows from `first` on that are units, formats or a second line of names.
std::size_t rows_below_names(const std::vector<sample_row>& sample, std::size_t first, std::size_t width) {
  constexpr std::size_t most_rows = 3;
  std::size_t end = first;
  while (end < sample.size() && end < first + most_rows && has_only_texts(sample[end])) ++end;
  if (end == first) return 0;
  const std::vector<bool> has_values = columns_of_values(sample, end, width);
  const auto belongs = [&](const sample_row& row) {
    for (std::size_t c = 0; c < row.texts.size(); ++c)
      if (has_values[c] && !row.texts[c].empty() && !marks_missing(row.texts[c])) return true;
    return false;
  };
  std::size_t rows = 0;
  while (first + rows < end && belongs(sample[first + rows])) ++rows;
  return rows;
}

} // namespace

void header_sample::add(std::size_t column, std::string_view text, bool is_value) {
  sample_row& row = rows_.back();
  cells_ += column + 1 - row.texts.size();
  row.texts.resize(column + 1);
  row.texts.back() = text.substr(0, whole_characters(text, longest_text));
  row.values += is_value;
}

header find_header(const std::vector<sample_row>& sample) {
  header result;
  const std::size_t usual = usual_filling(sample);
  while (result.row + 1 < sample.size() && filled(sample[result.row]) * 2 <= usual) ++result.row;
  std::size_t width = 1;
  for (std::size_t i = result.row; i < sample.size(); ++i) width = std::max(width, sample[i].texts.size());
  if (!sample.empty() && sample[result.row].values < std::max<std::size_t>(1, filled(sample[result.row]))) {
    result.names = sample[result.row].texts;
    result.rows = 1 + rows_below_names(sample, result.row + 1, width);
  }
  result.names.resize(width);
  if (result.rows > 1) {
    const std::vector<std::string>& second = sample[result.row + 1].texts;
    for (std::size_t c = 0; c < second.size(); ++c)
      if (result.names[c].empty()) result.names[c] = second[c];
  }
  return result;
}

} // namespace vesk
