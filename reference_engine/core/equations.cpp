#include "core/equations.h"

#include "core/errors.h"
#include "core/text.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace reference_engine {

namespace {

enum {
  volume_output = 1,
  flow_output,
  velocity_output,
  depth_output,
  temperature_output,
  residence_output,
  step_output
};

std::vector<bool> settling_systems(const Problem& problem, const Kinetics& kinetics) {
  std::vector<bool> settles(problem.systems.size());
  for (std::size_t s = 0; s < settles.size(); ++s) settles[s] = problem.systems[s].simulated && kinetics.settles(s);
  return settles;
}

bool any(const std::vector<bool>& flags) {
  return std::find(flags.begin(), flags.end(), true) != flags.end();
}

} // namespace

Equations::Equations(const Problem& problem, std::string_view library)
    : Equations(problem, make_kinetics(library, problem)) {}

Equations::Equations(const Problem& problem, std::unique_ptr<Kinetics> kinetics)
    : problem_(problem), kinetics_(std::move(kinetics)), settles_(settling_systems(problem, *kinetics_)),
      network_(problem, any(settles_)), hydraulics_(problem), turnover_(problem.segments.size()) {
  for (std::size_t s = 0; s < problem.systems.size(); ++s) {
    if (!problem.systems[s].simulated) continue;
    const auto serves = [&](const TransportClass& it) { return it.serves(problem, s, settles_[s]); };
    const auto found = std::find_if(classes_.begin(), classes_.end(), serves);
    if (found != classes_.end())
      found->join(s);
    else
      classes_.emplace_back(problem, s, settles_[s]);
  }
  settling_.resize(classes_.size());
  find_gaining();
}

// The segments that gain by far terms, over the rim or by loads, and where each of these adds to the list of gains.
void Equations::find_gaining() {
  std::vector<Load> loads = problem_.loads;
  std::stable_sort(loads.begin(), loads.end(), [](const Load& x, const Load& y) { return x.system < y.system; });
  for (const FarTerm& term : network_.far_terms()) gaining_.push_back(term.target);
  gaining_.insert(gaining_.end(), network_.rim().begin(), network_.rim().end());
  for (const Load& load : loads) gaining_.push_back(static_cast<std::size_t>(load.segment));
  std::sort(gaining_.begin(), gaining_.end());
  gaining_.erase(std::unique(gaining_.begin(), gaining_.end()), gaining_.end());

  const auto position = [this](std::size_t segment) {
    return static_cast<std::size_t>(std::lower_bound(gaining_.begin(), gaining_.end(), segment) - gaining_.begin());
  };
  for (const FarTerm& term : network_.far_terms()) far_gain_.push_back(position(term.target));
  for (const std::size_t segment : network_.rim()) rim_gain_.push_back(position(segment));
  load_starts_.assign(problem_.systems.size() + 1, 0);
  for (const Load& load : loads) {
    const auto segment = static_cast<std::size_t>(load.segment), system = static_cast<std::size_t>(load.system);
    load_sources_.push_back({position(segment), segment * problem_.systems.size() + system, system});
    ++load_starts_[system + 1];
  }
  for (std::size_t s = 0; s < problem_.systems.size(); ++s) load_starts_[s + 1] += load_starts_[s];
  load_.resize(load_sources_.size());
  boundary_.resize(problem_.systems.size() * network_.rim().size());
}

void Equations::refresh(const Forcing& forcing, const State& state) {
  take_sources(forcing);
  const bool first = version_ == 0;
  const bool water_moved = !network_.steady();
  const bool flows_changed = network_.update(forcing);
  const bool hydraulics_changed = first || flows_changed || water_moved;
  const bool kinetics_changed = hydraulics_changed || forcing.time_functions != last_time_functions_;
  if (!kinetics_changed) return;
  last_time_functions_ = forcing.time_functions;
  if (hydraulics_changed) hydraulics_.update(problem_, network_.surface_flow(), state.volume);
  kinetics_->update(hydraulics_, forcing);
  if (hydraulics_changed) {
    update_settling(state);
    for (std::size_t c = 0; c < classes_.size(); ++c) classes_[c].update(problem_, network_, settling_[c]);
  }
  find_limit(state);
  ++version_;
}

void Equations::take_sources(const Forcing& forcing) {
  const auto rim = network_.rim();
  const std::size_t systems = problem_.systems.size();
  for (std::size_t s = 0; s < systems; ++s)
    for (std::size_t r = 0; r < rim.size(); ++r)
      boundary_[s * rim.size() + r] =
          static_cast<double>(forcing.boundaries[rim[r] * systems + s]) * problem_.systems[s].boundary_factor;
  for (std::size_t k = 0; k < load_.size(); ++k)
    load_[k] = static_cast<double>(forcing.loads[load_sources_[k].element]) *
               problem_.systems[load_sources_[k].system].load_factor * grams_per_kilogram;
}

