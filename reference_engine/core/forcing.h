// The values over time at one date and time, as the front end writes them. Its arrays are filled from outside, by their
// addresses; their sizes do not change during a run.
#ifndef REFERENCE_ENGINE_CORE_FORCING_H
#define REFERENCE_ENGINE_CORE_FORCING_H

#include <cstddef>
#include <span>
#include <vector>

namespace reference_engine {

constexpr std::size_t fields_per_function = 6; // flow and exchange arrays alike

struct Forcing {
  std::vector<float> time_functions; // [ISC - 1]
  std::vector<float> loads;          // [segment][system], kg/day
  std::vector<float> boundaries;     // [segment][system], g/m3
  std::vector<float> flows;          // [function][field], m3/s
  std::vector<double> linked;        // flows of a hydrodynamic file, m3/s; their elements follow those of `flows`
  std::vector<double> volume_change; // m3/day for each segment, prescribed by that file; empty: follows from the flows
  std::vector<float> exchanges;      // [function][field], m2/s
  float print_interval = 0;          // days

  double flow(std::size_t element) const {
    return element < flows.size() ? static_cast<double>(flows[element]) : linked[element - flows.size()];
  }
};

// Values of the time functions, by ISC number.
class TimeFunctions {
public:
  explicit TimeFunctions(std::span<const double> values) : values_(values) {} // [ISC - 1]; borrowed
  double operator()(int isc) const { return values_[static_cast<std::size_t>(isc - 1)]; }
  std::span<const double> values() const { return values_; }

private:
  std::span<const double> values_;
};

} // namespace reference_engine

#endif
