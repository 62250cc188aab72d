// Measured series, and how well the open results agree with them.
#pragma once

#include "charts/graph_form.h"
#include "charts/grid.h"
#include "results/comparison.h"
#include "viewer/results_session.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vesk {

// NAME.measured.json for NAME.nc, and for NAME.previous.nc and NAME.cancelled.nc beside it.
std::filesystem::path measured_file_beside(const std::filesystem::path& results);

// The comparison of one measured series with one scenario.
struct agreement_outcome {
  std::string scenario_name = {};
  std::string failure = {};             // one sentence; empty: success
  std::optional<comparison> found = {}; // set unless it failed
  modelled_series model = {};
};

// Owner's thread only. The measured series are those of the baseline's file.
class agreement_list {
public:
  // The session must outlive this. Listens to the session; reads nothing before `look`.
  explicit agreement_list(results_session& session);
  ~agreement_list() { session_.reader().forget(this); }
  agreement_list(const agreement_list&) = delete;
  agreement_list& operator=(const agreement_list&) = delete;

  void listen(std::function<void()> changed) { changed_ = std::move(changed); }

  const std::filesystem::path& file() const { return file_; } // empty without results
  const std::vector<measured_series>& series() const { return series_; }
  const std::string& note() const { return note_; } // why there are none, or why the file cannot be read

  // Compares the series at this position with all scenarios, in the background.
  void look(std::size_t position);
  std::size_t position() const { return position_; }
  bool is_reading() const { return is_reading_; }
  const std::vector<agreement_outcome>& outcomes() const { return outcomes_; } // one per scenario, as far as known

  // Change the file, then this list. Throw measured_file_exception and file_exception; nothing is changed then.
  void add(const measured_series& series);
  void replace(std::size_t position, const measured_series& series);
  void remove(std::size_t position);
  std::function<void(const std::filesystem::path&)> OnNewFile; // the first series was added

private:
  void read_file();
  void write(std::vector<measured_series> series);
  void compare_all();

  results_session& session_;
  std::filesystem::path file_;
  std::vector<measured_series> series_;
  std::string note_;
  std::size_t position_ = 0;
  std::vector<agreement_outcome> outcomes_;
  bool is_reading_ = false;
  std::function<void()> changed_;
};

// The scores as a table: a row per scenario, estimate and period.
class score_table final : public grid {
public:
  score_table();

  // `whole_only`: omits the months.
  void show(const std::vector<agreement_outcome>& outcomes, bool whole_only);

  std::span<const grid_column> columns() const override { return columns_; }
  std::size_t row_count() const override { return rows_.size(); }
  cell_value value(std::size_t row, std::size_t column) const override;
  void set_value(std::size_t, std::size_t, const cell_value&) override {}

private:
  struct score_row {
    std::string period, estimate;
    agreement_scores scores;
  };
  std::vector<grid_column> columns_;
  std::vector<score_row> rows_;
};

// "343 measured values in the period; 2 below a detection limit and 1 without a modelled value are left out."
std::string in_words(const agreement_outcome& outcome);

// The measured values as dots and each scenario as a line.
std::unique_ptr<TGraphForm> agreement_chart(const std::vector<agreement_outcome>& outcomes, const std::string& units);
// Modelled against measured values, with the line of equality.
std::unique_ptr<TGraphForm> agreement_scatter(const std::vector<agreement_outcome>& outcomes, const std::string& units);

} // namespace vesk
