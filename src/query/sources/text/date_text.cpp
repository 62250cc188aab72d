#include "query/sources/text/date_text.h"

#include "query/sources/table_source.h"

#include <cmath>

namespace vesk {

namespace {

constexpr double milliseconds_per_day = 86400000.0;

bool is_digit(char c) {
  return c >= '0' && c <= '9';
}

bool is_letter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

// Takes up to `most` digits off the front; -1 if there are none.
int take_number(std::string_view& text, std::size_t most) {
  std::size_t digits = 0;
  int number = 0;
  while (digits < most && digits < text.size() && is_digit(text[digits])) number = number * 10 + (text[digits++] - '0');
  text.remove_prefix(digits);
  return digits ? number : -1;
}

bool take(std::string_view& text, char c) {
  if (text.empty() || text.front() != c) return false;
  text.remove_prefix(1);
  return true;
}

void take_blanks(std::string_view& text) {
  while (take(text, ' ')) {
  }
}

// Takes a time off the front of `text`, as milliseconds of the day; -1 if there is none.
double take_time(std::string_view& text) {
  int hour = take_number(text, 2);
  if (hour < 0 || !take(text, ':')) return -1;
  const int minute = take_number(text, 2);
  int second = 0;
  double fraction = 0;
  if (take(text, ':')) {
    second = take_number(text, 2);
    if (take(text, '.') || take(text, ','))
      for (double digit = 100; !text.empty() && is_digit(text.front()); digit /= 10, text.remove_prefix(1))
        fraction += digit * (text.front() - '0');
  }
  take_blanks(text);
  if (text.size() >= 2 && (text[1] | 0x20) == 'm' && ((text[0] | 0x20) == 'a' || (text[0] | 0x20) == 'p')) {
    if (hour < 1 || hour > 12) return -1;
    hour = hour % 12 + ((text[0] | 0x20) == 'p' ? 12 : 0);
    text.remove_prefix(2);
  }
  // 24:00 is the end of the day.
  if (minute < 0 || minute > 59 || second < 0 || second > 59 || hour > 24) return -1;
  const double result = ((hour * 60 + minute) * 60 + second) * 1000.0 + std::round(fraction);
  return result <= milliseconds_per_day ? result : -1;
}

// Removes the time zone that may follow a time.
void take_zone(std::string_view& text) {
  if (take(text, 'Z') || text.size() < 3 || (text[0] != '+' && text[0] != '-')) return;
  std::string_view rest = text.substr(1);
  if (take_number(rest, 2) < 0) return;
  take(rest, ':');
  take_number(rest, 2);
  text = rest;
}

// The year for two or four digits; -1 for any other number of digits.
int full_year(int year, std::size_t digits) {
  if (digits == 2) return year + (year < 50 ? 2000 : 1900);
  return digits == 4 ? year : -1;
}

struct three_numbers {
  int first, second, third;
  std::size_t first_digits, third_digits;
};

std::optional<three_numbers> take_three(std::string_view& text, bool dots) {
  three_numbers n{};
  std::size_t before = text.size();
  n.first = take_number(text, 4);
  n.first_digits = before - text.size();
  if (text.empty()) return std::nullopt;
  const char mark = text.front();
  if (dots ? mark != '.' : mark != '/' && mark != '-') return std::nullopt;
  take(text, mark);
  n.second = take_number(text, 2);
  if (!take(text, mark)) return std::nullopt;
  before = text.size();
  n.third = take_number(text, 4);
  n.third_digits = before - text.size();
  if (n.first < 0 || n.second < 0 || n.third < 0) return std::nullopt;
  return n;
}

// Takes a year of two or four digits off the front; -1 if there is none.
int take_year(std::string_view& text) {
  const std::size_t before = text.size();
  const int year = take_number(text, 4);
  return full_year(year, before - text.size());
}

// Takes the name of a month off the front and returns its number; 0 if there is none.
int take_month(std::string_view& text) {
  static constexpr std::string_view names[] = {"january", "february", "march",     "april",   "may",      "june",
                                               "july",    "august",   "september", "october", "november", "december"};
  std::size_t letters = 0;
  while (letters < text.size() && is_letter(text[letters])) ++letters;
  const std::string_view written = text.substr(0, letters);
  for (int month = 1; letters >= 3 && month <= 12; ++month) {
    const std::string_view name = names[month - 1];
    if ((written[0] | 0x20) != name[0] || !equal_ignoring_case(written, name.substr(0, letters))) continue;
    if (letters != 3 && letters != name.size() && !(month == 9 && letters == 4)) return 0;
    text.remove_prefix(letters);
    take(text, '.');
    return month;
  }
  return 0;
}

std::optional<std::int32_t> take_named_date(std::string_view& text) {
  int day = take_number(text, 2), month = 0;
  if (day < 0) {
    month = take_month(text);
    take_blanks(text);
    day = take_number(text, 2);
    take(text, ',');
    if (month == 0 || !take(text, ' ')) return std::nullopt;
    take_blanks(text);
  } else {
    const char mark = text.empty() ? '\0' : text.front();
    if (mark != ' ' && mark != '-' && mark != '/') return std::nullopt;
    take(text, mark);
    month = take_month(text);
    if (!take(text, mark)) return std::nullopt;
  }
  const int year = take_year(text);
  return year < 0 ? std::nullopt : serial_day(year, month, day);
}

std::optional<std::int32_t> take_date(std::string_view& text, date_form form) {
  if (form == date_form::month_name) return take_named_date(text);
  const auto n = take_three(text, form == date_form::day_dot);
  if (!n) return std::nullopt;
  if (form == date_form::iso)
    return n->first_digits == 4 && n->third_digits <= 2 ? serial_day(n->first, n->second, n->third) : std::nullopt;
  const int year = full_year(n->third, n->third_digits);
  if (n->first_digits > 2 || year < 0) return std::nullopt;
  return form == date_form::month_first ? serial_day(year, n->first, n->second) : serial_day(year, n->second, n->first);
}

} // namespace

double to_milliseconds(double serial) {
  const double day = std::floor(serial);
  const double milliseconds = std::round((serial - day) * milliseconds_per_day);
  return milliseconds < milliseconds_per_day ? date_time_number(day, milliseconds) : day + 1;
}

std::optional<std::int32_t> serial_day(int year, int month, int day) {
  constexpr int lengths[] = {31, 29, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  if (year < 1 || year > 9999 || month < 1 || month > 12 || day < 1 || day > lengths[month - 1]) return std::nullopt;
  const bool leap = year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
  if (month == 2 && day == 29 && !leap) return std::nullopt;
  // Years begin in March, so that the leap day is the last; the days up to the month follow from a formula of the
  // Gregorian calendar: any five months from March have 153 days.
  const int from_march = (month + 9) % 12, march_year = month > 2 ? year : year - 1;
  const int days = march_year * 365 + march_year / 4 - march_year / 100 + march_year / 400;
  constexpr int first_to_origin = 693899; // from 1 March of the year 0 to 30 December 1899
  return days + (153 * from_march + 2) / 5 + day - 1 - first_to_origin;
}

std::optional<date_reading> read_date(std::string_view text, date_form form) {
  double day = 0;
  if (form != date_form::time_only) {
    const auto date = take_date(text, form);
    if (!date) return std::nullopt;
    day = *date;
    const bool marked = take(text, ',') || take(text, 'T');
    const std::size_t before = text.size();
    take_blanks(text);
    if (text.empty()) return marked ? std::nullopt : std::optional<date_reading>({day, false});
    if (!marked && text.size() == before) return std::nullopt;
  }
  const double milliseconds = take_time(text);
  if (milliseconds < 0) return std::nullopt;
  take_zone(text);
  if (!text.empty()) return std::nullopt;
  return date_reading{date_time_number(day, milliseconds), true};
}

} // namespace vesk
