// The page "Agreement": measured series and how well the results agree with them.
#pragma once

#include "charts/fill_calc_table.h"
#include "editors/user_questions.h"
#include "ui/results/results_view.h"
#include "viewer/agreement_list.h"

class QCheckBox;
class QComboBox;
class QLabel;
class QPushButton;

namespace vesk {

class chart_stack;
class grid_view;

class agreement_page final : public results_view {
public:
  agreement_page(results_session& session, user_questions& questions);
  ~agreement_page() override;

  void set_results() override;
  void set_cursor() override;
  void print() override;
  void save() override;
  agreement_list& list() { return list_; }

private:
  void show_all();
  void show_scores();
  void edit(bool is_new);
  void remove();
  QString why_empty() const;
  chart_stack& chart_in_use() const; // with the focus, or the first one

  results_session& session_;
  user_questions& questions_;
  agreement_list list_;
  score_table scores_;
  TFillCalcTable table_{scores_};
  QComboBox* series_;
  QPushButton* edit_;
  QPushButton* remove_;
  QCheckBox* whole_;
  chart_stack* chart_;
  chart_stack* scatter_;
  grid_view* view_;
  QPushButton* save_;
  QLabel* note_;
  bool is_filling_ = false;
};

} // namespace vesk
