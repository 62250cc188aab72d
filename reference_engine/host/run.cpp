#include "host/run.h"

#include "core/equations.h"
#include "core/errors.h"
#include "core/integrator.h"
#include "core/text.h"
#include "core/timeline.h"
#include "host/read_series.h"
#include "host/results_grid.h"
#include "host/run_input.h"
#include "host/run_report.h"
#include "output/chosen_results.h"
#include "script/restart_file.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <optional>
#include <utility>

namespace reference_engine {

namespace {

using Clock = std::chrono::steady_clock;

enum StatusCode : std::int32_t { finished, reading, running };

const char* technique_name(int technique) {
  switch (static_cast<Technique>(technique)) {
  case Technique::runge_kutta_4: return "explicit Runge-Kutta of order 4";
  case Technique::implicit_bdf: return "implicit BDF";
  default: return "explicit Euler";
  }
}

class Run {
public:
  Run(Host& host, RunInput& input, std::string_view library)
      : host_(host), input_(input), library_(library), equations_(input.problem, library), state_(input.problem),
        integrator_(make_integrator(input.technique)), balances_(state_),
        timeline_(input.days, PrintTimes(input.print_intervals), std::move(input.points), input.rules.smallest),
        grid_(host, input.problem), values_(state_.volume.size()), report_(input.problem),
        linked_until_(input.hydro ? 0 : std::numeric_limits<double>::infinity()) {
    host_.stop_if_cancelled(); // building the network of a large model takes a while
    open_results();
    integrator_->note_exceedances(input.problem, state_);
  }

  void go() {
    host_.info(text("Running ", library_, " with ", state_.volume.size(), " segments from ", input_.start.iso(' '),
                    " over ", input_.days, " days by ", technique_name(input_.technique), "."));
    if (input_.outputs.empty())
      host_.info(text("No output is on for ", input_.base.filename().string(),
                      ".nc, so the results window has nothing to show: check Output in Data > Output control."));
    if (input_.debug > 0) report_network();
    warn_of_exceedances();
    try {
      compute();
    } catch (Cancelled& cancelled) {
      cancelled.kept = keep_what_was_computed();
      throw;
    }
    balances_.close(state_);
    publish();
    if (timeline_.merged() > 0)
      host_.info(text(
          timeline_.merged(), " times of series points lie closer to another event than the minimum time step of ",
          input_.rules.smallest, " days, or than single precision can distinguish, and are merged with that event."));
    if (integrator_->limited().steps > 0) host_.info(report_.limitation(integrator_->limited()));
    warn_of_clipping();
    report_balances();
    const std::chrono::duration<double> wall = Clock::now() - began_;
    host_.info(text("Finished in ", report_.steps(), " steps and ", rounded(wall.count(), 3), " s; ",
                    report_.step_summary(), "."));
  }

private:
  void compute() {
    for (bool prints = true;; prints = event_.prints) {
      const bool at_end = state_.day >= input_.days;
      if (!at_end) begin_interval();
      if (prints) print();
      if (at_end) return;
      while (state_.day < event_.day) {
        host_.stop_if_cancelled();
        advance();
        show_progress();
      }
    }
  }

  // Of a cancelled run: its NetCDF file, marked. The name of that file; empty if nothing is worth keeping, or it can't
  // be written.
  std::string keep_what_was_computed() {
    if (printed_ < 2) return {}; // the start is known without a run
    try {
      ResultWriter& results = *writers_.front().results;
      results.annotate("cancelled", text("The run was cancelled on day ", state_.day, " of ", input_.days, " (",
                                         input_.start.after(state_.day).iso(' '), "); the results end before it."));
      return results.publish_cancelled().filename().string();
    } catch (const WriteError&) {
      return {};
    }
  }

  void open_results() {
    RunDescription run{.title = text("Results of ", input_.base.filename().string()),
                       .source = text("Compartment model, kinetics ", library_, ", ", technique_name(input_.technique)),
                       .start = input_.start,
                       .segments = {},
                       .lengths = {}};
    for (const Segment& segment : input_.problem.segments) {
      run.segments.push_back(segment.name);
      run.lengths.push_back(segment.length);
    }
    const char* const chosen = std::getenv("VESK_RESULTS"); // README.md, "Files"
    if (chosen != nullptr && *chosen != '\0') return open_chosen_results(run, chosen);
    writers_.push_back({make_netcdf_writer(input_.base, run, input_.outputs), &input_.outputs});
    if (!input_.csv_outputs.empty())
      writers_.push_back({make_csv_writer(input_.base, run, input_.csv_outputs), &input_.csv_outputs});
  }

