// The page "Table": the chosen series as numbers.
#pragma once

#include "charts/fill_calc_table.h"
#include "ui/results/results_view.h"
#include "viewer/series_table.h"

class QComboBox;
class QLabel;

namespace vesk {

class grid_view;

// Saves a grid as CSV under a name chosen by the user; reports failures in a box.
void save_grid(const grid& content);

class table_page final : public results_view {
public:
  table_page(results_session& session, series_store& store);
  ~table_page() override;

  void set_results() override;
  void set_cursor() override; // selects the row of that time
  void save() override;

private:
  results_session& session_;
  series_store& store_;
  series_table content_;
  TFillCalcTable table_{content_};
  grid_view* view_;
  QComboBox* order_;
  QLabel* note_;
};

} // namespace vesk
