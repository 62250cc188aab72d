// A chain of segments with flow and dispersion, in which the bundled engine transports systems, for benchmarks of its
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

// How a flow or exchange changes over the days of a line of forcing.
enum class chain_forcing {
  steady,
  balanced, // all flows and exchanges change; inflow equals outflow
  filling   // inflow and outflow of the chain differ, so that volumes change too
};

// Ready for the first step.
struct chain {
  reference_engine::Problem problem;
  reference_engine::Forcing forcing;
  std::unique_ptr<reference_engine::Equations> equations;
  std::unique_ptr<reference_engine::State> state;
  std::unique_ptr<reference_engine::Balances> balances;
  std::unique_ptr<reference_engine::Integrator> integrator;

  // This number of systems that are only transported; or those of the model `library`.
  chain(std::size_t segments, std::size_t systems, reference_engine::Technique technique);
  chain(std::size_t segments, const char* library, reference_engine::Technique technique);

  // Sets the forcing to a line over this number of days from the state's day on.
  void drive(chain_forcing kind, double days);
  // The next interval of a series of steps.
  void jump(double flow);
  // As in a run of the engine: computes the limit first.
  void step(double days);

private:
  void connect(std::size_t segments, std::size_t systems);
  void set_flow(double factor, double outflow_factor);
};

} // namespace vesk::bench
