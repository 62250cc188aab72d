#include "tools/results_output.h"

#include "dataset/text_encoding.h"
#include "platform/single_precision.h"

#include <nlohmann/json.hpp>

#include <array>
#include <charconv>
#include <cmath>

namespace vesk {

namespace {

using nlohmann::ordered_json;

std::string number_text(double value) {
  if (std::isnan(value)) return {};
  std::array<char, 64> text{};
  return {text.data(), std::to_chars(text.data(), text.data() + text.size(), value).ptr};
}

ordered_json number_json(double value) {
  return std::isnan(value) ? ordered_json() : ordered_json(value);
}

// One that a spreadsheet would take for a formula gets an apostrophe, as in the engine's tables.
std::string as_text(const std::string& field) {
  return field.empty() || std::string_view("=+-@\t\r").find(field.front()) == std::string_view::npos ? field
                                                                                                     : "'" + field;
}

class csv_rows {
public:
  csv_rows& text(const std::string& value) { return add(table_field(value)); }
  csv_rows& number(double value) { return add(number_text(value)); }
  csv_rows& number(std::size_t value) { return add(std::to_string(value)); }
  void end_row() {
    rows_ += '\n';
    is_first_ = true;
  }
  std::string take() { return std::move(rows_); }

private:
  csv_rows& add(const std::string& field) {
    if (!is_first_) rows_ += ',';
    is_first_ = false;
    rows_ += field;
    return *this;
  }

