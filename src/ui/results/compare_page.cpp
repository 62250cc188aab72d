#include "ui/results/compare_page.h"

#include "charts/general_graph_data.h"
#include "ui/grid_view.h"
#include "ui/guard.h"
#include "ui/measures.h"
#include "ui/results/table_page.h"
#include "ui/wrapping_row.h"
#include "viewer/series_charts.h"

#include <QPushButton>
#include <QSplitter>
#include <QVBoxLayout>
#include <algorithm>

namespace vesk {

namespace fs = std::filesystem;

compare_page::compare_page(results_session& session, series_store& store)
    : session_(session), store_(store), charts_(new chart_stack(this)),
      view_(new grid_view(table_, "Differences to the baseline", this, grid_view::tab_key::leaves_grid)),
      previous_(new QPushButton("Open the &previous run")), save_(new QPushButton("Save table as CSV...")) {
  setObjectName("ComparePage");
  view_->setObjectName("DifferenceTable");
  previous_->setObjectName("PreviousRunButton");
  previous_->setToolTip("Results of the run before the last one, kept beside the last results");
  for (QPushButton* it : {previous_, save_}) it->setAutoDefault(false);
  connect(previous_, &QPushButton::clicked, this, [this] { attempt([this] { session_.open(previous_run()); }); });
  connect(save_, &QPushButton::clicked, this, [this] { attempt([this] { save_grid(summary_); }); });
  connect(charts_, &chart_stack::x_clicked, this,
          [this](double x) { attempt([&] { session_.set_cursor(x + days_to_1970); }); });
  auto* halves = new QSplitter(Qt::Vertical);
  halves->setChildrenCollapsible(false);
  halves->addWidget(charts_);
  halves->addWidget(view_);
  halves->setSizes({scaled(420, *this), scaled(140, *this)});
  auto* column = new QVBoxLayout(this);
  column->addWidget(halves, 1);
  column->addWidget(in_wrapping_row({previous_, save_}));
}

fs::path compare_page::previous_run() const {
  if (session_.scenarios().empty()) return {};
  fs::path file = session_.scenarios()[session_.baseline()].path;
  file.replace_extension(".previous.nc");
  const bool is_open = std::ranges::find(session_.scenarios(), file, &scenario::path) != session_.scenarios().end();
  std::error_code missing;
  return !is_open && fs::is_regular_file(file, missing) ? file : fs::path();
}

QString compare_page::why_empty() const {
  if (session_.scenarios().size() < 2) return "Open a second results file to compare it with the baseline.";
  if (store_.is_reading()) return "Reading...";
  return "Choose a variable and a segment that both files have.";
}

// Must precede the table that it shows.
compare_page::~compare_page() {
  delete view_;
}

void compare_page::set_results() {
  auto found = differences(store_.series(), session_.baseline());
  summary_.show(found, store_.series(), session_.baseline());
  table_.show(summary_);
  auto charts = charts_by_unit(found, true, {});
  for (const auto& chart : charts) chart->set_titles({}, "difference of " + chart->value_title());
  charts_->show_charts(std::move(charts), why_empty());
  previous_->setVisible(!previous_run().empty());
  save_->setEnabled(summary_.row_count() > 0);
  set_cursor();
}

void compare_page::set_cursor() {
  charts_->set_cursor(session_.scenarios().empty() ? std::nullopt : std::optional(session_.cursor() - days_to_1970));
}

} // namespace vesk
