#include "query/value_text.h"

#include "dataset/moment.h"
#include "query/sources/text/date_text.h"

#include <algorithm>
#include <charconv>

namespace vesk {

std::string number_text(double value, field_type type) {
  if (type == field_type::boolean) return value != 0 ? "True" : "False";
  if (type == field_type::date || type == field_type::time || type == field_type::date_time) {
    const moment_type moment = moment_type::from_date_time(value);
    const std::string text = date_time_text(moment);
    const std::size_t blank = text.find(' ');
    if (type == field_type::time && moment.date == date_time_origin) return text.substr(blank + 1);
    return moment.time == 0 ? text.substr(0, blank) : text;
  }
  char text[32];
  return {text, std::to_chars(text, text + sizeof text, value).ptr};
}

std::string integer_text(std::int64_t value, field_type type) {
  return type == field_type::boolean ? number_text(static_cast<double>(value), type) : std::to_string(value);
}

std::string value_text(const table_value& value, field_type type) {
  switch (value.kind()) {
  case value_kind::null: return {};
  case value_kind::integer: return integer_text(value.integer(), type);
  case value_kind::text: return std::string(value.text());
  default: return number_text(value.number(), type);
  }
}

std::optional<double> moment_literal(std::string_view text) {
  for (const date_form form : {date_form::month_first, date_form::iso, date_form::time_only, date_form::month_name})
    if (const auto read = read_date(text, form)) return read->serial;
  return {};
}

bool is_blank(std::string_view text) {
  return text.find_first_not_of(' ') == text.npos;
}

std::string not_of_its_kind(std::string_view text, const char* wanted) {
  constexpr std::size_t most = 60;
  std::size_t size = std::min(text.size(), most);
  if (size < text.size())
    while (size > 0 && (static_cast<unsigned char>(text[size]) & 0xc0) == 0x80) --size; // not inside a character
  std::string shown(text.substr(0, size));
  for (char& c : shown)
    if (static_cast<unsigned char>(c) < ' ') c = ' ';
  return std::string("expected ") + wanted + ", found \"" + shown + (size < text.size() ? "...\"." : "\".");
}

} // namespace vesk
