#include "ui/editor_window.h"

#include "ui/chart_view.h"
#include "ui/grid_view.h"
#include "ui/guard.h"
#include "ui/measures.h"
#include "ui/texts.h"

#include <QAction>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
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
  void (editor::*command)(editor_panel&);
};

constexpr button_row buttons[] = {
    {insert_button, "&Insert", "InsertRowButton", &editor::InsertRowButtonClick},
    {delete_button, "&Delete", "DeleteRowButton", &editor::DeleteRowButtonClick},
    {delete_all_button, "Delete &All", "DeleteAllButton", &editor::DeleteAllButtonClick},
    {paste_button, "&Paste", "PasteButton", &editor::PasteButtonClick},
    {fill_calc_button, "&Fill/Calc", "FillCalcButton", &editor::FillCalcButtonClick},
    {graph_button, "&Graph", "GraphButton", &editor::GraphButtonClick},
};

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

} // namespace

editor_window::editor_window(QWidget* parent, editor& shown_editor)
    : QDialog(parent), form_(shown_editor), panels_(new QSplitter(Qt::Vertical)),
      message_(plain_label("MessageLabel")) {
  setObjectName(shown(form_.class_name().substr(1)));
  setWindowTitle(shown(form_.caption()));
  auto* column = new QVBoxLayout(this);
  if (const editor_choice* choice = form_.choice()) {
    choice_ = new QComboBox;
    choice_->setObjectName(shown(choice->name));
    auto* label = new QLabel("&" + shown(choice->label));
    label->setBuddy(choice_);
    connect(choice_, &QComboBox::activated, this,
            [this](int position) { run([=, this] { form_.ChoiceChange(static_cast<std::size_t>(position)); }); });
    auto* row = new QHBoxLayout;
    row->addWidget(label);
    row->addWidget(choice_, 1);
    column->addLayout(row);
  }
  panels_->setChildrenCollapsible(false);
  for (const auto& panel : form_.panels()) panels_->addWidget(make_panel(*panel));
  column->addWidget(panels_, 1);
  column->addWidget(message_);

  auto* box = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
  undo_ = box->addButton("&Undo", QDialogButtonBox::ActionRole);
  redo_ = box->addButton("&Redo", QDialogButtonBox::ActionRole);
  undo_->setObjectName("UndoButton");
  redo_->setObjectName("RedoButton");
  connect(box, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(box, &QDialogButtonBox::rejected, this, &QDialog::reject);
  const auto bind = [this](QPushButton* button, QKeySequence::StandardKey keys, void (editor::*command)()) {
    connect(button, &QPushButton::clicked, this, [this, command] { run([=, this] { (form_.*command)(); }); });
    auto* action = new QAction(this);
    action->setShortcut(keys);
    connect(action, &QAction::triggered, button, &QPushButton::click);
    addAction(action);
  };
  bind(undo_, QKeySequence::Undo, &editor::undo);
  bind(redo_, QKeySequence::Redo, &editor::redo);
  auto* next_mark = new QAction(this);
  next_mark->setShortcut(Qt::Key_F8);
  connect(next_mark, &QAction::triggered, this, [this] { run([this] { form_.go_to_next_mark(); }); });
  addAction(next_mark);
  column->addWidget(box);
  // Enter belongs to the grids.
  for (QPushButton* button : findChildren<QPushButton*>()) {
    button->setAutoDefault(false);
    button->setDefault(false);
  }
  form_.set_view(this);
  const bool charts = std::ranges::any_of(widgets_, [](const auto& one) { return one->chart != nullptr; });
  resize(scaled(charts ? 900 : 640, *this), scaled(widgets_.size() > 1 ? 620 : 440, *this));
}

editor_window::~editor_window() {
  form_.set_view(nullptr);
}

QWidget* editor_window::make_panel(editor_panel& panel) {
  widgets_.push_back(std::make_unique<panel_widgets>());
  panel_widgets& w = *widgets_.back();
  w.panel = &panel;
  w.label = plain_label((panel.name + "Label").c_str());
  w.grid = new grid_view(panel.table, shown(form_.caption()), this);
  w.grid->setObjectName(shown(panel.name));
  w.grid->setMinimumHeight(scaled(120, *this));
  w.status = plain_label((panel.name + "Status").c_str());
  w.label->setBuddy(w.grid);

  auto* content = new QWidget;
  auto* column = new QVBoxLayout(content);
  column->setContentsMargins(0, 0, 0, 0);
  column->addWidget(w.label);
  if (panel.series) {
    w.graph = std::make_unique<TGraphForm>();
    w.chart = new chart_view(content);
    w.chart->setObjectName(shown(panel.name + "Chart"));
    auto* beside = new QSplitter(Qt::Horizontal);
    beside->addWidget(w.grid);
    beside->addWidget(w.chart);
    beside->setStretchFactor(0, 2);
    beside->setStretchFactor(1, 3);
    column->addWidget(beside, 1);
    connect(w.chart, &chart_view::point_clicked, this, [grid = w.grid](std::size_t point) {
      grid->table().set_active(point, grid->table().active_column());
      grid->setFocus();
    });
    w.chart->show_graph(w.graph.get());
  } else {
    column->addWidget(w.grid, 1);
  }
  auto* row = new QHBoxLayout;
  add_buttons(*row, panel, *w.grid);
  row->addStretch(1);
  column->addLayout(row);
  column->addWidget(w.status);
  if (panel.series) {
    w.deferred_note = plain_label("DeferredNote");
    w.keep_points = new QPushButton("&Keep these points");
    w.keep_points->setObjectName("KeepPointsButton");
    w.keep_points->setToolTip("The query is no longer run before each run.");
    connect(w.keep_points, &QPushButton::clicked, this,
            [this, &panel] { run([&] { form_.keep_these_points(panel); }); });
    auto* line = new QHBoxLayout;
    line->addWidget(w.deferred_note, 1);
    line->addWidget(w.keep_points);
    column->addLayout(line);
  }
  connect(w.grid, &grid_view::selection_moved, this, [this, &w] {
    show_text(*w.status, form_.status(*w.panel));
    if (w.chart)
      w.chart->mark_point(w.panel->table.is_shown_as_empty() ? std::nullopt
                                                             : std::optional(w.panel->table.active_row()));
  });
  add_menu(w);
  return content;
}

void editor_window::add_buttons(QBoxLayout& row, editor_panel& panel, grid_view& grid) {
  const auto add = [&](const QString& text, const char* name, const std::function<void()>& command) {
    auto* button = new QPushButton(text);
    button->setObjectName(name);
    connect(button, &QPushButton::clicked, this, [this, command, &grid] {
      run(command);
      grid.setFocus();
    });
    row.addWidget(button);
    return button;
  };
  for (const button_row& one : buttons) {
    if (!(panel.buttons & one.button)) continue;
    if (one.button == paste_button) add("&Copy", "CopyButton", [this, &panel] { form_.CopyButtonClick(panel); });
    add(one.text, one.name, [this, &panel, command = one.command] { (form_.*command)(panel); });
  }
  if (&panel == form_.panels().front().get())
    for (const editor_command& command : form_.extra_commands())
      add(shown(command.text), command.name.c_str(), command.run);
  if (panel.buttons & import_button) {
    auto* button = add("I&mport", "ImportButton", [] {});
    button->setEnabled(form_.import_is_available());
    button->setToolTip(shown(editor::import_hint));
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
  add("&Back to the default", {}, [this, &panel] { form_.back_to_default(panel); });
  w.grid->setContextMenuPolicy(Qt::ActionsContextMenu);
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
    show_text(*one->status, form_.status(*one->panel));
    if (!one->panel->series) continue;
    const std::string note = form_.deferred_note(*one->panel);
    show_text(*one->deferred_note, note);
    one->keep_points->setVisible(!note.empty());
    one->grid->model().set_background(note.empty() ? QColor() : deferred_ground);
  }
  show_text(*message_, form_.message());
  const auto show_step = [](QPushButton& button, const std::string& label) {
    button.setEnabled(!label.empty());
    button.setToolTip(tool_tip(shown(label)));
  };
  show_step(*undo_, form_.host().undo_label());
  show_step(*redo_, form_.host().redo_label());
}

void editor_window::series_changed() {
  for (const auto& one : widgets_) {
    if (!one->chart) continue;
    one->graph->replace_series(form_.graph_data(*one->panel));
    one->chart->data_changed();
  }
}

void editor_window::go_to_panel(editor_panel& panel) {
  widgets_of(panel).grid->setFocus();
}

void editor_window::reload() {
  attempt([this] { form_.data_set_replaced(); });
}

void editor_window::showEvent(QShowEvent* event) {
  attempt([this] { form_.FormShow(); });
  for (const auto& one : widgets_)
    if (one == widgets_.front()) one->grid->setFocus();
  QDialog::showEvent(event);
}

void editor_window::done(int result) {
  if (result == Accepted)
    for (const auto& one : widgets_) one->grid->commit_open_editor();
  bool may_close = true;
  attempt([&] { may_close = form_.FormCloseQuery(result == Accepted); });
  if (may_close) QDialog::done(result);
}

} // namespace vesk
