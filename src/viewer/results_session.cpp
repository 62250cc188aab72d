#include "viewer/results_session.h"

#include <algorithm>
#include <utility>

namespace vesk {

namespace {

namespace fs = std::filesystem;

using name_positions = std::unordered_map<std::string, std::size_t>;

name_positions positions_of_names(const results_file& file) {
  name_positions found;
  found.reserve(file.segments());
  for (std::size_t i = 0; i < file.segments(); ++i) found.try_emplace(file.segment_name(i), i);
  return found;
}

// Users mostly look at concentrations.
bool is_concentration(const results_variable& it) {
  return it.units.find("/m3") != it.units.npos || it.units.find("/l") != it.units.npos ||
         it.units.find("/L") != it.units.npos || it.units.find("m-3") != it.units.npos;
}

std::optional<std::size_t> find_variable(const results_file& file, const std::string& name) {
  const auto found = std::ranges::find(file.variables(), name, &results_variable::name);
  if (found == file.variables().end()) return std::nullopt;
  return static_cast<std::size_t>(found - file.variables().begin());
}

// Restores the same choice in a new list of names.
void take_over(results_session::choices& now, const results_session::choices& before) {
  now.chosen.assign(now.names.size(), false);
  std::unordered_map<std::string, bool> chosen;
  for (std::size_t i = 0; i < before.names.size(); ++i)
    if (before.chosen[i]) chosen[before.names[i].name] = true;
  if (chosen.empty()) return;
  for (std::size_t i = 0; i < now.names.size(); ++i) {
    const bool same = i < before.names.size() && before.names[i].name == now.names[i].name;
    now.chosen[i] = same ? before.chosen[i] : chosen.contains(now.names[i].name);
  }
}

} // namespace

std::vector<std::size_t> results_session::choices::positions() const {
  std::vector<std::size_t> found;
  for (std::size_t i = 0; i < chosen.size(); ++i)
    if (chosen[i]) found.push_back(i);
  return found;
}

std::size_t nearest_time(const std::vector<double>& times, double date_time) {
  const auto after = std::ranges::lower_bound(times, date_time);
  const auto at = static_cast<std::size_t>(after - times.begin());
  if (at == times.size()) return at - 1;
  return at > 0 && date_time - times[at - 1] <= times[at] - date_time ? at - 1 : at;
}

void results_session::open(const fs::path& file) {
  const fs::path path = fs::absolute(file).lexically_normal();
  reader_.add(
      this,
      [this, path]() -> std::function<void()> {
        auto opened = std::make_shared<const results_file>(path);
        auto names = positions_of_names(*opened);
        return [this, path, opened = std::move(opened), names = std::move(names)]() mutable {
          take(path, std::move(opened), std::move(names));
        };
      },
      [this, path](const std::string& failure) {
        refused_ = {path, identity_of(path)};
        say(failure);
      });
}

void results_session::forget_outdated_message() {
  if (!refused_ || identity_of(refused_->path) == refused_->identity) return;
  refused_.reset();
  say({});
}

void results_session::reload_changed() {
  for (const scenario& it : scenarios_)
    if (std::error_code missing; !it.file->is_current() && fs::exists(it.path, missing)) open(it.path);
}

void results_session::take(const fs::path& path, std::shared_ptr<const results_file> file, name_positions names) {
  if (refused_ && refused_->path == path) {
    refused_.reset();
    say({});
  }
  const bool is_first = scenarios_.empty();
  const auto known = std::ranges::find(scenarios_, path, &scenario::path);
  scenario& it = known != scenarios_.end() ? *known : scenarios_.emplace_back();
  if (it.name.empty()) it.name = usual_name(path);
  it.number = ++last_number_;
  it.path = path;
  it.file = std::move(file);
  it.segment_of_name = std::move(names);
  make_choices();
  if (is_first) choose_something();
  if (is_first) cursor_ = it.file->times().front();
  tell(&listener::results_changed);
}

// The file's stem; with its folder if another scenario has that name.
std::string results_session::usual_name(const fs::path& path) const {
  const std::string stem = path.stem().string();
  const bool is_taken =
      std::ranges::any_of(scenarios_, [&](const scenario& other) { return other.path != path && other.name == stem; });
  return is_taken ? path.parent_path().filename().string() + "/" + stem : stem;
}

void results_session::close(std::size_t scenario) {
  if (scenario >= scenarios_.size()) return;
  scenarios_.erase(scenarios_.begin() + static_cast<std::ptrdiff_t>(scenario));
  if (baseline_ > scenario) --baseline_;
  if (baseline_ >= scenarios_.size()) baseline_ = 0;
  make_choices();
  tell(&listener::results_changed);
}

void results_session::rename(std::size_t scenario, const std::string& name) {
  if (scenario >= scenarios_.size()) return;
  scenarios_[scenario].name = name.empty() ? usual_name(scenarios_[scenario].path) : name;
  tell(&listener::results_changed);
}

void results_session::set_baseline(std::size_t scenario) {
  if (scenario >= scenarios_.size() || scenario == baseline_) return;
  baseline_ = scenario;
  make_choices();
  tell(&listener::results_changed);
}

void results_session::make_choices() {
  choices all_variables, all_segments;
  const auto add_names_of = [&](const scenario& it, bool is_baseline) {
    const auto position = [&](std::size_t i) { return is_baseline ? std::optional(i) : std::nullopt; };
    for (std::size_t i = 0; i < it.file->variables().size(); ++i) {
      const results_variable& one = it.file->variables()[i];
      if (is_baseline ||
          std::ranges::find(all_variables.names, one.name, &named_choice::name) == all_variables.names.end())
        all_variables.names.push_back({one.name, one.units, one.long_name, position(i)});
    }
    const auto is_in_another = [&](const std::string& name) {
      return scenarios_[baseline_].segment_of_name.contains(name) ||
             std::any_of(std::as_const(scenarios_).data(), &it,
                         [&](const scenario& other) { return other.segment_of_name.contains(name); });
    };
    for (std::size_t i = 0; i < it.file->segments(); ++i) {
      std::string name = it.file->segment_name(i);
      if (is_baseline || (!is_in_another(name) && it.segment_of_name.at(name) == i))
        all_segments.names.push_back({std::move(name), {}, {}, position(i)});
    }
  };
  if (!scenarios_.empty()) add_names_of(scenarios_[baseline_], true);
  for (std::size_t i = 0; i < scenarios_.size(); ++i)
    if (i != baseline_) add_names_of(scenarios_[i], false);
  take_over(all_variables, variables);
  take_over(all_segments, segments);
  variables = std::move(all_variables);
  segments = std::move(all_segments);
}

// So that a curve is shown from the start.
void results_session::choose_something() {
  const auto& all = scenarios_[baseline_].file->variables();
  const auto found = std::ranges::find_if(all, is_concentration);
  const auto wanted = found == all.end() ? 0 : static_cast<std::size_t>(found - all.begin());
  if (variables.positions().empty()) variables.chosen[wanted] = true;
  if (segments.positions().empty()) segments.chosen[0] = true;
}

void results_session::selection_was_changed() {
  tell(&listener::selection_changed);
}

bool results_session::choose(const std::string& variable, const std::string& segment) {
  const auto v = std::ranges::find(variables.names, variable, &named_choice::name);
  const auto s = std::ranges::find(segments.names, segment, &named_choice::name);
  if (v == variables.names.end() || s == segments.names.end()) return false;
  variables.chosen[static_cast<std::size_t>(v - variables.names.begin())] = true;
  segments.chosen[static_cast<std::size_t>(s - segments.names.begin())] = true;
  selection_was_changed();
  return true;
}

std::optional<std::size_t> results_session::variable_in(const scenario& within, std::size_t variable) const {
  return find_variable(*within.file, variables.names[variable].name);
}

// By position if the name there matches, so that duplicate names each find their own segment.
std::optional<std::size_t> results_session::segment_in(const scenario& within, std::size_t segment) const {
  const named_choice& wanted = segments.names[segment];
  if (wanted.position && *wanted.position < within.file->segments() &&
      within.file->segment_name(*wanted.position) == wanted.name)
    return wanted.position;
  const auto found = within.segment_of_name.find(wanted.name);
  if (found == within.segment_of_name.end()) return std::nullopt;
  return found->second;
}

void results_session::set_cursor(double date_time) {
  if (scenarios_.empty()) return;
  set_cursor_position(nearest_time(baseline_file()->times(), date_time));
}

std::size_t results_session::cursor_position() const {
  return scenarios_.empty() ? 0 : nearest_time(baseline_file()->times(), cursor_);
}

void results_session::set_cursor_position(std::size_t position) {
  if (scenarios_.empty()) return;
  const auto& times = baseline_file()->times();
  const double now = times[std::min(position, times.size() - 1)];
  if (now == cursor_) return;
  cursor_ = now;
  tell(&listener::cursor_moved);
}

void results_session::tell(std::function<void()> listener::*what) {
  for (const listener& it : listeners_)
    if (it.*what) (it.*what)();
}

void results_session::say(const std::string& message) const {
  if (OnMessage) OnMessage(message);
}

} // namespace vesk
