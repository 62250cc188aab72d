#include "ui/editor_window.h"

#include "ui/chart_view.h"
#include "ui/grid_view.h"
#include "ui/guard.h"
#include "ui/measures.h"
#include "ui/texts.h"
#include "ui/wheel_guard.h"

#include <QAccessible>
#include <QAction>
#include <QComboBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QShowEvent>
#include <QSignalBlocker>
#include <QSplitter>
#include <QVBoxLayout>

namespace vesk {

namespace {

// The eight buttons, in the order in which they are shown.
struct button_row {
  unsigned button;
  const char* text;
  const char* name;
  const char* hint;
  void (editor::*command)(editor_panel&);
};

constexpr button_row buttons[] = {
    {insert_button, "&Insert", "InsertRowButton", "Insert a row before the active one (Ctrl++)",
     &editor::InsertRowButtonClick},
    {delete_button, "&Delete", "DeleteRowButton", "Delete the active row; Ctrl+- deletes all selected rows",
     &editor::DeleteRowButtonClick},
    {delete_all_button, "Delete &All", "DeleteAllButton", "Delete all rows", &editor::DeleteAllButtonClick},
    {paste_button, "&Paste", "PasteButton", "Write the clipboard's cells from the active cell on (Ctrl+V)",
     &editor::PasteButtonClick},
    {fill_calc_button, "&Fill/Calc", "FillCalcButton", "Fill the selected cells from an expression",
     &editor::FillCalcButtonClick},
    {graph_button, "&Graph", "GraphButton", "Show the series in a window that stays open", &editor::GraphButtonClick},
};

constexpr int screen_margin = 60; // that a window's first size leaves free

QLabel* plain_label(const char* name) {
  auto* label = new QLabel;
  label->setObjectName(name);
  label->setTextFormat(Qt::PlainText);
  label->setWordWrap(true);
  return label;
}

void show_text(QLabel& label, const std::string& text) {
  label.setText(shown(text));
  label.setVisible(!text.empty());
}

const QColor deferred_ground(0x00, 0xFF, 0xFF);

// Where the row's point is in the chart, which draws points in order of time.
std::optional<std::size_t> point_of_row(const TGraphForm& graph, std::size_t row) {
  if (graph.series().empty()) return std::nullopt;
  const std::vector<std::size_t>& rows = graph.series().front()->rows;
  if (rows.empty()) return row;
  const auto found = std::ranges::find(rows, row);
  return found == rows.end() ? std::nullopt : std::optional(static_cast<std::size_t>(found - rows.begin()));
}

} // namespace

editor_window::editor_window(QWidget* parent, editor& shown_editor)
    : QDialog(parent), form_(shown_editor), panels_(new QSplitter(Qt::Vertical)), message_(plain_label("MessageLabel")),
      next_mark_(new QAction("Next &marked cell", this)) {
  setObjectName(shown(form_.class_name().substr(1)));
  setWindowTitle(shown(form_.caption()));
  bind(*next_mark_, Qt::Key_F8, [this] { form_.go_to_next_mark(); });
  auto* column = new QVBoxLayout(this);
  if (const editor_choice* choice = form_.choice()) column->addLayout(make_choice(*choice));
  panels_->setChildrenCollapsible(false);
  for (const auto& panel : form_.panels()) panels_->addWidget(make_panel(*panel));
  for (int i = 0; i < panels_->count(); ++i) panels_->setStretchFactor(i, i + 1 == panels_->count() ? 1 : 0);
  column->addWidget(panels_, 1);
  // It keeps its line while it is empty: a message must not move the buttons.
  message_->setMinimumHeight(message_->fontMetrics().lineSpacing());
  column->addWidget(message_);
  column->addLayout(make_end_row());
  // Enter belongs to the grids.
  for (QPushButton* button : findChildren<QPushButton*>()) button->setAutoDefault(false);
  form_.set_view(this);
}

editor_window::~editor_window() {
  form_.set_view(nullptr);
}

QBoxLayout* editor_window::make_choice(const editor_choice& choice) {
  choice_ = new QComboBox;
  choice_->setObjectName(shown(choice.name));
  ignore_wheel(*choice_);
  auto* label = new QLabel(shown(choice.label));
  label->setBuddy(choice_);
  connect(choice_, &QComboBox::activated, this,
          [this](int position) { run([=, this] { form_.ChoiceChange(static_cast<std::size_t>(position)); }); });
  auto* row = new QHBoxLayout;
  row->addWidget(label);
  row->addWidget(choice_, 1);
  return row;
}

QWidget* editor_window::make_panel(editor_panel& panel) {
  widgets_.push_back(std::make_unique<panel_widgets>());
  panel_widgets& w = *widgets_.back();
  w.panel = &panel;
  w.label = plain_label((panel.name == "TFFillCalcTable" ? "TimeFunctionLabel" : panel.name + "Label").c_str());
  w.grid = new grid_view(panel.table, shown(form_.caption()), this);
  w.grid->setObjectName(shown(panel.name));
  w.grid->setMinimumHeight(scaled(100, *this));
  w.status = plain_label((panel.name + "Status").c_str());
  w.label->setBuddy(w.grid);

  auto* content = new QWidget;
  auto* column = new QVBoxLayout(content);
  column->setContentsMargins(0, 0, 0, 0);
  column->addWidget(w.label);
  if (panel.series)
    make_chart(w, *column);
  else
    column->addWidget(w.grid, 1);
  auto* row = new QHBoxLayout;
  add_buttons(*row, panel, *w.grid);
  row->addStretch(1);
  column->addLayout(row);
  column->addWidget(w.status);
  if (panel.series) add_deferred_note(w, *column);
  add_menu(w);
  connect(w.grid, &grid_view::selection_moved, this, [this, &w] { show_selection(w); });
  connect(&w.grid->model(), &grid_model::refusal_changed, this,
          [this, &w] { show_text(*w.status, form_.status(*w.panel)); });
  return content;
}

// Beside the grid, which keeps its width.
void editor_window::make_chart(panel_widgets& w, QBoxLayout& column) {
  w.graph = std::make_unique<TGraphForm>();
  w.chart = new chart_view(this, chart_view::kind::beside_a_grid);
  w.chart->setObjectName(shown(w.panel->name + "Chart"));
  w.beside = new QSplitter(Qt::Horizontal);
  w.beside->setChildrenCollapsible(false);
  w.beside->addWidget(w.grid);
  w.beside->addWidget(w.chart);
  w.beside->setStretchFactor(0, 0);
  w.beside->setStretchFactor(1, 1);
  column.addWidget(w.beside, 1);
  connect(w.chart, &chart_view::point_clicked, this, [&w](std::size_t point) {
    w.panel->table.set_active(w.graph->series().front()->row_of(point), w.panel->table.active_column());
    w.grid->setFocus();
  });
  w.chart->show_graph(w.graph.get());
}

void editor_window::add_deferred_note(panel_widgets& w, QBoxLayout& column) {
  w.deferred_note = plain_label("DeferredNote");
  w.keep_points = new QPushButton("&Keep these points");
  w.keep_points->setObjectName("KeepPointsButton");
  w.keep_points->setToolTip("Runs use the points as they are here; the query stays, but is no longer run.");
  connect(w.keep_points, &QPushButton::clicked, this, [this, &w] { run([&] { form_.keep_these_points(*w.panel); }); });
  auto* line = new QHBoxLayout;
  line->addWidget(w.deferred_note, 1);
  line->addWidget(w.keep_points);
  column.addLayout(line);
}

void editor_window::add_buttons(QBoxLayout& row, editor_panel& panel, grid_view& grid) {
  const auto add = [&](const QString& text, const char* name, const char* hint, const std::function<void()>& command) {
    auto* button = new QPushButton(text);
    button->setObjectName(name);
    button->setToolTip(hint);
    connect(button, &QPushButton::clicked, this, [this, command, &grid] {
      run(command);
      grid.setFocus();
    });
    row.addWidget(button);
    return button;
  };
  for (const button_row& one : buttons) {
    if (!(panel.buttons & one.button)) continue;
    if (one.button == paste_button)
      add("&Copy", "CopyButton", "Copy the selected cells (Ctrl+C)", [this, &panel] { form_.CopyButtonClick(panel); });
    add(one.text, one.name, one.hint, [this, &panel, command = one.command] { (form_.*command)(panel); });
  }
  if (&panel == form_.panels().front().get())
    for (const editor_command& command : form_.extra_commands())
      add(shown(command.text), command.name.c_str(), "", command.run);
  if (panel.buttons & import_button) {
    auto* button = add("I&mport", "ImportButton", editor::import_hint.data(), [] {});
    button->setEnabled(form_.import_is_available());
  }
}

void editor_window::add_menu(panel_widgets& w) {
  editor_panel& panel = *w.panel;
  const auto add = [&](const char* text, const QKeySequence& keys, const std::function<void()>& command) {
    auto* action = new QAction(text, w.grid);
    action->setShortcut(keys);
    action->setShortcutContext(Qt::WidgetShortcut);
    connect(action, &QAction::triggered, this, [this, command] { run(command); });
    w.grid->addAction(action);
    return action;
  };
  add("&Copy", QKeySequence::Copy, [this, &panel] { form_.CopyButtonClick(panel); });
  add("Copy with &headers", QKeySequence("Ctrl+Shift+C"), [this, &panel] { form_.CopyButtonClick(panel, true); });
  if (panel.buttons & paste_button)
    add("&Paste", QKeySequence::Paste, [this, &panel] { form_.PasteButtonClick(panel); });
  if (panel.buttons & insert_button) {
    add("&Insert row", QKeySequence("Ctrl++"), [this, &panel] { form_.InsertRowButtonClick(panel); });
    add("&Delete selected rows", QKeySequence("Ctrl+-"), [this, &panel] { form_.delete_selected_rows(panel); });
  }
  if (panel.series) {
    add("&Sort by date and time", {}, [this, &panel] { form_.sort_by_date_and_time(panel); });
    add("&Regular times...", {}, [this, &panel] { form_.regular_times_click(panel); });
    add("I&nterpolate between the selected rows", {}, [this, &panel] { form_.interpolate_between(panel); });
  }
  w.back_to_default = add("&Back to the default", {}, [this, &panel] { form_.back_to_default(panel); });
  w.grid->addAction(next_mark_);
  w.grid->setContextMenuPolicy(Qt::ActionsContextMenu);
}

// Not a button box: that makes one of its buttons the default.
QBoxLayout* editor_window::make_end_row() {
  const auto button = [this](const char* text, const char* name) {
    auto* made = new QPushButton(text, this);
    made->setObjectName(name);
    return made;
  };
  undo_ = button("&Undo", "UndoButton");
  redo_ = button("&Redo", "RedoButton");
  auto* ok = button("OK", "OkButton");
  auto* cancel = button("Cancel", "CancelButton");
  ok->setToolTip("Keep the changes and close (Ctrl+Enter)");
  cancel->setToolTip("Take all changes back and close");
  connect(ok, &QPushButton::clicked, this, &QDialog::accept);
  connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
  connect(undo_, &QPushButton::clicked, this, [this] { run([this] { form_.undo(); }); });
  connect(redo_, &QPushButton::clicked, this, [this] { run([this] { form_.redo(); }); });
  bind(*new QAction(this), QKeySequence::Undo, [this] { form_.undo(); });
  bind(*new QAction(this), QKeySequence::Redo, [this] { form_.redo(); });
  for (const Qt::Key enter : {Qt::Key_Return, Qt::Key_Enter}) {
    auto* action = new QAction(this);
    action->setShortcut(Qt::CTRL | enter);
    connect(action, &QAction::triggered, this, &QDialog::accept);
    addAction(action);
  }
  auto* row = new QHBoxLayout;
  row->addWidget(undo_);
  row->addWidget(redo_);
  row->addStretch(1);
  row->addWidget(ok);
  row->addWidget(cancel);
  return row;
}

void editor_window::bind(QAction& action, QKeySequence keys, const std::function<void()>& command) {
  action.setShortcut(keys);
  connect(&action, &QAction::triggered, this, [this, command] { run(command); });
  addAction(&action);
}

// What is being typed counts before any command.
void editor_window::run(const std::function<void()>& command) {
  for (const auto& one : widgets_) one->grid->commit_open_editor();
  attempt(command);
}

editor_window::panel_widgets& editor_window::widgets_of(const editor_panel& panel) {
  return **std::ranges::find_if(widgets_, [&](const auto& one) { return one->panel == &panel; });
}

void editor_window::texts_changed() {
  if (const editor_choice* choice = form_.choice()) {
    const QSignalBlocker quiet(choice_);
    choice_->clear();
    for (const std::string& item : choice->items) choice_->addItem(shown(item));
    choice_->setCurrentIndex(choice->items.empty() ? -1 : static_cast<int>(choice->position));
  }
  for (const auto& one : widgets_) {
    show_text(*one->label, one->panel->label);
    one->grid->setAccessibleName(shown(one->panel->label.empty() ? form_.caption() : one->panel->label));
    show_text(*one->status, form_.status(*one->panel));
    if (!one->panel->series) continue;
    const std::string note = form_.deferred_note(*one->panel);
    show_text(*one->deferred_note, note);
    one->keep_points->setVisible(!note.empty());
    one->grid->model().set_background(note.empty() ? QColor() : deferred_ground);
  }
  const QString message = shown(form_.message());
  const bool is_new = message_->text() != message;
  message_->setText(message);
  if (is_new && !message.isEmpty()) {
    QAccessibleEvent alert(message_, QAccessible::Alert);
    QAccessible::updateAccessibility(&alert);
  }
  const auto show_step = [](QPushButton& button, const char* what, const char* keys, const std::string& label) {
    button.setEnabled(!label.empty());
    button.setToolTip(label.empty() ? QString("There is nothing to %1").arg(QString(what).toLower())
                                    : tool_tip(QString("%1: %2 (%3)").arg(what, shown(label), keys)));
  };
  show_step(*undo_, "Undo", "Ctrl+Z", form_.host().undo_label());
  show_step(*redo_, "Redo", "Ctrl+Shift+Z", form_.host().redo_label());
}

// The sums over a whole series are not worked out again for each step of the cursor.
void editor_window::show_selection(panel_widgets& w) {
  const cell_range cells = w.panel->table.selection();
  const bool block = cells.rows() > 1 || cells.columns() > 1;
  if (block || w.shows_block) show_text(*w.status, form_.status(*w.panel));
  w.shows_block = block;
  w.back_to_default->setEnabled(w.panel->table.has_default());
  if (w.chart && !charts_are_old_)
    w.chart->mark_point(w.panel->table.is_shown_as_empty() ? std::nullopt
                                                           : point_of_row(*w.graph, w.panel->table.active_row()));
}

// Once for all changes of one turn of the event loop: a series may have a million points.
void editor_window::series_changed() {
  if (std::exchange(charts_are_old_, true)) return;
  QMetaObject::invokeMethod(
      this, [this] { attempt([this] { feed_charts(); }); }, Qt::QueuedConnection);
}

void editor_window::feed_charts() {
  charts_are_old_ = false;
  for (const auto& one : widgets_) {
    if (!one->chart) continue;
    const auto ref = one->panel->series->ref();
    if (one->charted != ref) one->graph->unzoom_completely();
    one->charted = ref;
    one->graph->replace_series(form_.graph_data(*one->panel));
    one->chart->data_changed();
    show_selection(*one);
  }
}

void editor_window::go_to_panel(editor_panel& panel) {
  widgets_of(panel).grid->setFocus();
}

void editor_window::reload() {
  attempt([this] { form_.data_set_replaced(); });
}

// All columns and a chart that can be read, as far as the screen has room for them.
void editor_window::take_first_size() {
  if (std::exchange(has_size_, true)) return;
  const int margin = scaled(screen_margin, *this);
  resize(sizeHint().boundedTo(screen()->availableGeometry().size() - QSize(margin, margin)));
  // The splitters have been laid out before there was content.
  for (const auto& one : widgets_)
    if (one->beside) one->beside->setSizes({one->grid->sizeHint().width(), width()});
  if (panels_->count() > 1) panels_->setSizes({panels_->widget(0)->sizeHint().height(), height()});
}

void editor_window::showEvent(QShowEvent* event) {
  QDialog::showEvent(event);
  if (event->spontaneous()) return; // it was minimised
  attempt([this] { form_.FormShow(); });
  take_first_size();
  widgets_.front()->grid->setFocus();
}

// There is no default button, but Enter presses the one that has the focus.
void editor_window::keyPressEvent(QKeyEvent* event) {
  const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
  auto* button = qobject_cast<QPushButton*>(focusWidget());
  if (enter && button)
    button->click();
  else
    QDialog::keyPressEvent(event);
}

void editor_window::done(int result) {
  if (result == Accepted)
    for (const auto& one : widgets_) one->grid->commit_open_editor();
  bool may_close = true;
  attempt([&] { may_close = form_.FormCloseQuery(result == Accepted); });
  if (may_close) QDialog::done(result);
}

} // namespace vesk
