#include "core/equations.h"

#include "core/errors.h"
#include "core/kernels.h"
#include "core/text.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace reference_engine {

namespace {

enum {
  volume_output = 1,
  flow_output,
  velocity_output,
  depth_output,
  temperature_output,
  residence_output,
  step_output
};

constexpr std::size_t block = 512; // segments that are looked at together, within the first-level cache

std::vector<bool> settling_systems(const Problem& problem, const Kinetics& kinetics) {
  std::vector<bool> settles(problem.systems.size());
  for (std::size_t s = 0; s < settles.size(); ++s) settles[s] = problem.systems[s].simulated && kinetics.settles(s);
  return settles;
}

std::vector<Load> by_system(std::vector<Load> loads) {
  std::ranges::stable_sort(loads, {}, &Load::system);
  return loads;
}

bool any(const std::vector<bool>& flags) {
  return std::find(flags.begin(), flags.end(), true) != flags.end();
}

} // namespace

Equations::Equations(const Problem& problem, std::string_view library)
    : Equations(problem, make_kinetics(library, problem)) {}

Equations::Equations(const Problem& problem, std::unique_ptr<Kinetics> kinetics)
    : problem_(problem), kinetics_(std::move(kinetics)), settles_(settling_systems(problem, *kinetics_)),
      network_(problem, any(settles_)), hydraulics_(problem), loads_(by_system(problem.loads)),
      forcing_(used_elements()), uses_hydraulics_(kinetics_->uses_hydraulics() || any(settles_)) {
  for (std::size_t s = 0; s < problem.systems.size(); ++s) {
    if (!problem.systems[s].simulated) continue;
    const auto serves = [&](const TransportClass& it) { return it.serves(problem, network_, s, settles_[s]); };
    const auto found = std::find_if(classes_.begin(), classes_.end(), serves);
    if (found != classes_.end())
      found->join(s);
    else
      classes_.emplace_back(problem, network_, s, settles_[s]);
  }
  find_gaining();
}

// The segments that gain by far terms, through the boundary or by loads, and where each of these adds to the list of
// gains.
void Equations::find_gaining() {
  for (const FarTerm& term : network_.far_terms()) gaining_.push_back(term.target);
  gaining_.insert(gaining_.end(), network_.boundary_segments().begin(), network_.boundary_segments().end());
  for (const Load& load : loads_) gaining_.push_back(static_cast<std::size_t>(load.segment));
  std::sort(gaining_.begin(), gaining_.end());
  gaining_.erase(std::unique(gaining_.begin(), gaining_.end()), gaining_.end());

  const auto position = [this](std::size_t segment) {
    return static_cast<std::size_t>(std::lower_bound(gaining_.begin(), gaining_.end(), segment) - gaining_.begin());
  };
  for (const FarTerm& term : network_.far_terms()) far_gain_.push_back(position(term.target));
  for (const std::size_t segment : network_.boundary_segments()) boundary_gain_.push_back(position(segment));
  load_starts_.assign(problem_.systems.size() + 1, 0);
  for (const Load& load : loads_) {
    load_gain_.push_back(position(static_cast<std::size_t>(load.segment)));
    ++load_starts_[static_cast<std::size_t>(load.system) + 1];
  }
  for (std::size_t s = 0; s < problem_.systems.size(); ++s) load_starts_[s + 1] += load_starts_[s];
  load_.resize(loads_.size());
  inflow_.resize(problem_.systems.size() * network_.boundary_segments().size());
}

UsedElements Equations::used_elements() const {
  UsedElements used;
  used.flows = network_.flow_elements();
  used.exchanges = network_.exchange_elements();
  const std::size_t systems = problem_.systems.size();
  for (const Load& load : loads_)
    used.loads.push_back(static_cast<std::size_t>(load.segment) * systems + static_cast<std::size_t>(load.system));
  for (std::size_t s = 0; s < systems; ++s)
    for (const std::size_t segment : network_.boundary_segments()) used.boundaries.push_back(segment * systems + s);
  if (!problem_.time_functions.empty())
    used.time_functions = static_cast<std::size_t>(*problem_.time_functions.rbegin());
  return used;
}

