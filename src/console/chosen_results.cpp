#include "console/chosen_results.h"

#include "dataset/any_case.h"
#include "results/measured_series.h"
#include "results/results_file.h"
#include "runs/csv_table.h"
#include "runs/value_path.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace vesk {

namespace {

[[noreturn]] void refuse(std::string_view item, const std::string& cause) {
  throw value_error("Results \"" + std::string(item) + "\": " + cause);
}

bool in_braces(std::string_view name) {
  return name.size() > 2 && name.front() == '{' && name.back() == '}';
}

std::vector<std::string_view> items_of(std::string_view text) {
  std::vector<std::string_view> items;
  std::size_t begin = 0;
  bool named = false;
  for (std::size_t i = 0; i <= text.size(); ++i) {
    if (i < text.size() && (text[i] == '{' || text[i] == '}')) named = text[i] == '{';
    if (i < text.size() && (named || text[i] != ',')) continue;
    items.push_back(text.substr(begin, i - begin));
    begin = i + 1;
  }
  return items;
}

// The lookup, and the nearest name or number in its message, are those of paths.
std::size_t find_segment(std::string_view item, std::string_view segment, const prevesk_dataset_data_type& data) {
  const bool is_number = !segment.empty() && segment.find_first_not_of("0123456789") == segment.npos;
  if (!is_number && !in_braces(segment))
    refuse(item, "expected a segment's number, from 0, or its {name} after the @.");
  const std::string path = "segment." + std::string(segment) + ".volume";
  try {
    return find_value(data, path).at[0];
  } catch (const value_error& error) {
    refuse(item, std::string(error.what()).substr(path.size() + 2));
  }
}

// The name as spelled in the data set, because engines compare names case-sensitively. An unknown name is returned as
// it is.
std::string name_of_output(std::string_view name, const prevesk_dataset_data_type& data) {
  for (const output_control_type& output : data.output_controls)
    if (equal_names(output.description, name)) return output.description.str();
  return std::string(name);
}

std::string digits_of(double value) {
  char digits[32];
  return std::isnan(value) ? "" : std::string(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
}

} // namespace

std::vector<chosen_series> read_chosen_series(std::string_view text, const prevesk_dataset_data_type& data) {
  std::vector<chosen_series> series;
  for (const std::string_view item : items_of(text)) {
    const std::size_t brace = item.starts_with('{') ? item.find('}') : 0;
    const std::size_t at = brace == item.npos ? brace : item.find('@', brace);
    if (at == item.npos || at == 0) refuse(item, "expected VARIABLE@SEGMENT, such as DO@24 or {name}@{name}.");
    const std::string_view name = item.substr(0, at);
    const bool named = in_braces(name);
    series.push_back({named ? name_of_output(name.substr(1, name.size() - 2), data) : std::string(name), named,
                      find_segment(item, item.substr(at + 1), data)});
  }
  return series;
}

std::string text_of(const std::vector<chosen_series>& series) {
  std::string text;
  for (const chosen_series& it : series)
    text += (text.empty() ? "" : ",") + (it.is_named ? "{" + it.variable + "}" : it.variable) + "@" +
            std::to_string(it.segment);
  return text;
}

std::string table_of_series(const std::filesystem::path& results, const std::vector<chosen_series>& series) {
  const results_file file(results);
  std::string header = "time";
  std::vector<std::vector<double>> columns;
  for (const chosen_series& it : series) {
    if (it.segment >= file.segments())
      refuse(it.variable + "@" + std::to_string(it.segment),
             results.native() + " has " + std::to_string(file.segments()) + " segments.");
    const std::size_t variable = file.find_variable(it.variable);
    columns.push_back(file.series(variable, it.segment));
    header += "," + csv_field(file.variables()[variable].name + "@" + std::to_string(it.segment));
  }
  std::string text = header + "\n";
  for (std::size_t row = 0; row < file.times().size(); ++row) {
    text += text_of_moment(file.times()[row]);
    for (const std::vector<double>& column : columns) text += "," + digits_of(column[row]);
    text += "\n";
  }
  return text;
}

} // namespace vesk
