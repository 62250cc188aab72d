// Times of the CF conventions, "days since 2000-01-01 00:00:00", as date-time numbers.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace vesk {

// Why times cannot be shown: continues a sentence that starts with the file's name; no full stop.
class cf_time_exception : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

// Converts times with `units` and `calendar` to date-time numbers (days since 30 December 1899, to the millisecond).
// Units have a fixed length, from milliseconds to weeks. Calendars: standard, gregorian, proleptic_gregorian or none
// given, and noleap or 365_day, whose days all exist in the standard one. An offset from UTC in the units is applied,
// so that the result is in UTC. Throws cf_time_exception, also if the times are not ascending numbers or lie outside
// 1600 to 3999.
std::vector<double> date_times(std::vector<double> values, const std::string& units, const std::string& calendar);

} // namespace vesk