void Equations::move_to(double day) {
  const ForcingLine::Changes changes = forcing_.move_to(day);
  if (changes.water) {
    ++water_version_;
    network_.update(forcing_.flows(), forcing_.exchanges(), forcing_.volume_change());
    for (TransportClass& it : classes_) it.take_links(problem_, network_);
  }
  if (changes.water || changes.sources) take_sources();
  water_changed_ = water_changed_ || changes.water;
  functions_changed_ = functions_changed_ || changes.time_functions;
}

void Equations::move_to_middle(double begin, double days) {
  if (!forcing_.inflow_is_curved()) return move_to(begin + days / 2);
  // Flow times boundary concentration is quadratic in time: Simpson's rule is exact.
  move_to(begin);
  std::vector<double> mean = inflow_;
  move_to(begin + days);
  for (std::size_t k = 0; k < mean.size(); ++k) mean[k] += inflow_[k];
  move_to(begin + days / 2);
  for (std::size_t k = 0; k < mean.size(); ++k) inflow_[k] = (mean[k] + 4 * inflow_[k]) / 6;
}

void Equations::keep(Moment& into) const {
  into.network = network_.driven();
  into.classes.resize(classes_.size());
  for (std::size_t c = 0; c < classes_.size(); ++c) into.classes[c] = classes_[c].loose();
}

void Equations::exchange(Moment& with) {
  std::swap(network_.driven(), with.network);
  for (std::size_t c = 0; c < classes_.size(); ++c) std::swap(classes_[c].loose(), with.classes[c]);
}

void Equations::set_volumes(const std::vector<double>& volume) {
  const bool functions_changed = std::exchange(functions_changed_, false);
  const bool water_changed = std::exchange(water_changed_, false);
  if (water_changed) hydraulics_fresh_ = false;
  const bool hydraulics_changed = uses_hydraulics_ && (!hydraulics_fresh_ || !is_steady());
  if (hydraulics_changed) update_hydraulics(volume);
  if (functions_changed || hydraulics_changed) kinetics_->update(hydraulics_, forcing_.time_functions());
  if (hydraulics_changed) update_settling(volume);
  if (functions_changed || water_changed || hydraulics_changed) ++version_;
}

void Equations::update_hydraulics(const std::vector<double>& volume) {
  std::vector<double> flow(volume.size());
  network_.take_layers(0, volume.size(), layers_);
  network_.surface_flow(layers_, flow);
  hydraulics_.update(problem_, flow, volume);
  hydraulics_fresh_ = true;
  volume_ = volume;
}

void Equations::take_sources() {
  const std::size_t count = network_.boundary_segments().size();
  for (const TransportClass& it : classes_)
    for (const std::size_t s : it.systems())
      for (std::size_t r = 0; r < count; ++r)
        inflow_[s * count + r] =
            it.boundary_in()[r] * forcing_.boundaries()[s * count + r] * problem_.systems[s].boundary_factor;
  for (std::size_t k = 0; k < load_.size(); ++k)
    load_[k] = forcing_.loads()[k] * problem_.systems[static_cast<std::size_t>(loads_[k].system)].load_factor *
               grams_per_kilogram;
}

// What settles through the area V / H of a segment: velocity times area, m3/day.
void Equations::update_settling(const std::vector<double>& volume) {
  for (TransportClass& it : classes_) {
    if (!it.settles()) continue;
    const auto velocity = kinetics_->settling_velocity(it.systems().front());
    std::vector<double> settling(velocity.size());
    for (std::size_t i = 0; i < velocity.size(); ++i) {
      if (velocity[i] <= 0) continue;
      const double depth = hydraulics_.depth()[i];
      if (depth <= 0)
        throw RunError(text("Segment ", numbered(problem_.segments[i], i),
                            " needs a depth for settling: give it a "
                            "depth multiplier, a length and a width, or a minimum depth."));
      settling[i] = velocity[i] * volume[i] / depth;
    }
    it.take_settling(problem_, network_, std::move(settling));
  }
}

// What leaves each segment at most, with water or of any system.
void Equations::find_leaving(std::size_t begin, std::size_t end) {
  double* const leaving = &leaving_[begin];
  network_.take_layers(begin, end, layers_);
  network_.find_water_out(layers_, leaving);
  for (const TransportClass& it : classes_) {
    it.find_coefficients(problem_, network_, layers_, coefficients_);
    larger_of(end - begin, coefficients_.out.data(), leaving);
  }
}

