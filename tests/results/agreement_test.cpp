// Scores and pairs, by numbers worked out by hand.
#include "dataset/moment.h"
#include "results/pairing.h"

#include <gmock/gmock.h>

#include <cmath>

namespace vesk {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr double nothing = std::numeric_limits<double>::quiet_NaN();

double at(int year, int month, int day, double hours = 0) {
  return day_number(year, month, day) - date_time_origin + hours / 24;
}

// "column=value" of the scores that have a value.
std::string print(const agreement_scores& scores) {
  std::string text = std::to_string(scores.count);
  for (const score_column& column : score_columns)
    if (const auto& value = scores.*column.value) {
      char number[64];
      std::snprintf(number, sizeof number, " %s=%.6g", column.name, *value);
      text += number;
    }
  return text;
}

std::string print(std::span<const pair_at> pairs) {
  std::string text;
  for (const pair_at& it : pairs) {
    char pair[96];
    std::snprintf(pair, sizeof pair, "%g:%g/%g ", it.time, it.measured, it.modelled);
    text += pair;
  }
  return text;
}

// Means 10 and 11, errors 1, 0, 2, sums about the means 8 and 14, of products 10.
TEST(Agreement, ScoresAreThoseOfTheirFormulas) {
  const measured_and_modelled pairs[] = {{8, 9}, {10, 10}, {12, 14}};
  EXPECT_EQ(print(score(pairs)), "3 mean_measured=10 mean_modelled=11 bias=1 percent_bias=10 mae=1 rmse=1.29099 "
                                 "rsr=0.790569 r=0.944911 r2=0.892857 nse=0.375 kge=0.657533 kge_alpha=1.32288 "
                                 "kge_beta=1.1");
}

TEST(Agreement, UndefinedScoresStayEmpty) {
  EXPECT_EQ(print(score({})), "0");
  const measured_and_modelled one[] = {{2, 3}};
  EXPECT_EQ(print(score(one)), "1 mean_measured=2 mean_modelled=3 bias=1 percent_bias=50 mae=1 rmse=1 kge_beta=1.5");
  // Three times 0.1 has a mean that is not 0.1, and so a spread of rounding errors alone.
  const measured_and_modelled steady[] = {{0.1, 1}, {0.1, 2}, {0.1, 3}},
                              steady_model[] = {{1, 0.1}, {2, 0.1}, {3, 0.1}};
  EXPECT_EQ(print(score(steady)).find("nse"), std::string::npos);
  EXPECT_FALSE(score(steady).r || score(steady).rsr || score(steady).kling_gupta);
  EXPECT_FALSE(score(steady_model).r || score(steady_model).kling_gupta);
  EXPECT_EQ(score(steady_model).alpha, 0);
  const measured_and_modelled around_zero[] = {{-1, 0}, {1, 1}};
  EXPECT_FALSE(score(around_zero).percent_bias || score(around_zero).beta || score(around_zero).kling_gupta);
  EXPECT_NEAR(*score(around_zero).r, 1, 1e-12);
}

// A large mean with little variation, where sums of squares lose all their digits.
TEST(Agreement, DigitsAreKeptFarFromZero) {
  std::vector<measured_and_modelled> pairs;
  for (int i = 0; i < 1000; ++i) pairs.push_back({1e9 + i % 2, 1e9 + (i + 1) % 2});
  EXPECT_NEAR(*score(pairs).r, -1, 1e-9);
  EXPECT_NEAR(*score(pairs).nash_sutcliffe, -3, 1e-9);
}

// The model prints at days 10, 11, 12, 15 and 16; on day 12 it has no value.
const modelled_series model{{10, 11, 12, 15, 16}, {1, 3, nothing, 7, 9}};

TEST(Pairing, ModelIsInterpolatedWhereItsNeighboursAreNear) {
  const std::vector<measurement> measured = {{16, 60},   {10.25, 20}, {9.9, 10}, {12, 40},
                                             {15.5, 50}, {11, 30},    {17, 70}};
  auto paired = pair_up(measured, model, {});
  EXPECT_EQ(print(paired.pairs), "10.25:20/1.5 11:30/3 15.5:50/8 16:60/9 ");
  EXPECT_EQ(paired.without_model, 3u); // before, in the gap of 4 days, after
  paired = pair_up(measured, model, {.gap = 4});
  EXPECT_EQ(print(paired.pairs), "10.25:20/1.5 11:30/3 12:40/4 15.5:50/8 16:60/9 ");
  paired = pair_up(measured, model, {.way = pairing_way::nearest, .gap = 4});
  EXPECT_EQ(print(paired.pairs), "10.25:20/1 11:30/3 12:40/3 15.5:50/7 16:60/9 ");
  paired = pair_up(measured, model, {.gap = 0});
  EXPECT_EQ(print(paired.pairs), "11:30/3 16:60/9 ");
}

TEST(Pairing, ValuesBelowALimitAreCountedAndLeftOut) {
  const auto paired = pair_up({{10, 5, true}, {11, 6}, {20, 7, true}}, model, {});
  EXPECT_EQ(print(paired.pairs), "11:6/3 ");
  EXPECT_EQ(paired.below_limit, 2u);
  EXPECT_EQ(paired.without_model, 0u);
}

TEST(Pairing, AMeanIsHeldAgainstTheMeanOfItsDayOrMonth) {
  modelled_series hourly;
  for (int hour = 0; hour <= 49; ++hour) { // 0 on 28 February 2008, 1 on the 29th, 2 on 1 March
    hourly.times.push_back(at(2008, 2, 28, hour));
    hourly.values.push_back(hour / 24);
  }
  const pairing_rules daily{.kind = measured_kind::daily_mean};
  auto paired = pair_up({{at(2008, 2, 28, 12), 1}, {at(2008, 2, 29, 23), 2}, {at(2008, 3, 1), 3}}, hourly, daily);
  ASSERT_EQ(paired.pairs.size(), 2u);
  EXPECT_EQ(paired.pairs[0].modelled, 0);
  EXPECT_EQ(paired.pairs[1].modelled, 1);
  EXPECT_EQ(paired.without_model, 1u); // 2 of 24 hours

  modelled_series at_noon;
  for (int day = 15; day <= 60; ++day) at_noon.times.push_back(at(2012, 1, day, 12)), at_noon.values.push_back(day);
  const pairing_rules monthly{.kind = measured_kind::monthly_mean};
  paired = pair_up({{at(2012, 1, 31), 1}, {at(2012, 2, 1), 2}}, at_noon, monthly);
  ASSERT_EQ(paired.pairs.size(), 1u);      // of January a half is missing
  EXPECT_EQ(paired.pairs[0].modelled, 46); // days 32 to 60
  paired = pair_up({{at(2012, 1, 20), 5}}, at_noon, daily);
  ASSERT_EQ(paired.pairs.size(), 1u); // one value a day serves
  EXPECT_EQ(paired.pairs[0].modelled, 20);
}

TEST(Pairing, ScoresComeByMonthAndForAll) {
  std::vector<pair_at> pairs;
  for (const auto& [time, measured] : {std::pair(at(2011, 12, 1), 1.0), std::pair(at(2011, 12, 31, 23.99), 3.0),
                                       std::pair(at(2012, 1, 1), 5.0), std::pair(at(2012, 12, 24), 8.0)})
    pairs.push_back({{measured, 10}, time});
  std::string text;
  for (const period_scores& it : scores_by_month(pairs))
    text += it.period + ":" + std::to_string(it.scores.count) + "/" + std::to_string(*it.scores.mean_measured) + " ";
  EXPECT_EQ(text, "2011-12:2/2.000000 2012-01:1/5.000000 2012-12:1/8.000000 all:4/4.250000 ");
  std::vector<double> means; // of all Decembers together
  for (const pair_at& it : with_monthly_means(pairs)) means.push_back(it.modelled);
  EXPECT_THAT(means, ElementsAre(4, 4, 5, 4));
  EXPECT_THAT(pair_up({}, model, {}).pairs, IsEmpty());
  EXPECT_THAT(pair_up({{1, 1}}, {}, {}).pairs, IsEmpty());
}

} // namespace
} // namespace vesk
