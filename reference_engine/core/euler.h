// Explicit Euler: first order, one pass over memory for all systems. Of the forcing it takes the mean over the step, so
// that all arrives that a series says.
#ifndef REFERENCE_ENGINE_CORE_EULER_H
#define REFERENCE_ENGINE_CORE_EULER_H

#include "core/integrator.h"
#include "core/kernels.h"

#include <cstdint>
#include <vector>

namespace reference_engine {

class Euler : public Integrator {
public:
  StepLimit limit(Equations& equations, const State& state, double days) override;
  void step(Equations& equations, State& state, double days, Balances& balances) override;

private:
  // C_new = keep C_i + lower C_(i-1) + upper C_(i+1) + the rest: the coefficients of one class for this step.
  struct Scaled {
    std::vector<double> keep, lower, upper;
  };

  void prepare(const Equations& equations, const State& state, double days);
  void gather(const Equations& equations, const State& state, double days, Balances& balances);
  // Moves one class over a block of segments. Whether one of them ends outside its limits.
  bool advance_class(const Equations& equations, std::size_t its_class, std::size_t begin, std::size_t end, bool reacts,
                     State& state);
  double reacted(std::size_t system, std::size_t begin, std::size_t end, const State& state) const; // g/day
  void limit_reactions(const Equations& equations, std::size_t begin, std::size_t end, State& state);
  // Whether one of the gaining segments ends outside the system's limits.
  bool add_gains(const Equations& equations, std::size_t system, std::size_t begin, std::size_t end,
                 State& state) const;

  std::vector<Scaled> scaled_;            // by class
  std::vector<double> per_gram_;          // days / new volume
  std::vector<double> per_rate_;          // days * volume / new volume
  std::vector<std::vector<double>> gain_; // by system, g/day at the equations' gaining segments
  std::vector<double> before_;            // by system, old value of the last segment of the block before
  std::vector<double> rate_, old_;        // [system], a block: rates, and concentrations before the step
  Stoichiometry stoichiometry_;
  std::vector<double*> rate_rows_;
  std::vector<AdvanceRow> rows_; // of the class at work
  std::vector<const double*> old_rows_;
  std::uint64_t version_ = 0; // that scaled_ was made for, and its step
  double days_ = 0;
};

} // namespace reference_engine

#endif
