#include "viewer/measured_form.h"

#include "dataset/series.h"

#include <charconv>
#include <cmath>
#include <stdexcept>

namespace vesk {

namespace {

std::string text_of(const std::optional<double>& value) {
  if (!value) return {};
  char digits[32];
  const auto end = std::to_chars(digits, digits + sizeof digits, *value);
  return {digits, end.ptr};
}

// A finite number; nothing for any other text.
std::optional<double> number_in(const std::string& text) {
  double value = 0;
  const auto read = std::from_chars(text.data(), text.data() + text.size(), value);
  if (read.ec != std::errc() || read.ptr != text.data() + text.size() || !std::isfinite(value)) return std::nullopt;
  return value;
}

std::string text_of_time(const std::optional<double>& time) {
  return time ? text_of_moment(*time) : std::string();
}

std::string fault_of_time(const char* what, const std::string& text) {
  if (text.empty() || moment_of_text(text)) return {};
  return std::string(what) + ": expected a date such as 2011-10-01, found \"" + text + "\".";
}

} // namespace

query_host::query_host(user_questions& questions, std::filesystem::path folder)
    : questions_(questions), folder_(std::move(folder)) {
  data_.time_functions.push_back({});
}

import_query_descriptor query_host::query() const {
  return *find_series(data_, series())->query;
}

void query_host::set_query(const import_query_descriptor& query) {
  edit_series(data_, series()).query.edit() = query;
}

TFillCalculateForm& query_host::fill_calculate_form() {
  throw std::logic_error("The import dialog has no Fill/Calc.");
}

measured_form measured_form::of(const measured_series& series) {
  return {.name = series.name,
          .variable = series.variable,
          .segment = series.segment,
          .units = series.units,
          .factor = text_of(series.factor),
          .gap = text_of(series.rules.gap),
          .from = text_of_time(series.from),
          .to = text_of_time(series.to),
          .kind = static_cast<std::size_t>(series.rules.kind),
          .way = static_cast<std::size_t>(series.rules.way),
          .query = series.query};
}

std::string measured_form::message() const {
  if (query.file_name.empty()) return "Choose the table that has the measured values.";
  if (query.date_time_field.empty() || query.value_field.empty())
    return "Choose the fields of the table that have the times and the values.";
  if (variable.empty()) return "Choose the variable that was measured.";
  if (segment.empty()) return "Choose the segment in which it was measured.";
  if (!factor.empty() && (!number_in(factor) || *number_in(factor) == 0))
    return "Factor: expected a number other than 0, found \"" + factor + "\".";
  if (!gap.empty() && (!number_in(gap) || *number_in(gap) <= 0))
    return "Gap: expected a number of days above 0, found \"" + gap + "\".";
  if (const std::string fault = fault_of_time("From", from); !fault.empty()) return fault;
  if (const std::string fault = fault_of_time("To", to); !fault.empty()) return fault;
  if (!from.empty() && !to.empty() && *moment_of_text(from) > *moment_of_text(to)) return "From is after To.";
  return {};
}

measured_series measured_form::series() const {
  return {
      .name = name,
      .variable = variable,
      .segment = segment,
      .units = units,
      .factor = number_in(factor),
      .rules = {.kind = static_cast<measured_kind>(kind), .way = static_cast<pairing_way>(way), .gap = number_in(gap)},
      .from = from.empty() ? std::nullopt : moment_of_text(from),
      .to = to.empty() ? std::nullopt : moment_of_text(to),
      .query = query};
}

std::string measured_form::table_text() const {
  if (query.file_name.empty()) return "no table yet";
  return query.file_name + ", field " + (query.value_field.empty() ? "not chosen" : query.value_field);
}

} // namespace vesk
