#include "ui/results/chart_stack.h"

#include "ui/chart_view.h"
#include "ui/measures.h"
#include "ui/picture_output.h"

#include <QAction>
#include <QLabel>
#include <QScrollArea>
#include <QToolBar>
#include <QToolButton>
#include <QVBoxLayout>

namespace vesk {

namespace {

constexpr int least_row_height = 150;

} // namespace

chart_stack::chart_stack(QWidget* parent)
    : QWidget(parent), tools_(new QToolBar(this)), area_(new QScrollArea(this)), without_(new QLabel) {
  make_tools();
  auto* content = new QWidget;
  column_ = new QVBoxLayout(content);
  column_->setContentsMargins(0, 0, 0, 0);
  column_->setSpacing(0);
  without_->setTextFormat(Qt::PlainText);
  without_->setWordWrap(true);
  without_->setAlignment(Qt::AlignCenter);
  column_->addWidget(without_);
  area_->setWidget(content);
  area_->setWidgetResizable(true);
  area_->setFrameShape(QFrame::NoFrame);
  area_->setFocusPolicy(Qt::NoFocus);
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, 0, 0, 0);
  column->addWidget(tools_);
  column->addWidget(area_, 1);
  refresh();
}

QAction* chart_stack::add_command(const char* text, const char* tip, const QKeySequence& keys,
                                  void (chart_rows::*command)()) {
  QAction* action = tools_->addAction(tip);
  action->setIconText(text);
  action->setToolTip(QString("%1 (%2)").arg(tip, keys.toString()));
  action->setShortcut(keys);
  action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
  area_->addAction(action); // the shortcuts work while the charts have the focus
  connect(action, &QAction::triggered, this, [this, command] {
    (rows_.*command)();
    refresh();
  });
  return action;
}

void chart_stack::make_tools() {
  add_command("|<", "Go to beginning of data", Qt::Key_Home, &chart_rows::go_to_beginning_of_data);
  add_command("<", "Scroll back", Qt::Key_Left, &chart_rows::scroll_back);
  add_command(">", "Scroll forward", Qt::Key_Right, &chart_rows::scroll_forward);
  add_command(">|", "Go to end of data", Qt::Key_End, &chart_rows::go_to_end_of_data);
  tools_->addSeparator();
  add_command("+", "Zoom in over time", Qt::Key_Plus, &chart_rows::zoom_in_time);
  add_command("+ value", "Zoom in over values", Qt::CTRL | Qt::Key_Plus, &chart_rows::zoom_in_value);
  unzoom_ = add_command("Unzoom", "Unzoom by one level", Qt::Key_Minus, &chart_rows::unzoom_by_one_level);
  unzoom_all_ = add_command("Unzoom all", "Unzoom completely", Qt::Key_Escape, &chart_rows::unzoom_completely);
  tools_->addSeparator();
  add_command("Monochrome", "Toggles between color and monochrome", Qt::Key_M, &chart_rows::toggle_monochrome)
      ->setCheckable(true);
  tools_->addSeparator();
  print_ = tools_->addAction("Print", this, [this] { print_picture(picture()); });
  print_->setToolTip("Print the charts (Ctrl+P)");
  save_ = tools_->addAction("Save as...", this, [this] { save_picture(picture()); });
  save_->setToolTip("Save as PNG, SVG, PDF or CSV (Ctrl+S)");
  for (QAction* action : tools_->actions())
    if (auto* button = qobject_cast<QToolButton*>(tools_->widgetForAction(action))) {
      button->setFocusPolicy(Qt::TabFocus);
      button->setAccessibleName(action->text());
    }
}

void chart_stack::show_charts(std::vector<std::unique_ptr<TGraphForm>> charts, const QString& without) {
  for (chart_view* chart : charts_) chart->show_graph(nullptr); // they borrow the graphs that are about to be freed
  rows_.show(std::move(charts));
  while (charts_.size() < rows_.size()) {
    const std::size_t row = charts_.size();
    auto* chart = new chart_view(this, chart_view::kind::row);
    chart->setMinimumHeight(scaled(least_row_height, *this));
    connect(chart, &chart_view::bounds_moved, this, [this, row] {
      rows_.row_moved(row);
      refresh();
    });
    connect(chart, &chart_view::x_clicked, this, &chart_stack::x_clicked);
    charts_.push_back(chart);
    column_->addWidget(chart, 1);
  }
  for (std::size_t row = 0; row < charts_.size(); ++row) {
    const bool is_used = row < rows_.size();
    charts_[row]->setVisible(is_used);
    if (!is_used) continue;
    charts_[row]->setAccessibleName("Chart of " + QString::fromStdString(rows_[row].value_title()));
    charts_[row]->show_graph(&rows_[row]);
  }
  without_->setText(without);
  without_->setVisible(rows_.size() == 0);
  refresh();
}

void chart_stack::set_cursor(std::optional<double> x) {
  rows_.set_cursor(x);
  for (std::size_t row = 0; row < rows_.size(); ++row) charts_[row]->cursor_changed();
}

void chart_stack::print() {
  print_->trigger();
}

void chart_stack::save() {
  save_->trigger();
}

void chart_stack::refresh() {
  unzoom_->setEnabled(rows_.is_zoomed());
  unzoom_all_->setEnabled(rows_.is_zoomed());
  print_->setEnabled(rows_.size() > 0);
  save_->setEnabled(rows_.size() > 0);
  for (std::size_t row = 0; row < rows_.size(); ++row) charts_[row]->bounds_changed();
}

picture_output chart_stack::picture() const {
  const std::vector<chart_view*> used(charts_.begin(), charts_.begin() + static_cast<std::ptrdiff_t>(rows_.size()));
  return {[used](const QString& name) { return chart_view::save(used, name); },
          [used](QPaintDevice& device, const QRect& target) { return chart_view::paint_on(used, device, target); }};
}

} // namespace vesk
