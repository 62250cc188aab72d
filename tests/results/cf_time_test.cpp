// Times of other people's files.
#include "results/cf_time.h"
#include "results/measured_series.h"

#include <gmock/gmock.h>

#include <cmath>

namespace vesk {
namespace {

std::string shown(std::vector<double> values, const std::string& units, const std::string& calendar = "") {
  try {
    std::string text;
    for (const double time : date_times(std::move(values), units, calendar)) text += text_of_moment(time) + " ";
    return text;
  } catch (const cf_time_exception& error) {
    return error.what();
  }
}

TEST(CfTime, UnitsOfFixedLengthAreRead) {
  EXPECT_EQ(shown({0, 0.5, 366}, "days since 2011-09-15 12:00:00"),
            "2011-09-15T12:00:00 2011-09-16T00:00:00 2012-09-15T12:00:00 ");
  EXPECT_EQ(shown({1, 25}, "Hours since 2000-2-28 23:30"), "2000-02-29T00:30:00 2000-03-01T00:30:00 ");
  EXPECT_EQ(shown({90}, "minutes since 2000-01-01T00:00:00Z"), "2000-01-01T01:30:00 ");
  EXPECT_EQ(shown({1e9}, "seconds since 1970-01-01"), "2001-09-09T01:46:40 ");
  EXPECT_EQ(shown({2}, "weeks since 2000-01-01 6"), "2000-01-15T06:00:00 ");
  EXPECT_EQ(shown({1500}, "msec since 2000-01-01 00:00:00.5"), "2000-01-01T00:00:02 ");
}

TEST(CfTime, OffsetsFromUtcAreApplied) {
  EXPECT_EQ(shown({0}, "days since 2000-01-01 00:00:00 +1:00"), "1999-12-31T23:00:00 ");
  EXPECT_EQ(shown({0}, "days since 2000-01-01 00:00:00 -0530"), "2000-01-01T05:30:00 ");
  EXPECT_EQ(shown({0}, "days since 2000-01-01 00:00:00 UTC"), "2000-01-01T00:00:00 ");
}

// The values are those of the library cftime: date2num of 1 January 2000 in each calendar.
TEST(CfTime, CalendarsCountTheirOwnDays) {
  EXPECT_EQ(shown({730121}, "days since 0001-01-01", "standard"), "2000-01-01T00:00:00 ");
  EXPECT_EQ(shown({730119}, "days since 0001-01-01", "proleptic_gregorian"), "2000-01-01T00:00:00 ");
  EXPECT_EQ(shown({729635}, "days since 0001-01-01", "noleap"), "2000-01-01T00:00:00 ");
  EXPECT_EQ(shown({58.5, 59.5, 365}, "days since 2000-01-01", "365_day"),
            "2000-02-28T12:00:00 2000-03-01T12:00:00 2001-01-01T00:00:00 ");
}

TEST(CfTime, WhatCannotBeShownIsSaidInOneSentence) {
  EXPECT_EQ(shown({0}, "months since 2000-01-01"),
            "counts its times in months, which differ in length; convert them to days, hours or seconds");
  EXPECT_EQ(shown({0}, "fortnights since 2000-01-01"),
            "counts its times in \"fortnights\", which is not a unit of time");
  EXPECT_EQ(shown({0}, ""), "has times without a unit instead of, for instance, \"days since 2000-01-01 00:00:00\"");
  EXPECT_EQ(shown({0}, "m"), "has times in \"m\" instead of, for instance, \"days since 2000-01-01 00:00:00\"");
  EXPECT_EQ(shown({0}, "days since 2000-01-01", "360_day"),
            "has times of the calendar \"360_day\", whose dates are not those of everyday life; convert them to the "
            "calendar \"standard\"");
  for (const char* units : {"days since 2000-13-01", "days since 2001-02-29", "days since yesterday",
                            "days since -1-1-1", "days since 2000-01-01 25:00", "days since 2000-01-01 00:00 Mars"})
    EXPECT_EQ(shown({0}, units), "counts its times from a date that cannot be read: \"" + std::string(units) + '"');
  const std::string head = "has a time that cannot be shown: number ";
  EXPECT_EQ(shown({0, NAN}, "days since 2000-01-01"), head + "2 is not a number");
  EXPECT_EQ(shown({0, 1, 1}, "days since 2000-01-01"), head + "3 is not after the one before it");
  for (const double far : {-146098.0, 1e6, 1e300, -1e300, HUGE_VAL})
    EXPECT_THAT(shown({far}, "days since 2000-01-01"), testing::StartsWith(head + "1 ")) << far;
  EXPECT_THAT(shown({1e300}, "days since 2000-01-01", "noleap"), testing::StartsWith(head + "1 "));
}

TEST(CfTime, MomentsAreWrittenAsTheyAreRead) {
  for (const char* text : {"2011-10-01T06:30:00", "1600-01-01T00:00:00", "3999-12-31T23:59:59"})
    EXPECT_EQ(text_of_moment(moment_of_text(text).value_or(0)), text);
  EXPECT_EQ(text_of_moment(moment_of_text("2011-10-01").value_or(0)), "2011-10-01T00:00:00");
  for (const char* text : {"", "06:30", "2011-02-30", "4000-01-01", "soon"}) EXPECT_FALSE(moment_of_text(text)) << text;
}

} // namespace
} // namespace vesk
