#include "ui/import_dialog.h"

#include "ui/enter_key.h"
#include "ui/grid_view.h"
#include "ui/guard.h"
#include "ui/measures.h"
#include "ui/mnemonics.h"
#include "ui/plain_label.h"
#include "ui/texts.h"
#include "ui/wheel_guard.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScopedValueRollback>
#include <QScreen>
#include <QShowEvent>
#include <QSignalBlocker>
#include <QSplitter>
#include <QVBoxLayout>
#include <limits>

namespace vesk {

namespace {

constexpr int usual_width = 860, usual_height = 640, screen_margin = 60, least_grid_height = 84, sql_lines = 2,
              condition_width = 126, conjunction_width = 56;

QLineEdit* line(const char* name) {
  auto* edit = new QLineEdit;
  edit->setObjectName(name);
  edit->setMaxLength(std::numeric_limits<int>::max()); // Qt's default limit would truncate a longer text
  return edit;
}

QLabel* caption(const char* text, QWidget* of) {
  auto* label = new QLabel(text);
  label->setBuddy(of);
  return label;
}

void show_text(QLineEdit& edit, const std::string& text) {
  if (edit.text() != shown(text)) edit.setText(shown(text));
}

// Shows values that are not items of the list.
void fill(QComboBox& box, const std::vector<std::string>& items, std::optional<std::size_t> chosen,
          const std::string& otherwise) {
  const QSignalBlocker quiet(box);
  QStringList texts;
  for (const std::string& item : items) texts << shown(item);
  QStringList present;
  for (int i = 0; i < box.count(); ++i) present << box.itemText(i);
  if (present != texts) {
    box.clear();
    box.addItems(texts);
  }
  box.setPlaceholderText(shown(otherwise));
  box.setCurrentIndex(chosen ? static_cast<int>(*chosen) : -1);
  box.setEnabled(!items.empty());
}

std::string lacking(const std::string& name, const char* what) {
  return name.empty() ? std::string() : name + what;
}

} // namespace

import_dialog::import_dialog(QWidget* parent, TImportTimeSeriesForm& form)
    : QDialog(parent), form_(form), series_(plain_label("SeriesLabel")), value_note_(plain_label("ValueNote")),
      results_note_(plain_label("ResultsNote")), message_(plain_label("MessageLabel")), NameEdit(line("NameEdit")),
      FileNameEdit(line("FileNameEdit")), TableList(list("TableList", &TImportTimeSeriesForm::TableListChange)),
      DateTimeFieldList(list("DateTimeFieldList", &TImportTimeSeriesForm::DateTimeFieldChange)),
      ValueFieldList(list("ValueFieldList", &TImportTimeSeriesForm::ValueFieldChange)),
      conditions_(new grid_view(form.ConditionTable, "Conditions", this)),
      results_(new grid_view(form.ResultsTable, "Results", this, grid_view::tab_key::leaves_grid)),
      SqlMemo(new QPlainTextEdit) {
  setObjectName("ImportTimeSeriesForm");
  setWindowTitle(shown(form.caption()));
  SqlMemo->setObjectName("SqlMemo");
  SqlMemo->setReadOnly(true);
  SqlMemo->setTabChangesFocus(true);
  SqlMemo->setFixedHeight(SqlMemo->fontMetrics().lineSpacing() * sql_lines + scaled(12, *this));
  message_->setMinimumHeight(message_->fontMetrics().lineSpacing()); // a message must not move the buttons
  auto* halves = new QSplitter(Qt::Horizontal);
  halves->setChildrenCollapsible(false);
  halves->addWidget(condition_part());
  halves->addWidget(result_part());
  halves->setSizes({usual_width / 2, usual_width / 2});
  auto* column = new QVBoxLayout(this);
  column->addWidget(source_rows());
  column->addLayout(option_rows());
  column->addWidget(halves, 1);
  column->addWidget(caption("SQL Query", SqlMemo));
  column->addWidget(SqlMemo);
  column->addWidget(message_);
  column->addLayout(end_row());
  for (QPushButton* one : findChildren<QPushButton*>()) one->setAutoDefault(false); // the grids need Enter
  give_mnemonics(*this);
  form_.OnChange = [this] { show_all(); };
  form_.OnRefusal = [this] { conditions_->setFocus(); };
  form_.later = [this](std::function<void()> work) { run_later(std::move(work)); };
  const int margin = scaled(screen_margin, *this);
  resize(QSize(scaled(usual_width, *this), scaled(usual_height, *this))
             .boundedTo(screen()->availableGeometry().size() - QSize(margin, margin)));
}

import_dialog::~import_dialog() {
  form_.OnChange = nullptr;
  form_.OnRefusal = nullptr;
  form_.later = nullptr;
}

QComboBox* import_dialog::list(const char* name, void (TImportTimeSeriesForm::*chosen)(std::size_t)) {
  auto* box = new QComboBox;
  box->setObjectName(name);
  box->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
  box->setMinimumContentsLength(8);
  ignore_wheel(*box);
  connect(box, &QComboBox::activated, this, [this, chosen](int position) {
    run_later([this, chosen, position] { (form_.*chosen)(static_cast<std::size_t>(position)); });
  });
  return box;
}

QPushButton* import_dialog::button(const char* text, const char* name, const char* hint, command pressed) {
  auto* made = new QPushButton(text);
  made->setObjectName(name);
  made->setToolTip(hint);
  if (pressed) connect(made, &QPushButton::clicked, this, [this, pressed] { run([&] { (form_.*pressed)(); }); });
  return made;
}

QWidget* import_dialog::source_rows() {
  auto* content = new QWidget;
  auto* rows = new QGridLayout(content);
  rows->setContentsMargins(0, 0, 0, 0);
  rows->addWidget(series_, 0, 0, 1, 5);
  rows->addWidget(caption("Query name", NameEdit), 1, 0);
  rows->addWidget(NameEdit, 1, 1);
  rows->addWidget(caption("Select file", FileNameEdit), 2, 0);
  rows->addWidget(FileNameEdit, 2, 1, 1, 3);
  rows->addWidget(button("&Browse...", "BrowseButton", "Choose the file that contains the data",
                         &TImportTimeSeriesForm::BrowseButtonClick),
                  2, 4);
  rows->addWidget(caption("Select table", TableList), 1, 2);
  rows->addWidget(TableList, 1, 3, 1, 2);
  rows->addWidget(caption("Date/time field", DateTimeFieldList), 3, 0);
  rows->addWidget(DateTimeFieldList, 3, 1);
  rows->addWidget(caption("Value field", ValueFieldList), 3, 2);
  rows->addWidget(ValueFieldList, 3, 3, 1, 2);
  rows->setColumnStretch(1, 1);
  rows->setColumnStretch(3, 1);
  connect(NameEdit, &QLineEdit::textEdited, this, [this](const QString& name) { form_.NameEditChange(stored(name)); });
  connect(FileNameEdit, &QLineEdit::editingFinished, this, [this] { run_later([this] { take_file_name(); }); });
  return content;
}

QBoxLayout* import_dialog::option_rows() {
  auto* grid = new QGridLayout;
  int place = 0;
  for (const import_option& option : TImportTimeSeriesForm::options()) {
    auto* box = new QCheckBox(option.label);
    box->setObjectName(option.control);
    box->setToolTip(tool_tip(option.tip));
    connect(box, &QCheckBox::clicked, this,
            [this, &option](bool on) { run_later([this, &option, on] { form_.OptionClick(option, on); }); });
    options_.emplace_back(&option, box);
    grid->addWidget(box, place / 2, place % 2);
    ++place;
  }
  auto* row = new QHBoxLayout;
  row->addLayout(grid);
  row->addStretch(1);
  return row;
}

QWidget* import_dialog::condition_part() {
  conditions_->setObjectName("ConditionTable");
  conditions_->setMinimumHeight(scaled(least_grid_height, *this));
  for (const auto column : {condition_grid::field_column, condition_grid::value_column}) // an entry does not widen them
    conditions_->setColumnWidth(static_cast<int>(column), scaled(condition_width, *this));
  connect(&conditions_->model(), &grid_model::refusal_changed, this, [this] { show_all(); });
  for (const auto column : {condition_grid::conjunction_column, condition_grid::comparison_column})
    conditions_->setColumnWidth(static_cast<int>(column), scaled(conjunction_width, *this));
  auto* part = new QWidget;
  auto* column = new QVBoxLayout(part);
  column->setContentsMargins(0, 0, 0, 0);
  column->addWidget(caption("&Conditions", conditions_));
  column->addWidget(conditions_, 1);
  auto* row = new QHBoxLayout;
  QPushButton* of_conditions[] = {
      button("&Insert", "InsertButton", "Add a condition", &TImportTimeSeriesForm::InsertButtonClick),
      button("&Delete", "DeleteButton", "Delete the active condition", &TImportTimeSeriesForm::DeleteButtonClick)};
  for (QPushButton* one : of_conditions) {
    connect(one, &QPushButton::clicked, conditions_, [this] { conditions_->setFocus(); }); // on the active condition
    row->addWidget(one);
  }
  row->addWidget(value_note_, 1);
  column->addLayout(row);
  return part;
}

QWidget* import_dialog::result_part() {
  results_->setObjectName("ResultsTable");
  results_->setMinimumHeight(scaled(least_grid_height, *this));
  for (const bool headers : {false, true}) {
    auto* copy = new QAction(headers ? "Copy with &headers" : "&Copy", results_);
    copy->setShortcut(headers ? QKeySequence("Ctrl+Shift+C") : QKeySequence(QKeySequence::Copy));
    copy->setShortcutContext(Qt::WidgetShortcut);
    connect(copy, &QAction::triggered, this, [this, headers] { attempt([&] { form_.copy_results(headers); }); });
    results_->addAction(copy);
  }
  results_->setContextMenuPolicy(Qt::ActionsContextMenu);
  auto* part = new QWidget;
  auto* column = new QVBoxLayout(part);
  column->setContentsMargins(0, 0, 0, 0);
  column->addWidget(results_note_);
  column->addWidget(results_, 1);
  auto* row = new QHBoxLayout;
  row->addWidget(button("Run &query", "RunQueryButton", "Show the rows found by the query",
                        &TImportTimeSeriesForm::RunQueryButtonClick));
  row->addWidget(button("&Graph", "GraphButton", "Graph the values found by the query in a separate window",
                        &TImportTimeSeriesForm::GraphButtonClick));
  row->addStretch(1);
  column->addLayout(row);
  return part;
}

QBoxLayout* import_dialog::end_row() {
  auto* import = button("I&mport", "ImportButton", "Fill the series, store the query and close", nullptr);
  auto* ok = button("OK", "OkButton", "Store the query without importing, and close (Ctrl+Enter)", nullptr);
  auto* cancel = button("Cancel", "CancelButton", "Close and change nothing", nullptr);
  // A click does not take the focus from a file name that cannot be read, as its box would swallow the click.
  cancel->setFocusPolicy(Qt::TabFocus);
  connect(import, &QPushButton::clicked, this, [this] {
    bool is_done = false;
    run([&] { is_done = form_.ImportButtonClick(); });
    if (is_done) QDialog::done(Accepted);
  });
  connect(ok, &QPushButton::clicked, this, &QDialog::accept);
  connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
  accept_by_ctrl_enter(*this);
  auto* row = new QHBoxLayout;
  row->addWidget(button("&Reset all", "ResetAllButton", "Start a new query; the name is kept",
                        &TImportTimeSeriesForm::ResetAllButtonClick));
  row->addStretch(1);
  row->addWidget(import);
  row->addWidget(ok);
  row->addWidget(cancel);
  return row;
}

void import_dialog::run(const std::function<void()>& work) {
  if (take_what_is_typed()) attempt(work);
}

// The following command may need the cell's value.
bool import_dialog::take_what_is_typed() {
  if (is_taking_) return false; // already waiting for a table, with a box open
  const QScopedValueRollback guard(is_taking_, true);
  conditions_->commit_open_editor();
  while (!pending_.empty()) {
    const auto work = std::move(pending_.front());
    pending_.pop_front();
    attempt(work);
  }
  return take_file_name();
}

void import_dialog::run_later(std::function<void()> work) {
  pending_.push_back(std::move(work));
  QMetaObject::invokeMethod(
      this, [this] { take_what_is_typed(); }, Qt::QueuedConnection);
}

// False: the file cannot be read, and the old name is shown again. The error box takes the focus from the line, which
// must not commit the name a second time.
bool import_dialog::take_file_name() {
  if (!FileNameEdit->isModified()) return true;
  if (!form_.nothing_is_refused()) return false; // the typed name waits
  FileNameEdit->setModified(false);
  bool taken = false;
  attempt([&] { taken = form_.FileNameEditChange(stored(FileNameEdit->text())); });
  show_all();
  return taken;
}

void import_dialog::show_all() {
  series_->setText("For " + shown(form_.series_name()));
  const import_query_descriptor& query = form_.stored();
  show_text(*NameEdit, query.name);
  if (!FileNameEdit->isModified()) show_text(*FileNameEdit, query.file_name);
  fill(*TableList, form_.tables(), form_.table(),
       form_.tables().empty() && !form_.field_names().empty() ? "The file is one table"
                                                              : lacking(query.table_name, " (not in this file)"));
  fill(*DateTimeFieldList, form_.field_names(), form_.date_time_field(),
       lacking(query.date_time_field, " (not in this table)"));
  fill(*ValueFieldList, form_.field_names(), form_.value_field(), lacking(query.value_field, " (not in this table)"));
  for (const auto& [option, box] : options_) box->setChecked(form_.is_on(*option));
  value_note_->setText(shown(form_.value_note()));
  results_note_->setText(shown(form_.results_note()));
  const QString sql = shown(form_.sql());
  SqlMemo->setPlaceholderText(shown(form_.sql_hint()));
  if (SqlMemo->toPlainText() != sql) SqlMemo->setPlainText(sql);
  announce(*message_, form_.message());
}

void import_dialog::reload() {
  attempt([this] { form_.data_set_replaced(); });
}

// The source is opened after the window is shown, since this may take long.
void import_dialog::showEvent(QShowEvent* event) {
  QDialog::showEvent(event);
  if (event->spontaneous()) return; // it was minimised
  pending_.clear();
  FileNameEdit->setModified(false);
  show_all();
  FileNameEdit->setFocus();
  run_later([this] { form_.FormShow(); });
}

void import_dialog::keyPressEvent(QKeyEvent* event) {
  if (!press_focused_button(*this, *event)) QDialog::keyPressEvent(event);
}

void import_dialog::done(int result) {
  if (result == Accepted && !take_what_is_typed()) return;
  pending_.clear();
  bool may_close = result != Accepted; // entries are not lost if OK fails
  attempt([&] { may_close = form_.FormCloseQuery(result == Accepted); });
  if (may_close) QDialog::done(result);
}

} // namespace vesk
