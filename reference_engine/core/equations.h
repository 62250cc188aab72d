// The mass balance of all systems in all segments at the current moment:
//
//     d(V_i C_is)/dt = flows and exchanges in - out + loads + V_i R_is        dV_i/dt = water in - out
//
// Holds everything that depends on the forcing; integrators read it and move a State.
#ifndef REFERENCE_ENGINE_CORE_EQUATIONS_H
#define REFERENCE_ENGINE_CORE_EQUATIONS_H

#include "core/forcing.h"
#include "core/hydraulics.h"
#include "core/kinetics.h"
#include "core/network.h"
#include "core/problem.h"
#include "core/state.h"
#include "core/transport.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

namespace reference_engine {

struct StepLimit {
  double days = 0;         // infinite where nothing moves
  std::size_t segment = 0; // the one that sets it
};

class Equations {
public:
  // Keeps a reference to the problem. Throws InputError for what can't be solved.
  Equations(const Problem& problem, std::string_view library);
  // With kinetics of the caller's own, for any number of systems.
  Equations(const Problem& problem, std::unique_ptr<Kinetics> kinetics);

  // Takes the forcing's values and the state's volumes. Throws RunError where they can't be used.
  void refresh(const Forcing& forcing, const State& state);
  // Counts the refreshes that changed a coefficient or a volume.
  std::uint64_t version() const { return version_; }

  // The longest explicit step after which no concentration is below 0 by transport and first-order losses alone, and
  // no segment is dry: the smallest V / (what leaves + V decay).
  StepLimit limit() const { return limit_; }

  const Problem& problem() const { return problem_; }
  const Network& network() const { return network_; }
  const Kinetics& kinetics() const { return *kinetics_; }
  std::span<const TransportClass> classes() const { return classes_; } // simulated systems only

  // Gains that are not from i - 1 or i + 1 fall on few segments: these, ascending. `gains` writes each one's g/day.
  // concentration: the system's, one a segment.
  std::span<const std::size_t> gaining() const { return gaining_; }
  void gains(const TransportClass& its_class, std::size_t system, const double* concentration,
             std::span<double> gains) const;
  // Flux over the rim, by loads and to the sink; `reacted` holds the sink alone.
  MassFlux flux(const TransportClass& its_class, std::size_t system, const double* concentration) const;

  // Writes an output variable for each segment, not-a-number where it has none; false for an unknown ISC number.
  bool output(int isc, const State& state, std::span<double> values) const;

private:
  struct LoadSource {
    std::size_t gain, element, system;
  };

  void find_gaining();
  void take_sources(const Forcing& forcing);
  void update_settling(const State& state);
  void find_limit(const State& state);

  const Problem& problem_;
  std::unique_ptr<Kinetics> kinetics_;
  std::vector<bool> settles_; // by system
  Network network_;
  Hydraulics hydraulics_;
  std::vector<TransportClass> classes_;
  std::vector<std::size_t> gaining_, far_gain_, rim_gain_; // gain positions of far terms and rim segments
  std::vector<LoadSource> load_sources_;
  std::vector<std::size_t> load_starts_;      // by system
  std::vector<double> load_;                  // g/day of each source
  std::vector<double> boundary_;              // [system][rim], g/m3
  std::vector<std::vector<double>> settling_; // by class, m3/day
  std::vector<double> turnover_;              // 1/day
  std::vector<float> last_time_functions_;
  StepLimit limit_;
  std::uint64_t version_ = 0;
};

} // namespace reference_engine

#endif