// What settles through the area V / H of a segment: velocity times area, m3/day.
void Equations::update_settling(const State& state) {
  for (std::size_t c = 0; c < classes_.size(); ++c) {
    const std::size_t system = classes_[c].systems().front();
    if (!settles_[system]) continue;
    const auto velocity = kinetics_->settling_velocity(system);
    settling_[c].assign(velocity.size(), 0.0);
    for (std::size_t i = 0; i < velocity.size(); ++i) {
      if (velocity[i] <= 0) continue;
      const double depth = hydraulics_.depth()[i];
      if (depth <= 0)
        throw RunError(text("Segment ", numbered(problem_.segments[i], i),
                            " needs a depth for settling: give it a "
                            "depth multiplier, a length and a width, or a minimum depth."));
      settling_[c][i] = velocity[i] * state.volume[i] / depth;
    }
  }
}

void Equations::find_limit(const State& state) {
  const auto decay = kinetics_->decay();
  const auto water_out = network_.water_out();
  limit_ = {std::numeric_limits<double>::infinity(), 0};
  double fastest = 0;
  for (std::size_t i = 0; i < turnover_.size(); ++i) {
    double leaving = water_out[i];
    for (const TransportClass& it : classes_) leaving = std::max(leaving, it.coefficients()[i]);
    turnover_[i] = leaving / state.volume[i] + decay[i];
    if (turnover_[i] > fastest) {
      fastest = turnover_[i];
      limit_ = {1 / fastest, i};
    }
  }
}

void Equations::gains(const TransportClass& its_class, std::size_t system, const double* concentration,
                      std::span<double> gains) const {
  std::ranges::fill(gains, 0.0);
  const auto& layout = network_.layout();
  const auto coefficients = its_class.coefficients();
  const auto far_terms = network_.far_terms();
  for (std::size_t k = 0; k < far_terms.size(); ++k)
    gains[far_gain_[k]] += coefficients[layout.far(k)] * concentration[far_terms[k].source];
  for (std::size_t r = 0; r < layout.rim; ++r)
    gains[rim_gain_[r]] += coefficients[layout.rim_in(r)] * boundary_[system * layout.rim + r];
  for (std::size_t k = load_starts_[system]; k < load_starts_[system + 1]; ++k)
    gains[load_sources_[k].gain] += load_[k];
}

MassFlux Equations::flux(const TransportClass& its_class, std::size_t system, const double* concentration) const {
  MassFlux flux;
  const auto& layout = network_.layout();
  const auto coefficients = its_class.coefficients();
  for (std::size_t r = 0; r < layout.rim; ++r) {
    flux.inflow += coefficients[layout.rim_in(r)] * boundary_[system * layout.rim + r];
    flux.outflow += coefficients[layout.rim_out(r)] * concentration[network_.rim()[r]];
  }
  for (std::size_t k = load_starts_[system]; k < load_starts_[system + 1]; ++k) flux.loads += load_[k];
  const auto sink = its_class.sink();
  for (std::size_t i = 0; i < sink.size(); ++i) flux.reacted -= sink[i] * concentration[i];
  return flux;
}

bool Equations::output(int isc, const State& state, std::span<double> values) const {
  constexpr double unknown = std::numeric_limits<double>::quiet_NaN();
  const auto known = [](double value) { return value > 0 ? value : unknown; };
  switch (isc) {
  case volume_output: std::ranges::copy(state.volume, values.begin()); return true;
  case flow_output: std::ranges::copy(network_.surface_flow(), values.begin()); return true;
  case velocity_output: std::ranges::copy(hydraulics_.velocity(), values.begin()); return true;
  case depth_output: std::ranges::transform(hydraulics_.depth(), values.begin(), known); return true;
  case temperature_output: std::ranges::copy(kinetics_->temperature(), values.begin()); return true;
  case residence_output:
    for (std::size_t i = 0; i < values.size(); ++i)
      values[i] = known(network_.water_out()[i]) > 0 ? state.volume[i] / network_.water_out()[i] : unknown;
    return true;
  case step_output:
    std::ranges::transform(turnover_, values.begin(), [&](double turnover) { return 1 / known(turnover); });
    return true;
  default: return kinetics_->output(isc, state.concentration, values);
  }
}

} // namespace reference_engine
