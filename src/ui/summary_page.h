// Summary of the open data set in the main window: model, period, counts, solution, queries, and whether the last
// results belong to it.
#pragma once

#include "app/results_state.h"

#include <QTimer>
#include <QWidget>
#include <memory>
#include <optional>

class QFormLayout;

namespace vesk {

class TPreveskMainForm;
class elided_label;

class summary_page final : public QWidget {
public:
  summary_page(QWidget* parent, TPreveskMainForm& form); // the form must outlive it
  ~summary_page() override;

  // Call after any change of the data set, its file or its results. Counts are shown at once; the comparison with the
  // record of the last run, slow for a large data set, runs in another thread.
  void refresh();

private:
  struct answer_place; // receives the result of a comparison; main thread

  void show_rows();
  void compare();

  TPreveskMainForm& form_;
  elided_label* title_;
  elided_label* file_;
  QFormLayout* rows_;
  QTimer compare_soon_;
  std::shared_ptr<answer_place> running_; // the current comparison; null: none
  std::optional<results_state> state_;    // of the latest comparison
};

} // namespace vesk
