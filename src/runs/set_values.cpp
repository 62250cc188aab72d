#include "runs/set_values.h"

#include "dataset/findings.h"
#include "dataset/iso_dates.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>
#include <set>

namespace vesk {

namespace {

constexpr std::pair<assignment_operator, std::string_view> operators[] = {
    {assignment_operator::multiply, "*="}, {assignment_operator::add, "+="}, {assignment_operator::set, "="}};

std::optional<double> finite_number(std::string_view text) {
  if (text.starts_with('+')) text.remove_prefix(1);
  double number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(number)) return {};
  return number;
}

// "2011-10-01", also with a time of day after "T" or a blank.
std::optional<double> date_and_time(std::string_view text) {
  const std::size_t between = text.find_first_of("T ");
  const auto date = number_of_iso_date(text.substr(0, between));
  const auto time = between == text.npos ? std::optional(0.0) : fraction_of_iso_time(text.substr(between + 1));
  if (!date || !time || !in_calendar(*date + *time)) return {};
  return *date + *time;
}

[[noreturn]] void refuse(const value_assignment& it, const std::string& expected) {
  throw value_error(it.ref.path + ": expected " + expected + ", found " +
                    (it.text.empty() ? "nothing" : "\"" + it.text + "\"") + ".");
}

void parse_value(value_assignment& it) {
  const auto number = finite_number(it.text);
  switch (it.ref.row->kind) {
  case path_kind::number:
    if (!number) refuse(it, "a finite number");
    it.number = *number;
    break;
  case path_kind::date: {
    const auto date = date_and_time(it.text);
    if (it.how != assignment_operator::set)
      throw value_error(it.ref.path + ": a date is set by =, not by " + std::string(text_of(it.how)) + ".");
    if (!date) refuse(it, "a date such as 2011-10-01 or 2011-10-01T06:30");
    it.number = *date;
    break;
  }
  case path_kind::series:
    if (it.how == assignment_operator::set && (it.text.empty() || number))
      refuse(it, "a file of dates and values (a number needs *= or +=)");
    if (it.how != assignment_operator::set && !number) refuse(it, "a finite number");
    it.number = number.value_or(0);
    break;
  }
}

double result_of(const value_assignment& it, double before) {
  const double result = it.how == assignment_operator::set        ? it.number
                        : it.how == assignment_operator::multiply ? before * it.number
                                                                  : before + it.number;
  if (!std::isfinite(result)) throw value_error(it.ref.path + ": the result is not a finite number.");
  return result;
}

void apply_to_series(prevesk_dataset_data_type& data, const value_assignment& it, const assignment_rules& rules) {
  const series_ref ref = it.ref.row->series(it.ref.at);
  point_list points = it.names_a_file() ? rules.read_series(it.text) : find_series(data, ref)->points;
  if (!it.names_a_file()) {
    moment_value_pair_type* all = points.edit_data();
    for (std::size_t i = 0; i < points.size(); ++i) all[i].value = result_of(it, all[i].value);
  }
  edit_series(data, ref).points = std::move(points);
  if (find_series(data, ref)->query->deferred) edit_series(data, ref).query.edit().deferred = false;
}

} // namespace

std::string_view text_of(assignment_operator how) {
  return std::ranges::find(operators, how, &std::pair<assignment_operator, std::string_view>::first)->second;
}

value_assignment parse_assignment(const prevesk_dataset_data_type& data, std::string_view path_and_operator,
                                  std::string_view value) {
  value_assignment it;
  const std::size_t end = end_of_path(path_and_operator);
  const std::string_view rest = path_and_operator.substr(end);
  if (!rest.empty()) {
    const auto known = std::ranges::find(operators, rest, &std::pair<assignment_operator, std::string_view>::second);
    if (known == std::end(operators))
      throw value_error("\"" + std::string(path_and_operator) + "\": expected a path and =, *= or +=, found \"" +
                        std::string(rest) + "\" after " + std::string(path_and_operator.substr(0, end)) + ".");
    it.how = known->first;
  }
  it.ref = find_value(data, path_and_operator.substr(0, end));
  it.text = value;
  parse_value(it);
  return it;
}

value_assignment parse_assignment(const prevesk_dataset_data_type& data, std::string_view text) {
  const std::size_t equals = text.find('=', end_of_path(text));
  if (equals == text.npos)
    throw value_error("\"" + std::string(text) + "\": expected PATH=VALUE, PATH*=VALUE or PATH+=VALUE.");
  return parse_assignment(data, text.substr(0, equals + 1), text.substr(equals + 1));
}

void refuse_repeated(std::span<const value_assignment> assignments) {
  std::set<std::string_view> paths;
  for (const value_assignment& it : assignments)
    if (!paths.insert(it.ref.path).second) throw value_error(it.ref.path + " is set more than once.");
}

void apply(prevesk_dataset_data_type& data, const value_assignment& it, const assignment_rules& rules) {
  const value_row& row = *it.ref.row;
  if (row.in_use && !row.in_use(data, it.ref.at))
    throw value_error(it.ref.path + " (" + name_of_value(data, it.ref) +
                      ") is not used by this data set, so that setting it would have no effect. Switch it on first.");
  if (row.kind == path_kind::series) return apply_to_series(data, it, rules);
  const double result = row.kind == path_kind::date ? it.number : result_of(it, row.read(data, it.ref.at));
  if (row.range && !rules.beyond_limits) {
    const auto [minimum, maximum] = row.range(data, it.ref.at);
    const std::string finding = range_finding(result, minimum, maximum);
    if (!finding.empty())
      throw value_error(it.ref.path + " (" + name_of_value(data, it.ref) + "): " + finding +
                        " Use --beyond-limits to set it all the same.");
  }
  row.write(data, it.ref.at, result);
}

} // namespace vesk
