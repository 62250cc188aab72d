// Compared with the best case, an explicit Euler step with steady flows: the cost of a step with flows that change in
// each step, with the other techniques, and with oxygen kinetics.
#include "chain.h"
#include "ratio_table.h"

#include <benchmark/benchmark.h>
#include <cmath>
#include <stdexcept>
#include <string>
#include <vector>

namespace vesk::bench {
namespace {

using namespace reference_engine;

constexpr std::size_t segments = 100'000, carried = 5;
// Steps so short that a benchmark never reaches the end of the line.
constexpr double step_days = 0.001, line_days = 1e4;

void steps(benchmark::State& state, Technique technique, chain_forcing forcing) {
  chain it(segments, carried, technique);
  it.drive(forcing, line_days);
  it.step(step_days);
  for (auto _ : state) it.step(step_days);
}

// 20 steps of a tenth of a day, from a state far from the equilibrium of the kinetics.
enum class bdf_flow { steady, linear, jumping };
void bdf_run(benchmark::State& state, bdf_flow flow) {
  constexpr int count = 20;
  constexpr double days = 0.1;
  for (auto _ : state) {
    chain it(segments, "oxygen", Technique::implicit_bdf);
    if (flow == bdf_flow::linear) it.drive(chain_forcing::filling, count * days);
    for (int step = 0; step < count; ++step) {
      if (flow == bdf_flow::jumping) it.jump(step % 2 == 0 ? 1 : 1.2);
      it.step(days);
    }
  }
}

// The goal for 20 implicit steps.
void eight_seconds(benchmark::State& state) {
  for (auto _ : state) state.SetIterationTime(8);
}

void oxygen_steps(benchmark::State& state) {
  chain it(segments, "oxygen", Technique::explicit_euler);
  it.step(step_days);
  for (auto _ : state) it.step(step_days);
}

// A straightforward implementation: transport and oxygen kinetics one segment at a time, from one array into another,
// with coefficients computed beforehand.
struct plain_oxygen {
  enum { ammonium, nitrate, cbod, oxygen, systems };
  std::vector<double> now, next;          // [segment][system]
  std::vector<double> keep, lower, upper; // for the current step
  double saturation;

  explicit plain_oxygen(double saturated) : next(segments * systems), saturation(saturated) {
    const double days = step_days * seconds_per_day;
    for (std::size_t i = 0; i < segments; ++i) {
      const double share = days / chain_volume(i);
      lower.push_back((chain_flow + (i > 0 ? chain_dispersion : 0)) * share);
      upper.push_back(i + 1 < segments ? chain_dispersion * share : 0);
      keep.push_back(1 - chain_flow * share - (i > 0 ? chain_dispersion * share : 0) - upper.back());
      for (std::size_t s = 0; s < systems; ++s) now.push_back(chain_start(s, i));
    }
  }

