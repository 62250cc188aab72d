#include "editors/preferences_form.h"

#include <iterator>

namespace vesk {

void TPreferenceConfigurationForm::FormShow() {
  LoggingEnabledCheckBox = host_.logging_enabled();
  UndoMegabytesEdit = host_.undo_megabytes();
  ShowResultsCheckBox = host_.show_results_after_run();
  const int level = host_.diagnostic_level();
  DiagnosticLevelComboBox = level >= 0 && level < static_cast<int>(std::size(diagnostic_levels)) ? level : -1;
}

bool TPreferenceConfigurationForm::FormCloseQuery(bool by_ok) {
  if (!by_ok) return true;
  host_.set_logging_enabled(LoggingEnabledCheckBox);
  if (DiagnosticLevelComboBox >= 0) host_.set_diagnostic_level(DiagnosticLevelComboBox);
  if (UndoMegabytesEdit != host_.undo_megabytes()) host_.set_undo_megabytes(UndoMegabytesEdit);
  host_.set_show_results_after_run(ShowResultsCheckBox);
  return true;
}

} // namespace vesk
