#include "core/inputs.h"

#include <algorithm>
#include <cmath>

namespace reference_engine {

namespace {
constexpr int temperature_isc = 1; // of the parameter and of the time function
constexpr double standard_temperature = 20;
} // namespace

double constant(const Problem& problem, const ModelInfo& model, int isc) {
  if (const auto used = problem.constants.find(isc); used != problem.constants.end()) return used->second;
  const auto is_it = [isc](const ConstantInfo& info) { return info.isc == isc; };
  return std::find_if(model.constants.begin(), model.constants.end(), is_it)->default_value;
}

std::vector<double> parameter(const Problem& problem, int isc, double otherwise) {
  if (const auto used = problem.parameters.find(isc); used != problem.parameters.end()) return used->second;
  return std::vector<double>(problem.segments.size(), otherwise);
}

WaterTemperature::WaterTemperature(const Problem& problem)
    : own_(parameter(problem, temperature_isc, 0)), values_(own_.size()),
      has_function_(problem.time_functions.contains(temperature_isc)),
      has_parameter_(problem.parameters.contains(temperature_isc)),
      uniform_(std::adjacent_find(own_.begin(), own_.end(), std::not_equal_to<>()) == own_.end()) {}

bool WaterTemperature::update(const Forcing& forcing) {
  double function = has_parameter_ ? 0 : standard_temperature;
  if (has_function_) function = forcing.time_function(temperature_isc);
  if (known_ && function == function_) return false;
  known_ = true;
  function_ = function;
  std::transform(own_.begin(), own_.end(), values_.begin(), [function](double own) { return own + function; });
  return true;
}

void WaterTemperature::factors(double theta, std::span<double> factors) const {
  const auto factor = [theta](double celsius) { return std::pow(theta, celsius - standard_temperature); };
  if (uniform_ && !values_.empty())
    std::fill(factors.begin(), factors.end(), factor(values_.front()));
  else
    std::transform(values_.begin(), values_.end(), factors.begin(), factor);
}

} // namespace reference_engine
