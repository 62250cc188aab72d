#include "query/sources/header_row.h"

#include "query/sources/table_source.h"

#include <algorithm>
#include <map>

namespace vesk {

namespace {

std::size_t filled(const sample_row& row) {
  return static_cast<std::size_t>(
      std::count_if(row.texts.begin(), row.texts.end(), [](const std::string& text) { return !text.empty(); }));
}

// How many cells most rows fill. Rows of one cell are titles and notes unless nearly all rows are like that.
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

} // namespace

header find_header(const std::vector<sample_row>& sample) {
  header result;
  const std::size_t usual = usual_filling(sample);
  while (result.row + 1 < sample.size() && filled(sample[result.row]) * 2 <= usual) ++result.row;
  std::size_t width = 1;
  for (std::size_t i = result.row; i < sample.size(); ++i) width = std::max(width, sample[i].texts.size());
  std::vector<std::string> names;
  if (!sample.empty() && sample[result.row].values < std::max<std::size_t>(1, filled(sample[result.row]))) {
    result.has_names = true;
    names = sample[result.row].texts;
  }
  names.resize(width);
  result.names = distinct_names(std::move(names));
  return result;
}

} // namespace vesk
