#include "query/sources/text/column_form.h"

#include "query/sources/text/number_text.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace vesk {

namespace {

bool is_digit(char c) {
  return c >= '0' && c <= '9';
}

bool is_letter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool is_code(std::string_view text) {
  return text.size() > 1 && text[0] == '0' && std::all_of(text.begin(), text.end(), is_digit);
}

// The size in bytes of a no-break space at this end of a text: two in UTF-8, or three for the narrow one; one in
// Windows-1252. 0 if there is none.
std::size_t no_break_space_at_front(std::string_view text) {
  if (text.starts_with("\xc2\xa0")) return 2;
  if (text.starts_with("\xe2\x80\xaf")) return 3;
  return text.starts_with('\xa0') ? 1 : 0;
}
std::size_t no_break_space_at_back(std::string_view text) {
  if (text.ends_with("\xc2\xa0")) return 2;
  if (text.ends_with("\xe2\x80\xaf")) return 3;
  const bool is_alone = text.size() < 2 || static_cast<unsigned char>(text[text.size() - 2]) < 0x80; // not part of "à"
  return text.ends_with('\xa0') && is_alone ? 1 : 0;
}

// Removes no-break spaces at both ends, which some programs add to align numbers.
std::string_view trimmed(std::string_view text) {
  while (const std::size_t size = no_break_space_at_front(text)) text.remove_prefix(size);
  while (const std::size_t size = no_break_space_at_back(text)) text.remove_suffix(size);
  return text;
}

// For a text that does not match the form of its column.
table_value no_value(std::string_view text) {
  return marks_missing(text) ? table_value() : table_value::of_text(text);
}

} // namespace

bool marks_missing(std::string_view text) {
  constexpr std::string_view marks[] = {"na", "n/a", "nan", "null", "none", "-", "--", "---", "*", "?", "."};
  // Spreadsheet errors, such as #DIV/0!, and marks for a number that was too wide.
  if (text.front() == '#') return true;
  return text.size() <= 4 && std::any_of(std::begin(marks), std::end(marks),
                                         [&](std::string_view mark) { return equal_ignoring_case(mark, text); });
}

table_value column_form::read(std::string_view text) const {
  if (type != field_type::string) text = trimmed(text);
  if (text.empty()) return {};
  switch (type) {
  case field_type::string: return table_value::of_text(text);
  case field_type::integer: {
    std::int64_t integer = 0;
    const char* const end = text.data() + text.size();
    if (const auto read = std::from_chars(text.data() + (text[0] == '+'), end, integer);
        read.ec == std::errc() && read.ptr == end)
      return table_value::of_integer(integer);
    [[fallthrough]];
  }
  case field_type::floating: {
    const auto number = read_number(text, decimal_comma);
    return number ? table_value::of_number(*number) : no_value(text);
  }
  default: {
    const auto date = read_date(text, dates);
    return date ? table_value::of_date_time(date->serial) : no_value(text);
  }
  }
}

void column_votes::add(std::string_view text) {
  text = trimmed(text);
  if (text.empty()) return;
  const char first = text.front(), last = text.back();
  const bool may_be_value = is_digit(first) || first == '-' || first == '+' || first == '.' || first == ',';
  // A date that begins with a month ends in a year or a time.
  const bool may_be_month = !may_be_value && is_letter(first) && (is_digit(last) || (last | 0x20) == 'm');
  if ((may_be_value && (add_date(text) || add_number(text))) || (may_be_month && add_date(text))) {
    ++votes_;
    codes_ += is_code(text);
  } else if (!marks_missing(text)) {
    ++votes_;
  }
}

bool column_votes::add_number(std::string_view text) {
  if (const auto number = read_number(text, false)) {
    if (text.find(',') != text.npos) { // "1,234" is ambiguous
      ++point_;
      comma_ += read_number(text, true).has_value();
    } else if (text.find_first_of(".eE") == text.npos) {
      ++whole_;
      large_ += std::abs(*number) > 2147483647.0;
    } else {
      ++point_;
    }
    return true;
  }
  if (!read_number(text, true)) return false;
  ++comma_;
  return true;
}

bool column_votes::add_date(std::string_view text) {
  const auto add_form = [&](date_form form) {
    const auto date = read_date(text, form);
    if (!date) return false;
    ++dates_[static_cast<std::size_t>(form)];
    with_time_[static_cast<std::size_t>(form)] += date->has_time;
    return true;
  };
  // The first separator and its position leave one or two possible forms.
  const auto mark = static_cast<std::size_t>(std::find_if_not(text.begin(), text.end(), is_digit) - text.begin());
  if (is_letter(text[0])) return add_form(date_form::month_name);
  if (mark == 0) return false;
  if (mark > 4 || mark == text.size()) return false;
  if (mark + 1 < text.size() && is_letter(text[mark + 1])) return add_form(date_form::month_name);
  if (mark == 4) return add_form(date_form::iso);
  if (text[mark] == '.') return add_form(date_form::day_dot);
  if (text[mark] == ':') return add_form(date_form::time_only);
  const bool month_first = add_form(date_form::month_first);
  return add_form(date_form::day_first) || month_first;
}

void column_votes::add(const table_value& value) {
  switch (value.kind()) {
  case value_kind::null: return;
  case value_kind::text: return add(value.text());
  case value_kind::date_time: {
    const bool has_time = value.number() != std::floor(value.number());
    ++votes_;
    if (has_time && value.number() < 1) { // a time without a date
      ++dates_[static_cast<std::size_t>(date_form::time_only)];
    } else {
      ++dates_as_such_;
      as_such_with_time_ += has_time;
    }
    return;
  }
  default:
    ++votes_;
    if (value.number() == std::floor(value.number()) && std::abs(value.number()) < 9e15) {
      ++whole_;
      large_ += std::abs(value.number()) > 2147483647.0;
    } else {
      ++point_;
    }
  }
}

column_form column_votes::settle(bool prefer_comma) const {
  column_form result;
  if (votes_ == 0 || codes_ > 0) return result;
  const auto most = static_cast<std::size_t>(std::max_element(dates_.begin(), dates_.end()) - dates_.begin());
  result.dates = static_cast<date_form>(most);
  const std::uint64_t numbers = whole_ + std::max(point_, comma_);
  if ((dates_[most] + dates_as_such_) * 2 > votes_) {
    const bool with_time = with_time_[most] + as_such_with_time_ > 0;
    if (result.dates == date_form::time_only && dates_[most] > dates_as_such_)
      result.type = field_type::time;
    else
      result.type = with_time ? field_type::date_time : field_type::date;
  } else if (numbers * 4 >= votes_ * 3) {
    result.type = point_ + comma_ + large_ == 0 ? field_type::integer : field_type::floating;
    result.decimal_comma = comma_ > point_ || (prefer_comma && comma_ > 0 && comma_ == point_);
  }
  return result;
}

} // namespace vesk
