#include "ui/preferences_dialog.h"

#include "ui/measures.h"
#include "ui/texts.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QGroupBox>
#include <QVBoxLayout>

namespace vesk {

namespace {

QGroupBox* group_of(QWidget* content, std::string_view caption, const char* name) {
  auto* group = new QGroupBox(shown(caption));
  group->setObjectName(name);
  auto* column = new QVBoxLayout(group);
  column->addWidget(content);
  return group;
}

} // namespace

preferences_dialog::preferences_dialog(QWidget* parent, TPreferenceConfigurationForm& form)
    : QDialog(parent), form_(form),
      LoggingEnabledCheckBox(new QCheckBox(shown(TPreferenceConfigurationForm::logging_check_box))),
      DiagnosticLevelComboBox(new QComboBox) {
  setObjectName("PreferenceConfigurationForm");
  setWindowTitle(shown(form.caption()));
  LoggingEnabledCheckBox->setObjectName("LoggingEnabledCheckBox");
  LoggingEnabledCheckBox->setAccessibleDescription("Each job writes a log file");
  DiagnosticLevelComboBox->setObjectName("DiagnosticLevelComboBox");
  DiagnosticLevelComboBox->setAccessibleName("Diagnostic level");
  for (const std::string_view level : TPreferenceConfigurationForm::diagnostic_levels)
    DiagnosticLevelComboBox->addItem(shown(level));
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
  connect(buttons, &QDialogButtonBox::accepted, this, [this] {
    take_over();
    accept();
  });
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  setMinimumWidth(scaled(260, *this));
  auto* column = new QVBoxLayout(this);
  column->addWidget(group_of(LoggingEnabledCheckBox, TPreferenceConfigurationForm::logging_caption, "LoggingGroupBox"));
  column->addWidget(
      group_of(DiagnosticLevelComboBox, TPreferenceConfigurationForm::diagnostics_caption, "DiagnosticsGroupBox"));
  column->addWidget(buttons);
}

void preferences_dialog::showEvent(QShowEvent* event) {
  form_.FormShow();
  LoggingEnabledCheckBox->setChecked(form_.LoggingEnabledCheckBox);
  DiagnosticLevelComboBox->setCurrentIndex(form_.DiagnosticLevelComboBox);
  QDialog::showEvent(event);
}

void preferences_dialog::take_over() {
  form_.LoggingEnabledCheckBox = LoggingEnabledCheckBox->isChecked();
  form_.DiagnosticLevelComboBox = DiagnosticLevelComboBox->currentIndex();
  form_.FormCloseQuery(true);
}

} // namespace vesk
