// What happens to the systems inside a segment. One class for each `Library` name of the catalogue.
#ifndef REFERENCE_ENGINE_CORE_KINETICS_H
#define REFERENCE_ENGINE_CORE_KINETICS_H

#include "core/forcing.h"
#include "core/hydraulics.h"
#include "core/problem.h"

#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace reference_engine {

// The numbers that a model shares with the catalogue.
struct ValueInfo {
  int isc;
  double default_value, minimum, maximum; // a value outside is used, with a warning
};
struct TemperatureRange {
  double lowest, highest; // deg C
};
struct ModelInfo {
  std::string_view library;
  std::vector<std::string_view> systems; // in order, for messages
  std::vector<ValueInfo> parameters;
  std::vector<int> time_functions; // ISC numbers
  std::vector<ValueInfo> constants;
  std::vector<int> outputs; // ISC numbers, the common ones included
};

const std::vector<ModelInfo>& known_models();
// Throws InputError for a library that is not known.
const ModelInfo& model_info(std::string_view library);

class Kinetics {
public:
  virtual ~Kinetics() = default;

  // Works out everything that does not depend on concentrations. Throws RunError where a depth is needed and missing.
  virtual void update(const Hydraulics& hydraulics, const TimeFunctions& time_functions) = 0;

  // False: `rates` would be 0 everywhere.
  virtual bool reacts() const = 0;
  // Segments begin to end. concentration[s] and rate[s] point to the values of segment `begin`; rate in g/m3/day.
  virtual void rates(std::size_t begin, std::size_t end, const double* const* concentration,
                     double* const* rate) const = 0;
  // The fastest first-order loss in each segment, 1/day.
  virtual std::span<const double> decay() const = 0;

  // Whether the system can settle, and the velocity with which it does in each segment, m/day, share included.
  virtual bool settles(std::size_t system) const = 0;
  virtual std::span<const double> settling_velocity(std::size_t system) const = 0;

  virtual std::span<const double> temperature() const = 0; // deg C for each segment
  virtual TemperatureRange temperature_range() const = 0;  // of all segments
  // Writes an output variable for each segment; false when it is none of this model's. concentration:
  // [system][segment].
  virtual bool output(int isc, std::span<const double> concentration, std::span<double> values) const = 0;
};

// Throws InputError for an unknown library or another number of systems. Keeps a reference to the problem.
std::unique_ptr<Kinetics> make_kinetics(std::string_view library, const Problem& problem);

} // namespace reference_engine

#endif
