// One explicit step of transport along a chain of segments with dispersion, for five systems: the bundled engine's
// Euler step against Boost.odeint's on the same right-hand side, written in the usual way for odeint: a pass over the
// segments, all systems of a segment together, coefficients computed beforehand.
#include "chain.h"
#include "ratio_table.h"

#include <benchmark/benchmark.h>
#include <boost/numeric/odeint.hpp>
#include <cmath>
#include <cstdio>
#include <stdexcept>
#include <vector>

namespace vesk::bench {
namespace {

using namespace reference_engine;

constexpr std::size_t systems = 5;
constexpr double step_days = 0.001;
constexpr double flow = chain_flow, dispersion = chain_dispersion;

// The engine's side, ready for the first step.
struct engine_side : chain {
  explicit engine_side(std::size_t segments) : chain(segments, systems, Technique::explicit_euler) {}
  void step() { chain::step(step_days); }
};

// The peer's side: concentrations as [segment][system].
struct odeint_side {
  std::vector<double> concentration, out, lower, upper; // the latter three 1/day, by segment
  boost::numeric::odeint::euler<std::vector<double>> stepper;

  explicit odeint_side(std::size_t segments) : out(segments), lower(segments), upper(segments) {
    for (std::size_t i = 0; i < segments; ++i) {
      const double per_day = seconds_per_day / chain_volume(i);
      lower[i] = (flow + (i > 0 ? dispersion : 0)) * per_day;
      upper[i] = i + 1 < segments ? dispersion * per_day : 0;
      out[i] = flow * per_day + (i > 0 ? dispersion * per_day : 0) + upper[i];
      for (std::size_t s = 0; s < systems; ++s) concentration.push_back(chain_start(s, i));
    }
  }

  void operator()(const std::vector<double>& c, std::vector<double>& rate, double) const {
    const std::size_t segments = out.size();
    const auto row = [&](std::size_t i, auto before, auto behind) {
      for (std::size_t s = 0; s < systems; ++s)
        rate[i * systems + s] = lower[i] * before(s) - out[i] * c[i * systems + s] + upper[i] * behind(s);
    };
    row(
        0, [](std::size_t s) { return chain_boundary(s); }, [&](std::size_t s) { return c[systems + s]; });
    for (std::size_t i = 1; i + 1 < segments; ++i) {
      const double l = lower[i], o = out[i], u = upper[i];
      const double* const at = &c[i * systems];
      for (std::size_t s = 0; s < systems; ++s)
        rate[i * systems + s] = l * at[s - systems] - o * at[s] + u * at[s + systems];
    }
    const std::size_t last = segments - 1;
    row(
        last, [&](std::size_t s) { return c[(last - 1) * systems + s]; }, [](std::size_t) { return 0.0; });
  }

  void step() { stepper.do_step(std::ref(*this), concentration, 0.0, step_days); }
};

// Both sides make the same steps.
void check(std::size_t segments) {
  engine_side ours(segments);
  odeint_side peer(segments);
  for (int i = 0; i < 20; ++i) {
    ours.step();
    peer.step();
  }
  for (std::size_t s = 0; s < systems; ++s)
    for (std::size_t i = 0; i < segments; ++i)
      if (std::abs(ours.state->of(s)[i] - peer.concentration[i * systems + s]) > 1e-9)
        throw std::runtime_error("the two sides differ in segment " + std::to_string(i));
}

template <class Side>
void measure(benchmark::State& state) {
  Side side(static_cast<std::size_t>(state.range(0)));
  side.step();
  for (auto _ : state) side.step();
}

} // namespace
} // namespace vesk::bench

int main(int argc, char** argv) {
  using namespace vesk::bench;
  check(1000);
  benchmark::RegisterBenchmark("step/vesk", measure<engine_side>)->Arg(1000)->Arg(100'000);
  benchmark::RegisterBenchmark("step/odeint", measure<odeint_side>)->Arg(1000)->Arg(100'000);
  return run_with_ratios(argc, argv,
                         {{"an explicit step, 1e3 segments, 5 systems, against odeint", "step/vesk/1000",
                           "step/odeint/1000", ratio_row::at_least},
                          {"an explicit step, 1e5 segments, 5 systems, against odeint", "step/vesk/100000",
                           "step/odeint/100000", ratio_row::at_least, 2.2}});
}
