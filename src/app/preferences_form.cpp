#include "app/preferences_form.h"

#include "app/main_form.h"

namespace vesk {

// The engine may have put any level.
void TPreferenceConfigurationForm::FormShow() {
  LoggingEnabledCheckBox = main_form_.logging_enabled();
  const int level = main_form_.diagnostic_level();
  DiagnosticLevelComboBox = level >= 0 && level < static_cast<int>(std::size(diagnostic_levels)) ? level : -1;
}

void TPreferenceConfigurationForm::OKButtonClick() {
  main_form_.set_logging_enabled(LoggingEnabledCheckBox);
  if (DiagnosticLevelComboBox >= 0) main_form_.set_diagnostic_level(DiagnosticLevelComboBox);
}

} // namespace vesk
