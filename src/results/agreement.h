// How well modelled values agree with measured ones.
//
// O: measured, M: modelled, n: their number, a bar: the mean, s: the standard deviation, sums over all pairs.
//
//   bias             mean(M) - mean(O): model less measured
//   percent bias     100 sum(M - O) / sum(O). Gupta, Sorooshian, Yapo (1999), J. Hydrol. Eng. 4(2), 135-143, who count
//                    measured less modelled
//   MAE, RMSE        mean |M - O|; sqrt(mean (M - O)^2). Willmott, Matsuura (2005), Clim. Res. 30, 79-82
//   RSR              sqrt(sum (M - O)^2) / sqrt(sum (O - mean(O))^2). Moriasi and others (2007), Trans. ASABE 50(3),
//                    885-900, equation 3
//   r, r2            the product-moment correlation of Pearson, and its square
//   NSE              1 - sum (M - O)^2 / sum (O - mean(O))^2. Nash, Sutcliffe (1970), J. Hydrol. 10(3), 282-290
//   KGE              1 - sqrt((r - 1)^2 + (alpha - 1)^2 + (beta - 1)^2) with alpha = s(M) / s(O) and beta = mean(M) /
//                    mean(O). Gupta, Kling, Yilmaz, Martinez (2009), J. Hydrol. 377, 80-91, equations 9 and 10
//
// A score with an undefined formula has no value: r if one of the two series is constant; RSR, NSE and alpha if the
// measured values are; percent bias and beta if the measured values sum to 0; all without pairs.
#pragma once

#include <cstddef>
#include <optional>
#include <span>

namespace vesk {

struct measured_and_modelled {
  double measured, modelled; // finite
};

struct agreement_scores {
  using score = std::optional<double>;

  std::size_t count = 0; // of pairs
  score mean_measured, mean_modelled;
  score bias, percent_bias, mean_absolute_error, root_mean_square_error, rsr;
  score r, r_squared, nash_sutcliffe;
  score kling_gupta, alpha, beta; // the third component of KGE is r
};

agreement_scores score(std::span<const measured_and_modelled> pairs);

// One row per score, for tables and files: its name and member.
struct score_column {
  const char* name;
  agreement_scores::score agreement_scores::*value;
};
inline constexpr score_column score_columns[] = {
    {"mean_measured", &agreement_scores::mean_measured},
    {"mean_modelled", &agreement_scores::mean_modelled},
    {"bias", &agreement_scores::bias},
    {"percent_bias", &agreement_scores::percent_bias},
    {"mae", &agreement_scores::mean_absolute_error},
    {"rmse", &agreement_scores::root_mean_square_error},
    {"rsr", &agreement_scores::rsr},
    {"r", &agreement_scores::r},
    {"r2", &agreement_scores::r_squared},
    {"nse", &agreement_scores::nash_sutcliffe},
    {"kge", &agreement_scores::kling_gupta},
    {"kge_alpha", &agreement_scores::alpha},
    {"kge_beta", &agreement_scores::beta},
};

} // namespace vesk
