// How a State is moved over one step, within an interval of the equations' forcing.
#ifndef REFERENCE_ENGINE_CORE_INTEGRATOR_H
#define REFERENCE_ENGINE_CORE_INTEGRATOR_H

#include "core/equations.h"
#include "core/state.h"

#include <limits>
#include <memory>
#include <set>
#include <utility>
#include <vector>

namespace reference_engine {

// The catalogue's numbers: never change.
enum class Technique { explicit_euler = 1, runge_kutta_4 = 2, implicit_bdf = 3 };

class Integrator {
public:
  virtual ~Integrator() = default;

  // The longest step that the technique can take from the state, with the forcing as a step of so many days meets it.
  // enough: as for Equations::limit.
  virtual StepLimit limit(Equations& equations, const State& state, double days,
                          double enough = std::numeric_limits<double>::infinity()) = 0;

  // Moves the state by `days`. Throws InputError when a segment runs dry and RunError when a concentration is not a
  // finite number; the state must then not be used again.
  virtual void step(Equations& equations, State& state, double days, Balances& balances) = 0;

  // A concentration above its system's largest.
  struct Exceedance {
    std::size_t system, segment;
    double value; // g/m3
  };
  // Looks for them in a state that is not the result of a step.
  void note_exceedances(const Problem& problem, const State& state);
  // Those found since the last call. Of each system only the first is ever reported.
  std::vector<Exceedance> take_exceedances() { return std::exchange(exceedances_, {}); }

  // Where reactions had to take less than their rates, since a step would have gone below 0.
  struct Limited {
    long long steps = 0;
    std::size_t segment = 0; // the first one, and the day of its step
    double day = 0;
  };
  const Limited& limited() const { return limited_; }

protected:
  void note_limited(std::size_t segment, double day);
  // The volumes of a stretch after a step of so many days, from the equations at its middle: flows are linear in
  // time, so the change of volume there is its mean. False when none changes: then nothing is written.
  bool find_new_volumes(const Equations& equations, const State& state, double days, const LayerValues& layers,
                        double* new_volume);
  // The same where the movement of water is known, from segment begin on.
  static void change_volumes(const Problem& problem, const State& state, double days, const WaterMoved& water,
                             std::size_t begin, double* new_volume);
  // Between which a system's concentrations must lie.
  struct Limits {
    double least, most;
  };
  Limits limits(const Problem& problem, std::size_t system) const;
  // Holds segments begin to end of one system to what the problem allows: not below 0 (set to 0, and noted in the
  // balance by the state's volumes), and above its largest concentration only with a note.
  void hold_limits(const Problem& problem, std::size_t system, std::size_t begin, std::size_t end, State& state,
                   Balances& balances);

private:
  void note_exceedance(const Exceedance& it);

  std::vector<Exceedance> exceedances_; // not yet taken
  std::set<std::size_t> exceeded_;      // systems of all that were found
  Limited limited_;
  double limited_day_ = -1; // of the latest step that counts
  WaterMoved water_;
};

// technique: the data set's number, where 0 is the first. Throws InputError for one that this engine does not offer.
std::unique_ptr<Integrator> make_integrator(int technique);

} // namespace reference_engine

#endif