// The fastest losses in each of these segments, 1/day, those that saturate included.
const double* Equations::find_losses(const State& state, std::size_t begin, std::size_t end) {
  losses_.assign(block, 0.0);
  rows_.resize(problem_.systems.size());
  for (std::size_t s = 0; s < rows_.size(); ++s) rows_[s] = state.of(s).data() + begin;
  kinetics_->relative_losses(begin, end, rows_.data(), losses_.data());
  larger_of(end - begin, &kinetics_->decay()[begin], losses_.data());
  return losses_.data();
}

Equations::Fastest Equations::find_fastest(const State& state, Losses which) {
  Fastest fastest;
  const auto decay = kinetics_->decay();
  const bool stale = std::exchange(leaving_version_, version_) != version_;
  leaving_.resize(decay.size());
  for (std::size_t begin = 0; begin < decay.size(); begin += block) {
    const std::size_t end = std::min(begin + block, decay.size());
    if (stale) find_leaving(begin, end);
    const double *const leaving = &leaving_[begin], *const per_volume = &state.per_volume[begin];
    const double* const lost = which == Losses::saturating ? find_losses(state, begin, end) : &decay[begin];
    if (largest_turnover(end - begin, leaving, per_volume, lost) <= fastest.turnover) continue;
    for (std::size_t k = 0; k < end - begin; ++k)
      if (const double turnover = leaving[k] * per_volume[k] + lost[k]; turnover > fastest.turnover)
        fastest = {turnover, begin + k};
  }
  return fastest;
}

void Equations::find_limit(const State& state) {
  const Fastest fastest = find_fastest(state, Losses::decay);
  limit_ = {1 / fastest.turnover, fastest.segment, 1 / fastest.turnover, fastest.segment};
  limit_version_ = version_;
  limit_volume_version_ = state.volume_version;
}

StepLimit Equations::limit(const State& state, double enough) {
  const bool known = limit_version_ == version_ && limit_volume_version_ == state.volume_version;
  // A line of one step is not worth a bound, which takes two searches.
  if (searched_.line != forcing_.version()) searched_ = {forcing_.version(), state.day};
  const bool is_first_step = searched_.day == state.day;
  if (!known && !is_first_step && enough < std::numeric_limits<double>::infinity() && line_bound_may_serve()) {
    constexpr double stale = 0.1; // share of a volume
    if (line_bound_.line != forcing_.version() || line_bound_.emptying * (state.day - line_bound_.day) > stale)
      find_line_bound(state);
    if (const StepLimit bound = line_bound(state.day + enough); bound.days >= enough) return bound;
  }
  if (!known) find_limit(state);
  if (!kinetics_->saturates()) return limit_;
  StepLimit limit = limit_;
  const Fastest fastest = find_fastest(state, Losses::saturating);
  limit.saturated_days = 1 / fastest.turnover;
  limit.saturated_segment = fastest.segment;
  return limit;
}

// Where nothing but flows and volumes changes what is lost.
bool Equations::line_bound_may_serve() const {
  return !uses_hydraulics_ && !kinetics_->saturates() && !forcing_.time_functions_vary();
}

// On a line of the forcing each flow is linear in time, and what leaves a segment is a sum of flows where they are
// above 0: a convex function, which is largest at an end of the line. So is the rate at which a volume falls.
void Equations::find_line_bound(const State& state) {
  const double now = forcing_.day();
  line_bound_ = {.fastest = {}, .emptying = 0, .is_steady = true, .day = state.day, .line = forcing_.version()};
  const auto [begin_of_line, end_of_line] = forcing_.ends();
  for (const double day : {begin_of_line, end_of_line}) {
    move_to(day);
    ++version_;
    const Fastest fastest = find_fastest(state, Losses::decay);
    if (fastest.turnover > line_bound_.fastest.turnover) line_bound_.fastest = fastest;
    for (std::size_t begin = 0; begin < state.volume.size(); begin += block) {
      const std::size_t end = std::min(begin + block, state.volume.size());
      network_.take_layers(begin, end, layers_);
      network_.move_water(layers_, water_);
      line_bound_.is_steady = line_bound_.is_steady && water_.steady;
      for (std::size_t k = 0; !water_.steady && k < end - begin; ++k)
        line_bound_.emptying = std::max(line_bound_.emptying, -water_.change[k] * state.per_volume[begin + k]);
    }
  }
  move_to(now);
  set_volumes(state.volume);
}

