#include "table_summary.h"

#include "dataset/moment.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <set>

namespace vesk {

namespace {

template <class... Arguments>
std::string printed(const char* format, Arguments... arguments) {
  char text[128];
  std::snprintf(text, sizeof text, format, arguments...);
  return text;
}

struct column {
  std::size_t numbers = 0, dates = 0, texts = 0;
  double least = 0, most = 0, sum = 0;
  std::set<std::string, std::less<>> distinct;

  void add(const table_value& value) {
    if (value.is_null()) return;
    if (value.kind() == value_kind::text) {
      ++texts;
      if (!distinct.contains(value.text())) distinct.emplace(value.text());
      return;
    }
    const double number = value.number();
    least = numbers + dates == 0 ? number : std::min(least, number);
    most = numbers + dates == 0 ? number : std::max(most, number);
    sum += number;
    ++(value.kind() == value_kind::date_time ? dates : numbers);
  }

  // Texts among values of another kind are counted at the end.
  std::string line() const {
    const bool stray = texts > 0 && numbers + dates > 0;
    return values_line() + (stray ? ", " + std::to_string(texts) + " texts among them" : "");
  }

  std::string values_line() const {
    if (texts + numbers + dates == 0) return "all NULL";
    if (numbers && dates) return "of several kinds";
    if (texts && !numbers && !dates) return printed("n=%zu, %zu distinct", texts, distinct.size());
    if (dates)
      return printed("n=%zu ", dates) + shown(table_value::of_date_time(least)) + " .. " +
             shown(table_value::of_date_time(most));
    return printed("n=%zu min=%.6g max=%.6g mean=%.6f", numbers, least, most, sum / static_cast<double>(numbers));
  }
};

} // namespace

std::string shown(const table_value& value) {
  switch (value.kind()) {
  case value_kind::null: return "NULL";
  case value_kind::text: return std::string(value.text());
  case value_kind::integer: return std::to_string(value.integer());
  case value_kind::number: {
    char text[32];
    return {text, std::to_chars(text, text + sizeof text, value.number()).ptr};
  }
  case value_kind::date_time: break;
  }
  const moment_type moment = moment_type::from_date_time(value.number());
  const calendar_date d = date_of(moment.date);
  const clock_time t = time_of(moment.time);
  const std::string time = printed("%02d:%02d:%02d", t.hour, t.minute, t.second);
  if (moment.date == date_time_origin) return time;
  return printed("%04d-%02u-%02u", d.year, d.month, d.day) + (moment.time == 0 ? "" : " " + time);
}

std::string shown_row(row_cursor& row, std::size_t fields) {
  std::string text;
  for (std::size_t i = 0; i < fields; ++i) text += (i ? "; " : "") + shown(row.value(i));
  return text;
}

std::vector<std::string> print(table_source& source, std::size_t table) {
  const std::vector<table_field> fields = source.fields(table);
  std::vector<std::string> lines(1);
  for (const table_field& field : fields)
    lines[0] += (lines[0].empty() ? "" : "; ") + field.name + ":" + std::to_string(static_cast<int>(field.type));
  const auto row = source.rows(table);
  while (row->next()) lines.push_back(shown_row(*row, fields.size()));
  return lines;
}

std::vector<std::string> summary(table_source& source, std::size_t table) {
  const std::vector<table_field> fields = source.fields(table);
  std::vector<column> columns(fields.size());
  const auto row = source.rows(table);
  std::size_t rows = 0;
  std::string first;
  while (row->next()) {
    if (rows++ == 0) first = shown_row(*row, fields.size());
    for (std::size_t i = 0; i < fields.size(); ++i) columns[i].add(row->value(i));
  }
  std::vector<std::string> lines{"rows " + std::to_string(rows), "first " + first};
  for (std::size_t i = 0; i < fields.size(); ++i)
    lines.push_back(fields[i].name + ":" + std::to_string(static_cast<int>(fields[i].type)) + " " + columns[i].line());
  return lines;
}

} // namespace vesk
