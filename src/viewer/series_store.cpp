#include "viewer/series_store.h"

#include "platform/counted.h"
#include "query/cancellation.h"

#include <chrono>

namespace vesk {

namespace {

// How often new values are shown while a long choice is being read.
constexpr std::chrono::milliseconds batch_time{300};

} // namespace

std::string shown_series::label(bool with_scenario) const {
  return variable + ", " + segment + (with_scenario ? ", " + scenario_name : std::string());
}

series_store::series_store(results_session& session, std::filesystem::path settings)
    : session_(session), colours_(std::move(settings)) {
  session_.listen({[this] { update(); }, [this] { update(); }, {}});
}

// The scenarios of one variable and segment follow each other and share their colour.
void series_store::give_colours(std::vector<wanted_series>& wanted) {
  const auto name_of = [](const wanted_series& it) { return kept_colours::names(it.shown.variable, it.shown.segment); };
  std::vector<kept_colours::names> names;
  for (const wanted_series& it : wanted)
    if (names.empty() || names.back() != name_of(it)) names.push_back(name_of(it));
  const auto colours = colours_.colours_of(names);
  std::size_t at = 0;
  for (wanted_series& it : wanted) {
    if (names[at] != name_of(it)) ++at;
    it.shown.colour = colours[at];
  }
}

std::vector<series_store::wanted_series> series_store::list_wanted() {
  std::vector<wanted_series> wanted;
  std::size_t missing = 0, numbers = 0;
  note_.clear();
  const auto& scenarios = session_.scenarios();
  const auto segments = session_.segments.positions();
  for (const std::size_t v : session_.variables.positions())
    for (const std::size_t s : segments)
      for (std::size_t i = 0; i < scenarios.size(); ++i) {
        const scenario& from = scenarios[i];
        const auto variable = session_.variable_in(from, v), segment = session_.segment_in(from, s);
        if (!variable || !segment) {
          ++missing;
          continue;
        }
        numbers += from.file->times().size();
        if (numbers > most_chosen_values) {
          note_ = "The choice has more than " + std::to_string(most_chosen_values / 1'000'000) +
                  " million values. Only the first of its series are shown; choose fewer.";
          return wanted;
        }
        const std::string& name = session_.variables.names[v].name;
        const std::string& place = session_.segments.names[s].name;
        wanted.push_back({{from.number, *variable, *segment},
                          from.file,
                          {.scenario = i,
                           .scenario_name = from.name,
                           .variable = name,
                           .segment = place,
                           .units = from.file->variables()[*variable].units,
                           .times = {from.file, &from.file->times()}}});
      }
  if (missing > 0)
    note_ = counted(missing, "series", "series") + (missing == 1 ? " is" : " are") +
            " not shown: the scenario has no such variable or segment.";
  return wanted;
}

// Keeps series that have been read, so that only new ones cost time.
void series_store::update() {
  wanted_ = list_wanted();
  give_colours(wanted_);
  std::map<key, values> kept;
  std::vector<wanted_series> missing;
  for (const wanted_series& it : wanted_) {
    const auto found = read_.find(it.at);
    if (found != read_.end())
      kept.insert(*found);
    else
      missing.push_back(it);
  }
  read_ = std::move(kept);
  session_.reader().forget(this);
  is_reading_ = !missing.empty();
  if (is_reading_) read(std::move(missing));
  show();
}

void series_store::read(std::vector<wanted_series> missing) {
  const auto work = [this, missing = std::move(missing)]() -> std::function<void()> {
    const auto begin = std::chrono::steady_clock::now();
    std::map<key, values> came;
    std::vector<wanted_series> left;
    for (std::size_t i = 0; i < missing.size(); ++i) {
      stop_if_cancelled();
      const wanted_series& it = missing[i];
      came[it.at] = std::make_shared<const std::vector<double>>(it.file->series(it.at.variable, it.at.segment));
      if (std::chrono::steady_clock::now() - begin < batch_time) continue;
      left.assign(missing.begin() + static_cast<std::ptrdiff_t>(i) + 1, missing.end());
      break;
    }
    return [this, came = std::move(came), left = std::move(left)]() mutable {
      read_.merge(came);
      is_reading_ = !left.empty();
      if (is_reading_) read(std::move(left));
      show();
    };
  };
  session_.reader().add(this, work, [this](const std::string& failure) {
    is_reading_ = false;
    note_ = failure;
    show();
  });
}

void series_store::show() {
  series_.clear();
  for (const wanted_series& it : wanted_)
    if (const auto found = read_.find(it.at); found != read_.end())
      series_.emplace_back(it.shown).values = found->second;
  for (const auto& changed : listeners_) changed();
}

} // namespace vesk
