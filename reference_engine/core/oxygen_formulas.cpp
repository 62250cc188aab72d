#include "core/oxygen_formulas.h"

#include <cmath>

namespace reference_engine {

// Benson and Krause, as in Standard Methods for the Examination of Water and Wastewater, 4500-O (APHA).
double oxygen_saturation(double celsius, double salinity) {
  const double t = 1 / (celsius + 273.15);
  const double fresh = -139.34411 + t * (1.575701e5 + t * (-6.642308e7 + t * (1.243800e10 - t * 8.621949e11)));
  const double salt = 1.7674e-2 + t * (-1.0754e1 + t * 2.1407e3);
  return std::exp(fresh - salinity * salt);
}

// Three formulas, each where it was found to hold (Covar, 1976; in Chapra, Surface Water-Quality Modeling, 1997,
// section 20.2): Owens and Gibbs for shallow streams, O'Connor and Dobbins for deep slow ones, Churchill for the rest.
double stream_reaeration(double velocity, double depth) {
  if (depth < 0.61) return 5.32 * std::pow(velocity, 0.67) * std::pow(depth, -1.85);
  if (depth > 3.45 * std::pow(velocity, 2.5)) return 3.93 * std::sqrt(velocity) * std::pow(depth, -1.5);
  return 5.026 * velocity * std::pow(depth, -1.67);
}

// Banks and Herrera, 1977 (in Chapra, 1997, eq. 20.46).
double wind_transfer(double wind) {
  return 0.728 * std::sqrt(wind) - 0.317 * wind + 0.0372 * wind * wind;
}

} // namespace reference_engine