  std::string rows_;
  bool is_first_ = true;
};

// All but ASCII as \u..., since a control character of a name could command a terminal.
std::string json_text(const ordered_json& value) {
  return value.dump(1, ' ', true, ordered_json::error_handler_t::replace) + "\n";
}

ordered_json json_of(const results_variable& it) {
  return {{"name", it.name},
          {"long_name", it.long_name},
          {"units", it.units},
          {"standard_name", it.standard_name},
          {"cell_methods", it.cell_methods}};
}

std::vector<double> values_of(const results_file& results, std::size_t variable, position_range times,
                              position_range segments) {
  std::vector<double> values = results.slice(variable, times, segments);
  for (double& value : values) value = as_printed_in_single(value);
  return values;
}

ordered_json json_of(const std::vector<double>& values) {
  ordered_json list = ordered_json::array();
  for (const double value : values) list.push_back(number_json(value));
  return list;
}

} // namespace

std::string table_field(const std::string& text) {
  std::string field = as_text(printable_text(text));
  if (field.find_first_of(",\"\r\n") == field.npos) return field;
  std::string out = "\"";
  for (const char c : field) {
    if (c == '"') out += '"';
    out += c;
  }
  return out + '"';
}

std::string listing(const results_file& results, output_format format) {
  const auto& times = results.times();
  if (format == output_format::json) {
    ordered_json segments = ordered_json::array(), variables = ordered_json::array();
    for (std::size_t i = 0; i < results.segments(); ++i) {
      segments.push_back({{"number", i + 1}, {"name", results.segment_name(i)}});
      if (!results.lengths().empty())
        segments.back()["length"] = number_json(as_printed_in_single(results.lengths()[i]));
    }
    for (const results_variable& it : results.variables()) variables.push_back(json_of(it));
    return json_text(
        {{"file", shown_text(results.path().string())},
         {"title", results.title()},
         {"source", results.source()},
         {"times",
          {{"count", times.size()}, {"first", text_of_moment(times.front())}, {"last", text_of_moment(times.back())}}},
         {"variables", variables},
         {"segments", segments}});
  }
  csv_rows rows;
  for (const char* column : {"item", "number", "name", "long_name", "units", "length_m"}) rows.text(column);
  rows.end_row();
  const auto add_time = [&](std::size_t i) {
    rows.text("time").number(i + 1).text(text_of_moment(times[i])).text("").text("").text("").end_row();
  };
  add_time(0);
  if (times.size() > 1) add_time(times.size() - 1);
  for (std::size_t i = 0; const results_variable& it : results.variables())
    rows.text("variable").number(++i).text(it.name).text(it.long_name).text(it.units).text("").end_row();
  for (std::size_t i = 0; i < results.segments(); ++i) {
    rows.text("segment").number(i + 1).text(results.segment_name(i)).text("").text("");
    rows.number(results.lengths().empty() ? std::nan("") : as_printed_in_single(results.lengths()[i])).end_row();
  }
  return rows.take();
}

std::string series_text(const results_file& results, const chosen_values& chosen, output_format format) {
  struct column {
    std::size_t variable, segment;
    std::vector<double> values;
  };
  std::vector<column> columns;
  for (const std::size_t variable : chosen.variables)
    for (const std::size_t segment : chosen.segments)
      columns.push_back({variable, segment, values_of(results, variable, chosen.times, {segment, 1})});
  const auto time = [&](std::size_t i) { return text_of_moment(results.times()[chosen.times.first + i]); };
  if (format == output_format::json) {
    ordered_json times = ordered_json::array(), series = ordered_json::array();
    for (std::size_t i = 0; i < chosen.times.count; ++i) times.push_back(time(i));
    for (const column& it : columns)
      series.push_back({{"variable", results.variables()[it.variable].name},
                        {"units", results.variables()[it.variable].units},
                        {"segment", results.segment_name(it.segment)},
                        {"values", json_of(it.values)}});
    return json_text({{"file", shown_text(results.path().string())}, {"times", times}, {"series", series}});
  }
  csv_rows rows;
  rows.text("time");
  for (const column& it : columns) {
    const std::string segment = results.segment_name(it.segment), variable = results.variables()[it.variable].name;
    rows.text(chosen.variables.size() == 1 ? segment : (variable + ": ").append(segment));
  }
  rows.end_row();
  for (std::size_t i = 0; i < chosen.times.count; ++i) {
    rows.text(time(i));
    for (const column& it : columns) rows.number(it.values[i]);
    rows.end_row();
  }
  return rows.take();
}

std::string profile_text(const results_file& results, const chosen_values& chosen, output_format format) {
  const std::string time = text_of_moment(results.times()[chosen.times.first]);
  std::vector<std::vector<double>> columns;
  for (const std::size_t variable : chosen.variables)
    columns.push_back(values_of(results, variable, {chosen.times.first, 1}, {0, results.segments()}));
  if (format == output_format::json) {
    ordered_json segments = ordered_json::array(), variables = ordered_json::array();
    for (std::size_t i = 0; i < results.segments(); ++i) segments.push_back(results.segment_name(i));
    for (std::size_t k = 0; k < columns.size(); ++k)
      variables.push_back({{"variable", results.variables()[chosen.variables[k]].name},
                           {"units", results.variables()[chosen.variables[k]].units},
                           {"values", json_of(columns[k])}});
    return json_text({{"file", shown_text(results.path().string())},
                      {"time", time},
                      {"segments", segments},
                      {"variables", variables}});
  }
  csv_rows rows;
  rows.text("time").text("number").text("segment");
  for (const std::size_t variable : chosen.variables) rows.text(results.variables()[variable].name);
  rows.end_row();
  for (std::size_t i = 0; i < results.segments(); ++i) {
    rows.text(time).number(i + 1).text(results.segment_name(i));
    for (const auto& values : columns) rows.number(values[i]);
    rows.end_row();
  }
  return rows.take();
}

namespace {

ordered_json json_of(const period_scores& period) {
  ordered_json object = {{"period", period.period}, {"count", period.scores.count}};
  for (const score_column& column : score_columns) {
    const auto& value = period.scores.*column.value;
    object[column.name] = value ? ordered_json(*value) : ordered_json();
  }
  return object;
}

ordered_json json_of(const results_file& results, const comparison& it) {
  ordered_json estimates = ordered_json::array();
  for (const estimate_scores& estimate : it.estimates) {
    ordered_json periods = ordered_json::array();
    for (const period_scores& period : estimate.periods) periods.push_back(json_of(period));
    estimates.push_back({{"name", estimate.name}, {"scores", periods}});
  }
  return {{"name", it.series.name},
          {"variable", results.variables()[it.variable].name},
          {"units", results.variables()[it.variable].units},
          {"segment", results.segment_name(it.segment)},
          {"measured", it.measured},
          {"pairs", it.paired.pairs.size()},
          {"below_limit", it.paired.below_limit},
          {"without_model", it.paired.without_model},
          {"rows_without_value", it.without_value},
          {"estimates", estimates}};
}

} // namespace

std::string agreement_text(const results_file& results, const std::vector<comparison>& comparisons,
                           output_format format) {
  if (format == output_format::json) {
    ordered_json series = ordered_json::array();
    for (const comparison& it : comparisons) series.push_back(json_of(results, it));
    return json_text({{"file", shown_text(results.path().string())}, {"series", series}});
  }
  csv_rows rows;
  for (const char* column : {"series", "variable", "segment", "estimate", "period", "count"}) rows.text(column);
  for (const score_column& column : score_columns) rows.text(column.name);
  rows.end_row();
  for (const comparison& it : comparisons)
    for (const estimate_scores& estimate : it.estimates)
      for (const period_scores& period : estimate.periods) {
        rows.text(it.series.name).text(results.variables()[it.variable].name).text(results.segment_name(it.segment));
        rows.text(estimate.name).text(period.period).number(period.scores.count);
        for (const score_column& column : score_columns)
          rows.number((period.scores.*column.value).value_or(std::nan("")));
        rows.end_row();
      }
  return rows.take();
}

} // namespace vesk
