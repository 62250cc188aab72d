// What the main window shows of the open data set: model, period, counts, solution, queries, and whether the last
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

  // The data set, its file or its results may have changed. Counts are shown at once; the comparison with the record of
  // the last run, which takes time on a large data set, is made in another thread.
  void refresh();

private:
  struct answer_place; // of a comparison; main thread

  void show_rows();
  void compare();

  TPreveskMainForm& form_;
  elided_label* title_;
  elided_label* file_;
  QFormLayout* rows_;
  QTimer compare_soon_;
  std::shared_ptr<answer_place> running_; // the comparison that is being made; null: none
  std::optional<results_state> state_;    // of the latest comparison
};

} // namespace vesk
