#include "core/tracer.h"

#include <algorithm>

namespace reference_engine {

namespace {
enum { conservative, decaying, solids };
// ISC numbers, shared with the catalogue.
enum { rate_isc = 1, theta_isc = 2, settling_constant_isc = 3 };
enum { settling_parameter_isc = 4 };
enum { first_system_output = 11, last_system_output = 13 };
} // namespace

ModelInfo Tracer::info() {
  return {.library = library,
          .systems = {"conservative tracer", "decaying tracer", "suspended solids"},
          .parameters = {{1, 0, -10, 45}, {settling_parameter_isc, 0, 0, 50}},
          .time_functions = {1},
          .constants = {{rate_isc, 0, 0, 100}, {theta_isc, 1.047, 1, 1.2}, {settling_constant_isc, 0, 0, 50}},
          .outputs = {1, 2, 3, 4, 5, 6, 7, 11, 12, 13}};
}

Tracer::Tracer(const Problem& problem)
    : temperature_(problem), decay_rate_(constant(problem, model_info(library), rate_isc)),
      decay_theta_(constant(problem, model_info(library), theta_isc)), decay_(problem.segments.size()),
      settling_(settling_velocities(problem, settling_parameter_isc,
                                    constant(problem, model_info(library), settling_constant_isc))) {}

void Tracer::update(const Hydraulics&, const TimeFunctions& time_functions) {
  if (!temperature_.update(time_functions)) return;
  temperature_.factors(decay_theta_, decay_);
  for (double& decay : decay_) decay *= decay_rate_;
}

// First-order decay: dC/dt = -k C.
void Tracer::rates(std::size_t begin, std::size_t end, const double* const* concentration, double* const* rate) const {
  std::fill_n(rate[conservative], end - begin, 0.0);
  std::fill_n(rate[solids], end - begin, 0.0);
  for (std::size_t i = 0; i < end - begin; ++i) rate[decaying][i] = -decay_[begin + i] * concentration[decaying][i];
}

void Tracer::extents(std::size_t segment, const double* concentration, double* extents) const {
  *extents = decay_[segment] * concentration[decaying];
}

// Solids are particles: all of them settle, even where the data set gives a dissolved share.
bool Tracer::settles(std::size_t system) const {
  return system == solids && std::any_of(settling_.begin(), settling_.end(), [](double v) { return v > 0; });
}

bool Tracer::output(int isc, std::span<const double> concentration, std::span<double> values) const {
  if (isc < first_system_output || isc > last_system_output) return false;
  const auto system = static_cast<std::size_t>(isc - first_system_output);
  std::copy_n(concentration.begin() + static_cast<std::ptrdiff_t>(system * values.size()), values.size(),
              values.begin());
  return true;
}

} // namespace reference_engine
