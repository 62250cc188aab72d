// TPreferenceConfigurationForm: the two diagnostics switches.
#pragma once

#include "editors/editor_host.h"
#include "editors/form.h"

namespace vesk {

class TPreferenceConfigurationForm final : public form {
public:
  static constexpr std::string_view logging_caption = "Logging", logging_check_box = "Enabled";
  static constexpr std::string_view diagnostics_caption = "Diagnostics";
  static constexpr std::string_view diagnostic_levels[] = {"None", "Moderate", "Full"};

  explicit TPreferenceConfigurationForm(editor_host& host) : host_(host) {}

  std::string_view class_name() const override { return "TPreferenceConfigurationForm"; }
  std::string caption() const override { return "Preferences"; }
  void FormShow() override;
  bool FormCloseQuery(bool by_ok) override; // OK gives both switches back

  // What the controls show; the window keeps them up to date.
  bool LoggingEnabledCheckBox = false;
  int DiagnosticLevelComboBox = 0; // position in diagnostic_levels; -1: none of them

private:
  editor_host& host_;
};

} // namespace vesk
