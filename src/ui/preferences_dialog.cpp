#include "ui/preferences_dialog.h"

#include "ui/measures.h"
#include "ui/mnemonics.h"
#include "ui/texts.h"
#include "ui/wheel_guard.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QShowEvent>
#include <QSpinBox>
#include <QTabWidget>
#include <QVBoxLayout>

namespace vesk {

namespace {

using form_type = TPreferenceConfigurationForm;

QGroupBox* group_of(QWidget* content, std::string_view caption, const char* name) {
  auto* group = new QGroupBox(shown(caption));
  group->setObjectName(name);
  auto* column = new QVBoxLayout(group);
  column->addWidget(content);
  return group;
}

} // namespace

preferences_dialog::preferences_dialog(QWidget* parent, TPreferenceConfigurationForm& form)
    : QDialog(parent), form_(form), LoggingEnabledCheckBox(new QCheckBox(shown(form_type::logging_check_box))),
      DiagnosticLevelComboBox(new QComboBox), UndoMegabytesEdit(new QSpinBox),
      ShowResultsCheckBox(new QCheckBox(shown(form_type::results_check_box))) {
  setObjectName("PreferenceConfigurationForm");
  setWindowTitle(shown(form.caption()));
  auto* pages = new QTabWidget;
  pages->setObjectName("PreferencePages");
  pages->setAccessibleName("Pages of the preferences");
  pages->addTab(diagnostics_page(), "&Diagnostics");
  pages->addTab(editing_page(), "Ed&iting");
  pages->addTab(running_page(), "&Running");
  for (int page = 0; page < pages->count(); ++page) give_mnemonics(*pages->widget(page), "dir");
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
  connect(buttons, &QDialogButtonBox::accepted, this, [this] {
    take_over();
    accept();
  });
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  setMinimumWidth(scaled(360, *this));
  auto* column = new QVBoxLayout(this);
  column->addWidget(pages, 1);
  column->addWidget(buttons);
}

QWidget* preferences_dialog::diagnostics_page() {
  LoggingEnabledCheckBox->setObjectName("LoggingEnabledCheckBox");
  LoggingEnabledCheckBox->setToolTip("Write a log file for each job");
  LoggingEnabledCheckBox->setAccessibleDescription(LoggingEnabledCheckBox->toolTip());
  DiagnosticLevelComboBox->setObjectName("DiagnosticLevelComboBox");
  DiagnosticLevelComboBox->setAccessibleName("Diagnostic level");
  DiagnosticLevelComboBox->setToolTip("Amount of detail in the logs");
  ignore_wheel(*DiagnosticLevelComboBox);
  for (const std::string_view level : form_type::diagnostic_levels) DiagnosticLevelComboBox->addItem(shown(level));
  auto* page = new QWidget;
  auto* column = new QVBoxLayout(page);
  column->addWidget(group_of(LoggingEnabledCheckBox, form_type::logging_caption, "LoggingGroupBox"));
  column->addWidget(group_of(DiagnosticLevelComboBox, form_type::diagnostics_caption, "DiagnosticsGroupBox"));
  column->addStretch(1);
  return page;
}

QWidget* preferences_dialog::editing_page() {
  UndoMegabytesEdit->setObjectName("UndoMegabytesEdit");
  UndoMegabytesEdit->setRange(0, form_type::most_undo_megabytes);
  UndoMegabytesEdit->setSingleStep(100);
  UndoMegabytesEdit->setSpecialValueText(shown(form_type::undo_automatic));
  UndoMegabytesEdit->setAccessibleName("Memory for Undo in megabytes");
  UndoMegabytesEdit->setAccessibleDescription(shown(form_type::undo_hint));
  ignore_wheel(*UndoMegabytesEdit);
  auto* hint = new QLabel(shown(form_type::undo_hint));
  hint->setWordWrap(true);
  auto* content = new QWidget;
  auto* rows = new QFormLayout(content);
  rows->setContentsMargins(0, 0, 0, 0);
  rows->addRow(shown(form_type::undo_label), UndoMegabytesEdit);
  rows->addRow(hint);
  auto* page = new QWidget;
  auto* column = new QVBoxLayout(page);
  column->addWidget(group_of(content, form_type::undo_caption, "UndoGroupBox"));
  column->addStretch(1);
  return page;
}

QWidget* preferences_dialog::running_page() {
  ShowResultsCheckBox->setObjectName("ShowResultsCheckBox");
  ShowResultsCheckBox->setToolTip("Open the results window after each successful run");
  ShowResultsCheckBox->setAccessibleDescription(ShowResultsCheckBox->toolTip());
  auto* page = new QWidget;
  auto* column = new QVBoxLayout(page);
  column->addWidget(group_of(ShowResultsCheckBox, form_type::results_caption, "ResultsGroupBox"));
  column->addStretch(1);
  return page;
}

void preferences_dialog::showEvent(QShowEvent* event) {
  QDialog::showEvent(event);
  if (event->spontaneous()) return; // it was minimised
  form_.FormShow();
  LoggingEnabledCheckBox->setChecked(form_.LoggingEnabledCheckBox);
  DiagnosticLevelComboBox->setCurrentIndex(form_.DiagnosticLevelComboBox);
  UndoMegabytesEdit->setValue(form_.UndoMegabytesEdit);
  ShowResultsCheckBox->setChecked(form_.ShowResultsCheckBox);
  findChild<QTabWidget*>("PreferencePages")->setCurrentIndex(0);
  LoggingEnabledCheckBox->setFocus();
}

void preferences_dialog::take_over() {
  form_.LoggingEnabledCheckBox = LoggingEnabledCheckBox->isChecked();
  form_.DiagnosticLevelComboBox = DiagnosticLevelComboBox->currentIndex();
  form_.UndoMegabytesEdit = UndoMegabytesEdit->value();
  form_.ShowResultsCheckBox = ShowResultsCheckBox->isChecked();
  form_.FormCloseQuery(true);
}

} // namespace vesk
