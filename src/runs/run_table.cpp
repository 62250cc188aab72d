#include "runs/run_table.h"

#include <algorithm>
#include <charconv>
#include <istream>
#include <set>

namespace vesk {

namespace {

// The path for a column's name: that of the parameter with this name, or the name itself.
std::string path_of(const std::string& column, const csv_table* parameters) {
  if (!parameters) return column;
  const std::size_t names = parameters->column("name"), paths = parameters->column("path");
  for (const auto& row : parameters->rows)
    if (row[names] == column) return row[paths];
  return column;
}

// `text`: what the user gave, of which `digits` is a part.
std::size_t number_of(std::string_view digits, std::string_view text) {
  std::size_t number = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  if (error != std::errc() || end != digits.data() + digits.size())
    throw value_error("Expected the numbers of rows, as in 0-24, found \"" + std::string(text) + "\".");
  return number;
}

} // namespace

run_table::run_table(csv_table table)
    : table_(std::move(table)), folder_column_(std::min(table_.column("row"), table_.column("id"))) {}

run_table::run_table(csv_table table, const csv_table* parameters, const prevesk_dataset_data_type& data)
    : run_table(std::move(table)) {
  if (parameters)
    for (const char* needed : {"name", "path"})
      if (parameters->column(needed) == parameters->header.size())
        throw value_error(parameters->file + ": there is no column " + needed + ".");
  std::set<std::string> known;
  for (std::size_t i = 0; i < table_.header.size(); ++i) {
    paths_.push_back(i == folder_column_ ? std::string() : path_of(table_.header[i], parameters));
    if (i == folder_column_) continue;
    const std::string& path = paths_.back();
    try {
      const value_ref ref = find_value(data, path.substr(0, end_of_path(path)));
      if (!known.insert(ref.path).second) throw value_error(ref.path + " is set by more than one column.");
    } catch (const value_error& error) {
      throw value_error(table_.file + cause_in_column(i, error.what()));
    }
  }
  if (folder_column_ == table_.header.size()) return;
  std::set<std::string> folders;
  for (std::size_t row = 0; row < size(); ++row)
    if (!folders.insert(folder(row)).second)
      throw value_error(table_.file + ": two rows have the " + table_.header[folder_column_] + " " + folder(row) + ".");
}

std::string run_table::cause_in_column(std::size_t column, std::string_view cause) const {
  if (const std::string fault = separator_fault(table_); !fault.empty()) return ", line 1: " + fault;
  const std::string& name = table_.header[column];
  if (cause.starts_with(name + ": ")) cause.remove_prefix(name.size() + 2); // it is named once
  return ", column " + name + ": " + std::string(cause);
}

std::string run_table::folder(std::size_t row) const {
  if (folder_column_ == table_.header.size() || row >= size()) return std::to_string(row);
  const std::string& name = table_.rows[row][folder_column_];
  constexpr std::string_view allowed = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789._-";
  if (name.empty() || name[0] == '.' || name.size() > 200 || name.find_first_not_of(allowed) != name.npos)
    throw value_error(table_.file + ", row " + std::to_string(row) + ": \"" + name +
                      "\" cannot name a folder; use letters, digits, points, hyphens and underscores.");
  return name;
}

std::vector<value_assignment> run_table::assignments(const prevesk_dataset_data_type& data, std::size_t row) const {
  require(row, "row " + std::to_string(row) + " was requested");
  std::vector<value_assignment> result;
  for (std::size_t i = 0; i < paths_.size(); ++i) {
    if (i == folder_column_) continue;
    try {
      result.push_back(parse_assignment(data, paths_[i], table_.rows[row][i]));
    } catch (const value_error& error) {
      const std::string id = folder_column_ < table_.header.size() ? " (" + folder(row) + ")" : "";
      throw value_error(table_.file + ", row " + std::to_string(row) + id + ": " + error.what());
    }
  }
  return result;
}

std::vector<series_ref> run_table::series_from_files(const prevesk_dataset_data_type& data) const {
  std::vector<series_ref> result;
  for (const std::string& column : paths_) {
    const std::size_t end = end_of_path(column);
    const bool sets = end == column.size() || std::string_view(column).substr(end) == "=";
    if (column.empty() || !sets) continue;
    const value_ref ref = find_value(data, std::string_view(column).substr(0, end));
    if (ref.row->kind == path_kind::series) result.push_back(ref.row->series(ref.at));
  }
  return result;
}

void run_table::require(std::size_t row, std::string_view wanted) const {
  if (row < size()) return;
  const std::string last = std::to_string(size() - 1);
  const std::string numbers =
      size() == 0   ? " has no rows"
      : size() == 1 ? " has 1 row, 0"
                    : " has " + std::to_string(size()) + " rows, 0 " + (size() == 2 ? "and " : "to ") + last;
  throw value_error(table_.file + numbers + "; " + std::string(wanted) + ".");
}

std::vector<std::size_t> parse_row_numbers(const std::string& text) {
  constexpr std::size_t most = 10'000'000;
  std::vector<std::size_t> rows;
  for (std::size_t begin = 0; begin <= text.size();) {
    const std::size_t end = std::min(text.find(',', begin), text.size());
    const std::string_view range = std::string_view(text).substr(begin, end - begin);
    const std::size_t hyphen = range.find('-');
    const std::size_t first = number_of(range.substr(0, hyphen), text);
    const std::size_t last = hyphen == range.npos ? first : number_of(range.substr(hyphen + 1), text);
    if (last < first) throw value_error("Rows " + std::string(range) + ": the first one is greater than the last.");
    if (last - first >= most - rows.size())
      throw value_error("Rows " + text + ": more than " + std::to_string(most) + " in one call.");
    for (std::size_t row = first; row <= last; ++row) rows.push_back(row);
    begin = end + 1;
  }
  return rows;
}

std::optional<std::size_t> read_row_number(std::istream& numbers) {
  std::string word;
  if (!(numbers >> word)) return {};
  return number_of(word, word);
}

} // namespace vesk
