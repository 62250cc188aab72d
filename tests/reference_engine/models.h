// Small models for tests of the engine's core, and runs without a front end.
#ifndef TESTS_REFERENCE_ENGINE_MODELS_H
#define TESTS_REFERENCE_ENGINE_MODELS_H

#include "core/equations.h"
#include "core/integrator.h"
#include "core/step_control.h"

#include <cmath>
#include <memory>
#include <optional>
#include <string>

namespace reference_engine {

constexpr int euler = 1, runge_kutta = 2, bdf = 3;

struct Model {
  Problem problem;
  Forcing forcing;
  std::string library = "tracer";
  MassBalance balance;                  // of problem.balance_system, after a run
  std::optional<Balances> all_balances; // after a run

  // Segments of 1 m3 named "s1", "s2", ...; systems at 0 g/m3, completely dissolved.
  explicit Model(std::size_t segments, std::string kinetics = "tracer") : library(std::move(kinetics)) {
    for (std::size_t i = 0; i < segments; ++i) {
      problem.segments.emplace_back();
      problem.segments.back().name = "s" + std::to_string(i + 1);
      problem.segments.back().volume = 1;
    }
    for (const std::string_view name : model_info(library).systems) {
      problem.systems.emplace_back();
      problem.systems.back().name = name;
    }
    const std::size_t cells = segments * problem.systems.size();
    problem.initial.assign(cells, 0.0);
    problem.dissolved.assign(cells, 1.0);
    forcing.loads.assign(cells, 0.0f);
    forcing.boundaries.assign(cells, 0.0f);
    forcing.time_functions.assign(8, 0.0f);
  }

  double& initial(std::size_t system, std::size_t segment) { return problem.initial[problem.at(system, segment)]; }
  void start_all_at(std::size_t system, double value) {
    for (std::size_t i = 0; i < problem.segments.size(); ++i) initial(system, i) = value;
  }
  float& load(std::size_t system, std::size_t segment) { // kg/day
    problem.loads.push_back({static_cast<int>(system), static_cast<int>(segment)});
    return forcing.loads[segment * problem.systems.size() + system];
  }
  float& boundary(std::size_t system, std::size_t segment) {
    return forcing.boundaries[segment * problem.systems.size() + system];
  }

  // A flow in m3/day with its own function.
  void flow(int from, int to, double per_day, FlowField field = FlowField::surface_water) {
    problem.flows.push_back({forcing.flows.size(), field, from, to, per_day / seconds_per_day});
    forcing.flows.resize(forcing.flows.size() + fields_per_function, 0.0f);
    forcing.flows[problem.flows.back().element] = 1;
  }
  // An exchange in m3/day.
  void exchange(int one, int two, double per_day, ExchangeField field = ExchangeField::surface_water) {
    problem.exchanges.push_back({forcing.exchanges.size(), field, one, two, per_day / seconds_per_day});
    forcing.exchanges.resize(forcing.exchanges.size() + fields_per_function, 0.0f);
    forcing.exchanges[problem.exchanges.back().element] = 1;
  }
  // Flow through all segments, from the outside to the outside.
  void through(double per_day) {
    const auto count = static_cast<int>(problem.segments.size());
    for (int i = 0; i <= count; ++i) flow(i - 1, i == count ? outside : i, per_day);
  }

  // Uses the current forcing.
  State run(int technique, double days, int steps) {
    return run(technique, {0, days}, steps, [](double) {});
  }

  // Uses the current forcing, and steps allowed by the rules.
  State run(int technique, double days, const StepRules& rules) {
    Equations equations(problem, library);
    State state(problem);
    Balances balances(state);
    const std::unique_ptr<Integrator> integrator = make_integrator(technique);
    equations.forcing().hold(forcing);
    while (state.day < days) {
      const StepLimit limit = integrator->limit(equations, state, 0);
      integrator->step(equations, state, choose_step(rules, limit, problem, state.day, days - state.day).days,
                       balances);
    }
    balances.close(state);
    all_balances = balances;
    return state;
  }

  // From event to event, each in `steps` steps; fill(day) sets the forcing, which is linear between two events.
  template <class Fill>
  State run(int technique, const std::vector<double>& events, int steps, Fill fill) {
    Equations equations(problem, library);
    State state(problem);
    Balances balances(state);
    const std::unique_ptr<Integrator> integrator = make_integrator(technique);
    for (std::size_t k = 1; k < events.size(); ++k) {
      const double begin = events[k - 1], length = events[k] - begin;
      fill(begin + length / 4);
      equations.forcing().take_first(forcing, begin + length / 4);
      fill(begin + 3 * length / 4);
      equations.forcing().take_second(forcing, begin + 3 * length / 4);
      for (int step = 0; step < steps; ++step) integrator->step(equations, state, length / steps, balances);
      state.day = events[k];
    }
    balances.close(state);
    all_balances = balances;
    if (problem.balance_system >= 0) balance = balances.systems[static_cast<std::size_t>(problem.balance_system)];
    return state;
  }
};

} // namespace reference_engine

#endif
