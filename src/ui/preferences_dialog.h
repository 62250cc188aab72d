// The window of TPreferenceConfigurationForm.
#pragma once

#include "editors/preferences_form.h"

#include <QDialog>

class QCheckBox;
class QComboBox;

namespace vesk {

class preferences_dialog final : public QDialog {
public:
  preferences_dialog(QWidget* parent, TPreferenceConfigurationForm& form);

protected:
  void showEvent(QShowEvent* event) override;

private:
  void take_over();

  TPreferenceConfigurationForm& form_;
  QCheckBox* LoggingEnabledCheckBox;
  QComboBox* DiagnosticLevelComboBox;
};

} // namespace vesk
