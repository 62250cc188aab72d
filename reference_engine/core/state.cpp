#include "core/state.h"

#include "core/kernels.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace reference_engine {

State::State(const Problem& problem) : concentration(problem.initial) {
  volume.reserve(problem.segments.size());
  for (const Segment& segment : problem.segments) volume.push_back(segment.volume);
  per_volume.resize(volume.size());
  set_inverse(volume.size(), volume.data(), per_volume.data());
}

void State::swap_volumes(std::vector<double>& volumes) {
  volume.swap(volumes);
  set_inverse(volume.size(), volume.data(), per_volume.data());
  ++volume_version;
}

double State::mass(std::size_t system) const {
  double sum = 0;
  for (std::size_t i = 0; i < volume.size(); ++i) sum += volume[i] * of(system)[i];
  return sum;
}

void MassFlux::add(const MassFlux& flux, double days) {
  inflow += flux.inflow * days;
  outflow += flux.outflow * days;
  loads += flux.loads * days;
  reacted += flux.reacted * days;
}

double MassBalance::size() const {
  return std::max({std::abs(at_start), std::abs(now), std::abs(moved.inflow), std::abs(moved.outflow),
                   std::abs(moved.loads), std::abs(moved.reacted)});
}

double MassBalance::relative_error() const {
  const double came = moved.inflow + moved.loads + moved.reacted + clipped - moved.outflow;
  return size() > 0 ? (stored() - came) / size() : 0.0;
}

Balances::Balances(const State& state)
    : systems(state.concentration.size() / std::max<std::size_t>(state.volume.size(), 1)) {
  for (std::size_t s = 0; s < systems.size(); ++s) systems[s].at_start = systems[s].now = state.mass(s);
  water.at_start = water.now = std::accumulate(state.volume.begin(), state.volume.end(), 0.0);
}

void Balances::close(const State& state) {
  for (std::size_t s = 0; s < systems.size(); ++s) systems[s].now = state.mass(s);
  water.now = std::accumulate(state.volume.begin(), state.volume.end(), 0.0);
}

} // namespace reference_engine
