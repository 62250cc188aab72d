// Dates and times of day on the Gregorian calendar, without time zone.
#ifndef REFERENCE_ENGINE_OUTPUT_MOMENT_H
#define REFERENCE_ENGINE_OUTPUT_MOMENT_H

#include <cstdint>
#include <string>

namespace reference_engine {

struct Moment {
  std::int32_t month = 1, day = 1, year = 1970;
  std::int32_t hour = 0, minute = 0, second = 0;

  bool is_valid() const;
  Moment after(double days) const; // to the nearest second
  double days_since(const Moment& other) const;
  // "2007-10-01T06:30:00" with 'T' between date and time.
  std::string iso(char between = 'T') const;
};

} // namespace reference_engine

#endif
