#include "viewer/profile_store.h"

#include <algorithm>
#include <utility>

namespace vesk {

profile_store::~profile_store() {
  session_.reader().forget(this);
  session_.reader().forget(&bands_);
}

void profile_store::change() {
  if (OnChange) OnChange();
}

const scenario_profile* profile_store::baseline_profile() const {
  const auto found = std::ranges::find(profiles_, session_.baseline(), &scenario_profile::scenario);
  return found == profiles_.end() ? nullptr : &*found;
}

void profile_store::read(std::optional<std::size_t> variable) {
  variable_ = variable;
  if (reads_) {
    reads_again_ = true;
    return;
  }
  struct question {
    scenario_profile profile;
    std::shared_ptr<const results_file> file;
    std::size_t variable, time;
  };
  std::vector<question> questions;
  const auto& scenarios = session_.scenarios();
  for (std::size_t i = 0; variable && i < scenarios.size(); ++i) {
    const auto in_file = session_.variable_in(scenarios[i], *variable);
    if (!in_file) continue;
    const std::vector<double>& times = scenarios[i].file->times();
    const std::size_t time = nearest_time(times, session_.cursor());
    questions.push_back({{i, scenarios[i].name, times[time], {}}, scenarios[i].file, *in_file, time});
  }
  if (questions.empty()) return take({});
  reads_ = true;
  session_.reader().ask(
      this,
      [this, questions = std::move(questions)]() -> std::function<void()> {
        auto made = std::make_shared<std::vector<scenario_profile>>();
        for (const question& one : questions) {
          made->push_back(one.profile);
          made->back().values = one.file->profile(one.variable, one.time);
        }
        return [this, made] {
          note_.clear();
          take(std::move(*made));
        };
      },
      [this](const std::string& failure) {
        note_ = failure;
        take({});
      });
}

void profile_store::take(std::vector<scenario_profile> profiles) {
  reads_ = false;
  // Drops profiles of scenarios that have been closed. Others may have moved; they are read again.
  std::erase_if(profiles, [&](const auto& one) { return one.scenario >= session_.scenarios().size(); });
  profiles_ = std::move(profiles);
  change();
  if (std::exchange(reads_again_, false)) read(variable_);
}

void profile_store::read_bands(std::optional<position_range> times) {
  std::optional<band_key> wanted;
  std::optional<std::size_t> in_file;
  const auto& scenarios = session_.scenarios();
  if (times && variable_ && !scenarios.empty()) {
    in_file = session_.variable_in(scenarios[session_.baseline()], *variable_);
    if (in_file) wanted = {scenarios[session_.baseline()].number, *in_file, times->first, times->count};
  }
  if (wanted == band_key_) return;
  band_key_ = wanted;
  reads_bands_ = wanted.has_value();
  session_.reader().forget(&bands_);
  bands_.reset();
  if (!wanted) return;
  session_.reader().ask(
      &bands_,
      [this, file = scenarios[session_.baseline()].file, key = *wanted]() -> std::function<void()> {
        auto made = std::make_shared<results_bands>(file->bands(key.variable, {key.first, key.count}));
        return [this, made] {
          reads_bands_ = false;
          bands_ = std::move(*made);
          change();
        };
      },
      [this](const std::string& failure) {
        reads_bands_ = false;
        note_ = failure;
        change();
      });
}

} // namespace vesk
