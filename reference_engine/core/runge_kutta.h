// The classic explicit Runge-Kutta method of order 4, on the masses V C and the volumes V.
#ifndef REFERENCE_ENGINE_CORE_RUNGE_KUTTA_H
#define REFERENCE_ENGINE_CORE_RUNGE_KUTTA_H

#include "core/euler.h"

#include <vector>

namespace reference_engine {

// A step that would take a concentration below 0 is Euler's instead, which holds reactions to what is there.
class RungeKutta : public Euler {
public:
  StepLimit limit(Equations& equations, const State& state, double days) override;
  void step(Equations& equations, State& state, double days, Balances& balances) override;

private:
  // A stage's concentrations, [system][segment], each system with a 0 before its first and behind its last segment.
  using Padded = std::vector<double>;

  void prepare(const Equations& equations, const State& state);
  bool falls_below_zero(const Equations& equations, const State& state, double days) const; // after all stages
  double* of(Padded& values, std::size_t system) const { return &values[system * stride_ + 1]; }
  void stage(const Equations& equations, const State& state, double weight, double to_next, double days,
             Balances& balances);
  void change_block(const Equations& equations, const TransportClass& its_class, std::size_t system, std::size_t begin,
                    std::size_t end);

  std::size_t stride_ = 0;
  Padded now_, next_;                     // concentrations at this stage and the next
  std::vector<double> sum_;               // [system][segment], weighted changes of mass so far, g/day
  std::vector<double> stage_volume_;      // at this stage
  std::vector<double> next_volume_;       // at the next
  std::vector<std::vector<double>> gain_; // by system, g/day at the equations' gaining segments
  std::vector<double> change_, rate_;     // a block: g/day of one system; [system], g/m3/day
  std::vector<double*> rate_rows_;
  std::vector<const double*> now_rows_;
};

} // namespace reference_engine

#endif