  void open_chosen_results(const RunDescription& run, const char* text) {
    const ChosenResults chosen = choose_results(text, input_.outputs, run.segments.size());
    input_.outputs = chosen.variables;
    writers_.push_back({make_chosen_writer(input_.base, run, chosen), &input_.outputs});
  }

  void report_network() {
    host_.info(text(input_.problem.flows.size(), " flow pairs and ", input_.problem.exchanges.size(),
                    " exchange pairs make ", equations_.network().link_count(), " links; ",
                    equations_.network().far_terms().size(), " neighbours are not numbered consecutively; ",
                    equations_.classes().size(), " groups of systems with equal transport."));
  }

  // Takes the forcing up to the next event, from two samples inside the interval. No sample is earlier than the one
  // before it, since going back is slow in the front end.
  void begin_interval() {
    if (input_.hydro && state_.day >= linked_until_) take_linked_flows();
    event_ = timeline_.next(state_.day, linked_until_);
    const double length = event_.day - state_.day;
    equations_.forcing().take_first(input_.forcing, sample(state_.day + length / 4));
    const double second = sample(state_.day + 3 * length / 4);
    equations_.forcing().take_second(input_.forcing, second, event_.straight);
    if (state_.day == 0) limit_ = integrator_->limit(equations_, state_, 0);
  }

  double sample(double day) { return sampled_ = set_days(host_, std::max(day, sampled_)); }

  void advance() {
    const double remaining = event_.day - state_.day;
    const StepChoice step = find_step(remaining);
    integrator_->step(equations_, state_, step.days, balances_);
    if (step.days >= remaining) state_.day = event_.day;
    report_.note(step);
    warn_of_exceedances();
    warn_of_temperature();
  }

  // The limit depends on the flows during the step, and so on the step's length. The limit of the previous step is the
  // first guess.
  StepChoice find_step(double remaining) {
    const auto choose = [&](const StepLimit& limit) {
      return choose_step(input_.rules, limit, input_.problem, state_.day, remaining);
    };
    constexpr double infinite = std::numeric_limits<double>::infinity();
    StepChoice step = choose(input_.rules.automatic ? limit_ : StepLimit{infinite, 0, infinite, 0});
    for (;;) {
      // A limit that does not shorten the step need not be searched for.
      const bool is_shortened = step.bound == StepBound::transport || step.bound == StepBound::reactions;
      const double enough = step.days / (input_.rules.automatic ? input_.rules.fraction : 1) * (1 + 1e-9);
      limit_ = integrator_->limit(equations_, state_, step.days, is_shortened || input_.debug > 1 ? infinite : enough);
      const StepChoice allowed = choose(limit_);
      if (allowed.days >= step.days * (1 - 1e-9)) return step;
      step = allowed;
    }
  }

  void warn_of_exceedances() {
    const Problem& problem = input_.problem;
    for (const Integrator::Exceedance& it : integrator_->take_exceedances())
      host_.warning(text("The concentration of ", problem.systems[it.system].name, " in segment ",
                         numbered(problem.segments[it.segment], it.segment), " is ", it.value, " g/m3 on day ",
                         state_.day, " (", input_.start.after(state_.day).iso(' '),
                         "), above the system's maximum concentration of ",
                         problem.systems[it.system].largest_concentration,
                         " g/m3. The run goes on; later cases of this system are not reported."));
  }

  void take_linked_flows() {
    input_.hydro->hold(state_.day, input_.forcing.linked, input_.forcing.volume_change);
    linked_until_ = input_.hydro->next_change(state_.day);
    if (const auto it = input_.hydro->mismatch(); it && !std::exchange(mismatch_reported_, true))
      host_.warning(text(input_.hydro->name(), ": from ", it->begin.iso(' '), " to ", it->end.iso(' '),
                         " the volume of segment ", numbered(input_.problem.segments[it->segment], it->segment),
                         " goes from ", it->before, " to ", it->after, " m3, but its flows make it ", it->flown,
                         " m3. The difference is added or removed as pure water; later cases are not reported."));
  }