// The bound for steps up to that day: no volume is smaller until then than by the fastest fall.
StepLimit Equations::line_bound(double day) const {
  constexpr double rounding = 1e-6; // of single precision
  const double least_volume = 1 - line_bound_.emptying * (day - line_bound_.day) - rounding;
  const double days = std::max(least_volume, 0.0) / line_bound_.fastest.turnover;
  return {days, line_bound_.fastest.segment, days, line_bound_.fastest.segment};
}

void Equations::add_far_gains(const TransportClass& its_class, const double* concentration,
                              std::span<double> gains) const {
  const auto far_terms = network_.far_terms();
  for (std::size_t k = 0; k < far_terms.size(); ++k)
    gains[far_gain_[k]] += its_class.far(k) * concentration[far_terms[k].source];
}

MassFlux Equations::add_sources(std::size_t system, std::span<double> gains) const {
  MassFlux flux;
  const std::size_t count = network_.boundary_segments().size();
  for (std::size_t r = 0; r < count; ++r) {
    gains[boundary_gain_[r]] += inflow_[system * count + r];
    flux.inflow += inflow_[system * count + r];
  }
  for (std::size_t k = load_starts_[system]; k < load_starts_[system + 1]; ++k) {
    gains[load_gain_[k]] += load_[k];
    flux.loads += load_[k];
  }
  return flux;
}

MassFlux Equations::losses(const TransportClass& its_class, std::size_t begin, std::size_t end,
                           const double* concentration) const {
  MassFlux flux;
  const auto boundary = network_.boundary_segments();
  for (auto r = static_cast<std::size_t>(std::ranges::lower_bound(boundary, begin) - boundary.begin());
       r < boundary.size() && boundary[r] < end; ++r)
    flux.outflow += its_class.boundary_out()[r] * concentration[boundary[r] - begin];
  const auto sink = its_class.sink();
  for (std::size_t i = begin; !sink.empty() && i < end; ++i) flux.reacted -= sink[i] * concentration[i - begin];
  return flux;
}

bool Equations::is_steady() {
  if (std::exchange(steady_version_, water_version_) == water_version_) return is_steady_;
  is_steady_ = true;
  const std::size_t count = problem_.segments.size();
  for (std::size_t begin = 0; is_steady_ && begin < count; begin += block) {
    network_.take_layers(begin, std::min(begin + block, count), layers_);
    network_.move_water(layers_, water_);
    is_steady_ = water_.steady;
  }
  return is_steady_;
}

bool Equations::output(int isc, const State& state, std::span<double> values) {
  constexpr double unknown = std::numeric_limits<double>::quiet_NaN();
  const auto known = [](double value) { return value > 0 ? value : unknown; };
  const std::size_t count = values.size();
  if (!hydraulics_fresh_ || volume_ != state.volume) update_hydraulics(state.volume);
  if (isc == flow_output || isc == residence_output) network_.take_layers(0, count, layers_);
  switch (isc) {
  case volume_output: std::ranges::copy(state.volume, values.begin()); return true;
  case flow_output: network_.surface_flow(layers_, values); return true;
  case velocity_output: std::ranges::copy(hydraulics_.velocity(), values.begin()); return true;
  case depth_output: std::ranges::transform(hydraulics_.depth(), values.begin(), known); return true;
  case temperature_output: std::ranges::copy(kinetics_->temperature(), values.begin()); return true;
  case residence_output:
    network_.find_water_out(layers_, values.data());
    for (std::size_t i = 0; i < count; ++i) values[i] = state.volume[i] / known(values[i]);
    return true;
  case step_output: {
    find_fastest(state, Losses::saturating); // so that what leaves is of now
    for (std::size_t begin = 0; begin < count; begin += block) {
      const std::size_t end = std::min(begin + block, count);
      const double* const lost = find_losses(state, begin, end);
      for (std::size_t i = begin; i < end; ++i)
        values[i] = 1 / known(leaving_[i] * state.per_volume[i] + lost[i - begin]);
    }
    return true;
  }
  default: return kinetics_->output(isc, state.concentration, values);
  }
}

} // namespace reference_engine
