// The results grid: a view on the engine's array while a job runs. Nothing is copied; what is in sight is read when it
// is painted.
#pragma once

#include "ui/results_model.h"

#include <QTableView>

namespace vesk {

class results_table final : public QTableView {
public:
  results_table(QWidget* parent, results_model::reader read);

  void initialize_grid(const std::vector<std::string>& column_labels, int rows);
  void set_picture(const std::string& picture) { model_.set_picture(picture); }
  void repaint_cells();
  void copy_selected() const; // tab-separated

  void keyboardSearch(const QString&) override {} // would read through all the rows

private:
  void widen_to_contents();

  results_model model_;
  std::vector<int> asked_for_; // the widest that each column's content has been since the job began
};

} // namespace vesk
