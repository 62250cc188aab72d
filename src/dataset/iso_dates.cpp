#include "dataset/iso_dates.h"

#include "dataset/moment.h"

#include <bit>
#include <charconv>
#include <chrono>
#include <cstdio>

namespace vesk {

namespace {

constexpr std::int32_t seconds_of_day = 86400;

// The number in the `length` digits at `begin`; -1 if these are not all digits.
int digits_at(std::string_view text, std::size_t begin, std::size_t length) {
  const std::string_view digits = text.substr(begin, length);
  if (digits.size() != length || digits.find_first_not_of("0123456789") != digits.npos) return -1;
  int number = 0;
  std::from_chars(digits.data(), digits.data() + digits.size(), number);
  return number;
}

bool same_bits(double a, double b) {
  return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
}

} // namespace

std::optional<std::string> iso_date(std::int32_t day) {
  static const std::int32_t first = day_number(1, 1, 1), last = day_number(9999, 12, 31);
  if (day < first || day > last) return {};
  const calendar_date date = date_of(day);
  char text[40];
  std::snprintf(text, sizeof text, "%04d-%02u-%02u", date.year, date.month, date.day);
  return text;
}

std::optional<std::int32_t> day_of_iso_date(std::string_view text) {
  const int year = digits_at(text, 0, 4);
  if (year < 1 || text.size() != 10 || text[4] != '-' || text[7] != '-') return {};
  const int month = digits_at(text, 5, 2), day = digits_at(text, 8, 2);
  if (month < 0 || day < 0) return {};
  const std::chrono::year_month_day date(std::chrono::year{year}, std::chrono::month(static_cast<unsigned>(month)),
                                         std::chrono::day(static_cast<unsigned>(day)));
  if (!date.ok()) return {};
  return day_number(year, month, day);
}

std::optional<std::string> iso_time(std::int32_t seconds) {
  if (seconds < 0 || seconds >= seconds_of_day) return {};
  const clock_time time = time_of(seconds);
  char text[40];
  std::snprintf(text, sizeof text, "%02d:%02d:%02d", time.hour, time.minute, time.second);
  return text;
}

std::optional<std::int32_t> seconds_of_iso_time(std::string_view text) {
  if ((text.size() != 5 && text.size() != 8) || text[2] != ':' || (text.size() == 8 && text[5] != ':')) return {};
  const int hour = digits_at(text, 0, 2), minute = digits_at(text, 3, 2);
  const int second = text.size() == 8 ? digits_at(text, 6, 2) : 0;
  if (hour < 0 || hour > 23 || minute < 0 || minute > 59 || second < 0 || second > 59) return {};
  return hour * 3600 + minute * 60 + second;
}

std::optional<std::string> iso_date_of_number(double date_time) {
  const moment_type moment = moment_type::from_date_time(date_time);
  auto text = iso_date(moment.date);
  if (!text || !same_bits(*number_of_iso_date(*text), date_time)) return {};
  return text;
}

std::optional<double> number_of_iso_date(std::string_view text) {
  const auto day = day_of_iso_date(text);
  if (!day) return {};
  return moment_type(*day, 0).date_time();
}

std::optional<std::string> iso_time_of_fraction(double fraction) {
  auto text = iso_time(moment_type::from_date_time(fraction).time);
  if (!text || !same_bits(*fraction_of_iso_time(*text), fraction)) return {};
  return text;
}

std::optional<double> fraction_of_iso_time(std::string_view text) {
  const auto seconds = seconds_of_iso_time(text);
  if (!seconds) return {};
  return *seconds / seconds_per_day;
}

} // namespace vesk
