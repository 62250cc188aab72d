// A chain of segments with flow and dispersion, through which the bundled engine carries systems, for benchmarks of its
// core alone.
#pragma once

#include "core/equations.h"
#include "core/integrator.h"

#include <cstddef>
#include <memory>

namespace vesk::bench {

constexpr double chain_flow = 5, chain_dispersion = 2; // m3/s

double chain_volume(std::size_t segment); // m3
double chain_start(std::size_t system, std::size_t segment);
double chain_boundary(std::size_t system);

// What a flow or exchange does over the days of a line of forcing.
enum class chain_forcing {
  steady,
  balanced, // all flows and exchanges change, water in as out
  filling   // flow into the chain and out of it differ, so that volumes change too
};

// Ready for steps.
struct chain {
  reference_engine::Problem problem;
  reference_engine::Forcing forcing;
  std::unique_ptr<reference_engine::Equations> equations;
  std::unique_ptr<reference_engine::State> state;
  std::unique_ptr<reference_engine::Balances> balances;
  std::unique_ptr<reference_engine::Integrator> integrator;

  // So many systems that are only carried; or those of the model `library`.
  chain(std::size_t segments, std::size_t systems, reference_engine::Technique technique);
  chain(std::size_t segments, const char* library, reference_engine::Technique technique);

  // Puts the forcing on a line of so many days from the state's day on.
  void drive(chain_forcing kind, double days);
  // The next interval of a series of jumps.
  void jump(double flow);
  // As a run of the engine does it: the limit first.
  void step(double days);

private:
  void connect(std::size_t segments, std::size_t systems);
  void set_flow(double factor, double outflow_factor);
};

} // namespace vesk::bench
