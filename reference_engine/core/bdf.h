// Implicit backward differentiation by SUNDIALS CVODE, order 1 to 5, for networks whose stable explicit step is much
// shorter than anything that happens in them.
//
// A step is as long as the data set says; CVODE divides it as its error estimate asks (Hindmarsh et al., ACM
// Transactions on Mathematical Software 31, 2005). The linear systems of its Newton iteration are solved directly, in
// blocks of one segment each: see newton_solver.h.
#ifndef REFERENCE_ENGINE_CORE_BDF_H
#define REFERENCE_ENGINE_CORE_BDF_H

#include "core/integrator.h"

#include <memory>

namespace reference_engine {

class Bdf : public Integrator {
public:
  // Tolerances of the local error: a share of the concentration, and g/m3. Some hundred of these errors add up over a
  // run, and a run that is continued from a restart file must still agree to 1e-6.
  static constexpr double relative_tolerance = 1e-8, absolute_tolerance = 1e-10;

  Bdf();
  ~Bdf() override;

  // Bound by the water alone: by the first segment that would run dry.
  StepLimit limit(Equations& equations, const State& state, double days, double enough) override;
  // Throws RunError too where CVODE finds no solution.
  void step(Equations& equations, State& state, double days, Balances& balances) override;

private:
  class Solver;

  std::unique_ptr<Solver> solver_; // made at the first step
  std::vector<double> new_volume_;
  LayerValues layers_; // of all segments
  WaterMoved water_;
  std::vector<double> raised_; // by system, g by which the state exceeds the solver's masses
};

} // namespace reference_engine

#endif
