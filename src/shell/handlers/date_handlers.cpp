#include "shell/handlers/special_handlers.h"

#include <cmath>

namespace vesk::handlers {

namespace {

// A date and a time stored in the data set as two numbers.
struct date_and_time {
  double& date;
  double& time;

  moment_type moment() const { return moment_type::from_date_time(date + time); }

  // If the time rounds up to midnight, or is outside its day, the engine reads a date other than the stored one. Before
  // either number is changed, both are set to what the engine reads.
  void settle() const {
    const moment_type now = moment();
    const double date_read = static_cast<double>(now.date) - date_time_origin;
    if (date_read == date) return;
    date = date_read;
    time = now.time / seconds_per_day;
  }
};

date_and_time seed(prevesk_dataset_data_type& data) {
  return {data.seed_date, data.seed_time};
}
date_and_time skip(prevesk_dataset_data_type& data) {
  return {data.skip_date, data.skip_time};
}

void date_parts(const shell_interface& shell, date_and_time at, std::int32_t& month, std::int32_t& day,
                std::int32_t& year) {
  if (!shell.is_get) {
    at.settle();
    at.date = static_cast<double>(day_number(year, month, day)) - date_time_origin;
    return;
  }
  const calendar_date date = date_of(at.moment().date);
  month = static_cast<std::int32_t>(date.month);
  day = static_cast<std::int32_t>(date.day);
  year = date.year;
}

void time_parts(const shell_interface& shell, date_and_time at, std::int32_t& hour, std::int32_t& minute,
                std::int32_t& second) {
  if (!shell.is_get) {
    at.settle();
    at.time = (hour * 3600.0 + minute * 60.0 + second) / seconds_per_day;
    return;
  }
  const clock_time time = time_of(at.moment().time);
  hour = time.hour;
  minute = time.minute;
  second = time.second;
}

} // namespace

void seed_date(shell_interface& shell, std::int32_t& month, std::int32_t& day, std::int32_t& year) {
  date_parts(shell, seed(shell.data_set()), month, day, year);
  if (!shell.is_get) shell.data_set().apply_seed();
}

void seed_time(shell_interface& shell, std::int32_t& hour, std::int32_t& minute, std::int32_t& second) {
  time_parts(shell, seed(shell.data_set()), hour, minute, second);
  if (!shell.is_get) shell.data_set().apply_seed();
}

void hydro_skip_date(shell_interface& shell, std::int32_t& month, std::int32_t& day, std::int32_t& year) {
  date_parts(shell, skip(shell.data_set()), month, day, year);
}

void hydro_skip_time(shell_interface& shell, std::int32_t& hour, std::int32_t& minute, std::int32_t& second) {
  time_parts(shell, skip(shell.data_set()), hour, minute, second);
}

void hydro_skip_julian(shell_interface& shell, float& days) {
  const auto& data = shell.data_set();
  days = static_cast<float>(data.skip_date + data.skip_time - data.start_date_time());
}

void end_julian(shell_interface& shell, float& days) {
  auto& data = shell.data_set();
  if (shell.is_get) {
    days = static_cast<float>(data.end_date_time() - data.start_date_time());
    return;
  }
  const double end = data.start_date_time() + static_cast<double>(days);
  if (!std::isfinite(end)) return shell.warn("days is not a number");
  data.end_date = std::floor(end);
  data.end_time = end - data.end_date;
}

} // namespace vesk::handlers
