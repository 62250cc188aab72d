// Moments and the points of a time series, and their conversion to date-time numbers.
//
// A date-time number counts days since 30 December 1899, its fraction is the time of day. Day numbers of a moment
// count from 1 January 1600.
#pragma once

#include "dataset/shared_array.h"

#include <cstdint>
#include <limits>
#include <string>

namespace vesk {

// Day number of 30 December 1899, the origin of date-time numbers.
inline constexpr std::int32_t date_time_origin = 109571;

// The calendar reaches from day 0 to 31 December 3999.
inline constexpr std::int32_t last_calendar_day = 876581;

// Whether a date-time number is finite and a moment of the calendar.
bool in_calendar(double date_time);

// Step from one second of the day to the next, as a date-time number.
inline constexpr double seconds_per_day = 86400.0;

class moment_type {
public:
  std::int32_t date; // day number, day 0 is 1 January 1600
  std::int32_t time; // seconds since midnight

  // The thread's seed when it is set, otherwise the machine's current date and time.
  moment_type();
  constexpr moment_type(std::int32_t d, std::int32_t t) : date(d), time(t) {}

  // The moment of a date-time number, to the nearest second; a time that rounds up to midnight is 0:00:00 of the next
  // day. A number outside the range of moments (not finite, or beyond 32-bit day numbers) gives the nearest possible
  // one.
  static moment_type from_date_time(double date_time);

  // The moment as a date-time number minus `base`, in days.
  double days_since(double base) const { return date_time() - base; }

  // The inverse: sets the moment from the date-time number days + base.
  void set_from_days(double days, double base) { *this = from_date_time(days + base); }

  // The moment as a date-time number.
  double date_time() const { return (static_cast<double>(date) - date_time_origin) + time / seconds_per_day; }

  friend constexpr bool operator<(const moment_type& a, const moment_type& b) {
    return a.date != b.date ? a.date < b.date : a.time < b.time;
  }
  friend constexpr bool operator==(const moment_type&, const moment_type&) = default;

  // The date and time of new moments. Each thread has its own: a job begins with its data set's start and moves it
  // independently.
  static thread_local std::int32_t moment_seed_date;
  static thread_local std::int32_t moment_seed_time;
  static thread_local bool moment_seed_is_set;

  // Stores the two values. They are used only if `moment_seed_is_set`, which the caller sets.
  static void set_seed(std::int32_t date, std::int32_t time);
};

// A point of a series: a value at a moment. 16 bytes, in memory as in the data file.
template <class T>
class moment_value_type : public moment_type {
public:
  T value{};

  moment_value_type() = default;
  constexpr moment_value_type(moment_type moment, T v) : moment_type(moment), value(v) {}

  friend constexpr bool operator==(const moment_value_type&, const moment_value_type&) = default;
};

using moment_value_pair_type = moment_value_type<double>;
static_assert(sizeof(moment_value_pair_type) == 16);

using point_list = shared_array<moment_value_pair_type>; // in ascending moment order, as left by its editor or import

// The value that marks an unset cursor.
inline constexpr double cursor_unset = std::numeric_limits<double>::max();

// The machine's current local date and time as a date-time number.
double current_date_time();

struct calendar_date {
  int year;
  unsigned month; // 1 to 12
  unsigned day;   // 1 to 31
};
struct clock_time {
  int hour, minute, second;
};

// The date of a day number, and back. For an impossible date (month 13, 30 February) `day_number` counts on from the
// first of the month, and months count on into other years, so that nothing is refused.
calendar_date date_of(std::int32_t day_number);
std::int32_t day_number(int year, int month, int day);

clock_time time_of(std::int32_t seconds);

// "M/D/YYYY h:mm:ss", 24 hours.
std::string date_time_text(const moment_type& moment);

} // namespace vesk
