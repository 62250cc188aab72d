#include "viewer/agreement_list.h"

#include "platform/counted.h"
#include "query/cancellation.h"

#include <algorithm>
#include <limits>

namespace vesk {

namespace {

namespace fs = std::filesystem;

constexpr const char* score_picture = "#######.####";
constexpr std::size_t measured_colour = 7; // grey: the scenarios use the other colours

// As usually written in tables, in the order of score_columns.
constexpr const char* score_headers[] = {
    "Mean\nmeasured", "Mean\nmodelled", "Bias", "Bias (%)", "MAE", "RMSE", "RSR", "r", "r2", "NSE", "KGE",
    "KGE\nalpha",     "KGE\nbeta"};
static_assert(std::size(score_headers) == std::size(score_columns));
constexpr std::size_t period_column = 0, estimate_column = 1, count_column = 2, first_score = 3;

grid_column column_of(const char* header, cell_type type) {
  return {.header = header, .type = std::move(type), .editable = false};
}

agreement_outcome compare_one(const scenario& with, const measured_series& series, const fs::path& folder) {
  agreement_outcome result{.scenario_name = with.name};
  try {
    result.found = compare(*with.file, series, {}, folder);
    result.model = {with.file->times(), with.file->series(result.found->variable, result.found->segment)};
  } catch (const query_cancelled&) {
    throw;
  } catch (const std::exception& error) {
    result.failure = error.what();
  }
  return result;
}

} // namespace

fs::path measured_file_beside(const fs::path& results) {
  fs::path base = results;
  base.replace_extension();
  if (base.extension() == ".previous" || base.extension() == ".cancelled") base.replace_extension();
  return measured_file_of(base.native() + ".nc");
}

agreement_list::agreement_list(results_session& session) : session_(session) {
  session_.listen({[this] {
                     read_file();
                     compare_all();
                   },
                   {},
                   {}});
}

// Read synchronously, since it is small.
void agreement_list::read_file() {
  const fs::path wanted =
      session_.scenarios().empty() ? fs::path() : measured_file_beside(session_.scenarios()[session_.baseline()].path);
  if (wanted != file_) position_ = 0;
  file_ = wanted;
  series_.clear();
  note_.clear();
  std::error_code missing;
  if (file_.empty() || !fs::exists(file_, missing)) return;
  try {
    series_ = read_measured_file(file_);
  } catch (const std::exception& error) {
    note_ = error.what();
  }
}

void agreement_list::look(std::size_t position) {
  position_ = position;
  compare_all();
}

void agreement_list::compare_all() {
  session_.reader().forget(this);
  outcomes_.clear();
  is_reading_ = position_ < series_.size() && !session_.scenarios().empty();
  if (!is_reading_) {
    if (changed_) changed_();
    return;
  }
  const auto work = [this, scenarios = session_.scenarios(), series = series_[position_],
                     folder = file_.parent_path()]() -> std::function<void()> {
    std::vector<agreement_outcome> came;
    for (const scenario& it : scenarios) came.push_back(compare_one(it, series, folder));
    return [this, came = std::move(came)]() mutable {
      outcomes_ = std::move(came);
      is_reading_ = false;
      if (changed_) changed_();
    };
  };
  session_.reader().add(this, work, [this](const std::string& failure) {
    note_ = failure;
    is_reading_ = false;
    if (changed_) changed_();
  });
  if (changed_) changed_();
}

void agreement_list::write(std::vector<measured_series> series) {
  std::error_code missing;
  if (!note_.empty()) throw measured_file_exception(note_); // never overwrites a file that cannot be read
  const bool is_new = !fs::exists(file_, missing);
  write_measured_file(file_, series);
  series_ = std::move(series);
  if (is_new && OnNewFile) OnNewFile(file_);
}

void agreement_list::add(const measured_series& series) {
  auto all = series_;
  all.push_back(series);
  write(std::move(all));
  look(series_.size() - 1);
}

void agreement_list::replace(std::size_t position, const measured_series& series) {
  auto all = series_;
  all.at(position) = series;
  write(std::move(all));
  look(position);
}

void agreement_list::remove(std::size_t position) {
  auto all = series_;
  all.erase(all.begin() + static_cast<std::ptrdiff_t>(position));
  write(std::move(all));
  look(0);
}

score_table::score_table() {
  columns_.push_back(column_of("Period", text_cell()));
  columns_.push_back(column_of("Estimate", text_cell()));
  columns_.push_back(column_of("Count", number_cell("##########")));
  for (const char* header : score_headers) columns_.push_back(column_of(header, number_cell(score_picture)));
}

void score_table::show(const std::vector<agreement_outcome>& outcomes, bool whole_only) {
  rows_.clear();
  bool has_measured_means = false; // the same for all scenarios with the same pairs
  for (const agreement_outcome& outcome : outcomes) {
    if (!outcome.found) continue;
    for (const estimate_scores& estimate : outcome.found->estimates) {
      const bool is_model = estimate.name == model_estimate;
      if (!is_model && std::exchange(has_measured_means, true)) continue;
      for (const period_scores& it : estimate.periods)
        if (!whole_only || it.period == whole_period)
          rows_.push_back({it.period, is_model ? outcome.scenario_name : estimate.name, it.scores});
    }
  }
}

cell_value score_table::value(std::size_t row, std::size_t column) const {
  if (row >= rows_.size() || column >= columns_.size()) return {};
  const score_row& it = rows_[row];
  if (column == period_column) return it.period;
  if (column == estimate_column) return it.estimate;
  if (column == count_column) return static_cast<double>(it.scores.count);
  const auto& score = it.scores.*score_columns[column - first_score].value;
  return score ? cell_value(*score) : cell_value();
}

std::string in_words(const agreement_outcome& outcome) {
  if (!outcome.failure.empty()) return outcome.failure;
  const comparison& it = *outcome.found;
  std::string text = outcome.scenario_name + ": " + counted(it.paired.pairs.size(), "pair") + " of " +
                     counted(it.measured, "measured value");
  const auto left_out = [&](std::size_t count, const char* why) {
    if (count > 0) text += "; " + std::to_string(count) + why;
  };
  left_out(it.paired.below_limit, " below a detection limit left out");
  left_out(it.paired.without_model, " without a modelled value left out");
  left_out(it.without_value, " without a value in the table");
  return text + ".";
}

namespace {

std::unique_ptr<general_graph_data> dots_of(const std::string& label, std::size_t colour) {
  auto data = std::make_unique<general_graph_data>(0);
  data->label = label;
  data->look = line_look{.colour = colour, .dots = true};
  return data;
}

void add(general_graph_data& data, double x, double y) {
  data.x.push_back(x);
  data.y.push_back(y);
  data.count = static_cast<std::int32_t>(data.x.size());
}

} // namespace

std::unique_ptr<TGraphForm> agreement_chart(const std::vector<agreement_outcome>& outcomes, const std::string& units) {
  auto chart = std::make_unique<TGraphForm>();
  std::vector<std::unique_ptr<general_graph_data>> all;
  for (std::size_t i = 0; i < outcomes.size(); ++i) {
    const agreement_outcome& it = outcomes[i];
    if (!it.found) continue;
    auto line = std::make_unique<general_graph_data>(0);
    line->label = it.scenario_name;
    line->look = line_look{.colour = i, .pattern = i};
    for (std::size_t k = 0; k < it.model.times.size(); ++k)
      add(*line, it.model.times[k] - days_to_1970, it.model.values[k]);
    all.push_back(std::move(line));
  }
  for (const agreement_outcome& it : outcomes) { // drawn over the lines
    if (!it.found) continue;
    auto dots = dots_of("measured", measured_colour);
    for (const pair_at& pair : it.found->paired.pairs) add(*dots, pair.time - days_to_1970, pair.measured);
    all.push_back(std::move(dots));
    break;
  }
  chart->set_titles({}, units);
  chart->add_series(std::move(all));
  return chart;
}

std::unique_ptr<TGraphForm> agreement_scatter(const std::vector<agreement_outcome>& outcomes,
                                              const std::string& units) {
  auto chart = std::make_unique<TGraphForm>();
  std::vector<std::unique_ptr<general_graph_data>> all;
  double low = std::numeric_limits<double>::infinity(), high = -low;
  for (std::size_t i = 0; i < outcomes.size(); ++i) {
    if (!outcomes[i].found) continue;
    auto dots = dots_of(outcomes[i].scenario_name, i);
    std::vector<measured_and_modelled> pairs(outcomes[i].found->paired.pairs.begin(),
                                             outcomes[i].found->paired.pairs.end());
    std::ranges::sort(pairs, {}, &measured_and_modelled::measured);
    for (const measured_and_modelled& pair : pairs) {
      add(*dots, pair.measured, pair.modelled);
      low = std::min({low, pair.measured, pair.modelled});
      high = std::max({high, pair.measured, pair.modelled});
    }
    all.push_back(std::move(dots));
  }
  if (low <= high) {
    auto equal = std::make_unique<general_graph_data>(0);
    equal->label = "1:1";
    equal->look = line_look{.colour = measured_colour, .pattern = 1};
    add(*equal, low, low);
    add(*equal, high, high);
    all.push_back(std::move(equal));
  }
  for (const auto& it : all) it->not_a_date_axis = 1;
  const std::string unit = units.empty() ? "" : ", " + units;
  chart->set_titles("measured" + unit, "modelled" + unit);
  chart->add_series(std::move(all));
  return chart;
}

} // namespace vesk
