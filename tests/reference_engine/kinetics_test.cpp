// Kinetics and step control against values worked out by hand.
#include "core/errors.h"
#include "core/kernels.h"
#include "core/oxygen_formulas.h"
#include "core/step_control.h"
#include "models.h"

#include <gtest/gtest.h>

namespace reference_engine {
namespace {

enum { ammonium, nitrate, cbod, oxygen };

// Published tables (Standard Methods, 4500-O): fresh water to 0.01 g/m3, sea water near 7.4.
TEST(OxygenFormulas, AgreeWithTablesAndHandCalculation) {
  EXPECT_NEAR(oxygen_saturation(0, 0), 14.621, 0.005);
  EXPECT_NEAR(oxygen_saturation(20, 0), 9.092, 0.005);
  EXPECT_NEAR(oxygen_saturation(30, 0), 7.559, 0.005);
  EXPECT_NEAR(oxygen_saturation(20, 35), 7.39, 0.05);
  EXPECT_NEAR(stream_reaeration(0.5, 0.5), 12.05, 0.01);  // Owens and Gibbs: 5.32 * 0.6285 * 3.605
  EXPECT_NEAR(stream_reaeration(0.3, 2), 0.7610, 0.0005); // O'Connor and Dobbins: 3.93 * 0.5477 / 2.828
  EXPECT_NEAR(stream_reaeration(1, 1), 5.026, 1e-9);      // Churchill
  EXPECT_NEAR(wind_transfer(4), 0.7832, 1e-9);            // 1.456 - 1.268 + 0.5952
}

// Rates of one segment, term by term:
// nitrified 0.1 * 4/6 * 1 = 0.0666667; denitrified 0.09 * 0.1/4.1 * 2 = 0.00439024; oxidised 0.2 * 4/4.5 * 10
// = 1.777778; sediment 1/2 * 4/4.5 = 0.4444444; reaerated 1 * (Cs - 4); photosynthesis 0.5 * 3.
TEST(OxygenKinetics, AddsUpItsProcesses) {
  Model model(1, "oxygen");
  model.problem.segments[0].minimum_depth = 2;
  model.problem.parameters = {{2, {1.0}}, {5, {3.0}}};
  model.problem.constants = {{31, 1.0}};
  model.problem.time_functions = {3};
  model.forcing.time_functions[2] = 0.5f;
  model.problem.initial = {1, 2, 10, 4};
  const auto rates = [&model] {
    const auto kinetics = make_kinetics("oxygen", model.problem);
    Hydraulics hydraulics(model.problem);
    const double none[] = {0}, volume[] = {1};
    hydraulics.update(model.problem, none, volume);
    const std::vector<double> functions(model.forcing.time_functions.begin(), model.forcing.time_functions.end());
    kinetics->update(hydraulics, TimeFunctions(functions));
    std::vector<double> rate(4);
    const double* from[] = {&model.problem.initial[0], &model.problem.initial[1], &model.problem.initial[2],
                            &model.problem.initial[3]};
    double* to[] = {&rate[0], &rate[1], &rate[2], &rate[3]};
    kinetics->rates(0, 1, from, to);
    return rate;
  };
  const std::vector<double> at_20 = rates();
  EXPECT_NEAR(at_20[ammonium], -0.0666667, 1e-6);
  EXPECT_NEAR(at_20[nitrate], 0.0666667 - 0.0043902, 1e-6);
  EXPECT_NEAR(at_20[cbod], -1.7777778, 1e-6);
  EXPECT_NEAR(at_20[oxygen], oxygen_saturation(20, 0) - 4 + 1.5 - 1.7777778 - 4.57 * 0.0666667 - 0.4444444, 1e-6);

  model.problem.parameters[1] = {4.0}; // adds to the time function's 26: 30 deg C
  model.problem.time_functions.insert(1);
  model.forcing.time_functions[0] = 26;
  EXPECT_NEAR(rates()[cbod], -1.7777778 * std::pow(1.047, 10), 1e-5);

  model.problem.segments[0].type = subsurface; // no air there
  EXPECT_NEAR(rates()[oxygen] + 1.7777778 * std::pow(1.047, 10),
              1.5 - 4.57 * 0.0666667 * std::pow(1.083, 10) - 0.4444444 * std::pow(1.065, 10), 1e-5);
}

// Streeter and Phelps, 1925: with travel time t, L = L0 exp(-kd t) and
// D = kd L0 / (ka - kd) (exp(-kd t) - exp(-ka t)) + D0 exp(-ka t). Upwind segments are of first order: half as long,
// half the error.
TEST(OxygenKinetics, SteadySagConvergesToTheClassicSolution) {
  constexpr double kd = 0.3, ka = 0.7, cbod_in = 12, travel = 4;
  const auto error = [&](int n) {
    Model model(static_cast<std::size_t>(n), "oxygen");
    for (Segment& segment : model.problem.segments) segment.volume = travel / n; // a flow of 1 m3/day takes 4 days
    model.through(1);
    model.problem.constants = {{11, 0}, {15, 0}, {21, kd}, {23, 0}, {31, ka}};
    model.boundary(cbod, 0) = cbod_in;
    model.boundary(oxygen, 0) = 8;
    const double saturation = oxygen_saturation(20, 0);
    const State state = model.run(runge_kutta, 4 * travel, 8 * n);
    double largest = 0;
    for (int i = 0; i < n; ++i) {
      const double t = travel * (i + 1) / n; // a mixed segment is like its downstream end
      const double deficit =
          kd * cbod_in / (ka - kd) * (std::exp(-kd * t) - std::exp(-ka * t)) + (saturation - 8) * std::exp(-ka * t);
      largest = std::max(largest, std::abs(saturation - deficit - state.of(oxygen)[static_cast<std::size_t>(i)]));
    }
    return largest;
  };
  const double coarse = error(50), fine = error(100), finest = error(200);
  EXPECT_LT(finest, 0.02);
  EXPECT_NEAR(coarse / fine, 2, 0.1);
  EXPECT_NEAR(fine / finest, 2, 0.05);
}

// A demand of order 0 takes what is there and no more: 1 g of the 2 g demanded, and nothing comes from nowhere.
TEST(OxygenKinetics, DemandEndsWhereNothingIsLeft) {
  Model model(1, "oxygen");
  model.problem.segments[0].minimum_depth = 1;
  model.problem.segments[0].type = subsurface;
  model.problem.constants = {{33, 2.0}, {35, 0}};
  model.problem.initial = {0, 0, 0, 1};
  model.problem.balance_system = oxygen;
  for (const int technique : {euler, runge_kutta, bdf}) {
    EXPECT_NEAR(model.run(technique, 1, 10).of(oxygen)[0], 0, technique == bdf ? 1e-3 : 0) << technique;
    EXPECT_NEAR(model.balance.moved.reacted, -1, technique == bdf ? 1e-3 : 1e-12);
    EXPECT_NEAR(model.balance.clipped, 0, technique == bdf ? 1e-6 : 1e-12); // what results show as 0 is its own error
    EXPECT_NEAR(model.balance.relative_error(), 0, 1e-12);
  }
  model.problem.negative_allowed = true;
  EXPECT_NEAR(model.run(euler, 1, 10).of(oxygen)[0], -1, 1e-12);
}

// 200 g/m3 of BOD in closed water that runs out of oxygen in a few hours; from then on reaeration is all that can
// oxidise it. Without a closed form, so by small steps of the two equations alone, written out here.
double bod_on_day_5() {
  const double saturation = oxygen_saturation(20, 0), days = 1e-5;
  double bod = 200, dissolved = 8;
  for (int step = 0; step < 500'000; ++step) {
    const double oxidised = 0.4 * bod * dissolved / (0.5 + dissolved);
    bod -= days * oxidised;
    dissolved += days * (0.9 * (saturation - dissolved) - oxidised);
  }
  return bod;
}

TEST(OxygenKinetics, NearlyGoneOxygenMakesNoMass) {
  Model model(1, "oxygen");
  model.problem.segments[0].minimum_depth = 1;
  model.problem.constants = {{21, 0.4}, {23, 0.5}, {31, 0.9}};
  model.problem.initial = {0, 0, 200, 8};
  const double expected = bod_on_day_5();
  EXPECT_NEAR(expected, 151.9, 0.1);
  const auto check = [&](int technique, const State& state, double tolerance) {
    EXPECT_NEAR(state.of(cbod)[0], expected, expected * tolerance) << technique;
    const auto& systems = model.all_balances->systems;
    for (const std::size_t s : {cbod, oxygen}) {
      EXPECT_NEAR(systems[s].clipped, 0, 1e-9) << technique;
      EXPECT_NEAR(systems[s].relative_error(), 0, 1e-12) << technique;
    }
    // What was oxidised took as much oxygen: both changed by reactions alone, and by reaeration.
    const double aerated = systems[oxygen].moved.reacted - systems[cbod].moved.reacted;
    EXPECT_GT(aerated, 0) << technique;
    EXPECT_LT(aerated, 5 * 0.9 * oxygen_saturation(20, 0)) << technique; // never more than from water without any
  };
  const StepRules automatic{.steps = {{0, 1}}, .largest = 1, .smallest = 1e-4, .fraction = 0.9, .automatic = true};
  for (const int technique : {euler, runge_kutta, bdf}) check(technique, model.run(technique, 5, automatic), 0.02);
  // Steps so long that every one runs out of oxygen: less is oxidised, none of it with oxygen from nowhere.
  for (const int technique : {euler, runge_kutta}) {
    check(technique, model.run(technique, 5, 50), 0.03);
    check(technique, model.run(technique, 5, 5), 0.2);
  }
}

// All four systems and their couplings, in a flow that fills the last segment: two methods that share no formula.
TEST(OxygenKinetics, ImplicitAndExplicitTechniquesAgree) {
  Model model(3, "oxygen");
  for (Segment& segment : model.problem.segments) segment.minimum_depth = 1;
  model.flow(outside, 0, 1);
  model.flow(0, 1, 1);
  model.flow(1, 2, 1);
  model.exchange(0, 2, 0.5);
  model.problem.constants = {{11, 0.5}, {21, 2.0}, {31, 1.5}, {33, 1.0}};
  for (std::size_t s = 0; s < 4; ++s) model.boundary(s, 0) = 10;
  model.start_all_at(oxygen, 8);
  const State exact = model.run(runge_kutta, 4, 4000);
  model.problem.balance_system = nitrate;
  const State implicit = model.run(bdf, 4, 8);
  for (std::size_t k = 0; k < exact.concentration.size(); ++k)
    EXPECT_NEAR(implicit.concentration[k], exact.concentration[k], 1e-4) << k;
  EXPECT_DOUBLE_EQ(implicit.volume[2], 5);
  EXPECT_NEAR(model.balance.relative_error(), 0, 1e-12);
}

// Solids settle with v / H: out of the model, or to the segment beneath; decay with theta^(T - 20).
TEST(TracerKinetics, SolidsSettleAndTracersDecay) {
  Model model(3);
  for (Segment& segment : model.problem.segments) segment.minimum_depth = 2;
  model.problem.constants = {{1, 0.5}, {2, 1.1}};
  model.problem.parameters = {{1, {20, 20, 22}}, {4, {1.0, 0.0, 1.0}}};
  model.problem.segments[0].bottom = 2;
  for (std::size_t s = 0; s < 3; ++s) model.start_all_at(s, 1);
  model.problem.balance_system = 2;
  for (const auto& [technique, error] : {std::pair(runge_kutta, 1e-9), std::pair(bdf, 2e-5)}) {
    model.balance = {};
    const State state = model.run(technique, 1, 50);
    EXPECT_DOUBLE_EQ(state.of(0)[0], 1);
    EXPECT_NEAR(state.of(1)[0], std::exp(-0.5), error);
    EXPECT_NEAR(state.of(1)[2], std::exp(-0.5 * 1.21), error);
    const double left = std::exp(-0.5);
    EXPECT_NEAR(state.of(2)[0], left, error);
    EXPECT_NEAR(state.of(2)[1], 1, 1e-12);
    EXPECT_NEAR(state.of(2)[2], left + 0.5 * left, error); // its own, and what came from above: 0.5 t exp(-0.5 t)
    EXPECT_NEAR(model.balance.moved.reacted, 2.5 * left + 1 - 3, 2 * error); // what settled out of the model
    EXPECT_NEAR(model.balance.relative_error(), 0, 1e-12);
  }
}

// Solids settle from a water segment of 2 m onto a bed of 0.1 m, which keeps them, although the constant is for all
// segments. With a velocity of its own the bed loses them in turn: with a = 0.5/day and b = 1/day, a (e^-at - e^-bt) /
// (b - a) are in it.
TEST(TracerKinetics, BedKeepsWhatSettlesUnlessAVelocityIsGiven) {
  Model model(2);
  model.problem.segments[0].minimum_depth = 2;
  model.problem.segments[0].bottom = 1;
  model.initial(2, 0) = 1;
  model.problem.constants = {{3, 1.0}};
  for (const int type : {surface_benthic, subsurface_benthic}) {
    model.problem.segments[1].type = type;
    const State state = model.run(runge_kutta, 3, 300);
    EXPECT_NEAR(state.of(2)[0], std::exp(-1.5), 1e-9);
    EXPECT_NEAR(state.of(2)[1], 1 - std::exp(-1.5), 1e-9);
  }
  model.problem.parameters = {{4, {1.0, 0.1}}};
  model.problem.segments[1].minimum_depth = 0.1;
  EXPECT_NEAR(model.run(runge_kutta, 3, 300).of(2)[1], std::exp(-1.5) - std::exp(-3.0), 1e-8);

  Model oxygen_demand(1, "oxygen"); // the other kinetics that settle
  oxygen_demand.problem.segments[0].type = surface_benthic;
  oxygen_demand.problem.segments[0].minimum_depth = 1;
  oxygen_demand.problem.constants = {{24, 1.0}, {21, 0.0}};
  oxygen_demand.problem.dissolved.assign(4, 0.0);
  oxygen_demand.initial(cbod, 0) = 10;
  EXPECT_EQ(oxygen_demand.run(euler, 1, 10).of(cbod)[0], 10);
}

TEST(Hydraulics, PowersOfTheFlowOrTheBox) {
  Model model(2);
  model.problem.segments[0] = {.name = "s1",
                               .volume = 1,
                               .velocity_multiplier = 0.2,
                               .velocity_exponent = 0.5,
                               .depth_multiplier = 0.4,
                               .depth_exponent = 0.5};
  model.problem.segments[1] = {.name = "s2", .volume = 600, .length = 100, .width = 3};
  Hydraulics hydraulics(model.problem);
  const double flow[] = {4, 9}, volume[] = {1, 600};
  hydraulics.update(model.problem, flow, volume);
  EXPECT_DOUBLE_EQ(hydraulics.velocity()[0], 0.4);
  EXPECT_DOUBLE_EQ(hydraulics.depth()[0], 0.8);
  EXPECT_DOUBLE_EQ(hydraulics.depth()[1], 2);
  EXPECT_DOUBLE_EQ(hydraulics.velocity()[1], 1.5);
}

// Any count, so with and without a rest that fills no vector, in one call and in two; any number of rows together.
TEST(Kernels, ReplaceInPlaceWhatAPlainLoopWorksOut) {
  for (std::size_t count = 1; count < 30; ++count) {
    std::vector<double> keep(count), lower(count), upper(count);
    for (std::size_t k = 0; k < count; ++k) {
      const auto x = static_cast<double>(k + 1);
      keep[k] = 0.5 + 0.001 * x, lower[k] = 0.3 / x, upper[k] = 0.2 - 0.003 * x;
    }
    const std::size_t row_count = 1 + count % 7, half = count / 2;
    std::vector<std::vector<double>> rate(row_count), values(row_count), expected(row_count);
    std::vector<AdvanceRow> rows;
    for (std::size_t r = 0; r < row_count; ++r) {
      const double before = 11.0 + static_cast<double>(r), behind = 13.0 - static_cast<double>(r);
      for (std::size_t k = 0; k < count; ++k) {
        rate[r].push_back(static_cast<double>(k + r) / 7);
        values[r].push_back(static_cast<double>((k + 1) * (k + r + 1)));
      }
      for (std::size_t k = 0; k < count; ++k)
        expected[r].push_back(keep[k] * values[r][k] + lower[k] * (k > 0 ? values[r][k - 1] : before) +
                              upper[k] * (k + 1 < count ? values[r][k + 1] : behind) + keep[k] * rate[r][k]);
      rows.push_back({rate[r].data(), values[r].data(), before, values[r][half], 1e9});
    }
    std::vector<double> last;
    for (const auto& row : values) last.push_back(row.back());
    EXPECT_FALSE(advance(half, {keep.data(), lower.data(), upper.data(), keep.data(), 0}, rows, true));
    for (std::size_t r = 0; r < row_count; ++r)
      rows[r] = {&rate[r][half], &values[r][half], rows[r].before, 13.0 - static_cast<double>(r), 1e9};
    rows.back().most = expected.back().back() - 1e-9; // of the last row alone
    EXPECT_TRUE(advance(count - half, {&keep[half], &lower[half], &upper[half], &keep[half], 0}, rows, true));
    EXPECT_EQ(values, expected);
    for (std::size_t r = 0; r < row_count; ++r) EXPECT_EQ(rows[r].before, last[r]);
  }
}

TEST(StepControl, KeepsToTheRulesAndDividesTheWayEvenly) {
  Model model(2);
  StepRules rules{.steps = {{0, 0.5}, {10, 0.1}}, .largest = 1, .smallest = 0.01, .fraction = 0.5, .automatic = true};
  const auto step = [&](double limit, double now, double remaining) {
    return choose_step(rules, {limit, 1, limit, 1}, model.problem, now, remaining).days;
  };
  EXPECT_DOUBLE_EQ(step(100, 0, 10), 0.5);
  EXPECT_DOUBLE_EQ(step(100, 10, 10), 0.1);
  EXPECT_DOUBLE_EQ(step(0.5, 0, 10), 0.25);
  EXPECT_DOUBLE_EQ(step(100, 0, 1.1), 1.1 / 3);
  EXPECT_DOUBLE_EQ(step(100, 0, 0.001), 0.001);
  const auto complaint = [&](double limit) {
    try {
      step(limit, 0, 1);
    } catch (const RunError& error) {
      return std::string(error.what());
    }
    return std::string();
  };
  EXPECT_EQ(complaint(0.01), "The stable time step in segment 2 (s2) is 0.005 days, below the minimum time step of "
                             "0.01 days.");
  rules.automatic = false;
  EXPECT_DOUBLE_EQ(step(0.6, 0, 1), 0.5);
  EXPECT_EQ(complaint(0.4), "The time step of 0.5 days is longer than segment 2 (s2) allows, which is 0.4 days.");
  rules.steps[1].second = 0;
  EXPECT_THROW(rules.check(), InputError);
}

} // namespace
} // namespace reference_engine
