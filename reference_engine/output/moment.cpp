#include "output/moment.h"

#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>

namespace reference_engine {

using namespace std::chrono;

Moment Moment::after(double days) const {
  const sys_days date = year_month_day{std::chrono::year(year), std::chrono::month(static_cast<unsigned>(month)),
                                       std::chrono::day(static_cast<unsigned>(day))};
  const auto moment =
      sys_seconds(date) + hours(hour) + minutes(minute) + seconds(second) + seconds(std::llround(days * 86400.0));
  const auto midnight = floor<std::chrono::days>(moment);
  const year_month_day on(midnight);
  const hh_mm_ss time(moment - midnight);
  return {static_cast<std::int32_t>(static_cast<unsigned>(on.month())),
          static_cast<std::int32_t>(static_cast<unsigned>(on.day())),
          static_cast<std::int32_t>(static_cast<int>(on.year())),
          static_cast<std::int32_t>(time.hours().count()),
          static_cast<std::int32_t>(time.minutes().count()),
          static_cast<std::int32_t>(time.seconds().count())};
}

std::string Moment::iso(char between) const {
  std::array<char, 80> text{};
  std::snprintf(text.data(), text.size(), "%04d-%02d-%02d%c%02d:%02d:%02d", year, month, day, between, hour, minute,
                second);
  return text.data();
}

} // namespace reference_engine
