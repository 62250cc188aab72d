// The report at the end of a run: its steps and what limited them, and the balances of water and mass.
#ifndef REFERENCE_ENGINE_HOST_RUN_REPORT_H
#define REFERENCE_ENGINE_HOST_RUN_REPORT_H

#include "core/integrator.h"
#include "core/problem.h"
#include "core/state.h"
#include "core/step_control.h"

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace reference_engine {

class RunReport {
public:
  explicit RunReport(const Problem& problem) : problem_(problem) {}

  void note(const StepChoice& step);
  long long steps() const { return steps_; }

  // Each of these is one sentence without a line end.
  // "Mass balance of ... in kg: inflow ..., ..."
  std::string mass_balance(std::size_t system, const MassBalance& balance) const;
  // For a system with more clipping than rounding explains.
  std::string clipping(std::size_t system, const MassBalance& balance) const;
  // linked: a hydrodynamic file prescribed the volumes.
  std::string water_balance(const WaterBalance& balance, bool linked) const;
  // "longest step 0.04 days, most often limited by segment 12 (Halifax) (61 % of steps)"
  std::string step_summary() const;
  std::string limitation(const Integrator::Limited& limited) const;

private:
  std::string name(StepBound bound, std::size_t segment) const;

  const Problem& problem_;
  long long steps_ = 0;
  double longest_ = 0;                                            // days
  std::map<std::pair<StepBound, std::size_t>, long long> bounds_; // steps by what limited them
};

// An attribute of the results: a name of letters, digits and underscores, and a text.
using ResultNote = std::pair<std::string, std::string>;

// Balances and steps as attributes.
std::vector<ResultNote> notes_of(const RunReport& report, const Problem& problem, const Balances& balances,
                                 bool linked);

} // namespace reference_engine

#endif
