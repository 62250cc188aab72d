#include "charts/cell.h"

#include "charts/numeric_picture.h"
#include "dataset/any_case.h"
#include "dataset/moment.h"
#include "platform/counted.h"
#include "platform/letter_case.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <limits>

namespace vesk {

namespace {

constexpr double first_second_of_next_day = 86400;

std::string_view trimmed(std::string_view text) {
  const auto is_blank = [](char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; };
  while (!text.empty() && is_blank(text.front())) text.remove_prefix(1);
  while (!text.empty() && is_blank(text.back())) text.remove_suffix(1);
  return text;
}

std::string quoted(std::string_view text) {
  constexpr std::size_t most = 60;
  std::string shown(text.substr(0, most));
  while (shown.size() < text.size() && !shown.empty() && (static_cast<unsigned char>(shown.back()) & 0xC0) == 0x80)
    shown.pop_back();
  return "\"" + shown + (shown.size() < text.size() ? "...\"" : "\"");
}

// Formats digits by hand, since a copied series has millions of them.
char* put_padded(char* to, std::uint32_t number, int digits) {
  for (int i = digits; i-- > 0; number /= 10) to[i] = static_cast<char>('0' + number % 10);
  return to + digits;
}

double number_of(const cell_value& value) {
  const double* number = std::get_if<double>(&value);
  return number ? *number : 0;
}

// Dates and times.

std::int32_t day_of(const cell_value& value) {
  constexpr double limit = 1e7; // the limit of the calendar code: about 27,000 years
  const double day = number_of(value);
  return std::isfinite(day) ? static_cast<std::int32_t>(std::clamp(day, -limit, limit)) : 0;
}

void append_date(std::string& text, const cell_value& value, bool iso) {
  const calendar_date date = date_of(day_of(value));
  if (date.year < 0 || date.year > 9999) {
    text += "year " + std::to_string(date.year); // from a damaged file
    return;
  }
  std::array<char, 10> digits;
  char* to = digits.data();
  if (iso) {
    to = put_padded(to, static_cast<std::uint32_t>(date.year), 4);
    *to++ = '-';
  }
  to = put_padded(to, date.month, 2);
  *to++ = iso ? '-' : '/';
  to = put_padded(to, date.day, 2);
  if (!iso) {
    *to++ = '/';
    put_padded(to, static_cast<std::uint32_t>(date.year), 4);
  }
  text.append(digits.data(), digits.size());
}

void append_time(std::string& text, const cell_value& value, bool always_seconds) {
  const double second = number_of(value);
  const auto seconds =
      second >= 0 ? static_cast<std::uint32_t>(std::min(second, first_second_of_next_day - 1.0)) : 0; // also 0 for NaN
  std::array<char, 8> digits;
  char* to = put_padded(digits.data(), seconds / 3600, 2);
  *to++ = ':';
  to = put_padded(to, seconds / 60 % 60, 2);
  if (seconds % 60 != 0 || always_seconds) {
    *to++ = ':';
    to = put_padded(to, seconds % 60, 2);
  }
  text.append(digits.data(), to);
}

// Reads "12", "/", "30" ... from the start of a text.
class field_reader {
public:
  explicit field_reader(std::string_view text) : rest_(text) {}

