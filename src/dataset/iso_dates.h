// Dates and times of day as ISO 8601 texts, "2011-10-01" and "06:30:00", for the JSON form.
//
// The data file counts days in two ways. Points of series have whole days since 1 January 1600 and seconds of the day;
// the data set's own dates are date-time numbers (days since 30 December 1899), with fractions of a day stored
// separately. A text is printed only if it reads back to the same bits; a function that returns nothing means "print
// the number".
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vesk {

// Days since 1 January 1600; texts for the years 1 to 9999. A text must be a day of the calendar.
std::optional<std::string> iso_date(std::int32_t day);
std::optional<std::int32_t> day_of_iso_date(std::string_view text);

// Seconds since midnight, below 86400. Seconds are optional in a text.
std::optional<std::string> iso_time(std::int32_t seconds);
std::optional<std::int32_t> seconds_of_iso_time(std::string_view text);

// The same for the data set's own dates and times, which are doubles.
std::optional<std::string> iso_date_of_number(double date_time);
std::optional<double> number_of_iso_date(std::string_view text);
std::optional<std::string> iso_time_of_fraction(double fraction);
std::optional<double> fraction_of_iso_time(std::string_view text);

enum class date_part { none, date, time };

// The meaning of the data set's double with this name.
constexpr date_part date_part_of(std::string_view member) {
  for (const std::string_view of : {"seed", "end", "skip"}) {
    if (!member.starts_with(of)) continue;
    if (member.substr(of.size()) == "_date") return date_part::date;
    if (member.substr(of.size()) == "_time") return date_part::time;
  }
  return date_part::none;
}

} // namespace vesk
