#include "ui/results/time_series_view.h"

#include "charts/general_graph_data.h"
#include "ui/chart_view.h"
#include "ui/guard.h"
#include "ui/measures.h"
#include "ui/plain_label.h"
#include "ui/texts.h"
#include "viewer/series_charts.h"

#include <QHeaderView>
#include <QLabel>
#include <QSignalBlocker>
#include <QSplitter>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace vesk {

namespace {

enum column { name_column, value_column, unit_column, columns };

} // namespace

time_series_view::time_series_view(results_session& session, series_store& store, const live_samples& live)
    : session_(session), store_(store), live_(live), charts_(new chart_stack(this)), legend_(new QTreeWidget),
      note_(plain_label("SeriesNote")) {
  setObjectName("TimeSeriesView");
  legend_->setObjectName("Legend");
  legend_->setAccessibleName("Series and their values at the cursor");
  legend_->setColumnCount(columns);
  legend_->setHeaderLabels({"Series", "Value", "Unit"});
  legend_->setRootIsDecorated(false);
  legend_->setUniformRowHeights(true);
  legend_->header()->setStretchLastSection(false);
  legend_->header()->setSectionResizeMode(name_column, QHeaderView::Stretch);
  for (const int it : {value_column, unit_column})
    legend_->header()->setSectionResizeMode(it, QHeaderView::ResizeToContents);
  connect(legend_, &QTreeWidget::itemChanged, this, [this](const QTreeWidgetItem* item, int changed) {
    if (changed != name_column) return;
    const std::string label = stored(item->data(name_column, Qt::UserRole).toString());
    attempt([&] {
      if (item->checkState(name_column) == Qt::Checked)
        hidden_.erase(label);
      else
        hidden_.insert(label);
      show_charts();
    });
  });
  connect(charts_, &chart_stack::x_clicked, this,
          [this](double x) { attempt([&] { session_.set_cursor(x + days_to_1970); }); });
  auto* halves = new QSplitter(Qt::Vertical);
  halves->setChildrenCollapsible(false);
  halves->addWidget(charts_);
  halves->addWidget(legend_);
  halves->setSizes({scaled(460, *this), scaled(120, *this)});
  auto* column = new QVBoxLayout(this);
  column->addWidget(halves, 1);
  column->addWidget(note_);
}

void time_series_view::set_results() {
  show_charts();
  show_legend();
  show_text(*note_, store_.is_reading() ? "Reading..." : store_.note());
}

QString time_series_view::why_empty() const {
  if (session_.scenarios().empty()) return "Open a results file, such as river.nc.";
  if (store_.is_reading()) return "Reading...";
  return "Choose at least one variable and one segment on the left.";
}

void time_series_view::show_charts() {
  auto charts = charts_by_unit(store_.series(), session_.scenarios().size() > 1, hidden_);
  if (auto chart = live_.chart()) charts.insert(charts.begin(), std::move(chart));
  charts_->show_charts(std::move(charts), why_empty());
  set_cursor();
}

void time_series_view::show_legend() {
  const QSignalBlocker quiet(legend_);
  legend_->clear();
  const bool several = session_.scenarios().size() > 1;
  QList<QTreeWidgetItem*> items;
  for (const shown_series& it : store_.series()) {
    const std::string label = it.label(several);
    auto* item = new QTreeWidgetItem;
    item->setText(name_column, shown(label));
    item->setData(name_column, Qt::UserRole, QString::fromStdString(label));
    item->setToolTip(name_column, tool_tip(shown(label)));
    item->setIcon(name_column, chart_view::line_icon({.colour = it.colour, .pattern = it.scenario}));
    item->setCheckState(name_column, hidden_.contains(label) ? Qt::Unchecked : Qt::Checked);
    item->setText(unit_column, shown(it.units));
    item->setTextAlignment(value_column, Qt::AlignRight | Qt::AlignVCenter);
    items << item;
  }
  legend_->addTopLevelItems(items);
  set_cursor();
}

void time_series_view::set_cursor() {
  const auto& series = store_.series();
  charts_->set_cursor(session_.scenarios().empty() ? std::nullopt : std::optional(session_.cursor() - days_to_1970));
  const QSignalBlocker quiet(legend_);
  for (int i = 0; i < legend_->topLevelItemCount() && i < static_cast<int>(series.size()); ++i) {
    const shown_series& it = series[static_cast<std::size_t>(i)];
    legend_->topLevelItem(i)->setText(value_column,
                                      shown(short_number(value_at(*it.times, *it.values, session_.cursor()))));
  }
}

} // namespace vesk
