// Dates and times of day on the Gregorian calendar, without time zone.
#ifndef REFERENCE_ENGINE_OUTPUT_MOMENT_H
#define REFERENCE_ENGINE_OUTPUT_MOMENT_H

#include <cstdint>
#include <string>

namespace reference_engine {

constexpr const char *first_date = "1600-01-01", *last_date = "3999-12-31"; // of the front end's calendar

struct Moment {
  std::int32_t month = 1, day = 1, year = 1970;
  std::int32_t hour = 0, minute = 0, second = 0;

  bool is_valid() const;
  // Whether the time `days` later is within first_date to last_date, the dates that the front end can hold. False
  // unless `days` is finite.
  bool reaches(double days) const;
  Moment after(double days) const; // to the nearest second; only if reaches(days)
  double days_since(const Moment& other) const;
  // "2007-10-01T06:30:00", with `between` between date and time.
  std::string iso(char between = 'T') const;
};

} // namespace reference_engine

#endif
