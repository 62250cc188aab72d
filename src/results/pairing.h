// Finds the modelled value for each measured one.
#pragma once

#include "results/agreement.h"

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace vesk {

struct measurement {
  double time;              // a date-time number
  double value;             // finite
  bool below_limit = false; // "<0.02": the value is then the detection limit, and excluded from scores
};

// The meaning of a measured value: the value at its time, or the mean of its day or month.
enum class measured_kind { point, daily_mean, monthly_mean };

// The modelled value between two times: interpolated linearly, or the nearer one.
enum class pairing_way { interpolate, nearest };

struct pairing_rules {
  measured_kind kind = measured_kind::point;
  pairing_way way = pairing_way::interpolate;
  // The longest gap in days between modelled values that is still bridged. Nothing: twice the median print interval.
  std::optional<double> gap = {};
};

// Modelled values over time.
struct modelled_series {
  std::vector<double> times;  // date-time numbers, ascending
  std::vector<double> values; // same length; not-a-number if there is none
};

struct pair_at : measured_and_modelled {
  double time; // of the measurement
};

struct pairing {
  std::vector<pair_at> pairs; // in order of time
  std::size_t below_limit = 0;
  std::size_t without_model = 0; // the model has no value there: before, after or in a gap
};

// `measured` in any order. A daily or monthly mean is compared with the mean of the modelled values over its day or
// month, provided no stretch without a modelled value is longer than the gap.
pairing pair_up(std::vector<measurement> measured, const modelled_series& model, const pairing_rules& rules);

// For each pair, the mean of the measured values of that calendar month: a forecast that needs no model. Hard to beat,
// since it has seen the measurements.
std::vector<pair_at> with_monthly_means(std::span<const pair_at> pairs);

// Scores of the pairs of one month, "2011-10", or of all, "all".
struct period_scores {
  std::string period;
  agreement_scores scores;
};

// In order of time, then the whole period. `pairs` in order of time.
std::vector<period_scores> scores_by_month(std::span<const pair_at> pairs);

inline constexpr const char* whole_period = "all";

} // namespace vesk
