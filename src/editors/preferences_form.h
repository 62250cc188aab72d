// TPreferenceConfigurationForm: the two diagnostics switches, the memory for Undo, and what follows a run.
#pragma once

#include "editors/editor_host.h"
#include "editors/form.h"

namespace vesk {

class TPreferenceConfigurationForm final : public form {
public:
  static constexpr std::string_view logging_caption = "Logging", logging_check_box = "Enabled";
  static constexpr std::string_view diagnostics_caption = "Diagnostics";
  static constexpr std::string_view diagnostic_levels[] = {"None", "Moderate", "Full"};

  static constexpr std::string_view undo_caption = "Undo";
  static constexpr std::string_view undo_label = "Memory (MB):";
  static constexpr std::string_view undo_automatic = "Automatic";
  static constexpr std::string_view undo_hint = "How much memory the steps of Undo may take. Automatic is an eighth of "
                                                "the machine's memory, at most 1000 MB. The "
                                                "oldest steps are dropped first; the last one is always kept.";
  static constexpr int most_undo_megabytes = 1'000'000;

  static constexpr std::string_view results_caption = "Results";
  static constexpr std::string_view results_check_box = "Show results after a run";

  explicit TPreferenceConfigurationForm(editor_host& host) : host_(host) {}

  std::string_view class_name() const override { return "TPreferenceConfigurationForm"; }
  std::string caption() const override { return "Preferences"; }
  void FormShow() override;
  bool FormCloseQuery(bool by_ok) override; // OK applies all of them

  // State of the controls; the window keeps it up to date.
  bool LoggingEnabledCheckBox = false;
  int DiagnosticLevelComboBox = 0; // position in diagnostic_levels; -1: not in the list
  int UndoMegabytesEdit = 0;       // 0: automatic
  bool ShowResultsCheckBox = true;

private:
  editor_host& host_;
};

} // namespace vesk
