// Dates and times, as numbers and as texts.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace vesk {

// A date-time number from days since 30 December 1899 and milliseconds of the day. All readers use this or
// `to_milliseconds`, so that equal moments are equal numbers.
constexpr double date_time_number(double day, double milliseconds) {
  return day + milliseconds / 86400000.0;
}

// A date-time number rounded to the millisecond.
double to_milliseconds(double serial);

// Whether a number is a date-time in the years 1 to 9999. Numbers beyond are not, but may be a date without separators,
// 20110131, or a count of seconds.
constexpr bool is_date_time_number(double serial) {
  constexpr double first_day = -693593, behind_last_day = 2958466;
  return serial >= first_day && serial < behind_last_day;
}

// The day of a date, counted from 30 December 1899. Nothing unless it is a date in the years 1 to 9999.
std::optional<std::int32_t> serial_day(int year, int month, int day);

// The notation of a date. A time may follow, after a blank, a comma and a blank, or a "T": h:mm, h:mm:ss, fractions of
// a second, AM or PM; a "Z" or an offset from UTC after it is ignored.
enum class date_form : std::uint8_t {
  iso,         // 2011-01-31 or 2011/1/31
  month_first, // 1/31/2011 or 1-31-2011
  day_first,   // 31/1/2011 or 31-1-2011
  day_dot,     // 31.1.2011
  time_only,   // a time without a date; its number is below 1
  month_name   // 31 Jan 2011, 31-JAN-2011, 31/January/2011 or January 31, 2011, in English
};

struct date_reading {
  double serial;
  bool has_time; // something follows the date
};

// The whole text as a date in that notation. Two-digit years mean 1950 to 2049.
std::optional<date_reading> read_date(std::string_view text, date_form form);

} // namespace vesk
