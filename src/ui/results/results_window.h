// The results window: any number of files side by side, on pages that share the choice of variables and segments and
// the time cursor.
#pragma once

#include "dataset/dataset.h"
#include "editors/user_questions.h"
#include "viewer/live_samples.h"
#include "viewer/series_store.h"

#include <QWidget>
#include <chrono>
#include <filesystem>
#include <functional>
#include <vector>

class QLabel;
class QPushButton;
class QTabWidget;

namespace vesk {

class check_list;
class cursor_bar;
class results_view;
class scenario_list;

class results_window final : public QWidget {
public:
  // `questions` must outlive this. `data_set`: the open one, whose network shows the results; null: none.
  // `settings`: the file that keeps the colours of series.
  results_window(user_questions& questions, std::function<const prevesk_dataset_data_type*()> data_set,
                 std::filesystem::path settings);
  ~results_window() override;

  // Opens a file beside those that are open, or reloads it, in the background. A failure is shown as a sentence in the
  // window.
  void open(const std::filesystem::path& file);
  void ask_and_open();

  // Cells of the results grid during a run, shown as dots until its file is opened. See live_samples. Where drawing
  // takes long, they are drawn less often, so that the run keeps 99 % of the time.
  void sample(double date_time, const std::vector<live_cell>& cells,
              const std::function<std::optional<double>(int row, int column)>& read);

  // The first measured series was added, which created the file. May be empty.
  std::function<void(const std::filesystem::path&)> OnNewMeasuredFile;

  void save_settings() { store_.save_colours(); }

  results_session& session() { return session_; }
  const series_store& series() const { return store_; }

protected:
  void showEvent(QShowEvent* event) override;

private:
  void add_views();
  void add_view(results_view* view, const QString& title);
  QWidget* choice_part();
  void show_results();
  void show_choice();
  results_view& page() const; // that is in front
  void show_page();
  void draw_samples();
  void look_at_files();
  void say(const QString& message);

  user_questions& questions_;
  const std::function<const prevesk_dataset_data_type*()> data_set_;
  results_session session_;
  series_store store_;
  live_samples live_;
  std::chrono::steady_clock::time_point no_samples_drawn_before_;
  std::vector<results_view*> views_; // in tab order
  QTabWidget* pages_;
  scenario_list* scenarios_ = nullptr;
  check_list* variables_ = nullptr;
  check_list* segments_ = nullptr;
  cursor_bar* cursor_ = nullptr;
  QLabel* message_;
  QLabel* age_;
  QPushButton* reload_;
};

} // namespace vesk
