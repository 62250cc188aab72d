#include "ui/results/measured_dialog.h"

#include "ui/guard.h"
#include "ui/import_dialog.h"
#include "ui/measures.h"
#include "ui/mnemonics.h"
#include "ui/plain_label.h"
#include "ui/texts.h"
#include "ui/wheel_guard.h"

#include <QCheckBox>
#include <QComboBox>
#include <QCompleter>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace vesk {

namespace {

constexpr int usual_width = 520;
// Controls of the import dialog that only apply to the series of a data set.
constexpr const char* unused_controls[] = {"RestrictDateRangeCheckBox", "ReplaceExistingCheckBox",
                                           "DeferImportCheckBox", "ImportButton"};

QStringList names_of(const results_session::choices& choices) {
  QStringList names;
  for (const named_choice& it : choices.names) names << shown(it.name);
  return names;
}

} // namespace

measured_dialog::measured_dialog(QWidget* parent, measured_form& form, results_session& session,
                                 user_questions& questions, std::filesystem::path folder)
    : QDialog(parent), form_(form), query_(questions, std::move(folder)), table_(plain_label("MeasuredTable")),
      message_(plain_label("MeasuredMessage")) {
  setObjectName("MeasuredDialog");
  setWindowTitle("Measured series");
  import_query_descriptor query = form.query;
  if (query.file_name.empty()) query.restrict_to_run_period = false;
  query_.set_query(query);
  auto* rows = new QFormLayout;
  rows->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
  add_line(*rows, "Name", "NameEdit", "for display, such as Oxygen near Oak City", &measured_form::name);
  auto* choose = new QPushButton("Choose table...");
  choose->setObjectName("ChooseTableButton");
  choose->setAutoDefault(false);
  auto* table_row = new QHBoxLayout;
  table_row->addWidget(table_, 1);
  table_row->addWidget(choose);
  rows->addRow("Values from", table_row);
  variable_ = add_list(*rows, "Variable", "VariableBox", names_of(session.variables));
  segment_ = add_list(*rows, "Segment", "SegmentBox", names_of(session.segments));
  for (QComboBox* box : {variable_, segment_}) { // names can be typed
    box->setEditable(true);
    box->setInsertPolicy(QComboBox::NoInsert);
    box->completer()->setFilterMode(Qt::MatchContains);
    box->completer()->setCompletionMode(QCompleter::PopupCompletion);
  }
  variable_->setCurrentText(shown(form.variable));
  segment_->setCurrentText(shown(form.segment));
  kind_ = add_list(*rows, "Measured values are", "KindBox",
                   {measured_kind_texts[0], measured_kind_texts[1], measured_kind_texts[2]});
  way_ = add_list(*rows, "Modelled value", "WayBox", {pairing_way_texts[0], pairing_way_texts[1]});
  kind_->setCurrentIndex(static_cast<int>(form.kind));
  way_->setCurrentIndex(static_cast<int>(form.way));
  add_line(*rows, "Longest gap (days)", "GapEdit", "two print intervals", &measured_form::gap);
  add_line(*rows, "Measured unit", "UnitsEdit", "same as the results", &measured_form::units);
  add_line(*rows, "Factor to the results' unit", "FactorEdit", "required where the units differ",
           &measured_form::factor);
  add_line(*rows, "From", "FromEdit", "first measured value, such as 2011-10-01", &measured_form::from);
  add_line(*rows, "To", "ToEdit", "last measured value", &measured_form::to);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
  connect(buttons, &QDialogButtonBox::accepted, this, [this] { attempt([this] { accept(); }); });
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  connect(choose, &QPushButton::clicked, this, [this] { attempt([this] { choose_table(); }); });
  auto* column = new QVBoxLayout(this);
  column->addLayout(rows);
  column->addWidget(message_);
  column->addStretch(1);
  column->addWidget(buttons);
  table_->setText(shown(form_.table_text()));
  show_text(*message_, {});
  give_mnemonics(*this);
  setMinimumWidth(scaled(usual_width, *this));
}

QLineEdit* measured_dialog::add_line(QFormLayout& rows, const char* caption, const char* name, const char* hint,
                                     std::string measured_form::*member) {
  auto* line = new QLineEdit(shown(form_.*member));
  line->setObjectName(name);
  line->setPlaceholderText(hint);
  rows.addRow(caption, line);
  lines_.emplace_back(line, member);
  return line;
}

QComboBox* measured_dialog::add_list(QFormLayout& rows, const char* caption, const char* name,
                                     const QStringList& items) {
  auto* box = new QComboBox;
  box->setObjectName(name);
  box->addItems(items);
  box->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
  ignore_wheel(*box);
  rows.addRow(caption, box);
  return box;
}

measured_form measured_dialog::entries() const {
  measured_form now = form_;
  for (const auto& [line, member] : lines_) now.*member = stored(line->text().trimmed());
  now.variable = stored(variable_->currentText());
  now.segment = stored(segment_->currentText());
  now.kind = static_cast<std::size_t>(kind_->currentIndex());
  now.way = static_cast<std::size_t>(way_->currentIndex());
  now.query = query_.query();
  return now;
}

void measured_dialog::choose_table() {
  TImportTimeSeriesForm& import = query_.import_form();
  query_.set_name(stored(lines_.front().first->text()));
  import.begin(query_.series(), "Measured series");
  import_dialog dialog(this, import);
  for (const char* name : unused_controls)
    if (auto* control = dialog.findChild<QWidget*>(name)) control->hide();
  dialog.exec();
  table_->setText(shown(entries().table_text()));
  show_text(*message_, {});
}

void measured_dialog::accept() {
  const measured_form now = entries();
  const std::string fault = now.message();
  show_text(*message_, fault);
  if (!fault.empty()) return;
  form_ = now;
  QDialog::accept();
}

} // namespace vesk
