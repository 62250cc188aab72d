// The window of TPreferenceConfigurationForm.
#pragma once

#include "editors/preferences_form.h"

#include <QDialog>

class QCheckBox;
class QComboBox;
class QSpinBox;

namespace vesk {

class preferences_dialog final : public QDialog {
public:
  preferences_dialog(QWidget* parent, TPreferenceConfigurationForm& form);

protected:
  void showEvent(QShowEvent* event) override;

private:
  QWidget* diagnostics_page();
  QWidget* editing_page();
  QWidget* running_page();
  void take_over();

  TPreferenceConfigurationForm& form_;
  QCheckBox* LoggingEnabledCheckBox;
  QComboBox* DiagnosticLevelComboBox;
  QSpinBox* UndoMegabytesEdit;
  QCheckBox* ShowResultsCheckBox;
};

} // namespace vesk
