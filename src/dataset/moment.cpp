#include "dataset/moment.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <ctime>

namespace vesk {

namespace {
using std::chrono::days;
using std::chrono::sys_days;
using std::chrono::year_month_day;

constexpr sys_days first_day = std::chrono::year{1600} / std::chrono::January / 1;
static_assert((sys_days{std::chrono::year{1899} / std::chrono::December / 30} - first_day).count() == date_time_origin);
static_assert((sys_days{std::chrono::year{3999} / std::chrono::December / 31} - first_day).count() ==
              last_calendar_day);
} // namespace

thread_local std::int32_t moment_type::moment_seed_date = 0;
thread_local std::int32_t moment_type::moment_seed_time = 0;
thread_local bool moment_type::moment_seed_is_set = false;

moment_type::moment_type() : date(moment_seed_date), time(moment_seed_time) {
  if (!moment_seed_is_set) *this = from_date_time(current_date_time());
}

void moment_type::set_seed(std::int32_t date, std::int32_t time) {
  moment_seed_date = date;
  moment_seed_time = time;
}

moment_type moment_type::from_date_time(double date_time) {
  constexpr double lowest = std::numeric_limits<std::int32_t>::min();
  constexpr double highest = std::numeric_limits<std::int32_t>::max() - 1.0; // leaves room for the carry
  if (std::isnan(date_time)) return {0, 0};
  const double whole = std::floor(date_time);
  const double day = whole + date_time_origin;
  if (day < lowest) return {std::numeric_limits<std::int32_t>::min(), 0};
  if (day > highest) return {std::numeric_limits<std::int32_t>::max(), 0};
  moment_type result(static_cast<std::int32_t>(day),
                     static_cast<std::int32_t>(std::lround((date_time - whole) * seconds_per_day)));
  if (result.time == 86400) result = {result.date + 1, 0};
  return result;
}

bool in_calendar(double date_time) {
  const std::int32_t day = moment_type::from_date_time(date_time).date;
  return std::isfinite(date_time) && day >= 0 && day <= last_calendar_day;
}

double current_date_time() {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  const std::int32_t date = day_number(local.tm_year + 1900, local.tm_mon + 1, local.tm_mday);
  return moment_type(date, local.tm_hour * 3600 + local.tm_min * 60 + local.tm_sec).date_time();
}

calendar_date date_of(std::int32_t day_number) {
  const year_month_day date{first_day + days{day_number}};
  return {static_cast<int>(date.year()), static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day())};
}

std::int32_t day_number(int year, int month, int day) {
  year = std::clamp(year, static_cast<int>(std::chrono::year::min()) + 1000,
                    static_cast<int>(std::chrono::year::max()) - 1000);
  month = std::clamp(month, -1200, 1200);
  day = std::clamp(day, -36500, 36500);
  const auto first_of_month =
      std::chrono::year_month{std::chrono::year{year}, std::chrono::January} + std::chrono::months{month - 1};
  return static_cast<std::int32_t>((sys_days{first_of_month / 1} + days{day - 1} - first_day).count());
}

clock_time time_of(std::int32_t seconds) {
  return {seconds / 3600, seconds / 60 % 60, seconds % 60};
}

std::string date_time_text(const moment_type& moment) {
  const calendar_date d = date_of(moment.date);
  const clock_time t = time_of(moment.time);
  char text[64];
  std::snprintf(text, sizeof text, "%u/%u/%d %d:%02d:%02d", d.month, d.day, d.year, t.hour, t.minute, t.second);
  return text;
}

} // namespace vesk
