#include "results/cf_time.h"

#include "dataset/moment.h"
#include "platform/letter_case.h"
#include "query/sources/text/date_text.h"

#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <optional>

namespace vesk {

namespace {

struct unit {
  double days;
  std::string_view names; // in capital letters, with a blank before and after each
};
constexpr unit units_of_time[] = {{7, " WEEK WEEKS "},
                                  {1, " DAY DAYS D "},
                                  {1.0 / 24, " HOUR HOURS HR HRS H "},
                                  {1.0 / 1440, " MINUTE MINUTES MIN MINS "},
                                  {1.0 / 86400, " SECOND SECONDS SEC SECS S "},
                                  {1.0 / 86400e3, " MILLISECOND MILLISECONDS MSEC MSECS MS "}};
constexpr std::string_view without_length = " MONTH MONTHS YEAR YEARS YR YRS COMMON_YEAR COMMON_YEARS ";

bool is_among(std::string_view names, const std::string& name) {
  return name.find(' ') == name.npos && names.find(" " + name + " ") != names.npos;
}

enum class calendar_kind { proleptic, mixed, no_leap };

calendar_kind calendar_named(const std::string& name) {
  const std::string known = upper_case(name);
  if (known.empty() || known == "STANDARD" || known == "GREGORIAN") return calendar_kind::mixed;
  if (known == "PROLEPTIC_GREGORIAN") return calendar_kind::proleptic;
  if (known == "NOLEAP" || known == "365_DAY") return calendar_kind::no_leap;
  throw cf_time_exception("has times of the calendar \"" + name +
                          "\", whose dates are not those of everyday life; convert them to the calendar \"standard\"");
}

// Reads a text from the start.
class text_reader {
public:
  explicit text_reader(std::string_view text) : left_(text) {}