  void step() {
    const double boundary[] = {chain_boundary(0), chain_boundary(1), chain_boundary(2), chain_boundary(3)};
    const double nothing[systems] = {};
    for (std::size_t i = 0; i < segments; ++i) {
      const double* const here = &now[i * systems];
      const double* const before = i > 0 ? here - systems : boundary;
      const double* const behind = i + 1 < segments ? here + systems : nothing;
      const double dissolved = here[oxygen];
      const double nitrified = 0.1 * dissolved / (2 + dissolved) * here[ammonium];
      const double denitrified = 0.09 * 0.1 / (0.1 + dissolved) * here[nitrate];
      const double oxidised = 0.2 * dissolved / (0.5 + dissolved) * here[cbod];
      const double rate[] = {-nitrified, nitrified - denitrified, -oxidised,
                             saturation - dissolved - oxidised - 4.57 * nitrified};
      for (std::size_t s = 0; s < systems; ++s)
        next[i * systems + s] = keep[i] * here[s] + lower[i] * before[s] + upper[i] * behind[s] + step_days * rate[s];
    }
    now.swap(next);
  }
};

double saturation() {
  chain it(2, "oxygen", Technique::explicit_euler);
  it.step(step_days);
  std::vector<double> values(2);
  it.equations->output(25, *it.state, values);
  return values[0];
}

void plain_oxygen_steps(benchmark::State& state) {
  plain_oxygen it(saturation());
  it.step();
  for (auto _ : state) it.step();
}

// Both sides make the same steps.
void check() {
  chain ours(segments, "oxygen", Technique::explicit_euler);
  plain_oxygen peer(saturation());
  for (int step = 0; step < 20; ++step) {
    ours.step(step_days);
    peer.step();
  }
  for (std::size_t s = 0; s < plain_oxygen::systems; ++s)
    for (std::size_t i = 0; i < segments; ++i)
      if (std::abs(ours.state->of(s)[i] - peer.now[i * plain_oxygen::systems + s]) > 1e-9)
        throw std::runtime_error("the two sides differ in segment " + std::to_string(i));
}

} // namespace
} // namespace vesk::bench

int main(int argc, char** argv) {
  using namespace vesk::bench;
  using reference_engine::Technique;
  check();
  const auto add = [](const char* name, Technique technique, chain_forcing forcing) {
    benchmark::RegisterBenchmark(name, steps, technique, forcing);
  };
  add("euler/steady", Technique::explicit_euler, chain_forcing::steady);
  add("euler/balanced", Technique::explicit_euler, chain_forcing::balanced);
  add("euler/filling", Technique::explicit_euler, chain_forcing::filling);
  add("runge_kutta/steady", Technique::runge_kutta_4, chain_forcing::steady);
  add("runge_kutta/balanced", Technique::runge_kutta_4, chain_forcing::balanced);
  add("runge_kutta/filling", Technique::runge_kutta_4, chain_forcing::filling);
  benchmark::RegisterBenchmark("oxygen/vesk", oxygen_steps);
  benchmark::RegisterBenchmark("oxygen/plain", plain_oxygen_steps);
  const auto once = [](const char* name, auto... what) {
    return benchmark::RegisterBenchmark(name, what...)->Iterations(1);
  };
  once("bdf/steady", bdf_run, bdf_flow::steady);
  once("bdf/linear", bdf_run, bdf_flow::linear);
  once("bdf/jumping", bdf_run, bdf_flow::jumping);
  once("bdf/limit", eight_seconds)->UseManualTime();
  const std::string end = "/iterations:1";
  const auto bdf = [&](const char* flows, const std::string& name) {
    return ratio_row{std::string("20 steps of implicit BDF, ") + flows + ", against 8 s",
                     name + end,
                     "bdf/limit" + end + "/manual_time",
                     ratio_row::at_most,
                     1,
                     "wall"};
  };
  return run_with_ratios(
      argc, argv,
      {{"an Euler step with flows that change, against steady flows", "euler/balanced", "euler/steady",
        ratio_row::at_most, 1.5},
       {"an Euler step with flows and volumes that change, against steady flows", "euler/filling", "euler/steady",
        ratio_row::at_most},
       {"a Runge-Kutta step, against Euler", "runge_kutta/steady", "euler/steady", ratio_row::at_most, 4.4},
       {"a Runge-Kutta step with flows that change, against steady flows", "runge_kutta/balanced", "runge_kutta/steady",
        ratio_row::at_most},
       {"a Runge-Kutta step with flows and volumes that change, against steady flows", "runge_kutta/filling",
        "runge_kutta/steady", ratio_row::at_most},
       {"an Euler step with oxygen kinetics, against a plain loop", "oxygen/vesk", "oxygen/plain", ratio_row::at_most},
       bdf("steady flows", "bdf/steady"),
       bdf("flows that change linearly", "bdf/linear"),
       bdf("flows that jump at each step", "bdf/jumping")});
}
