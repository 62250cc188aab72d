#include "ui/editor_window.h"

#include "ui/editor_buttons.h"
#include "ui/editor_panel_view.h"
#include "ui/enter_key.h"
#include "ui/entry_edit.h"
#include "ui/find_bar.h"
#include "ui/grid_view.h"
#include "ui/guard.h"
#include "ui/measures.h"
#include "ui/mnemonics.h"
#include "ui/plain_label.h"
#include "ui/texts.h"
#include "ui/tree_view.h"
#include "ui/wheel_guard.h"
#include "ui/wrapping_row.h"

#include <QAction>
#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QShowEvent>
#include <QSignalBlocker>
#include <QSplitter>
#include <QTabWidget>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

namespace vesk {

namespace {

constexpr int screen_margin = 60; // that a window's initial size leaves free
constexpr int series_width = 560;

QVBoxLayout* column_in(QWidget& widget) {
  auto* column = new QVBoxLayout(&widget);
  column->setContentsMargins(0, 0, 0, 0);
  return column;
}

} // namespace

editor_window::editor_window(QWidget* parent, editor& shown_editor)
    : QDialog(parent), form_(shown_editor), message_(plain_label("MessageLabel")),
      next_mark_(new QAction("Next &marked cell", this)) {
  setObjectName(shown(form_.class_name().substr(1)));
  bind(*next_mark_, Qt::Key_F8, [this] { form_.go_to_next_mark(); });
  const std::vector<editor_page> pages = form_.pages();
  make_panels(pages);
  auto* column = new QVBoxLayout(this);
  column->addWidget(make_content(pages), 1);
  if (shared_buttons_) column->addWidget(shared_buttons_);
  if (QWidget* commands = make_common_row()) column->addWidget(commands);
  make_find_bar(*column);
  // It keeps its line while it is empty: a message must not move the buttons.
  message_->setMinimumHeight(message_->fontMetrics().lineSpacing());
  column->addWidget(message_);
  column->addLayout(make_end_row());
  give_mnemonics(*this);
  // Enter belongs to the grids.
  for (QPushButton* button : findChildren<QPushButton*>()) button->setAutoDefault(false);
  form_.set_view(this);
}

editor_window::~editor_window() {
  form_.set_view(nullptr);
}

// Panels and pages.

void editor_window::make_panels(const std::vector<editor_page>& pages) {
  const auto panels = form_.panels();
  page_of_panel_.resize(panels.size());
  for (std::size_t page = 0; page < pages.size(); ++page)
    std::fill_n(page_of_panel_.begin() + static_cast<std::ptrdiff_t>(pages[page].first), pages[page].count,
                static_cast<int>(page));
  if (form_.active_grid())
    // The active grid gets the focus back, also after Import, which fills the series whichever grid is active.
    shared_buttons_ = new editor_buttons(form_, [this](editor_panel&, const std::function<void()>& command) {
      run([&] { go_to_panel(*form_.panels()[*form_.active_grid()]), command(); });
    });
  for (std::size_t i = 0; i < panels.size(); ++i) {
    const std::string name =
        pages.empty() ? form_.caption() : pages[static_cast<std::size_t>(page_of_panel_[i])].caption;
    panels_.push_back(make_panel(*panels[i], shown(name)));
  }
}

editor_panel_view* editor_window::make_panel(editor_panel& panel, const QString& name) {
  editor_buttons* buttons = nullptr;
  if (!form_.active_grid()) {
    buttons = new editor_buttons(form_, panel, [this](editor_panel& on, const std::function<void()>& command) {
      run([&] { go_to_panel(on), command(); });
    });
    own_buttons_.push_back(buttons);
    if (panels_.empty())
      for (const editor_command& command : form_.extra_commands()) buttons->add_command(command, panel);
  }
  auto* view = new editor_panel_view(form_, panel, name, buttons,
                                     [this](const std::function<void()>& command) { run(command); });
  view->grid().addAction(next_mark_);
  connect(view, &editor_panel_view::entered, this,
          [this, position = panels_.size()] { attempt([=, this] { form_.grid_entered(position); }); });
  return view;
}

QWidget* editor_window::make_content(const std::vector<editor_page>& pages) {
  if (pages.empty()) return make_page({{}, 0, panels_.size()});
  pages_ = new QTabWidget;
  pages_->setObjectName("Pages");
  pages_->setAccessibleName(shown(form_.caption()));
  for (const editor_page& page : pages) pages_->addTab(make_page(page), without_mnemonics(shown(page.caption)));
  bind(*new QAction(this), QKeySequence("Ctrl+Tab"), [this] { turn_page(1); });
  bind(*new QAction(this), QKeySequence("Ctrl+Shift+Tab"), [this] { turn_page(-1); });
  return pages_;
}

// Stacked; with shared buttons, two per row.
QWidget* editor_window::make_page(const editor_page& page) {
  const auto splitter = [this](Qt::Orientation orientation) {
    auto* made = new QSplitter(orientation);
    made->setChildrenCollapsible(false);
    splitters_.push_back(made);
    return made;
  };
  if (page.count == 1) {
    auto* content = new QWidget;
    (new QVBoxLayout(content))->addWidget(make_area(page.first));
    if (!pages_) content->layout()->setContentsMargins(0, 0, 0, 0);
    return content;
  }
  QSplitter* rows = splitter(Qt::Vertical);
  const std::size_t end = page.first + page.count, in_row = shared_buttons_ ? 2 : 1;
  for (std::size_t i = page.first; i < end; i += in_row) {
    QSplitter* row = in_row > 1 ? splitter(Qt::Horizontal) : rows;
    for (std::size_t j = i; j < std::min(i + in_row, end); ++j) row->addWidget(make_area(j));
    if (row == rows) continue;
    row->setStretchFactor(0, 4);
    row->setStretchFactor(1, 5); // where the chart is
    rows->addWidget(row);
  }
  rows->setStretchFactor(rows->count() - 1, 1);
  return rows;
}

QWidget* editor_window::make_area(std::size_t panel) {
  QWidget* area = panels_[panel];
  if (panel != 0) return area;
  const editor_choice* choice = form_.choice();
  QWidget* fields = make_fields();
  if (choice || fields) {
    auto* whole = new QWidget;
    QVBoxLayout* column = column_in(*whole);
    if (choice) column->addWidget(make_choice(*choice));
    if (fields) column->addWidget(fields);
    column->addWidget(area, 1);
    area = whole;
  }
  return form_.tree() ? make_tree(area) : area;
}

QWidget* editor_window::make_tree(QWidget* area) {
  auto* beside = new QSplitter(Qt::Horizontal);
  beside->setChildrenCollapsible(false);
  tree_ = new tree_view(
      *form_.tree(), [this](const std::function<void()>& command) { run(command); }, this);
  beside->addWidget(tree_);
  beside->addWidget(area);
  beside->setStretchFactor(1, 1);
  splitters_.push_back(beside);
  tree_->addAction(next_mark_);
  connect(tree_, &QAbstractItemView::activated, this, [this] { panels_.front()->grid().setFocus(); });
  return beside;
}

void editor_window::make_find_bar(QBoxLayout& column) {
  if (!form_.tree() && !form_.has_names()) return;
  auto* bar = new find_bar(
      form_, [this](const std::function<void()>& command) { run(command); }, [this] { return panel_with_focus(); },
      *this);
  for (editor_panel_view* panel : panels_) panel->grid().addAction(bar->action());
  column.addWidget(bar);
}

QWidget* editor_window::make_choice(const editor_choice& choice) {
  choice_ = new QComboBox;
  choice_->setObjectName(shown(choice.name));
  ignore_wheel(*choice_);
  auto* label = new QLabel(shown(choice.label));
  label->setBuddy(choice_);
  connect(choice_, &QComboBox::activated, this,
          [this](int position) { run([=, this] { form_.ChoiceChange(static_cast<std::size_t>(position)); }); });
  choice_row_ = new QWidget;
  auto* row = new QHBoxLayout(choice_row_);
  row->setContentsMargins(0, 0, 0, 0);
  row->addWidget(label);
  row->addWidget(choice_, 1);
  return choice_row_;
}

QWidget* editor_window::make_fields() {
  const std::vector<entry_field*> fields = form_.fields();
  if (fields.empty()) return nullptr;
  auto* content = new QWidget;
  auto* row = new QHBoxLayout(content);
  row->setContentsMargins(0, 0, 0, 0);
  for (entry_field* field : fields) {
    auto* edit = new entry_edit(*field);
    auto* label = new QLabel(shown(field->label) + ":");
    label->setBuddy(edit);
    connect(edit, &entry_edit::entered, this,
            [this, field] { attempt([this, field] { form_.field_entered(*field); }); });
    connect(edit, &entry_edit::given_up, this, [this] { texts_changed(); });
    row->addWidget(label);
    row->addWidget(edit);
    fields_.push_back(edit);
  }
  row->addStretch(1);
  return content;
}

QWidget* editor_window::make_common_row() {
  const std::vector<editor_command> commands = form_.common_commands();
  if (commands.empty()) return nullptr;
  auto* content = new QWidget;
  auto* row = new wrapping_row(content);
  for (const editor_command& command : commands) {
    auto* button = new QPushButton(shown(command.text));
    button->setObjectName(shown(command.name));
    button->setToolTip(tool_tip(shown(command.hint)));
    connect(button, &QPushButton::clicked, this, [this, work = command.run] {
      run([&] { go_to_panel(panels_[first_panel_in_sight()]->panel()), work(); });
    });
    row->addWidget(button);
  }
  return content;
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
  cancel->setToolTip("Undo all changes and close");
  connect(ok, &QPushButton::clicked, this, &QDialog::accept);
  connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
  connect(undo_, &QPushButton::clicked, this, [this] { run([this] { form_.undo(); }); });
  connect(redo_, &QPushButton::clicked, this, [this] { run([this] { form_.redo(); }); });
  bind(*new QAction(this), QKeySequence::Undo, [this] { form_.undo(); });
  bind(*new QAction(this), QKeySequence::Redo, [this] { form_.redo(); });
  accept_by_ctrl_enter(*this);
  auto* row = new QHBoxLayout;
  row->addWidget(undo_);
  row->addWidget(redo_);
  if (form_.is_about_segments()) {
    auto* network = button("Network", "NetworkButton");
    network->setToolTip("Show the network. Click a segment there to select its row here. (F7)");
    connect(network, &QPushButton::clicked, this, [this] { run([this] { form_.NetworkButtonClick(); }); });
    bind(*new QAction(this), Qt::Key_F7, [this] { form_.NetworkButtonClick(); });
    row->addWidget(network);
  }
  row->addStretch(1);
  row->addWidget(ok);
  row->addWidget(cancel);
  return row;
}

// Commands.

void editor_window::bind(QAction& action, const QKeySequence& keys, const std::function<void()>& command) {
  action.setShortcut(keys);
  connect(&action, &QAction::triggered, this, [this, command] { run(command); });
  addAction(&action);
}

// The open entry is committed before any command.
void editor_window::run(const std::function<void()>& command) {
  take_typed();
  attempt(command);
}

void editor_window::take_typed() {
  for (editor_panel_view* panel : panels_) panel->grid().commit_open_editor();
  for (entry_edit* edit : fields_) edit->take();
}

void editor_window::turn_page(int by) {
  pages_->setCurrentIndex((pages_->currentIndex() + by + pages_->count()) % pages_->count());
  panels_[first_panel_in_sight()]->grid().setFocus();
}

std::size_t editor_window::first_panel_in_sight() const {
  const int page = pages_ ? pages_->currentIndex() : 0;
  return static_cast<std::size_t>(std::ranges::find(page_of_panel_, page) - page_of_panel_.begin());
}

editor_panel* editor_window::panel_with_focus() const {
  for (editor_panel_view* panel : panels_)
    if (panel->grid().hasFocus() || panel->grid().isAncestorOf(focusWidget())) return &panel->panel();
  return nullptr;
}

void editor_window::go_to_panel(editor_panel& panel) {
  const auto found = std::ranges::find_if(panels_, [&](editor_panel_view* one) { return &one->panel() == &panel; });
  if (pages_) pages_->setCurrentIndex(page_of_panel_[static_cast<std::size_t>(found - panels_.begin())]);
  (*found)->grid().setFocus();
}

void editor_window::go_to_refused_field(entry_field& field) {
  if (pages_) pages_->setCurrentIndex(0);
  for (entry_edit* edit : fields_)
    if (&edit->field() == &field) edit->setFocus();
}

// What the form shows.

void editor_window::texts_changed() {
  setWindowTitle(shown(form_.caption())); // one form may have two modes
  show_choice();
  for (entry_edit* edit : fields_)
    if (!edit->isModified()) edit->show_field();
  for (editor_panel_view* panel : panels_) panel->texts_changed();
  for (editor_buttons* buttons : own_buttons_) buttons->show_state();
  if (const auto active = form_.active_grid()) {
    for (std::size_t i = 0; i < panels_.size(); ++i) panels_[i]->mark_as_active(i == *active);
    shared_buttons_->show_state();
  }
  announce(*message_, form_.message());
  show_steps();
}

void editor_window::show_choice() {
  const editor_choice* choice = form_.choice();
  if (!choice) return;
  const QSignalBlocker quiet(choice_);
  choice_->clear();
  for (const std::string& item : choice->items) choice_->addItem(shown(item));
  choice_->setCurrentIndex(choice->items.empty() ? -1 : static_cast<int>(choice->position));
  choice_row_->setVisible(choice->is_visible);
}

void editor_window::show_steps() {
  const auto show_step = [](QPushButton& button, const char* what, const char* keys, const std::string& label) {
    button.setEnabled(!label.empty());
    button.setToolTip(label.empty() ? QString("Nothing to %1").arg(QString(what).toLower())
                                    : tool_tip(QString("%1: %2 (%3)").arg(what, shown(label), keys)));
  };
  show_step(*undo_, "Undo", "Ctrl+Z", form_.host().undo_label());
  show_step(*redo_, "Redo", "Ctrl+Shift+Z", form_.host().redo_label());
}

void editor_window::tree_changed() {
  if (tree_) tree_->tree_changed();
}

void editor_window::series_changed() {
  for (editor_panel_view* panel : panels_) panel->series_changed();
}

void editor_window::reload() {
  attempt([this] { form_.data_set_replaced(); });
}

// Opening and closing.

// Wide enough for all columns and a readable chart, within the screen.
void editor_window::take_first_size() {
  if (std::exchange(has_size_, true)) return;
  const int margin = scaled(screen_margin, *this);
  resize(sizeHint().boundedTo(screen()->availableGeometry().size() - QSize(margin, margin)));
  // The splitters were laid out before they had content.
  const int for_tree = tree_ ? tree_->sizeHint().width() : 0;
  for (editor_panel_view* panel : panels_) panel->take_first_size(width() - for_tree);
  int left = 0; // the same in all rows; at most half, or what leaves room for a series with its chart
  for (QSplitter* one : splitters_)
    if (one->orientation() == Qt::Horizontal) left = std::max(left, one->widget(0)->sizeHint().width());
  left = std::min(left, std::max(width() / 2, width() - scaled(series_width, *this)));
  for (QSplitter* one : splitters_)
    one->setSizes(one->orientation() == Qt::Horizontal ? QList{left, width() - left} // they are shares
                                                       : QList{one->widget(0)->sizeHint().height(), height()});
}

void editor_window::showEvent(QShowEvent* event) {
  QDialog::showEvent(event);
  if (event->spontaneous()) return; // it was minimised
  if (tree_) tree_->begin();
  attempt([this] { form_.FormShow(); });
  take_first_size();
  if (pages_) pages_->setCurrentIndex(0);
  if (tree_)
    tree_->setFocus();
  else
    panels_[form_.active_grid().value_or(0)]->grid().setFocus();
}

void editor_window::keyPressEvent(QKeyEvent* event) {
  if (!press_focused_button(*this, *event)) QDialog::keyPressEvent(event);
}

void editor_window::done(int result) {
  if (result == Accepted) take_typed();
  bool may_close = result != Accepted; // entries are not lost if OK fails
  attempt([&] { may_close = form_.FormCloseQuery(result == Accepted); });
  if (may_close) QDialog::done(result);
}

} // namespace vesk
