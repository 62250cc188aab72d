// The mass balance as an implicit method wants it: one vector of unknowns, its rate of change, and how that rate
// depends on the unknowns.
//
// The vector holds g by [simulated system][segment]: the mass less what came through the boundary and by loads since
// the first step, which is a known polynomial in time. It therefore arrives in full, and the solver sees a kink or jump
// of a series one order smoother. The masses are followed by accounts of what each system lost through the boundary and
// by reactions. Since they are solved together with the masses, by the same formula, the balance closes to rounding at
// any tolerance: no multistep method moves a quantity whose rate of change is always 0.
#ifndef REFERENCE_ENGINE_CORE_MASS_RATES_H
#define REFERENCE_ENGINE_CORE_MASS_RATES_H

#include "core/equations.h"
#include "core/jacobian.h"
#include "core/state.h"

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace reference_engine {

class MassRates {
public:
  // Keeps a reference to the equations, and moves them to each day that it is asked for.
  explicit MassRates(Equations& equations);

  std::size_t size() const { return simulated_.size() * (count_ + accounts); }
  JacobianShape shape() const;

  // The unknowns of a state from which a solution starts; leaves the accounts alone.
  void start(const State& state, double* unknowns);
  // The step of so many days that begins now, at the state's day. Adds to the balances what comes in over the step.
  // True when the coefficients are not those at the end of the step before: the solution then has to restart.
  bool begin(const State& state, double days, Balances& balances);
  // At the end of that step: the concentrations, by the state's volumes.
  void finish(const double* unknowns, State& state);
  // Adds what the accounts moved by from `before` to `after`.
  void add_losses(const double* before, const double* after, Balances& balances) const;

  void rates(double elapsed, const double* unknowns, double* rates); // g/day at `elapsed` days of the step
  void jacobian(double elapsed, const double* unknowns, Jacobian& into);
  // weights[k] = 1 / (relative mass + absolute volume), at about the day that was last asked for; next to nothing
  // for the accounts, which follow the masses.
  void weigh(const double* unknowns, double relative, double absolute, double* weights) const;

private:
  enum Account { outflow, reacted, accounts };
  // Of one gaining segment: g that came before the step, and g/day as a polynomial of the days of the step.
  struct Arrival {
    double before = 0;
    std::array<double, 3> rate{};

    double until(double elapsed) const {
      return before + elapsed * (rate[0] + elapsed * (rate[1] / 2 + elapsed * rate[2] / 3));
    }
  };

  std::size_t account(std::size_t place, Account which) const {
    return simulated_.size() * count_ + place * accounts + which;
  }
  void find_what_runs_out();
  void sample_sources(std::size_t sample, double share_of_step, Balances& balances);
  void take(double elapsed, const double* unknowns);
  void find_reactions(const std::vector<double>& concentration, std::vector<double>& rate) const;
  void fade_reactions(const std::vector<double>& concentration, std::vector<double>& rate) const;
  void find_reaction_slopes(std::vector<double>& slopes);
  void take_coefficients();
  void add_transport(const TransportClass& its_class, std::size_t system, double* rates);
  void find_outflow_slopes(const TransportClass& its_class, const Coefficients& its, Jacobian::OfClass& into) const;
  bool has_jumped() const;

  Equations& equations_;
  std::size_t count_; // segments
  bool reacts_;
  Stoichiometry stoichiometry_;
  std::vector<std::size_t> runs_out_;           // systems with losses of order 0
  std::vector<std::size_t> simulated_;          // systems, in order of their places in the vector
  std::vector<const TransportClass*> class_of_; // by place
  std::array<std::vector<double>, 3> last_;     // flows, exchanges and time functions at the end of the step
  double begin_ = 0, days_ = 0, elapsed_ = 0;   // of the step
  std::vector<Arrival> arrivals_;               // [place][gaining]
  std::vector<double> samples_;                 // [sample][place][gaining], g/day
  std::vector<Coefficients> coefficients_;      // by class, of all segments
  std::uint64_t version_ = 0;                   // of the equations, that they are of
  LayerValues layers_;
  WaterMoved water_;
  std::vector<double> start_volume_, start_change_, bend_; // volume = start + elapsed (change + elapsed bend)
  std::vector<double> volume_, per_volume_, concentration_, rate_;
  std::vector<double> shifted_, shifted_rate_; // concentrations and reactions beside those
  std::vector<double> gain_;
};

} // namespace reference_engine

#endif
