#include "ui/graph_window.h"

#include "ui/chart_view.h"
#include "ui/measures.h"

#include <QLabel>
#include <QToolBar>
#include <QToolButton>
#include <QVBoxLayout>

namespace vesk {

graph_window::graph_window(QWidget* owner, std::shared_ptr<TGraphForm> graph)
    : QWidget(owner, Qt::Window), graph_(std::move(graph)), chart_(new chart_view(this)) {
  setAttribute(Qt::WA_DeleteOnClose);
  setObjectName("GraphForm");
  setWindowTitle(TGraphForm::caption);
  auto* tools = new QToolBar(this);
  const auto add = [&](const char* text, const char* tip, const QKeySequence& keys, void (TGraphForm::*command)()) {
    QAction* action = tools->addAction(tip);
    action->setIconText(text);
    action->setToolTip(keys.isEmpty() ? QString(tip) : QString("%1 (%2)").arg(tip, keys.toString()));
    action->setShortcut(keys);
    connect(action, &QAction::triggered, this, [this, command] {
      (*graph_.*command)();
      refresh();
    });
    return action;
  };
  add("|<", "Go to beginning of data", Qt::Key_Home, &TGraphForm::go_to_beginning_of_data);
  add("<", "Scroll back", Qt::Key_Left, &TGraphForm::scroll_back);
  add(">", "Scroll Forward", Qt::Key_Right, &TGraphForm::scroll_forward);
  add(">|", "Go to end of data", Qt::Key_End, &TGraphForm::go_to_end_of_data);
  tools->addSeparator();
  add("+", "Zoom in over time", Qt::Key_Plus, &TGraphForm::zoom_in_time);
  add("+ value", "Zoom in over values", Qt::CTRL | Qt::Key_Plus, &TGraphForm::zoom_in_value);
  unzoom_ = add("Unzoom", "Unzoom by one level", Qt::Key_Minus, &TGraphForm::unzoom_by_one_level);
  unzoom_all_ = add("Unzoom all", "Unzoom completely", Qt::Key_Escape, &TGraphForm::unzoom_completely);
  tools->addSeparator();
  add("Monochrome", "Toggles between color and monochrome", Qt::Key_M, &TGraphForm::toggle_monochrome)
      ->setCheckable(true);
  tools->addSeparator();
  QAction* print_action = tools->addAction("Print", this, [this] { print_picture(picture()); });
  print_action->setShortcut(QKeySequence::Print);
  print_action->setToolTip("Print Graph (Ctrl+P)");
  QAction* save_action = tools->addAction("Save as...", this, [this] { save_picture(picture()); });
  save_action->setShortcut(QKeySequence::Save);

  save_action->setToolTip("Save as PNG, SVG, PDF or CSV (Ctrl+S)");
  for (QAction* action : tools->actions())
    if (auto* button = qobject_cast<QToolButton*>(tools->widgetForAction(action))) {
      button->setFocusPolicy(Qt::TabFocus);
      button->setAccessibleName(action->text());
    }

  auto* column = new QVBoxLayout(this);
  column->addWidget(tools);
  column->addWidget(chart_, 1);
  if (graph_->was_unsorted()) {
    auto* note = new QLabel("The rows are not sorted; they are drawn in order of time.");
    note->setTextFormat(Qt::PlainText);
    column->addWidget(note);
  }
  connect(chart_, &chart_view::bounds_moved, this, [this] { refresh(); });
  resize(scaled(720, *this), scaled(460, *this));
  chart_->show_graph(graph_.get());
  refresh();
}

void graph_window::refresh() {
  unzoom_->setEnabled(graph_->zoom_levels() > 0);
  unzoom_all_->setEnabled(graph_->zoom_levels() > 0);
  chart_->bounds_changed();
}

picture_output graph_window::picture() const {
  return {[this](const QString& name) { return chart_->save(name); },
          [this](QPaintDevice& device, const QRect& target) { return chart_->paint_on(device, target); }};
}

} // namespace vesk
