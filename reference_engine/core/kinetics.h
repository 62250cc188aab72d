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

// What each reaction of a model makes and takes.
struct Stoichiometry {
  std::size_t systems = 0;
  std::vector<double> gains; // [reaction][system], g of the system for each g of the reaction's extent; below 0 a loss
  // The same for losses of order 0: true where the reaction goes on, however little of the system there is.
  std::vector<bool> never_fades;

  std::size_t reactions() const { return systems > 0 ? gains.size() / systems : 0; }
  double operator()(std::size_t reaction, std::size_t system) const { return gains[reaction * systems + system]; }
};

class Kinetics {
public:
  virtual ~Kinetics() = default;

  // Whether anything depends on depth or velocity. They are worked out for an update only if so.
  virtual bool uses_hydraulics() const { return true; }
  // Computes everything that does not depend on concentrations. Throws RunError where a depth is needed and missing.
  virtual void update(const Hydraulics& hydraulics, const TimeFunctions& time_functions) = 0;

  // False: `rates` would be 0 everywhere.
  virtual bool reacts() const = 0;
  // Whether the reactions of a system may depend on another one.
  virtual bool couples() const { return true; }
  // Segments begin to end. concentration[s] and rate[s] point to the values of segment `begin`; rate in g/m3/day.
  virtual void rates(std::size_t begin, std::size_t end, const double* const* concentration,
                     double* const* rate) const = 0;
  // The same reaction by reaction, where what they take must be held to what is there. `extents` writes g/m3/day in one
  // segment, from its concentrations by system; sums of gains times extents are the rates. Empty without reactions.
  virtual Stoichiometry stoichiometry() const { return {}; }
  virtual void extents(std::size_t /*segment*/, const double* /*concentration*/, double* /*extents*/) const {}

  // The fastest first-order loss in each segment, 1/day, at any concentrations.
  virtual std::span<const double> decay() const = 0;
  // Whether a system has losses that are not of first order, but of an order between 0 and 1, as a demand of oxygen
  // has: the less there is, the faster it is gone. `relative_losses` then writes the largest loss of any system as a
  // share of what is there, 1/day, in segments begin to end. Losses of order 0 are left out: no step is short enough
  // for them.
  virtual bool saturates() const { return false; }
  virtual void relative_losses(std::size_t /*begin*/, std::size_t /*end*/, const double* const* /*concentration*/,
                               double* /*losses*/) const {}

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
