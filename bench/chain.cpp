#include "chain.h"

#include <cmath>

namespace vesk::bench {

using namespace reference_engine;

namespace {

// Systems that are only transported.
class no_kinetics final : public Kinetics {
public:
  explicit no_kinetics(std::size_t segments) : zeros_(segments) {}
  bool uses_hydraulics() const override { return false; }
  void update(const Hydraulics&, const TimeFunctions&) override {}
  bool reacts() const override { return false; }
  void rates(std::size_t, std::size_t, const double* const*, double* const*) const override {}
  std::span<const double> decay() const override { return zeros_; }
  bool settles(std::size_t) const override { return false; }
  std::span<const double> settling_velocity(std::size_t) const override { return zeros_; }
  std::span<const double> temperature() const override { return zeros_; }
  TemperatureRange temperature_range() const override { return {20, 20}; }
  bool output(int, std::span<const double>, std::span<double>) const override { return false; }

private:
  std::vector<double> zeros_;
};

} // namespace

double chain_volume(std::size_t segment) {
  return 10'000.0 + static_cast<double>(segment % 7) * 500;
}
double chain_start(std::size_t system, std::size_t segment) {
  return 1.0 + static_cast<double>(system) + std::sin(static_cast<double>(segment) * 0.01);
}
double chain_boundary(std::size_t system) {
  return 2.0 + static_cast<double>(system);
}

chain::chain(std::size_t segments, std::size_t systems, Technique technique)
    : integrator(make_integrator(static_cast<int>(technique))) {
  connect(segments, systems);
  equations = std::make_unique<Equations>(problem, std::make_unique<no_kinetics>(segments));
  drive(chain_forcing::steady, 1);
}

chain::chain(std::size_t segments, const char* library, Technique technique)
    : integrator(make_integrator(static_cast<int>(technique))) {
  connect(segments, model_info(library).systems.size());
  problem.constants = {{31, 1.0}}; // reaeration, 1/day; otherwise computed from velocity and depth
  for (Segment& segment : problem.segments) segment.minimum_depth = 1;
  equations = std::make_unique<Equations>(problem, library);
  drive(chain_forcing::steady, 1);
}

void chain::connect(std::size_t segments, std::size_t systems) {
  const int last = static_cast<int>(segments) - 1;
  for (std::size_t i = 0; i < segments; ++i) {
    problem.segments.emplace_back();
    problem.segments.back().volume = chain_volume(i);
  }
  problem.systems.resize(systems);
  for (int i = 0; i <= last + 1; ++i) { // the outflow of the last segment has a separate function
    const std::size_t element = i > last ? fields_per_function : 0;
    problem.flows.push_back({element, FlowField::surface_water, i == 0 ? outside : i - 1, i > last ? outside : i, 1});
  }
  for (int i = 1; i <= last; ++i) problem.exchanges.push_back({0, ExchangeField::surface_water, i - 1, i, 1});
  problem.initial.resize(systems * segments);
  problem.dissolved.assign(systems * segments, 1.0);
  forcing.boundaries.assign(systems * segments, 0.0f);
  forcing.loads.assign(systems * segments, 0.0f);
  forcing.flows.assign(2 * fields_per_function, 0.0f);
  forcing.exchanges.assign(fields_per_function, 0.0f);
  for (std::size_t s = 0; s < systems; ++s) {
    forcing.boundaries[s] = static_cast<float>(chain_boundary(s));
    for (std::size_t i = 0; i < segments; ++i) problem.initial[problem.at(s, i)] = chain_start(s, i);
  }
  state = std::make_unique<State>(problem);
  balances = std::make_unique<Balances>(*state);
}

void chain::set_flow(double factor, double outflow_factor) {
  forcing.flows[0] = static_cast<float>(chain_flow * factor);
  forcing.flows[fields_per_function] = static_cast<float>(chain_flow * outflow_factor);
  forcing.exchanges[0] = static_cast<float>(chain_dispersion * factor);
}

void chain::drive(chain_forcing kind, double days) {
  set_flow(1, 1);
  if (kind == chain_forcing::steady) return equations->forcing().hold(forcing);
  equations->forcing().take_first(forcing, state->day + days / 4);
  set_flow(1.05, kind == chain_forcing::filling ? 1.04 : 1.05);
  equations->forcing().take_second(forcing, state->day + 3 * days / 4);
}

void chain::jump(double factor) {
  set_flow(factor, factor);
  equations->forcing().hold(forcing);
}

void chain::step(double days) {
  constexpr double fraction = 0.9; // of the largest stable step
  integrator->limit(*equations, *state, days, days / fraction);
  integrator->step(*equations, *state, days, *balances);
}

} // namespace vesk::bench
