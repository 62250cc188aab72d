#include "host/run_report.h"

#include "core/text.h"

#include <algorithm>
#include <cctype>
#include <cmath>

namespace reference_engine {

namespace {

std::string shown(double value) {
  return rounded(value, 5);
}

std::string error(double relative) {
  return rounded(relative, 2);
}

std::string attribute_name(std::string name) {
  for (char& c : name)
    if (std::isalnum(static_cast<unsigned char>(c)) == 0) c = '_';
  return name;
}

} // namespace

void RunReport::note(const StepChoice& step) {
  ++steps_;
  longest_ = std::max(longest_, step.days);
  ++bounds_[{step.bound, step.segment}];
}

std::string RunReport::mass_balance(std::size_t system, const MassBalance& balance) const {
  const auto kilograms = [](double grams) { return shown(grams / grams_per_kilogram); };
  return text("Mass balance of ", problem_.systems[system].name, " in kg: inflow ", kilograms(balance.moved.inflow),
              ", outflow ", kilograms(balance.moved.outflow), ", loads ", kilograms(balance.moved.loads), ", reacted ",
              kilograms(balance.moved.reacted), ", stored ", kilograms(balance.stored()), ", clipped ",
              kilograms(balance.clipped), ", relative error ", error(balance.relative_error()), ".");
}

std::string RunReport::clipping(std::size_t system, const MassBalance& balance) const {
  return text("The concentration of ", problem_.systems[system].name, " would have fallen below 0 and was held at 0, ",
              "which added ", shown(balance.clipped / grams_per_kilogram),
              " kg in all. Look for loads, boundaries and ",
              "net photosynthesis below 0, or allow negative solutions.");
}

std::string RunReport::water_balance(const WaterBalance& balance, bool linked) const {
  const std::string moved = text("Water balance in m3: inflow ", shown(balance.inflow), ", outflow ",
                                 shown(balance.outflow), ", stored ", shown(balance.stored()));
  const double difference = balance.stored() - (balance.inflow - balance.outflow);
  if (linked) return text(moved, ", not explained by the flows of the hydrodynamic file ", shown(difference), ".");
  const double size = std::max({balance.at_start, balance.now, balance.inflow, balance.outflow});
  return text(moved, ", relative error ", error(size > 0 ? difference / size : 0), ".");
}

std::string RunReport::name(StepBound bound, std::size_t segment) const {
  switch (bound) {
  case StepBound::given: return "the data set's time step";
  case StepBound::largest: return "the maximum time step";
  case StepBound::event: return "print times, points of series and other events";
  case StepBound::reactions: return "reactions in segment " + numbered(problem_.segments[segment], segment);
  case StepBound::transport: return "segment " + numbered(problem_.segments[segment], segment);
  }
  return {};
}

std::string RunReport::step_summary() const {
  if (steps_ == 0) return "no step";
  const auto most = std::ranges::max_element(bounds_, {}, [](const auto& it) { return it.second; });
  const auto& [bound, segment] = most->first;
  const double share = static_cast<double>(most->second) / static_cast<double>(steps_);
  return text("longest step ", rounded(longest_, 4), " days, most often limited by ", name(bound, segment), " (",
              std::llround(100 * share), " % of steps)");
}

std::string RunReport::limitation(const Integrator::Limited& limited) const {
  return text("In ", limited.steps, " of ", steps_,
              " steps reactions were limited by a lack of oxygen or of another reactant; "
              "first in segment ",
              numbered(problem_.segments[limited.segment], limited.segment), " on day ", shown(limited.day),
              ". Shorter steps follow such reactions more closely.");
}

std::vector<ResultNote> notes_of(const RunReport& report, const Problem& problem, const Balances& balances,
                                 bool linked) {
  std::vector<ResultNote> notes = {{"time_steps", text(report.steps(), " steps; ", report.step_summary(), ".")},
                                   {"water_balance", report.water_balance(balances.water, linked)}};
  for (std::size_t s = 0; s < problem.systems.size(); ++s)
    if (problem.systems[s].simulated)
      notes.emplace_back("mass_balance_" + attribute_name(problem.systems[s].name),
                         report.mass_balance(s, balances.systems[s]));
  return notes;
}

} // namespace reference_engine