  // A number of one to `most` digits; -1 if there is none.
  int number(std::size_t most, std::size_t* digits = nullptr) {
    std::size_t length = 0;
    int result = 0;
    for (; length < rest_.size() && rest_[length] >= '0' && rest_[length] <= '9'; ++length) {
      if (length == most) return -1;
      result = result * 10 + (rest_[length] - '0');
    }
    if (length == 0) return -1;
    rest_.remove_prefix(length);
    if (digits) *digits = length;
    return result;
  }
  bool skip(char c) {
    if (rest_.empty() || rest_.front() != c) return false;
    rest_.remove_prefix(1);
    return true;
  }
  bool at_end() const { return rest_.empty(); }

private:
  std::string_view rest_;
};

struct date_fields {
  int year = -1, month = -1, day = -1;
};

// Month, day and year in either form; the year is -1 if the text has neither.
date_fields split_date(std::string_view text) {
  date_fields date;
  std::size_t digits = 0;
  field_reader american(text);
  date.month = american.number(2);
  if (american.skip('/')) {
    date.day = american.number(2);
    if (american.skip('/')) date.year = american.number(4, &digits);
    if (!american.at_end() || (digits != 2 && digits != 4)) return {};
    if (digits == 2) date.year += 2000;
    return date;
  }
  field_reader iso(text);
  date.year = iso.number(4, &digits);
  if (digits != 4 || !iso.skip('-')) return {};
  date.month = iso.number(2);
  if (!iso.skip('-')) return {};
  date.day = iso.number(2);
  return iso.at_end() ? date : date_fields{};
}

cell_entry refused(std::string reason) {
  return {{}, std::move(reason)};
}

cell_entry read_date(std::string_view text) {
  const date_fields date = split_date(text);
  if (date.year < 0 || date.month < 0 || date.day < 0)
    return refused("expected a date as MM/DD/YYYY or YYYY-MM-DD, found " + quoted(text));
  const std::chrono::year_month_day calendar{std::chrono::year{date.year},
                                             std::chrono::month{static_cast<unsigned>(date.month)},
                                             std::chrono::day{static_cast<unsigned>(date.day)}};
  if (!calendar.ok()) return refused(quoted(text) + " is not a day of the calendar");
  const std::int32_t day = day_number(date.year, date.month, date.day);
  if (day < 0 || day > last_day) return refused(quoted(text) + " is outside the years 1600 to 3999");
  return {static_cast<double>(day), {}};
}

enum class half_day { none, morning, afternoon };

// Takes "AM" or "PM" off a time, as spreadsheets write it in some countries.
half_day take_half_day(std::string_view& time) {
  if (time.size() < 3 || !equal_in_any_case(time.substr(time.size() - 1), "m")) return half_day::none;
  const std::string_view mark = time.substr(time.size() - 2);
  const bool morning = equal_in_any_case(mark, "am");
  if (!morning && !equal_in_any_case(mark, "pm")) return half_day::none;
  time = trimmed(time.substr(0, time.size() - 2));
  return morning ? half_day::morning : half_day::afternoon;
}

// 12:30 AM is half past midnight, 12:30 PM half past noon. -1: not a valid hour.
int hour_of_day(int hour, half_day half) {
  if (half == half_day::none) return hour;
  if (hour < 1 || hour > 12) return -1;
  return hour % 12 + (half == half_day::afternoon ? 12 : 0);
}

cell_entry read_time(std::string_view text) {
  std::string_view clock = text;
  const half_day half = take_half_day(clock);
  field_reader fields(clock);
  const int hour = hour_of_day(fields.number(2), half);
  const int minute = fields.skip(':') ? fields.number(2) : -1;
  const int second = fields.skip(':') ? fields.number(2) : 0;
  if (hour < 0 || minute < 0 || second < 0 || !fields.at_end())
    return refused("expected a time as HH:MM or HH:MM:SS, found " + quoted(text));
  if (hour > 23 || minute > 59 || second > 59) return refused(quoted(text) + " is not a time of day");
  return {static_cast<double>(hour * 3600 + minute * 60 + second), {}};
}

// Numbers.

// The power of ten that numbers must stay below to fit in the picture; infinity if all fit. Its digits are counted by
// hand, since a pasted or computed column has millions of numbers.
double limit_of(std::string_view picture) {
  constexpr double none = std::numeric_limits<double>::infinity();
  if (picture.size() <= 1) return none;
  double limit = 1;
  bool is_before_point = true;
  for (const char c : picture) {
    if (c == '.')
      is_before_point = false;
    else if (c != '#')
      return none;
    else if (is_before_point)
      limit *= 10;
  }
  return limit > 1 ? limit : none;
}

cell_entry fitted_number(const cell_type& type, double value) {
  if (const double limit = limit_of(type.picture); !(std::abs(value) < limit)) {
    const std::size_t digits = std::min(type.picture.find('.'), type.picture.size());
    return refused("the number has more than " + counted(digits, "digit") + " before the point");
  }
  return {value, {}};
}

void append_exact_number(std::string& text, double value) {
  std::array<char, 32> digits;
  if (std::isfinite(value))
    text.append(digits.data(), std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr);
  else
    text += number_in_picture(value, {});
}

std::string exact_number(double value) {
  std::string text;
  append_exact_number(text, value);
  return text;
}

// Removes the unit from a duration and returns its length in days; 1 if there is none.
double take_unit(std::string_view& text) {
  struct unit {
    std::string_view name;
    double days;
  };
  constexpr unit units[] = {{"min", 1.0 / 1440}, {"d", 1}, {"h", 1.0 / 24}, {"s", 1 / seconds_per_day}};
  for (const unit& one : units)
    if (text.size() > one.name.size() && equal_in_any_case(text.substr(text.size() - one.name.size()), one.name)) {
      text = trimmed(text.substr(0, text.size() - one.name.size()));
      return one.days;
    }
  return 1;
}

cell_entry read_number(const cell_type& type, std::string_view text) {
  const double unit = type.is_duration ? take_unit(text) : 1;
  if (text.size() > longest_number_entry) return refused("a number has at most 32 characters");
  if (text.find(',') != std::string_view::npos) return refused(quoted(text) + " has a comma; use a decimal point");
  std::string_view digits = text;
  if (digits.size() > 1 && digits.front() == '+' && digits[1] != '-') digits.remove_prefix(1);
  double value = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
  if (error == std::errc::result_out_of_range) return refused(quoted(text) + " is too large or too small a number");
  if (error != std::errc{} || end != digits.data() + digits.size())
    return refused("expected a number, found " + quoted(text));
  if (!std::isfinite(value)) return refused("expected a finite number, found " + quoted(text));
  return fitted_number(type, value * unit);
}

cell_entry read_check(std::string_view text) {
  for (const auto* yes : {"1", "true", "yes"})
    if (equal_in_any_case(text, yes)) return {1.0, {}};
  for (const auto* no : {"0", "false", "no"})
    if (equal_in_any_case(text, no)) return {0.0, {}};
  return refused("expected 1 or 0, true or false, yes or no, found " + quoted(text));
}

cell_entry read_item(const cell_type& type, std::string_view text) {
  if (const auto item = type.items->find(text)) return {static_cast<double>(*item), {}};
  const std::string ambiguity = type.items->ambiguity(text);
  return refused(quoted(text) + (ambiguity.empty() ? " is not in the list" : ambiguity));
}

// Limited to the cell's number of characters and to 255 bytes, cut at a whole character. Tabs, line ends and control
// characters become blanks.
cell_entry read_text(const cell_type& type, std::string_view text) {
  constexpr std::size_t most_bytes = 255;
  const auto continues = [](char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; };
  std::string result;
  std::size_t characters = 0;
  for (std::size_t i = 0; i < text.size();) {
    std::size_t end = i + 1;
    while (end < text.size() && continues(text[end])) ++end;
    if (characters == type.longest_text || end > most_bytes) break;
    const auto first = static_cast<unsigned char>(text[i]);
    if (first < 0x20 || first == 0x7F)
      result += ' ';
    else
      result += text.substr(i, end - i);
    ++characters;
    i = end;
  }
  return {std::move(result), {}};
}

} // namespace

std::optional<std::size_t> item_list::find(std::string_view wanted) const {
  for (std::size_t i = 0; i < size(); ++i)
    if (equal_names(text(i), wanted)) return i;
  return std::nullopt;
}

std::optional<std::size_t> item_list::item_of(double number) const {
  if (std::floor(number) != number || number < 0 || number >= static_cast<double>(size())) return std::nullopt;
  return static_cast<std::size_t>(number);
}

namespace {

std::string item_text(const item_list& items, double item) {
  if (!(item >= 0 && item < 1e15)) return {};
  const auto position = static_cast<std::size_t>(item);
  return position < items.size() ? items.text(position) : items.text_beyond(position);
}

void append_quoted_if_needed(std::string& text, const std::string& field) {
  if (!field.starts_with('"') && field.find_first_of("\t\r\n") == std::string::npos) {
    text += field;
    return;
  }
  text += '"';
  for (const char c : field) text += c == '"' ? std::string("\"\"") : std::string(1, c);
  text += '"';
}

} // namespace

std::string cell_text(const cell_type& type, const cell_value& value) {
  if (std::holds_alternative<std::monostate>(value)) return {};
  std::string text;
  switch (type.kind) {
  case cell_kind::text:
    if (const std::string* stored = std::get_if<std::string>(&value)) text = *stored;
    break;
  case cell_kind::date: append_date(text, value, false); break;
  case cell_kind::time: append_time(text, value, false); break;
  case cell_kind::number: text = number_in_picture(number_of(value), type.picture); break;
  case cell_kind::check: text = number_of(value) != 0 ? "1" : "0"; break;
  case cell_kind::combo: text = item_text(*type.items, number_of(value));
  }
  return text;
}

std::string entry_text(const cell_type& type, const cell_value& value) {
  const double* number = std::get_if<double>(&value);
  return number && type.kind == cell_kind::number ? exact_number(*number) : cell_text(type, value);
}

void append_clipboard_text(std::string& text, const cell_type& type, const cell_value& value) {
  if (std::holds_alternative<std::monostate>(value)) return;
  switch (type.kind) {
  case cell_kind::date: return append_date(text, value, true);
  case cell_kind::time: return append_time(text, value, true);
  case cell_kind::number: return append_exact_number(text, number_of(value));
  default: return append_quoted_if_needed(text, cell_text(type, value));
  }
}

cell_entry read_entry(const cell_type& type, std::string_view text) {
  if (type.kind == cell_kind::text) return read_text(type, text);
  text = trimmed(text);
  switch (type.kind) {
  case cell_kind::date: return read_date(text);
  case cell_kind::time: return read_time(text);
  case cell_kind::number: return read_number(type, text);
  case cell_kind::check: return read_check(text);
  default: return read_item(type, text);
  }
}

cell_entry computed_entry(const cell_type& type, double result) {
  if (!std::isfinite(result)) return refused("the result is not a finite number");
  const auto found = [&] { return ", found " + exact_number(result); };
  switch (type.kind) {
  case cell_kind::number: return fitted_number(type, result);
  case cell_kind::check: return {result != 0 ? 1.0 : 0.0, {}};
  case cell_kind::date: {
    const double day = result + date_time_origin;
    if (std::floor(result) != result) return refused("expected a whole number of days for a date" + found());
    if (day < 0 || day > last_day) return refused("expected a date in the years 1600 to 3999" + found());
    return {day, {}};
  }
  case cell_kind::time: {
    if (result < 0 || result >= 1)
      return refused("expected a time as a fraction of a day, from 0 to below 1" + found());
    const double second = std::min(std::round(result * seconds_per_day), first_second_of_next_day - 1.0);
    return {second, {}};
  }
  case cell_kind::combo:
    if (const auto item = type.items->item_of(result)) return {static_cast<double>(*item), {}};
    return refused("the list has no item of this number" + found());
  case cell_kind::text: break;
  }
  return {exact_number(result), {}};
}

double expression_number(const cell_type& type, const cell_value& value) {
  const double number = number_of(value);
  if (type.kind == cell_kind::date) return number - date_time_origin;
  if (type.kind == cell_kind::time) return number / seconds_per_day;
  if (type.kind == cell_kind::combo && number >= 0) return type.items->number_of(static_cast<std::size_t>(number));
  return number;
}

} // namespace vesk
