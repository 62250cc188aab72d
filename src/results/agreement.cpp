#include "results/agreement.h"

#include <algorithm>
#include <cmath>

namespace vesk {

namespace {

// The two means, and the sums of deviations from them. Computed in a second pass: subtracting sums of squares loses all
// digits if values vary little around a large mean.
struct sums {
  double measured = 0, modelled = 0;                         // of the values
  double measured_spread = 0, modelled_spread = 0, both = 0; // of products about the means
  double absolute_error = 0, square_error = 0;
};

struct value_range {
  double least = 0, greatest = 0;
  explicit value_range(double first) : least(first), greatest(first) {}
  void add(double value) { least = std::min(least, value), greatest = std::max(greatest, value); }
  bool varies() const { return least < greatest; } // exact, unlike the sum of deviations, which is rounded
};

std::optional<double> ratio(double dividend, double divisor) {
  if (divisor == 0) return {};
  const double quotient = dividend / divisor;
  return std::isfinite(quotient) ? std::optional(quotient) : std::nullopt;
}

} // namespace

agreement_scores score(std::span<const measured_and_modelled> pairs) {
  agreement_scores result;
  result.count = pairs.size();
  if (pairs.empty()) return result;

  const auto n = static_cast<double>(pairs.size());
  sums sum;
  value_range measured(pairs[0].measured), modelled(pairs[0].modelled);
  for (const auto& [o, m] : pairs) {
    sum.measured += o, sum.modelled += m;
    measured.add(o), modelled.add(m);
    sum.absolute_error += std::abs(m - o);
    sum.square_error += (m - o) * (m - o);
  }
  const double mean_o = sum.measured / n, mean_m = sum.modelled / n;
  for (const auto& [o, m] : pairs) {
    sum.measured_spread += (o - mean_o) * (o - mean_o);
    sum.modelled_spread += (m - mean_m) * (m - mean_m);
    sum.both += (o - mean_o) * (m - mean_m);
  }
  if (!measured.varies()) sum.measured_spread = 0;
  if (!modelled.varies()) sum.modelled_spread = 0;

  result.mean_measured = mean_o, result.mean_modelled = mean_m;
  result.bias = mean_m - mean_o;
  if (const auto share = ratio(sum.modelled - sum.measured, sum.measured)) result.percent_bias = 100 * *share;
  result.mean_absolute_error = sum.absolute_error / n;
  result.root_mean_square_error = std::sqrt(sum.square_error / n);
  result.rsr = ratio(std::sqrt(sum.square_error), std::sqrt(sum.measured_spread));
  if (const auto r = ratio(sum.both, std::sqrt(sum.measured_spread) * std::sqrt(sum.modelled_spread))) {
    result.r = std::clamp(*r, -1.0, 1.0); // rounding may exceed the range
    result.r_squared = *result.r * *result.r;
  }
  if (const auto share = ratio(sum.square_error, sum.measured_spread)) result.nash_sutcliffe = 1 - *share;
  result.alpha = ratio(std::sqrt(sum.modelled_spread), std::sqrt(sum.measured_spread));
  result.beta = ratio(mean_m, mean_o);
  if (result.r && result.alpha && result.beta)
    result.kling_gupta = 1 - std::hypot(*result.r - 1, *result.alpha - 1, *result.beta - 1);
  return result;
}

} // namespace vesk
