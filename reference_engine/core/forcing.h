// The values over time at the current moment. The arrays are filled from outside, by their addresses, before each
// refresh; their sizes do not change during a run.
#ifndef REFERENCE_ENGINE_CORE_FORCING_H
#define REFERENCE_ENGINE_CORE_FORCING_H

#include <cstddef>
#include <vector>

namespace reference_engine {

constexpr std::size_t fields_per_function = 6; // flow and exchange arrays alike

struct Forcing {
  std::vector<float> time_functions; // [ISC - 1]
  std::vector<float> loads;          // [segment][system], kg/day
  std::vector<float> boundaries;     // [segment][system], g/m3
  std::vector<float> flows;          // [function][field], m3/s
  std::vector<double> linked;        // flows of a hydrodynamic file, m3/s; their elements go on behind those of `flows`
  std::vector<double> volume_change; // m3/day for each segment, prescribed by that file; empty: follows from the flows
  std::vector<float> exchanges;      // [function][field], m2/s
  float print_interval = 0;          // days

  double flow(std::size_t element) const {
    return element < flows.size() ? static_cast<double>(flows[element]) : linked[element - flows.size()];
  }
  // Value of the time function with this ISC number.
  double time_function(int isc) const { return static_cast<double>(time_functions[static_cast<std::size_t>(isc - 1)]); }
};

} // namespace reference_engine

#endif
