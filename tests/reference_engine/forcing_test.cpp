// Forcing that changes in time: every technique against closed forms, with its order.
#include "core/oxygen_formulas.h"
#include "core/timeline.h"
#include "models.h"

#include <gtest/gtest.h>

#include <functional>

namespace reference_engine {
namespace {

enum { conservative, decaying };
enum { cbod = 2, oxygen = 3 };

// A model on day 0 to 1 with one forcing that is linear there, and what is exact at the end of it.
struct Case {
  const char* name;
  Model model;
  std::function<void(Model&, double day)> fill;
  std::size_t system, segment;
  double expected;
};

constexpr double k = 0.5; // decay, 1/day

// d(V C)/dt = W - k V C with W = 1 + 2 t g/day, V = 1 m3, C(0) = 3.
Case load_ramp() {
  Case it{"load", Model(1), {}, decaying, 0, 0};
  it.model.problem.constants[1] = k;
  it.model.initial(decaying, 0) = 3;
  it.model.load(decaying, 0);
  it.fill = [](Model& model, double day) { model.forcing.loads[decaying] = static_cast<float>((1 + 2 * day) / 1024); };
  it.model.problem.systems[decaying].load_factor = 1.024; // so that single precision holds the load exactly
  it.expected = 3 * std::exp(-k) + (1 - std::exp(-k)) / k + 2 * (1 / k - (1 - std::exp(-k)) / (k * k));
  return it;
}

// A boundary concentration of 2 + 4 t in a flow of V / day: dC/dt = 2 + 4 t - C.
Case boundary_ramp() {
  Case it{"boundary", Model(1), {}, conservative, 0, 0};
  it.model.through(1);
  it.fill = [](Model& model, double day) { model.boundary(conservative, 0) = static_cast<float>(2 + 4 * day); };
  it.expected = 2 * (1 - std::exp(-1.0)) + 4 * std::exp(-1.0); // the integral of 4 s e^(s - 1) is 4 / e
  return it;
}

// A flow of 1 + 2 t through one segment: C = C0 exp(-2).
Case through_flow_ramp() {
  Case it{"through-flow", Model(1), {}, conservative, 0, 5 * std::exp(-2.0)};
  it.model.through(1);
  it.model.initial(conservative, 0) = 5;
  it.fill = [](Model& model, double day) {
    for (const FlowPair& pair : model.problem.flows)
      model.forcing.flows[pair.element] = static_cast<float>(1 + 2 * day);
  };
  return it;
}

// Inflow 1 + t at 2 + 2 t g/m3 into a closed segment of 1 m3 that decays: M' = 2 (1 + t)^2 - k M, V = 1 + t + t^2 / 2.
Case filling() {
  Case it{"filling", Model(1), {}, decaying, 0, 0};
  it.model.problem.constants[1] = k;
  it.model.flow(outside, 0, 1);
  it.fill = [](Model& model, double day) {
    model.forcing.flows[0] = static_cast<float>(1 + day);
    model.boundary(decaying, 0) = static_cast<float>(2 + 2 * day);
  };
  // Particular solution a + b t + c t^2 with c = 2 / k, b = (4 - 2 c) / k, a = (2 - b) / k.
  const double c = 2 / k, b = (4 - 2 * c) / k, a = (2 - b) / k;
  it.expected = (a + b + c - a * std::exp(-k)) / 2.5;
  return it;
}

// An exchange of 1 + 2 t between two segments of 1 m3: half the difference decays with twice the exchange.
Case exchange_ramp() {
  Case it{"exchange", Model(2), {}, conservative, 0, 2 + 2 * std::exp(-2 * 2.0)};
  it.model.exchange(0, 1, 1);
  it.model.initial(conservative, 0) = 4;
  it.fill = [](Model& model, double day) { model.forcing.exchanges[0] = static_cast<float>(1 + 2 * day); };
  return it;
}

// Temperature from 20 to 28 deg C with theta = 1.1: the rate's integral is k (1.1^8 - 1) / (8 ln 1.1).
Case warming() {
  const double integral = k * (std::pow(1.1, 8) - 1) / (8 * std::log(1.1));
  Case it{"temperature", Model(1), {}, decaying, 0, 3 * std::exp(-integral)};
  it.model.problem.constants = {{1, k}, {2, 1.1}};
  it.model.problem.time_functions = {1};
  it.model.initial(decaying, 0) = 3;
  it.fill = [](Model& model, double day) { model.forcing.time_functions[0] = static_cast<float>(20 + 8 * day); };
  return it;
}

// Net photosynthesis of 4 t with reaeration of 1/day of water at saturation: D' = 4 t - D.
Case light_ramp() {
  Case it{"light", Model(1, "oxygen"), {}, oxygen, 0, 4 * std::exp(-1.0)};
  it.model.problem.segments[0].minimum_depth = 1;
  it.model.problem.constants = {{31, 1.0}};
  it.model.problem.parameters = {{5, {4.0}}};
  it.model.problem.time_functions = {3};
  const double saturation = oxygen_saturation(20, 0);
  it.model.initial(oxygen, 0) = saturation;
  it.fill = [](Model& model, double day) { model.forcing.time_functions[2] = static_cast<float>(day); };
  it.expected += saturation;
  return it;
}

TEST(Forcing, EachTechniqueKeepsItsOrder) {
  for (auto make : {load_ramp, boundary_ramp, through_flow_ramp, filling, exchange_ramp, warming, light_ramp}) {
    Case it = make();
    const auto error = [&](int technique, int steps) {
      const State state = it.model.run(technique, {0, 1}, steps, [&](double day) { it.fill(it.model, day); });
      return std::abs(state.of(it.system)[it.segment] - it.expected) / it.expected;
    };
    const auto order = [&](int technique, int steps) {
      return std::log2(error(technique, steps) / error(technique, 2 * steps));
    };
    EXPECT_LT(error(euler, 200), 2e-2) << it.name;
    EXPECT_NEAR(order(euler, 200), 1, 0.05) << it.name;
    EXPECT_LT(error(runge_kutta, 20), 2e-5) << it.name;
    EXPECT_NEAR(order(runge_kutta, 10), 4, 0.35) << it.name;
    EXPECT_LT(error(bdf, 2), 2e-5) << it.name;
  }
}

} // namespace
} // namespace reference_engine
