// Times of the CF conventions, "days since 2000-01-01 00:00:00", as date-time numbers.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace vesk {

// Why times cannot be shown: it continues a sentence that begins with the file's name, and has no full stop.
class cf_time_exception : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

// Date-time numbers (days since 30 December 1899, to the millisecond) of the times that `units` and `calendar`
// describe. Units have a fixed length, from milliseconds to weeks. Calendars: that of everyday life, under its names
// standard, gregorian and proleptic_gregorian or without one, and noleap or 365_day, whose days all exist. An offset
// from UTC in the units is applied, so that the result is in UTC then. Throws cf_time_exception, also where the times
// are not numbers in ascending order or lie outside 1600 to 3999.
std::vector<double> date_times(std::vector<double> values, const std::string& units, const std::string& calendar);

} // namespace vesk
