// What changes from step to step, and the account of one system's mass.
#ifndef REFERENCE_ENGINE_CORE_STATE_H
#define REFERENCE_ENGINE_CORE_STATE_H

#include "core/problem.h"

#include <span>
#include <vector>

namespace reference_engine {

struct State {
  std::vector<double> volume;        // m3
  std::vector<double> concentration; // [system][segment], g/m3

  explicit State(const Problem& problem); // at the start

  std::span<double> of(std::size_t system) {
    return std::span(concentration).subspan(system * volume.size(), volume.size());
  }
  std::span<const double> of(std::size_t system) const {
    return std::span(concentration).subspan(system * volume.size(), volume.size());
  }
  double mass(std::size_t system) const; // g
};

// What a system gained or lost, in g/day as a flux and in g as a sum over time. Losses count as positive outflow and
// as negative reaction; what settles out of the model counts as reaction.
struct MassFlux {
  double inflow = 0, outflow = 0, loads = 0, reacted = 0;

  void add(const MassFlux& flux, double days);
};

struct MassBalance {
  MassFlux moved;      // g since the start
  double clipped = 0;  // g that came in by setting concentrations below 0 to 0
  double at_start = 0; // g
  double now = 0;      // g

  double stored() const { return now - at_start; }
  // What is unaccounted for, as a share of all that was there or moved.
  double relative_error() const;
};

} // namespace reference_engine

#endif
