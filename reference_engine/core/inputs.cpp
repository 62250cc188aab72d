#include "core/inputs.h"

#include <algorithm>
#include <cmath>

namespace reference_engine {

namespace {
constexpr double standard_temperature = 20;
} // namespace

double constant(const Problem& problem, const ModelInfo& model, int isc) {
  if (const auto used = problem.constants.find(isc); used != problem.constants.end()) return used->second;
  const auto is_it = [isc](const ValueInfo& info) { return info.isc == isc; };
  return std::find_if(model.constants.begin(), model.constants.end(), is_it)->default_value;
}

std::vector<double> parameter(const Problem& problem, int isc, double otherwise) {
  if (const auto used = problem.parameters.find(isc); used != problem.parameters.end()) return used->second;
  return std::vector<double>(problem.segments.size(), otherwise);
}

std::vector<double> settling_velocities(const Problem& problem, int parameter_isc, double constant) {
  std::vector<double> velocity = parameter(problem, parameter_isc, constant);
  if (problem.parameters.contains(parameter_isc)) return velocity;
  for (std::size_t i = 0; i < velocity.size(); ++i)
    if (is_bed(problem.segments[i].type)) velocity[i] = 0;
  return velocity;
}

WaterTemperature::WaterTemperature(const Problem& problem)
    : own_(parameter(problem, temperature_isc, 0)), values_(own_.size()),
      has_function_(problem.time_functions.contains(temperature_isc)),
      has_parameter_(problem.parameters.contains(temperature_isc)) {
  if (own_.empty()) return;
  const auto [lowest, highest] = std::ranges::minmax(own_);
  lowest_own_ = lowest;
  highest_own_ = highest;
}

bool WaterTemperature::update(const TimeFunctions& time_functions) {
  double function = has_parameter_ ? 0 : standard_temperature;
  if (has_function_) function = time_functions(temperature_isc);
  if (known_ && function == function_) return false;
  known_ = true;
  function_ = function;
  std::transform(own_.begin(), own_.end(), values_.begin(), [function](double own) { return own + function; });
  return true;
}

void WaterTemperature::factors(double theta, std::span<double> factors) const {
  const auto factor = [theta](double celsius) { return std::pow(theta, celsius - standard_temperature); };
  if (uniform() && !values_.empty())
    std::fill(factors.begin(), factors.end(), factor(values_.front()));
  else
    std::transform(values_.begin(), values_.end(), factors.begin(), factor);
}

} // namespace reference_engine
