#include "results/pairing.h"

#include "dataset/moment.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <limits>

namespace vesk {

namespace {

constexpr double half_a_second = 0.5 / seconds_per_day;

// The finite values, in order of time.
struct finite_series {
  std::vector<double> times, values;
};

finite_series finite_part(const modelled_series& model) {
  finite_series result;
  result.times.reserve(model.times.size());
  result.values.reserve(model.times.size());
  for (std::size_t i = 0; i < model.times.size(); ++i) {
    if (!std::isfinite(model.values[i])) continue;
    result.times.push_back(model.times[i]);
    result.values.push_back(model.values[i]);
  }
  return result;
}

double two_print_intervals(const modelled_series& model) {
  if (model.times.size() < 2) return 0;
  std::vector<double> intervals;
  intervals.reserve(model.times.size());
  for (std::size_t i = 1; i < model.times.size(); ++i) intervals.push_back(model.times[i] - model.times[i - 1]);
  const auto middle = intervals.begin() + static_cast<std::ptrdiff_t>(intervals.size() / 2);
  std::nth_element(intervals.begin(), middle, intervals.end());
  return 2 * *middle;
}

calendar_date date_at(double time) {
  return date_of(moment_type::from_date_time(time).date);
}

double date_time_of(int year, int month, int day) {
  return day_number(year, month, day) - date_time_origin;
}

struct period {
  double begin, end;
};

// The day or month of a time.
period period_of(double time, measured_kind kind) {
  const calendar_date date = date_at(time);
  const auto month = static_cast<int>(date.month), day = static_cast<int>(date.day);
  if (kind == measured_kind::daily_mean) {
    const double begin = date_time_of(date.year, month, day);
    return {begin, begin + 1};
  }
  // Month 13 is January of the next year.
  return {date_time_of(date.year, month, 1), date_time_of(date.year, month + 1, 1)};
}

// Answers queries in ascending order of time in a single pass over the model.
class model_walk {
public:
  model_walk(const finite_series& model, double gap, pairing_way way)
      : model_(model), gap_(gap + half_a_second), way_(way) {}

  std::optional<double> at(double time) {
    const auto& [times, values] = model_;
    while (at_ < times.size() && times[at_] < time - half_a_second) ++at_;
    if (at_ == times.size()) return {};
    if (times[at_] <= time + half_a_second) return values[at_];
    if (at_ == 0 || times[at_] - times[at_ - 1] > gap_) return {};
    const double before = times[at_ - 1], after = times[at_], share = (time - before) / (after - before);
    if (way_ == pairing_way::nearest) return share <= 0.5 ? values[at_ - 1] : values[at_];
    return values[at_ - 1] + share * (values[at_] - values[at_ - 1]);
  }

  std::optional<double> mean_over(const period& of) {
    const auto& [times, values] = model_;
    while (at_ < times.size() && times[at_] < of.begin - half_a_second) ++at_;
    double sum = 0, last = of.begin;
    std::size_t count = 0;
    bool is_covered = true;
    for (std::size_t i = at_; i < times.size() && times[i] < of.end - half_a_second; ++i) {
      is_covered = is_covered && times[i] - last <= gap_;
      last = times[i];
      sum += values[i];
      ++count;
    }
    if (count == 0 || !is_covered || of.end - last > gap_) return {};
    return sum / static_cast<double>(count);
  }

private:
  const finite_series& model_;
  double gap_;
  pairing_way way_;
  std::size_t at_ = 0; // the first time not before the last query
};

// "2011-10".
std::string month_name(double time) {
  const calendar_date date = date_at(time);
  char text[40];
  std::snprintf(text, sizeof text, "%04d-%02u", date.year, date.month);
  return text;
}

agreement_scores scores_of(std::span<const pair_at> pairs) {
  return score(std::vector<measured_and_modelled>(pairs.begin(), pairs.end()));
}

} // namespace

pairing pair_up(std::vector<measurement> measured, const modelled_series& model, const pairing_rules& rules) {
  // Usually sorted already, and sorting takes three times as long.
  if (!std::ranges::is_sorted(measured, {}, &measurement::time))
    std::ranges::stable_sort(measured, {}, &measurement::time);
  const finite_series finite = finite_part(model);
  const double gap = rules.gap.value_or(two_print_intervals(model));
  model_walk walk(finite, gap, rules.way);
  pairing result;
  result.pairs.reserve(measured.size());
  for (const measurement& it : measured) {
    if (it.below_limit) {
      ++result.below_limit;
      continue;
    }
    const auto value =
        rules.kind == measured_kind::point ? walk.at(it.time) : walk.mean_over(period_of(it.time, rules.kind));
    if (value)
      result.pairs.push_back({{it.value, *value}, it.time});
    else
      ++result.without_model;
  }
  return result;
}

std::vector<pair_at> with_monthly_means(std::span<const pair_at> pairs) {
  constexpr std::size_t months = 13; // counted from 1
  std::array<double, months> sum{};
  std::array<std::size_t, months> count{};
  for (const pair_at& it : pairs) {
    const unsigned month = date_at(it.time).month;
    sum[month] += it.measured;
    ++count[month];
  }
  std::vector<pair_at> result(pairs.begin(), pairs.end());
  for (pair_at& it : result) {
    const unsigned month = date_at(it.time).month;
    it.modelled = sum[month] / static_cast<double>(count[month]);
  }
  return result;
}

std::vector<period_scores> scores_by_month(std::span<const pair_at> pairs) {
  std::vector<period_scores> result;
  for (std::size_t begin = 0; begin < pairs.size();) {
    const std::string month = month_name(pairs[begin].time);
    const double end_of_month = period_of(pairs[begin].time, measured_kind::monthly_mean).end;
    std::size_t end = begin;
    while (end < pairs.size() && pairs[end].time < end_of_month) ++end;
    end = std::max(end, begin + 1); // a time half a second before the end rounds into the next month
    result.push_back({month, scores_of(pairs.subspan(begin, end - begin))});
    begin = end;
  }
  result.push_back({whole_period, scores_of(pairs)});
  return result;
}

} // namespace vesk
