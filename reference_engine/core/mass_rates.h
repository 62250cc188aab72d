// The mass balance as an implicit method wants it: one vector of masses, its rate of change, and how that rate depends
// on the masses.
//
// The vector holds g by [simulated system][segment], and behind them, when a system's balance is kept, the account of
// what it gained and lost. Since the account is solved together with the masses, by the same formula, the balance
// closes to rounding whatever the tolerance: no multistep method moves a quantity whose rate of change is always 0.
#ifndef REFERENCE_ENGINE_CORE_MASS_RATES_H
#define REFERENCE_ENGINE_CORE_MASS_RATES_H

#include "core/equations.h"
#include "core/newton_solver.h"
#include "core/state.h"

#include <cstdint>
#include <span>
#include <vector>

namespace reference_engine {

class MassRates {
public:
  using Columns = NewtonSolver::Columns; // of size() unknowns with nonzeros() values

  // Keeps a reference to the equations.
  explicit MassRates(const Equations& equations);

  std::size_t size() const { return simulated_.size() * count_ + (accounted_ ? accounts : 0); }
  std::size_t nonzeros() const { return nonzeros_; } // the same at each call of jacobian

  // The step that begins now: volumes go on from the state's by the network's change.
  void begin(const State& state);
  std::span<const double> volume() const { return volume_; } // m3, as last asked for

  void masses(const State& state, double* masses) const;              // leaves the account alone
  void concentrations(const double* masses, State& state) const;      // by the state's volumes
  MassFlux account(const double* masses) const;                       // g; all 0 where none is kept
  void rates(double elapsed, const double* masses, double* rates);    // g/day at `elapsed` days of the step
  void jacobian(double elapsed, const double* masses, Columns& into); // d(rate) / d(mass)

private:
  enum Account { inflow, outflow, loads, reacted, accounts };

  void take(double elapsed, const double* masses);
  void find_reactions(const std::vector<double>& concentration, std::vector<double>& rate) const;
  void find_reaction_slopes();
  void add_transport(const TransportClass& its_class, std::size_t system, double* rates);
  template <class Entry>
  void add_column(const TransportClass& its_class, std::size_t place, std::size_t segment, Entry entry) const;

  const Equations& equations_;
  std::size_t count_; // segments
  bool reacts_, accounted_;
  std::vector<std::size_t> simulated_;              // systems, in order of their places in the vector
  std::vector<const TransportClass*> class_of_;     // by place
  std::vector<std::size_t> far_starts_, far_terms_; // far terms by source
  std::vector<std::size_t> rim_of_;                 // position in the rim of each segment; its size for none
  std::size_t nonzeros_ = 0;
  std::vector<double> start_volume_, volume_, concentration_, rate_;
  std::vector<double> shifted_, shifted_rate_; // concentrations and reactions beside those
  std::vector<double> slope_;                  // [place of the cause][place of the effect][segment], 1/day
  std::vector<double> gain_;
};

} // namespace reference_engine

#endif
