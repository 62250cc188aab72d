// The mass balance of all systems in all segments on one day:
//
//     d(V_i C_is)/dt = flows and exchanges in - out + loads + V_i R_is        dV_i/dt = water in - out
//
// Holds everything that depends on the forcing; integrators move it from day to day, read it and move a State.
#ifndef REFERENCE_ENGINE_CORE_EQUATIONS_H
#define REFERENCE_ENGINE_CORE_EQUATIONS_H

#include "core/forcing_line.h"
#include "core/hydraulics.h"
#include "core/kinetics.h"
#include "core/network.h"
#include "core/problem.h"
#include "core/state.h"
#include "core/transport.h"

#include <cstdint>
#include <limits>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

namespace reference_engine {

// The longest step, and the segment that sets it.
struct StepLimit {
  double days = 0; // infinite where nothing moves
  std::size_t segment = 0;
  // The same with losses that saturate, at the concentrations of the moment; not longer.
  double saturated_days = 0;
  std::size_t saturated_segment = 0;
};

class Equations {
public:
  // Keeps a reference to the problem. Throws InputError for what can't be solved.
  Equations(const Problem& problem, std::string_view library);
  // With kinetics of the caller's own, for any number of systems.
  Equations(const Problem& problem, std::unique_ptr<Kinetics> kinetics);

  // The forcing of the interval that is being solved; to be filled before the first of the functions below.
  ForcingLine& forcing() { return forcing_; }

  // Takes the forcing's values on this day, days since the start. Flows and sources follow at once, all else with the
  // volumes. Throws RunError where the values can't be used.
  void move_to(double day);
  // The same in the middle of a step of so many days, but with sources as they are on average over the step.
  void move_to_middle(double begin, double days);
  // What follows from the flows and exchanges of one day at once. `keep` copies that of now; `exchange` puts another
  // one in its place, until the same call brings it back. Neither touches what follows from volumes, or sources.
  struct Moment {
    Network::Driven network;
    std::vector<TransportClass::Loose> classes;
  };
  void keep(Moment& into) const;
  void exchange(Moment& with);
  // Takes the volumes of that day. Throws RunError where a process needs a depth and there is none.
  void set_volumes(const std::vector<double>& volume);
  // Counts the calls that changed a coefficient or a volume.
  std::uint64_t version() const { return version_; }

  // The longest explicit step after which no concentration is below 0 by transport and losses, and no segment is dry:
  // the smallest V / (what leaves + V decay), on that day. Losses that saturate count by themselves.
  // enough: days. Instead of a longer limit a shorter one may be given, of this length at least, which takes no search.
  StepLimit limit(const State& state, double enough = std::numeric_limits<double>::infinity());
  // No volume changes, with the flows of that day.
  bool is_steady();
  // No volume changes at any time of the forcing's line. Known only once `limit` has looked at all of the line.
  bool line_is_steady() const { return line_bound_.line == forcing_.version() && line_bound_.is_steady; }
  // Anything but sources depends on the volumes.
  bool uses_volumes() const { return uses_hydraulics_; }
  // How a class is carried through a stretch of the network.
  void find_coefficients(const TransportClass& its_class, const LayerValues& layers, Coefficients& into) const {
    its_class.find_coefficients(problem_, network_, layers, into);
  }
  void find_carried(const TransportClass& its_class, const LayerValues& layers, Coefficients& into) const {
    its_class.find_carried(problem_, network_, layers, into);
  }

  const Problem& problem() const { return problem_; }
  const Network& network() const { return network_; }
  const Kinetics& kinetics() const { return *kinetics_; }
  std::span<const TransportClass> classes() const { return classes_; } // simulated systems only

  // Gains that are not from i - 1 or i + 1 fall on few segments: these, ascending. The functions below add each one's
  // g/day. concentration: the system's, one a segment.
  std::span<const std::size_t> gaining() const { return gaining_; }
  void add_far_gains(const TransportClass& its_class, const double* concentration, std::span<double> gains) const;
  // What comes through the boundary and by loads, which does not depend on the state. Returns the sums.
  MassFlux add_sources(std::size_t system, std::span<double> gains) const;
  // What leaves segments begin to end through the boundary and to the sink; `reacted` has only the sink. concentration:
  // the system's, from segment begin on.
  MassFlux losses(const TransportClass& its_class, std::size_t begin, std::size_t end,
                  const double* concentration) const;

  // Writes an output variable for each segment, not-a-number where it has none; false for an unknown ISC number.
  bool output(int isc, const State& state, std::span<double> values);

private:
  void find_gaining();
  UsedElements used_elements() const;
  void take_sources();
  void update_hydraulics(const std::vector<double>& volume);
  void update_settling(const std::vector<double>& volume);
  // The segment with the fastest turnover: what leaves as a share of the volume, and losses.
  struct Fastest {
    double turnover = 0; // 1/day
    std::size_t segment = 0;
  };
  enum class Losses { decay, saturating };
  void find_limit(const State& state);
  Fastest find_fastest(const State& state, Losses losses);
  void find_leaving(std::size_t begin, std::size_t end);
  const double* find_losses(const State& state, std::size_t begin, std::size_t end);
  // What holds at any time of the forcing's line, as seen from one state.
  struct LineBound {
    Fastest fastest;
    double emptying = 0; // largest loss of a volume as a share of it, 1/day
    bool is_steady = true;
    double day = 0; // of that state
    std::uint64_t line = 0;
  };
  bool line_bound_may_serve() const;
  void find_line_bound(const State& state);
  StepLimit line_bound(double day) const;

  const Problem& problem_;
  std::unique_ptr<Kinetics> kinetics_;
  std::vector<bool> settles_; // by system
  Network network_;
  Hydraulics hydraulics_;
  std::vector<TransportClass> classes_;
  std::vector<std::size_t> gaining_, far_gain_, boundary_gain_; // gain positions of far terms and boundary segments
  std::vector<Load> loads_;                                     // in order of their systems
  std::vector<std::size_t> load_gain_;                          // gain position of each
  std::vector<std::size_t> load_starts_;                        // by system
  std::vector<double> load_;                                    // g/day of each
  std::vector<double> inflow_;                                  // [system][boundary segment], g/day
  ForcingLine forcing_;
  bool uses_hydraulics_;
  bool water_changed_ = true, functions_changed_ = true, hydraulics_fresh_ = false;
  std::vector<double> volume_; // that the hydraulics were worked out for
  LayerValues layers_;         // the rest is of a block: its links,
  WaterMoved water_;           // its water,
  Coefficients coefficients_;  // a class,
  std::vector<double> losses_; // and the fastest losses, 1/day
  std::vector<const double*> rows_;
  std::vector<double> leaving_; // all that leaves each segment, m3/day, of this version
  std::uint64_t leaving_version_ = 0;
  LineBound line_bound_;
  struct {
    std::uint64_t line = 0;
    double day = 0;
  } searched_;      // the latest line on which the limit was asked for, and the first day
  StepLimit limit_; // without losses that saturate, of this version and these volumes
  bool is_steady_ = false;
  std::uint64_t version_ = 0, limit_version_ = 0, limit_volume_version_ = 0;
  std::uint64_t water_version_ = 1, steady_version_ = 0; // of the flows, and that is_steady_ is of
};

} // namespace reference_engine

#endif