  // The usual cause is a table in degrees Fahrenheit.
  void warn_of_temperature() {
    constexpr double coldest = -2, warmest = 45; // deg C
    const auto [lowest, highest] = equations_.kinetics().temperature_range();
    if (temperature_reported_ || (lowest >= coldest && highest <= warmest)) return;
    temperature_reported_ = true;
    const auto values = equations_.kinetics().temperature();
    const auto it = highest > warmest ? std::ranges::max_element(values) : std::ranges::min_element(values);
    const auto segment = static_cast<std::size_t>(it - values.begin());
    host_.warning(text("The water temperature in segment ", numbered(input_.problem.segments[segment], segment), " is ",
                       *it, " deg C on day ", state_.day, " (", input_.start.after(state_.day).iso(' '), "), outside ",
                       coldest, " to ", warmest,
                       ". Temperatures are in degrees Celsius; later cases are not reported."));
  }

  void print() {
    equations_.move_to(state_.day);
    equations_.set_volumes(state_.volume);
    for (const Writer& writer : writers_) {
      writer.results->begin_time(state_.day);
      for (std::size_t k = 0; k < writer.variables->size(); ++k) {
        equations_.output((*writer.variables)[k].isc, state_, values_);
        writer.results->write(k, values_);
      }
    }
    ++printed_;
    grid_.show(state_);
    shown_at_ = Clock::now();
    if (input_.debug > 1)
      host_.info(text("Day ", state_.day, ": ", report_.steps(), " steps, limit ", limit_.days, " days in segment ",
                      numbered(input_.problem.segments[limit_.segment], limit_.segment), "."));
  }

  // Sent only when it changes, since the front end recomputes the time remaining at each.
  void show_progress() {
    constexpr auto between_shows = std::chrono::milliseconds(250);
    const auto percent = static_cast<std::int32_t>(100 * state_.day / input_.days);
    if (percent != percent_) host_.put("PROGRESS", percent_ = percent);
    if (Clock::now() - shown_at_ < between_shows) return;
    grid_.show(state_);
    shown_at_ = Clock::now();
  }

  void publish() {
    std::optional<RestartFile> restart;
    if (input_.writes_restart)
      restart.emplace(input_.base, state_, input_.volume_factor, input_.start.after(state_.day));
    for (const auto& [name, line] : notes_of(report_, input_.problem, balances_, input_.hydro != nullptr))
      for (const Writer& writer : writers_) writer.results->annotate(name, line);
    for (const Writer& writer : writers_) writer.results->publish();
    if (restart) restart->publish();
  }

  // The balance lines cover the chosen system only, so clipping in the others would go unnoticed.
  void warn_of_clipping() {
    constexpr double more_than_rounding = 1e-6;
    for (std::size_t s = 0; s < balances_.systems.size(); ++s)
      if (const MassBalance& it = balances_.systems[s]; it.clipped > more_than_rounding * it.size())
        host_.warning(report_.clipping(s, it));
  }

  // The log gets all systems, the info list only the chosen one.
  void report_balances() {
    const int chosen = input_.problem.balance_system;
    for (const auto& [name, line] : notes_of(report_, input_.problem, balances_, input_.hydro != nullptr))
      host_.status(line, running);
    if (chosen >= 0) {
      const auto system = static_cast<std::size_t>(chosen);
      host_.info(report_.mass_balance(system, balances_.systems[system]));
    }
    host_.info(report_.water_balance(balances_.water, input_.hydro != nullptr));
  }

  struct Writer {
    std::unique_ptr<ResultWriter> results;
    const std::vector<OutputVariable>* variables;
  };

  Host& host_;
  RunInput& input_;
  std::string_view library_;
  Equations equations_;
  State state_;
  std::unique_ptr<Integrator> integrator_;
  Balances balances_;
  Timeline timeline_;
  std::vector<Writer> writers_;
  ResultsGrid grid_;
  std::vector<double> values_; // one per segment
  Timeline::Event event_;      // at the end of the current interval
  double sampled_ = 0;         // the latest day passed to the front end
  StepLimit limit_;            // of the latest step
  RunReport report_;
  std::int32_t percent_ = 0;
  std::size_t printed_ = 0; // times
  double linked_until_;     // days: when the hydrodynamic file's flows change
  bool temperature_reported_ = false, mismatch_reported_ = false;
  Clock::time_point began_ = Clock::now(), shown_at_ = began_;
};

} // namespace

void run_model(Host& host, std::string_view library) {
  host.status("Reading the data set", reading);
  RunInput input;
  read_run_input(host, library, input);
  host.status("Running", running);
  Run(host, input, library).go();
  host.put("PROGRESS", 100);
  host.status("Finished", finished);
}

} // namespace reference_engine
