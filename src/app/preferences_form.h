// The dialog of the two diagnostics switches, without its window.
#pragma once

#include <string_view>

namespace vesk {

class TPreveskMainForm;

class TPreferenceConfigurationForm {
public:
  static constexpr std::string_view caption = "Preferences";
  static constexpr std::string_view logging_caption = "Logging", logging_check_box = "Enabled";
  static constexpr std::string_view diagnostics_caption = "Diagnostics";
  static constexpr std::string_view diagnostic_levels[] = {"None", "Moderate", "Full"};

  explicit TPreferenceConfigurationForm(TPreveskMainForm& main_form) : main_form_(main_form) {}

  // What the controls show; the window keeps them up to date.
  bool LoggingEnabledCheckBox = false;
  int DiagnosticLevelComboBox = 0; // position in diagnostic_levels; -1: none of them

  void FormShow();      // takes both from the main form
  void OKButtonClick(); // gives both back

private:
  TPreveskMainForm& main_form_;
};

} // namespace vesk