  std::optional<int> number() {
    int value = 0;
    const auto read = std::from_chars(left_.data(), left_.data() + left_.size(), value);
    if (read.ec != std::errc() || left_.front() == '-') return {};
    left_.remove_prefix(static_cast<std::size_t>(read.ptr - left_.data()));
    return value;
  }
  std::optional<double> decimal() {
    double value = 0;
    const auto read = std::from_chars(left_.data(), left_.data() + left_.size(), value, std::chars_format::fixed);
    if (read.ec != std::errc() || left_.front() == '-') return {};
    left_.remove_prefix(static_cast<std::size_t>(read.ptr - left_.data()));
    return value;
  }
  bool take(char c) {
    if (left_.empty() || left_.front() != c) return false;
    left_.remove_prefix(1);
    return true;
  }
  void skip_blanks() {
    while (take(' ')) {
    }
  }
  std::string_view left() const { return left_; }

private:
  std::string_view left_;
};

struct date {
  int year = 0, month = 0, day = 0;
};
struct reference { // the date and time that times are counted from
  date on;
  double day_part = 0; // fraction of a day, minus the offset from UTC
};

std::optional<double> time_of_day(text_reader& text) {
  const auto hour = text.number();
  int minute = 0;
  double second = 0;
  if (!hour || *hour > 24) return {};
  if (text.take(':')) {
    const auto read = text.number();
    if (!read || *read > 59) return {};
    minute = *read;
    if (text.take(':')) {
      const auto seconds = text.decimal();
      if (!seconds || *seconds >= 61) return {};
      second = *seconds;
    }
  }
  return (*hour * 3600 + minute * 60 + second) / seconds_per_day;
}

// "Z", "UTC", "+1", "-05:30" or "+0530", in days.
std::optional<double> utc_offset(std::string_view text) {
  const std::string name = upper_case(text);
  if (name.empty() || name == "Z" || name == "UTC" || name == "GMT") return 0;
  text_reader reader(text);
  const bool is_minus = reader.take('-');
  if (!is_minus) reader.take('+');
  const auto first = reader.number();
  if (!first) return {};
  int hours = *first, minutes = 0;
  if (reader.take(':')) {
    const auto read = reader.number();
    if (!read) return {};
    minutes = *read;
  } else if (hours > 24) {
    minutes = hours % 100, hours /= 100;
  }
  if (!reader.left().empty() || hours > 24 || minutes > 59) return {};
  return (is_minus ? -1 : 1) * (hours * 60 + minutes) / 1440.0;
}

std::optional<reference> read_reference(std::string_view text) {
  text_reader reader(text);
  reader.skip_blanks();
  const auto year = reader.number();
  if (!year || *year > 9999 || !reader.take('-')) return {};
  const auto month = reader.number();
  if (!month || !reader.take('-')) return {};
  const auto day = reader.number();
  if (!day || *month < 1 || *month > 12 || *day < 1 || *day > 31) return {};
  reference result{{*year, *month, *day}};
  const bool has_time = reader.take('T') || !reader.left().empty();
  reader.skip_blanks();
  if (has_time && !reader.left().empty()) {
    const auto time = time_of_day(reader);
    if (!time) return {};
    reader.skip_blanks();
    const auto offset = utc_offset(reader.left());
    if (!offset) return {};
    result.day_part = *time - *offset;
  }
  return result;
}

// Days of the years before a date and of its months, in a year without a leap day.
constexpr std::array<int, 13> days_before_month = {0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334, 365};
constexpr int days_of_year = 365;

double no_leap_day(const date& on) {
  return on.year * double{days_of_year} + days_before_month[static_cast<std::size_t>(on.month - 1)] + on.day - 1;
}

double from_no_leap_day(double number) {
  const double whole = std::floor(number);
  const double year = std::floor(whole / days_of_year);
  const int in_year = static_cast<int>(whole - year * days_of_year);
  int month = 1;
  while (days_before_month[static_cast<std::size_t>(month)] <= in_year) ++month;
  const int day = in_year - days_before_month[static_cast<std::size_t>(month - 1)] + 1;
  return day_number(static_cast<int>(year), month, day) - date_time_origin + (number - whole);
}

// A date of the Julian calendar, which applies before 15 October 1582 in a mixed one. Computed from the number of days
// since 1 March of the year 0, as in Meeus, Astronomical Algorithms, chapter 7.
double julian_calendar_day(const date& on) {
  const int year = on.month > 2 ? on.year : on.year - 1, month = on.month > 2 ? on.month : on.month + 12;
  constexpr double julian_day_of_origin = 2415018.5; // of 30 December 1899
  return std::floor(365.25 * (year + 4716)) + std::floor(30.6001 * (month + 1)) + on.day - 1524.5 -
         julian_day_of_origin;
}

double reference_day(const date& on, calendar_kind calendar) {
  const bool is_julian = on.year * 10000 + on.month * 100 + on.day < 15821015;
  if (calendar == calendar_kind::mixed && is_julian) return julian_calendar_day(on);
  const auto day = std::chrono::sys_days(std::chrono::year(on.year) / on.month / on.day); // accepts any year
  const auto origin = std::chrono::sys_days(std::chrono::year(1899) / 12 / 30);
  return static_cast<double>((day - origin).count());
}

bool exists(const date& on, calendar_kind calendar) {
  using namespace std::chrono;
  if (calendar == calendar_kind::no_leap && on.month == 2 && on.day == 29) return false;
  if (calendar == calendar_kind::mixed && on.year < 1583) return true; // the leap days differ
  return year_month_day(year(on.year), month(static_cast<unsigned>(on.month)), day(static_cast<unsigned>(on.day))).ok();
}

double unit_named(const std::string& name) {
  const std::string capital = upper_case(name);
  for (const unit& it : units_of_time)
    if (is_among(it.names, capital)) return it.days;
  if (is_among(without_length, capital))
    throw cf_time_exception("counts its times in " + name +
                            ", which differ in length; convert them to days, hours or seconds");
  throw cf_time_exception("counts its times in \"" + name + "\", which is not a unit of time");
}

void check_times(const std::vector<double>& times) {
  for (std::size_t i = 0; i < times.size(); ++i) {
    const auto fault = [i](const char* what) {
      throw cf_time_exception("has a time that cannot be shown: number " + std::to_string(i + 1) + " " + what);
    };
    if (!std::isfinite(times[i])) fault("is not a number");
    if (!in_calendar(times[i])) fault("lies outside the years 1600 to 3999");
    if (i > 0 && !(times[i] > times[i - 1])) fault("is not after the one before it");
  }
}

} // namespace

std::vector<double> date_times(std::vector<double> values, const std::string& units, const std::string& calendar) {
  constexpr std::string_view between = " since ";
  const std::size_t at = units.find(between);
  if (at == units.npos)
    throw cf_time_exception((units.empty() ? "has times without a unit" : "has times in \"" + units + '"') +
                            " instead of, for instance, \"days since 2000-01-01 00:00:00\"");
  const double unit_days = unit_named(units.substr(0, at));
  const calendar_kind kind = calendar_named(calendar);
  const auto from = read_reference(std::string_view(units).substr(at + between.size()));
  if (!from || !exists(from->on, kind))
    throw cf_time_exception("counts its times from a date that cannot be read: \"" + units + "\"");
  const bool no_leap = kind == calendar_kind::no_leap;
  const double base = (no_leap ? no_leap_day(from->on) : reference_day(from->on, kind)) + from->day_part;
  constexpr double beyond_any_calendar = 1e7; // days; keeps conversions to whole numbers safe
  for (double& value : values) {
    const double days = base + value * unit_days;
    if (!std::isfinite(days))
      value = days;
    else if (std::abs(days) > beyond_any_calendar)
      value = days < 0 ? -beyond_any_calendar : beyond_any_calendar;
    else
      value = to_milliseconds(no_leap ? from_no_leap_day(days) : days);
  }
  check_times(values);
  return values;
}

} // namespace vesk
