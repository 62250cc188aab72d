#include "query/sources/table_source.h"

#include <algorithm>
#include <unordered_map>

namespace vesk {

namespace {

char lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

std::string lower(std::string_view text) {
  std::string result(text);
  for (char& c : result) c = lower(c);
  return result;
}

// A null character would end a message and a statement early.
std::string without_null(std::string text) {
  std::replace(text.begin(), text.end(), '\0', ' ');
  return text;
}

std::string message(const std::string& file, const std::string& table, const std::string& field,
                    const std::string& cause) {
  std::string text = file;
  if (!table.empty() && table != file) text += ", table " + table; // names a file that is one table only once
  if (!field.empty()) text += ", field " + field;
  return without_null(text + ": " + cause);
}

// "Sheet1" for "Sheet1$", and "Sheet 1" for "'Sheet 1$'".
std::string_view sheet_name(std::string_view name) {
  if (name.size() >= 2 && name.front() == '\'' && name.back() == '\'') name = name.substr(1, name.size() - 2);
  if (!name.empty() && name.back() == '$') name.remove_suffix(1);
  return name;
}

} // namespace

table_source_exception::table_source_exception(std::string file, std::string table, std::string field,
                                               std::string cause, query_fault fault)
    : query_engine_exception(message(file, table, field, cause), fault), file_(std::move(file)),
      table_(std::move(table)), field_(std::move(field)), cause_(std::move(cause)) {}

bool is_date_or_time(field_type type) {
  return type == field_type::date || type == field_type::time || type == field_type::date_time;
}

bool is_number(field_type type) {
  switch (type) {
  case field_type::small_integer:
  case field_type::integer:
  case field_type::word:
  case field_type::boolean:
  case field_type::floating:
  case field_type::currency:
  case field_type::bcd:
  case field_type::auto_increment:
  case field_type::large_integer: return true;
  default: return false;
  }
}

bool row_filter::leaves_out(const table_value& value) const {
  switch (value.kind()) {
  case value_kind::null: return true;
  case value_kind::text:
    if (kind != test::equal_text) return false;
    return ignore_case ? !equal_ignoring_case(value.text(), text) : value.text() != text;
  default:
    return (kind == test::at_least && value.number() < number) || (kind == test::at_most && value.number() > number);
  }
}

std::size_t table_source::find_table(std::string_view name) const {
  if (tables_.size() == 1 && tables_.front() == file_) return 0;
  if (const auto found = find_table_name(tables_, name)) return *found;
  throw table_source_exception(file_, std::string(name), "", "the file has no such table.");
}

std::optional<std::size_t> find_table_name(const std::vector<std::string>& tables, std::string_view name) {
  for (const std::string_view wanted : {name, sheet_name(name)}) {
    auto found = std::find(tables.begin(), tables.end(), wanted);
    if (found == tables.end())
      found = std::find_if(tables.begin(), tables.end(),
                           [&](const std::string& table) { return equal_ignoring_case(table, wanted); });
    if (found != tables.end()) return static_cast<std::size_t>(found - tables.begin());
  }
  return {};
}

bool equal_ignoring_case(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) { return lower(x) == lower(y); });
}

std::vector<std::string> distinct_names(std::vector<std::string> names) {
  std::unordered_map<std::string, int> taken; // with the last number appended to each
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (names[i].empty()) names[i] = "F" + std::to_string(i + 1);
    const std::string given = names[i] = without_null(std::move(names[i]));
    int& last = taken.try_emplace(lower(given), -1).first->second;
    while (++last > 0) {
      names[i] = given + "_" + std::to_string(last);
      if (taken.try_emplace(lower(names[i]), 0).second) break;
    }
  }
  return names;
}

} // namespace vesk
