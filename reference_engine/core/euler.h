// Explicit Euler: first order, one pass over memory for all systems. Of the forcing it takes the mean over the step, so
// that a load series arrives in full.
#ifndef REFERENCE_ENGINE_CORE_EULER_H
#define REFERENCE_ENGINE_CORE_EULER_H

#include "core/integrator.h"
#include "core/kernels.h"

#include <cstdint>
#include <vector>

namespace reference_engine {

class Euler : public Integrator {
public:
  StepLimit limit(Equations& equations, const State& state, double days, double enough) override;
  void step(Equations& equations, State& state, double days, Balances& balances) override;

private:
  // What C_new = keep C_i + lower C_(i-1) + upper C_(i+1) + the rest needs for a stretch of segments.
  struct Shares {
    struct OfClass {
      std::vector<double> keep, lower, upper;
    };
    std::vector<OfClass> classes;
    std::vector<double> new_volume, per_volume; // at the end of the step, and 1 / that
    std::vector<double> per_rate;               // days * volume / new volume

    void resize(std::size_t class_count, std::size_t size);
  };

  void allocate(const Equations& equations, const State& state);
  // Whether the shares of the whole model, kept from the last step, serve this one.
  bool choose_shares(const Equations& equations, const State& state, double days);
  // Computes the shares of segments begin to end into `into`, from `at` on. True when a volume changes.
  bool find_shares(const Equations& equations, const State& state, std::size_t begin, std::size_t end, Shares& into,
                   std::size_t at);
  void gather(const Equations& equations, const State& state, Balances& balances);
  // The functions below work on segments begin to end, whose shares are in `shares` from `at` on.
  // Moves one class. per_volume: 1 / volume at the end of the step. Whether one of them ends outside its limits.
  bool advance_class(const Equations& equations, std::size_t its_class, std::size_t begin, std::size_t end, bool reacts,
                     const Shares& shares, std::size_t at, const double* per_volume, State& state);
  // Whether one of the gaining segments ends outside the system's limits.
  bool add_gains(const Equations& equations, std::size_t system, std::size_t begin, std::size_t end,
                 const double* per_volume, State& state) const;
  void limit_reactions(const Equations& equations, std::size_t begin, std::size_t end, const double* per_rate,
                       State& state);
  double reacted(std::size_t system, std::size_t begin, std::size_t end, const State& state) const; // g/day

  Shares all_, block_;
  std::vector<double> ratio_;
  LayerValues layers_;
  Coefficients coefficients_;
  std::vector<std::vector<double>> gain_; // by system, g/day at the equations' gaining segments
  std::vector<double> before_;            // by system, old value of the last segment of the block before
  std::vector<double> rate_, old_;        // [system], a block: rates, and concentrations before the step
  Stoichiometry stoichiometry_;
  std::vector<double*> rate_rows_;
  std::vector<AdvanceRow> rows_; // of the class at work
  std::vector<const double*> old_rows_;
  std::uint64_t version_ = 0, volume_version_ = 0; // of the last step, and its length
  double days_ = 0;
  bool kept_ = false; // all_ is of that step
};

} // namespace reference_engine

#endif
