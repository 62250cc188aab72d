// What changes from step to step, and the account of mass and water.
#ifndef REFERENCE_ENGINE_CORE_STATE_H
#define REFERENCE_ENGINE_CORE_STATE_H

#include "core/problem.h"

#include <cstdint>
#include <span>
#include <vector>

namespace reference_engine {

struct State {
  double day = 0;                    // days since the start of the run
  std::vector<double> volume;        // m3
  std::vector<double> per_volume;    // 1 / volume, since a multiplication costs a fraction of a division
  std::uint64_t volume_version = 0;  // another number after each change of a volume
  std::vector<double> concentration; // [system][segment], g/m3

  explicit State(const Problem& problem); // at the start

  void swap_volumes(std::vector<double>& volumes); // with new ones

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
  double size() const; // g: the largest of what was there or moved
  // What is unaccounted for, as a share of all that was there or moved.
  double relative_error() const;
};

// The same for the water of all segments, m3.
struct WaterBalance {
  double inflow = 0, outflow = 0; // through the boundary, rain and evaporation included
  double at_start = 0, now = 0;

  void add(double in, double out, double days) { // m3/day
    inflow += in * days;
    outflow += out * days;
  }

  double stored() const { return now - at_start; }
};

struct Balances {
  std::vector<MassBalance> systems;
  WaterBalance water;

  explicit Balances(const State& state); // at the start
  void close(const State& state);        // at the end, or so far
};

} // namespace reference_engine

#endif
