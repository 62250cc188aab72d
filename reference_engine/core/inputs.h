// What kinetics take from a problem: parameters and constants with their defaults, and the water temperature.
#ifndef REFERENCE_ENGINE_CORE_INPUTS_H
#define REFERENCE_ENGINE_CORE_INPUTS_H

#include "core/forcing.h"
#include "core/kinetics.h"
#include "core/problem.h"

#include <span>
#include <vector>

namespace reference_engine {

constexpr int temperature_isc = 1; // of the parameter and of the time function, in each model

// The constant's value, or its default in the model when it is not used.
double constant(const Problem& problem, const ModelInfo& model, int isc);

// The parameter's value in each segment, or `otherwise` everywhere when it is not used.
std::vector<double> parameter(const Problem& problem, int isc, double otherwise);

// The velocity with which a system settles in each segment, m/day: the parameter, or the constant's value where the
// parameter is not used. The constant does not count in bed segments, which keep what settles on them.
std::vector<double> settling_velocities(const Problem& problem, int parameter_isc, double constant);

// Temperature = parameter 1 + time function 1, of those that are used; 20 deg C where neither is.
class WaterTemperature {
public:
  explicit WaterTemperature(const Problem& problem);

  // True when it changed, and at the first call.
  bool update(const TimeFunctions& time_functions);
  std::span<const double> values() const { return values_; }

  // factors[i] = theta ^ (T - 20), the usual form of the Arrhenius law in water quality (Chapra, Surface Water-Quality
  // Modeling, 1997, eq. 2.44). A temperature that is the same everywhere costs one power.
  void factors(double theta, std::span<double> factors) const;
  bool uniform() const { return lowest_own_ == highest_own_; }
  TemperatureRange range() const { return {lowest_own_ + function_, highest_own_ + function_}; }

private:
  std::vector<double> own_, values_;
  bool has_function_, has_parameter_;
  double lowest_own_ = 0, highest_own_ = 0;
  bool known_ = false;
  double function_ = 0;
};

} // namespace reference_engine

#endif
