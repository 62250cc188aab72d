#include "dataset/moment.h"

#include <cmath>
#include <gtest/gtest.h>
#include <thread>

namespace vesk {
namespace {

constexpr std::int32_t year_2000 = 146097; // day number of 1 January 2000, date-time number 36526

TEST(Moment, DateTimeNumbersRoundToTheNearestSecondAndCarryIntoTheNextDay) {
  struct {
    double date_time;
    moment_type moment;
  } const cases[] = {
      {36526.0, {year_2000, 0}},
      {36526.5, {year_2000, 43200}},
      {36526 + 86398.6 / 86400, {year_2000, 86399}},
      {36526 + 86399.4 / 86400, {year_2000, 86399}},
      {36526 + 86399.6 / 86400, {year_2000 + 1, 0}},
      {0.0, {109571, 0}},
      {-0.25, {109570, 64800}}, // a day number and a fraction counted forward, before the origin too
      {1e300, {2147483647, 0}},
      {-1e300, {-2147483647 - 1, 0}},
      {-std::numeric_limits<double>::infinity(), {-2147483647 - 1, 0}},
      {std::nan(""), {0, 0}},
  };
  for (const auto& c : cases) EXPECT_EQ(moment_type::from_date_time(c.date_time), c.moment) << c.date_time;
}

TEST(Moment, DaysSinceABaseAndBackGiveTheSameMoment) {
  EXPECT_EQ(moment_type(year_2000 + 1, 43200).days_since(36526), 1.5);
  moment_type moment(0, 0);
  moment.set_from_days(-1.25, 36526);
  EXPECT_EQ(moment, moment_type(year_2000 - 2, 64800));
  for (const double base : {0.0, 36526.0, 36526.3, -400000.7})
    for (std::int32_t second = 0; second < 86400; second += 7) {
      const moment_type original(year_2000 + second, second);
      moment.set_from_days(original.days_since(base), base);
      ASSERT_EQ(moment, original) << base << " " << second;
    }
}

TEST(Moment, OrdersByDateThenTime) {
  EXPECT_LT(moment_type(1, 82800), moment_type(2, 3600));
  EXPECT_LT(moment_type(1, 1), moment_type(1, 2));
  EXPECT_FALSE(moment_type(1, 1) < moment_type(1, 1));
  EXPECT_FALSE(moment_type(2, 0) < moment_type(1, 9));
}

TEST(Moment, NewOnesStartAtTheSeedOfTheirThreadOnceItIsSet) {
  const auto seconds = [](const moment_type& m) { return m.date_time() * 86400; };
  std::thread([&] {
    moment_type::set_seed(5, 6); // alone it changes nothing
    EXPECT_NEAR(seconds(moment_type()), current_date_time() * 86400, 2);
    moment_type::moment_seed_is_set = true;
    EXPECT_EQ(moment_type(), moment_type(5, 6));
    EXPECT_EQ(moment_value_pair_type(), moment_value_pair_type(moment_type(5, 6), 0.0));
    std::thread([&] { EXPECT_NEAR(seconds(moment_type()), current_date_time() * 86400, 2); }).join();
  }).join();
}

TEST(Moment, CalendarKnowsLeapYearsAndCountsImpossibleDatesOn) {
  EXPECT_EQ(day_number(1600, 1, 1), 0);
  EXPECT_EQ(day_number(1900, 1, 1), 109573);
  EXPECT_EQ(day_number(2000, 1, 1), year_2000);
  EXPECT_EQ(day_number(2001, 2, 30), day_number(2001, 3, 2));
  EXPECT_EQ(day_number(2000, 13, 1), year_2000 + 366);
  EXPECT_EQ(day_number(2000, 0, 1), year_2000 - 31);
  EXPECT_EQ(date_time_text({year_2000 + 59, 3661}), "2/29/2000 1:01:01");
  EXPECT_EQ(date_time_text({109573 + 59, 86399}), "3/1/1900 23:59:59");
  EXPECT_EQ(date_time_text({-1, 0}), "12/31/1599 0:00:00");
}

} // namespace
} // namespace vesk
