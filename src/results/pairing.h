// The modelled value that belongs to each measured one.
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
  bool below_limit = false; // "<0.02": then the value is the detection limit, and takes no part in scores
};

// What a measured value says: the value at its time, or the mean of its day or month.
enum class measured_kind { point, daily_mean, monthly_mean };

// The modelled value at a time between two others: on the line between them, or the one that is nearer in time.
enum class pairing_way { interpolate, nearest };

struct pairing_rules {
  measured_kind kind = measured_kind::point;
  pairing_way way = pairing_way::interpolate;
  // Modelled values further apart than this many days say nothing of the time between them. Nothing: two print
  // intervals, of which the median counts.
  std::optional<double> gap = {};
};

// Modelled values over time.
struct modelled_series {
  std::vector<double> times;  // date-time numbers, ascending
  std::vector<double> values; // as many; not-a-number where there is none
};

struct pair_at : measured_and_modelled {
  double time; // of the measurement
};

struct pairing {
  std::vector<pair_at> pairs; // in order of time
  std::size_t below_limit = 0;
  std::size_t without_model = 0; // before, after or in a gap of the model
};

// `measured` in any order. A daily or monthly mean is held against the mean of the modelled values from the first
// moment of its day or month to the last, if no stretch of it without a modelled value is longer than the gap.
pairing pair_up(std::vector<measurement> measured, const modelled_series& model, const pairing_rules& rules);

// The mean of the measured values of the same month of the calendar, for each pair: what one knows of a year without a
// model. Hard to beat, since it has seen the measurements.
std::vector<pair_at> with_monthly_means(std::span<const pair_at> pairs);

// Scores of pairs of one month, "2011-10", or of all of them, "all".
struct period_scores {
  std::string period;
  agreement_scores scores;
};

// In order of time, the whole at last. `pairs` in order of time.
std::vector<period_scores> scores_by_month(std::span<const pair_at> pairs);

inline constexpr const char* whole_period = "all";

} // namespace vesk
