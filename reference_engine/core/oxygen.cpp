#include "core/oxygen.h"

#include "core/dispatch.h"
#include "core/errors.h"
#include "core/oxygen_formulas.h"
#include "core/text.h"

#include <algorithm>

namespace reference_engine {

namespace {

enum { ammonium, nitrate, cbod, oxygen };

// ISC numbers, shared with the catalogue.
enum {
  nitrification_rate = 11,
  nitrification_theta,
  nitrification_half,
  nitrification_oxygen,
  denitrification_rate,
  denitrification_theta,
  denitrification_half,
  oxidation_rate = 21,
  oxidation_theta,
  oxidation_half,
  settling_constant,
  reaeration_constant = 31,
  reaeration_theta,
  demand_constant,
  demand_theta,
  demand_half,
  salinity_constant
};
enum { demand_parameter = 2, reaeration_parameter, settling_parameter, photosynthesis_parameter, salinity_parameter };
enum { wind_function = 2, light_function = 3 };
// Reactions, in the order of their extents.
enum { nitrification, denitrification, oxidation, sediment_demand, reaeration, photosynthesis, reactions };
enum { first_system_output = 21, last_system_output = 24, saturation_output, deficit_output, reaeration_output };

[[gnu::always_inline]] inline double part_above_0(double value) {
  return value > 0 ? value : 0;
}

// Share of its full rate at which a process runs that needs oxygen (Monod). A half-saturation of 0 asks for no oxygen:
// then numerator and denominator are the same, without a branch, which loops over segments could not do in vectors.
struct Monod {
  double offset, half_saturation; // of the numerator, and of the denominator

  explicit Monod(double half) : offset(half > 0 ? 0 : 1), half_saturation(half > 0 ? half : 1) {}
  // there: g/m3, 0 or more.
  [[gnu::always_inline]] double share(double there) const { return (there + offset) / (there + half_saturation); }
  // What a process takes of the oxygen, as a share of what is there. `full` is what it takes at its full rate; without
  // a half-saturation it is a loss of order 0.
  [[gnu::always_inline]] double relative_loss(double full, double there) const {
    return (1 - offset) * full / (there + half_saturation);
  }
};

// The same for a process that oxygen hinders. A half-saturation of 0 lets it run only without any: the smallest number
// takes its place.
struct Inhibition {
  double half_saturation;

