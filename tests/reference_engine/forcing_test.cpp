// Forcing that changes in time: every technique against closed forms, with its order.
#include "core/oxygen_formulas.h"
#include "core/timeline.h"
#include "models.h"

#include <gtest/gtest.h>

#include <functional>
#include <random>
#include <sstream>

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

constexpr double rate = 0.5; // decay, 1/day

// d(V C)/dt = W - k V C with W = 1 + 2 t g/day, V = 1 m3, C(0) = 3.
Case load_ramp() {
  Case it{"load", Model(1), {}, decaying, 0, 0};
  it.model.problem.constants[1] = rate;
  it.model.initial(decaying, 0) = 3;
  it.model.load(decaying, 0);
  it.fill = [](Model& model, double day) { model.forcing.loads[decaying] = static_cast<float>((1 + 2 * day) / 1024); };
  it.model.problem.systems[decaying].load_factor = 1.024; // so that single precision holds the load exactly
  it.expected =
      3 * std::exp(-rate) + (1 - std::exp(-rate)) / rate + 2 * (1 / rate - (1 - std::exp(-rate)) / (rate * rate));
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
  it.model.problem.constants[1] = rate;
  it.model.flow(outside, 0, 1);
  it.fill = [](Model& model, double day) {
    model.forcing.flows[0] = static_cast<float>(1 + day);
    model.boundary(decaying, 0) = static_cast<float>(2 + 2 * day);
  };
  // Particular solution a + b t + c t^2 with c = 2 / rate, b = (4 - 2 c) / rate, a = (2 - b) / rate.
  const double c = 2 / rate, b = (4 - 2 * c) / rate, a = (2 - b) / rate;
  it.expected = (a + b + c - a * std::exp(-rate)) / 2.5;
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

// Temperature from 20 to 28 deg C with theta = 1.1: the rate's integral is rate (1.1^8 - 1) / (8 ln 1.1).
Case warming() {
  const double integral = rate * (std::pow(1.1, 8) - 1) / (8 * std::log(1.1));
  Case it{"temperature", Model(1), {}, decaying, 0, 3 * std::exp(-integral)};
  it.model.problem.constants = {{1, rate}, {2, 1.1}};
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

// Random networks, flows that turn round, loads and boundaries with random points, random kinetics: of each system the
// balance closes, and what came through the boundary and by loads is the integral of the series.
TEST(Forcing, BalancesCloseAndSeriesArriveWhateverHappens) {
  std::mt19937 random(11);
  const auto number = [&random](double low, double high) { return std::uniform_real_distribution(low, high)(random); };
  for (int round = 0; round < 4; ++round) {
    constexpr int n = 12;
    Model model(n, "oxygen");
    for (Segment& segment : model.problem.segments) segment.volume = number(20, 40), segment.minimum_depth = 1;
    model.problem.constants = {{11, 0.3}, {21, 0.5}, {24, 0.2}, {31, 1.0}, {33, 0.5}};
    for (double& share : model.problem.dissolved) share = number(0, 1);
    for (double& initial : model.problem.initial) initial = number(0, 10);
    model.flow(outside, 0, 1);
    for (int i = 0; i < n; ++i) model.flow(i, i + 1 < n ? i + 1 : outside, 1);
    for (int k = 0; k < 6; ++k) model.exchange(static_cast<int>(number(0, n)), static_cast<int>(number(0, n)), 1);
    model.flow(2, 9, 1); // turns round
    std::vector<float*> driven;
    for (std::size_t s = 0; s < 4; ++s) driven.push_back(&model.load(s, static_cast<std::size_t>(number(0, n))));
    for (std::size_t s = 0; s < 4; ++s) driven.push_back(&model.boundary(s, 0));
    for (const FlowPair& pair : model.problem.flows) driven.push_back(&model.forcing.flows[pair.element]);
    for (const ExchangePair& pair : model.problem.exchanges) driven.push_back(&model.forcing.exchanges[pair.element]);

    std::vector<double> events = {0};
    while (events.size() < 9) events.push_back(events.back() + number(0.05, 0.5));
    std::vector<std::vector<float>> points; // of each event, for each that is driven
    for (std::size_t k = 0; k < events.size(); ++k) {
      points.emplace_back();
      for (std::size_t j = 0; j < driven.size(); ++j) {
        const bool turns = j == 8 + n + 1, is_load = j < 4;
        points.back().push_back(static_cast<float>(turns ? number(-1, 1) : is_load ? number(0, 0.01) : number(1, 2)));
      }
    }
    const auto value = [&](std::size_t j, std::size_t k, double day) { // on the line from point k
      const double share = (day - events[k]) / (events[k + 1] - events[k]);
      return std::lerp(static_cast<double>(points[k][j]), static_cast<double>(points[k + 1][j]), share);
    };
    const auto fill = [&](double day) {
      std::size_t k = 0;
      while (k + 2 < events.size() && day >= events[k + 1]) ++k;
      for (std::size_t j = 0; j < driven.size(); ++j) *driven[j] = static_cast<float>(value(j, k, day));
    };
    std::vector<double> inflow(4), loads(4);
    for (std::size_t k = 0; k + 1 < events.size(); ++k)
      for (std::size_t s = 0; s < 4; ++s)
        for (int part = 0; part < 1000; ++part) { // by the middles of a thousand parts: 1e-7 of a parabola
          const double days = (events[k + 1] - events[k]) / 1000, day = events[k] + (part + 0.5) * days;
          loads[s] += 1000 * days * value(s, k, day);
          inflow[s] += days * value(4 + s, k, day) * value(8, k, day);
        }
    for (const int technique : {euler, runge_kutta, bdf}) {
      model.run(technique, events, technique == bdf ? 1 : 40, fill);
      for (std::size_t s = 0; s < 4; ++s) {
        const MassBalance& balance = model.all_balances->systems[s];
        EXPECT_NEAR(balance.relative_error(), 0, 1e-12) << technique;
        EXPECT_NEAR(balance.moved.loads / loads[s], 1, 1e-6) << technique;
        EXPECT_NEAR(balance.moved.inflow / inflow[s], 1, 1e-6) << technique;
      }
      const WaterBalance& water = model.all_balances->water;
      EXPECT_NEAR(water.stored(), water.inflow - water.outflow, 1e-12 * water.now) << technique;
    }
  }
}

// No water, no load and an empty boundary at first: all series begin with 0.
TEST(Forcing, MayBeginWithZero) {
  for (const int technique : {euler, runge_kutta, bdf}) {
    Model model(2);
    model.through(1);
    model.start_all_at(conservative, 3);
    model.load(conservative, 1) = 0;
    const State state = model.run(technique, {0, 1, 2}, 50, [&](double day) {
      const bool begun = day > 1; // then the boundary's 3 g/m3 and the load
      for (const FlowPair& pair : model.problem.flows) model.forcing.flows[pair.element] = begun ? 1.0f : 0.0f;
      model.boundary(conservative, 0) = 3;
      model.forcing.loads[model.problem.systems.size()] = begun ? 0.001f : 0.0f;
    });
    EXPECT_NEAR(state.of(conservative)[0], 3, 1e-6) << technique;
    EXPECT_NEAR(state.of(conservative)[1], 4 - std::exp(-1), technique == runge_kutta ? 1e-6 : 1e-2) << technique;
  }
}

TEST(Timeline, EventsAreMergedButNotLost) {
  // Prints every 0.25 days, and from day 1.1 on every 0.5 days.
  Timeline timeline(2, PrintTimes({{0, 0.25}, {1.1, 0.5}}), {0.1, 0.1004, 0.3, 0.4999, 0.75, 1.3}, 0.001);
  std::string events;
  const double change = 0.6; // of a hydrodynamic file
  for (double day = 0; day < 2;) {
    const Timeline::Event event = timeline.next(day, day < change ? change : 10);
    day = event.day;
    std::ostringstream line;
    line << day << (event.prints ? " print" : "") << (event.straight ? "" : " bent") << ", ";
    events += line.str();
  }
  EXPECT_EQ(events, "0.1, 0.25 print bent, 0.3, 0.5 print bent, 0.6, 0.75 print, 1 print, 1.1 print, 1.3, 1.6 print, "
                    "2 print, ");
  EXPECT_EQ(timeline.merged(), 2u);
}

} // namespace
} // namespace reference_engine
