#include "output/moment.h"

#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>

namespace reference_engine {

using namespace std::chrono;

namespace {

year_month_day date_of(const Moment& moment) {
  return {std::chrono::year(moment.year), std::chrono::month(static_cast<unsigned>(moment.month)),
          std::chrono::day(static_cast<unsigned>(moment.day))};
}

sys_seconds instant(const Moment& moment) {
  return sys_seconds(sys_days(date_of(moment))) + hours(moment.hour) + minutes(moment.minute) + seconds(moment.second);
}

} // namespace

bool Moment::is_valid() const {
  const auto lies = [](std::int32_t value, std::int32_t end) { return value >= 0 && value < end; };
  return lies(month, 13) && lies(day, 32) && date_of(*this).ok() && lies(hour, 24) && lies(minute, 60) &&
         lies(second, 60);
}

bool Moment::reaches(double days) const {
  constexpr Moment first{.month = 1, .day = 1, .year = 1600}, behind_last{.month = 1, .day = 1, .year = 4000};
  return is_valid() && days >= first.days_since(*this) && days < behind_last.days_since(*this);
}

double Moment::days_since(const Moment& other) const {
  return static_cast<double>((instant(*this) - instant(other)).count()) / 86400.0;
}

Moment Moment::after(double days) const {
  const auto moment = instant(*this) + seconds(std::llround(days * 86400.0));
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