  explicit Inhibition(double half) : half_saturation(half > 0 ? half : 1e-300) {}
  [[gnu::always_inline]] double share(double there) const { return half_saturation / (half_saturation + there); }
};

} // namespace

ModelInfo Oxygen::info() {
  return {.library = library,
          .systems = {"ammonium nitrogen", "nitrate nitrogen", "ultimate CBOD", "dissolved oxygen"},
          .parameters = {{1, 0, -10, 45},
                         {demand_parameter, 0, 0, 20},
                         {reaeration_parameter, 0, 0, 100},
                         {settling_parameter, 0, 0, 50},
                         {photosynthesis_parameter, 0, -20, 40},
                         {salinity_parameter, 0, 0, 45}},
          .time_functions = {1, wind_function, light_function},
          .constants = {{nitrification_rate, 0.1, 0, 10},
                        {nitrification_theta, 1.083, 1, 1.2},
                        {nitrification_half, 2, 0, 5},
                        {nitrification_oxygen, 4.57, 0, 5},
                        {denitrification_rate, 0.09, 0, 5},
                        {denitrification_theta, 1.045, 1, 1.2},
                        {denitrification_half, 0.1, 0, 5},
                        {oxidation_rate, 0.2, 0, 10},
                        {oxidation_theta, 1.047, 1, 1.2},
                        {oxidation_half, 0.5, 0, 5},
                        {settling_constant, 0, 0, 50},
                        {reaeration_constant, 0, 0, 100},
                        {reaeration_theta, 1.024, 1, 1.1},
                        {demand_constant, 0, 0, 20},
                        {demand_theta, 1.065, 1, 1.2},
                        {demand_half, 0.5, 0, 5},
                        {salinity_constant, 0, 0, 45}},
          .outputs = {1, 2, 3, 4, 5, 6, 7, 21, 22, 23, 24, 25, 26, 27}};
}

Oxygen::Oxygen(const Problem& problem)
    : problem_(problem), model_(model_info(library)), temperature_(problem),
      nitrification_(process(nitrification_rate, nitrification_theta, nitrification_half)),
      denitrification_(process(denitrification_rate, denitrification_theta, denitrification_half)),
      oxidation_(process(oxidation_rate, oxidation_theta, oxidation_half)),
      oxygen_per_nitrogen_(constant(problem, model_, nitrification_oxygen)),
      demand_half_saturation_(constant(problem, model_, demand_half)),
      reaeration_theta_(constant(problem, model_, reaeration_theta)),
      demand_theta_(constant(problem, model_, demand_theta)), has_wind_(problem.time_functions.contains(wind_function)),
      has_light_(problem.time_functions.contains(light_function)),
      given_reaeration_(parameter(problem, reaeration_parameter, 0)),
      given_demand_(parameter(problem, demand_parameter, constant(problem, model_, demand_constant))),
      photosynthesis_20_(parameter(problem, photosynthesis_parameter, 0)),
      salinity_(parameter(problem, salinity_parameter, constant(problem, model_, salinity_constant))),
      settling_(settling_velocities(problem, settling_parameter, constant(problem, model_, settling_constant))) {
  const std::size_t count = problem.segments.size();
  for (auto* per_segment :
       {&reaeration_factor_, &demand_factor_, &saturation_, &reaeration_, &demand_, &photosynthesis_, &decay_})
    per_segment->resize(count);
  const double everywhere = constant(problem, model_, reaeration_constant);
  for (double& given : given_reaeration_)
    if (given <= 0) given = everywhere;
  for (std::size_t i = 0; i < count; ++i) settling_[i] *= 1 - problem.dissolved[problem.at(cbod, i)];
}

Oxygen::Process Oxygen::process(int rate_isc, int theta_isc, int half_saturation_isc) const {
  return {constant(problem_, model_, rate_isc), constant(problem_, model_, theta_isc),
          constant(problem_, model_, half_saturation_isc), std::vector<double>(problem_.segments.size())};
}

// Not where all reaeration is given and no sediment takes oxygen.
bool Oxygen::uses_hydraulics() const {
  for (std::size_t i = 0; i < given_reaeration_.size(); ++i)
    if (given_demand_[i] > 0 || (problem_.segments[i].type == surface && given_reaeration_[i] <= 0)) return true;
  return false;
}

void Oxygen::update(const Hydraulics& hydraulics, const TimeFunctions& time_functions) {
  if (temperature_.update(time_functions)) update_temperature();
  update_surface(hydraulics, has_wind_ ? std::max(time_functions(wind_function), 0.0) : 0.0);
  const double light = has_light_ ? time_functions(light_function) : 1.0;
  for (std::size_t i = 0; i < decay_.size(); ++i) {
    photosynthesis_[i] = photosynthesis_20_[i] * light;
    decay_[i] = std::max({nitrification_.now[i], denitrification_.now[i], oxidation_.now[i], reaeration_[i]});
  }
}

void Oxygen::update_temperature() {
  for (Process* process : {&nitrification_, &denitrification_, &oxidation_}) {
    temperature_.factors(process->theta, process->now);
    for (double& rate : process->now) rate *= process->rate_20;
  }
  temperature_.factors(reaeration_theta_, reaeration_factor_);
  temperature_.factors(demand_theta_, demand_factor_);
  const auto temperature = temperature_.values();
  for (std::size_t i = 0; i < saturation_.size(); ++i) {
    const bool as_before = i > 0 && temperature[i] == temperature[i - 1] && salinity_[i] == salinity_[i - 1];
    saturation_[i] = as_before ? saturation_[i - 1] : oxygen_saturation(temperature[i], salinity_[i]);
  }
}

double Oxygen::depth_of(const Hydraulics& hydraulics, std::size_t segment, const char* purpose) const {
  const double depth = hydraulics.depth()[segment];
  if (depth > 0) return depth;
  throw RunError(text("Segment ", numbered(problem_.segments[segment], segment), " needs a depth for its ", purpose,
                      ": give it a depth multiplier, a length and a width, or a minimum depth."));
}

// Oxygen passes the surface of surface segments only; the sediment takes its demand from any segment that has one.
void Oxygen::update_surface(const Hydraulics& hydraulics, double wind) {
  const double transfer = wind_transfer(wind);
  for (std::size_t i = 0; i < reaeration_.size(); ++i) {
    double reaeration = 0;
    if (problem_.segments[i].type == surface) {
      reaeration = given_reaeration_[i];
      if (reaeration <= 0) {
        const double depth = depth_of(hydraulics, i, "reaeration");
        reaeration = stream_reaeration(hydraulics.velocity()[i], depth) + transfer / depth;
      }
    }
    reaeration_[i] = reaeration * reaeration_factor_[i];
    demand_[i] = given_demand_[i] > 0
                     ? given_demand_[i] * demand_factor_[i] / depth_of(hydraulics, i, "sediment oxygen demand")
                     : 0.0;
  }
}

// Full rates of the processes and the half-saturations of their segments, as the loops below read them.
struct Oxygen::Row {
  const double *nitrification, *denitrification, *oxidation, *reaeration, *saturation, *photosynthesis, *demand;
  Monod nitrifies, oxidises, demands;
  Inhibition denitrifies;
  double oxygen_per_nitrogen;
};

Oxygen::Row Oxygen::row(std::size_t begin) const {
  return {.nitrification = &nitrification_.now[begin],
          .denitrification = &denitrification_.now[begin],
          .oxidation = &oxidation_.now[begin],
          .reaeration = &reaeration_[begin],
          .saturation = &saturation_[begin],
          .photosynthesis = &photosynthesis_[begin],
          .demand = &demand_[begin],
          .nitrifies = Monod(nitrification_.half_saturation),
          .oxidises = Monod(oxidation_.half_saturation),
          .demands = Monod(demand_half_saturation_),
          .denitrifies = Inhibition(denitrification_.half_saturation),
          .oxygen_per_nitrogen = oxygen_per_nitrogen_};
}

// No array overlaps another, and each value depends on its own segment alone.
[[gnu::always_inline]] inline void Oxygen::rates_loop(std::size_t count, const Row& given,
                                                      const double* const* concentration, double* const* rate) {
  const Row at = given;
  const double *const nh4 = concentration[ammonium], *const no3 = concentration[nitrate],
                      *const bod = concentration[cbod], *const dissolved = concentration[oxygen];
  double *const nh4_rate = rate[ammonium], *const no3_rate = rate[nitrate], *const bod_rate = rate[cbod],
                *const oxygen_rate = rate[oxygen];
#pragma GCC ivdep
  for (std::size_t k = 0; k < count; ++k) {
    const double there = part_above_0(dissolved[k]);
    const double nitrified = at.nitrification[k] * at.nitrifies.share(there) * nh4[k];
    const double denitrified = at.denitrification[k] * at.denitrifies.share(there) * no3[k];
    const double oxidised = at.oxidation[k] * at.oxidises.share(there) * bod[k];
    const double taken_by_sediment = at.demand[k] * at.demands.share(there);
    nh4_rate[k] = -nitrified;
    no3_rate[k] = nitrified - denitrified;
    bod_rate[k] = -oxidised;
    oxygen_rate[k] = at.reaeration[k] * (at.saturation[k] - dissolved[k]) + at.photosynthesis[k] - oxidised -
                     at.oxygen_per_nitrogen * nitrified - taken_by_sediment;
  }
}

void Oxygen::rates(std::size_t begin, std::size_t end, const double* const* concentration, double* const* rate) const {
  Dispatch<&Oxygen::rates_loop>::best(end - begin, row(begin), concentration, rate);
}

Stoichiometry Oxygen::stoichiometry() const {
  Stoichiometry result{
      .systems = 4, .gains = std::vector<double>(reactions * 4), .never_fades = std::vector<bool>(reactions * 4)};
  const auto gain = [&](std::size_t reaction, std::size_t system, double value, bool never_fades = false) {
    result.gains[reaction * 4 + system] = value;
    result.never_fades[reaction * 4 + system] = never_fades;
  };
  gain(nitrification, ammonium, -1);
  gain(nitrification, nitrate, 1);
  gain(nitrification, oxygen, -oxygen_per_nitrogen_, nitrification_.half_saturation <= 0);
  gain(denitrification, nitrate, -1);
  gain(oxidation, cbod, -1);
  gain(oxidation, oxygen, -1, oxidation_.half_saturation <= 0);
  gain(sediment_demand, oxygen, -1, demand_half_saturation_ <= 0);
  gain(reaeration, oxygen, 1);
  const bool respires = std::ranges::any_of(photosynthesis_20_, [](double rate) { return rate != 0; });
  gain(photosynthesis, oxygen, 1, respires); // a net rate, which may be below 0
  return result;
}

void Oxygen::extents(std::size_t segment, const double* concentration, double* extents) const {
  const Row at = row(segment);
  const double dissolved = concentration[oxygen], there = part_above_0(dissolved);
  extents[nitrification] = *at.nitrification * at.nitrifies.share(there) * concentration[ammonium];
  extents[denitrification] = *at.denitrification * at.denitrifies.share(there) * concentration[nitrate];
  extents[oxidation] = *at.oxidation * at.oxidises.share(there) * concentration[cbod];
  extents[sediment_demand] = *at.demand * at.demands.share(there);
  extents[reaeration] = *at.reaeration * (*at.saturation - dissolved);
  extents[photosynthesis] = *at.photosynthesis;
}

// Losses other than those of oxygen are of first order.
[[gnu::always_inline]] inline void Oxygen::losses_loop(std::size_t count, const Row& given,
                                                       const double* const* concentration, double* losses) {
  const Row at = given;
  const double *const nh4 = concentration[ammonium], *const bod = concentration[cbod],
                      *const dissolved = concentration[oxygen];
#pragma GCC ivdep
  for (std::size_t k = 0; k < count; ++k) {
    const double there = part_above_0(dissolved[k]);
    const double nitrified = at.nitrification[k] * part_above_0(nh4[k]);
    const double oxidised = at.oxidation[k] * part_above_0(bod[k]);
    losses[k] = at.reaeration[k] + at.oxidises.relative_loss(oxidised, there) +
                at.nitrifies.relative_loss(at.oxygen_per_nitrogen * nitrified, there) +
                at.demands.relative_loss(at.demand[k], there);
  }
}

void Oxygen::relative_losses(std::size_t begin, std::size_t end, const double* const* concentration,
                             double* losses) const {
  Dispatch<&Oxygen::losses_loop>::best(end - begin, row(begin), concentration, losses);
}

bool Oxygen::settles(std::size_t system) const {
  return system == cbod && std::any_of(settling_.begin(), settling_.end(), [](double v) { return v > 0; });
}

bool Oxygen::output(int isc, std::span<const double> concentration, std::span<double> values) const {
  const std::size_t count = values.size();
  const auto row = [&](std::size_t system) { return concentration.subspan(system * count, count); };
  if (isc >= first_system_output && isc <= last_system_output) {
    std::ranges::copy(row(static_cast<std::size_t>(isc - first_system_output)), values.begin());
    return true;
  }
  switch (isc) {
  case saturation_output: std::ranges::copy(saturation_, values.begin()); return true;
  case deficit_output: std::ranges::transform(saturation_, row(oxygen), values.begin(), std::minus<>()); return true;
  case reaeration_output: std::ranges::copy(reaeration_, values.begin()); return true;
  default: return false;
  }
}

} // namespace reference_engine
