// TParametersForm, the "Data set" dialog: model, period, steps, flows, files and restart of the data set.
//
// Unlike the editors it stores the state of its controls and writes everything back on OK, in an order that respects
// dependencies between members. The main form takes the snapshot before it opens, adds default points after it has
// closed, and then reads the hydrodynamic file if the user agreed.
#pragma once

#include "editors/editor_host.h"
#include "editors/entry_field.h"
#include "editors/form.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace vesk {

// The state of the controls except the entry fields, written by the window. Positions in lists: -1 is none.
struct parameters_controls {
  std::string DatasetNameEdit, CommentsMemo, HydrodynamicLinkageFileEdit, NpsFileNameEdit;
  std::vector<std::string> model_names, solution_names;
  int ModelTypeComboBox = -1, SolutionTypeComboBox = -1;
  bool dynamic_bed_volume = false; // DynamicBedVolumeRadioButton, otherwise StaticBedVolumeRadioButton
  bool NegativeSolutionAllowedCheckBox = false, UseNpsFileCheckBox = false;
  enum : std::uint32_t { net_flows = 1, gross_flows = 2, hydrodynamic_linkage = 3, kinematic_wave = 4 };
  std::uint32_t flow_option = net_flows; // the checked radio button; the linkage if none is
  enum : std::uint32_t { no_restart_file = 0, create_restart_file = 1, neither_restart_button = 2 };
  std::uint32_t restart_option = no_restart_file;
  bool vesk_to_vesk_linkage = false; // EnableVeskToVeskLinkageRadioButton, otherwise the other one
};

class TParametersForm final : public form, public parameters_controls {
public:
  static constexpr std::string_view skip_hint =
      "Set Date and Time to Skip into the Defined Simulation Period, Must be between Start and End Date";

  explicit TParametersForm(editor_host& host) : host_(host) {}

  std::string_view class_name() const override { return "TParametersForm"; }
  std::string caption() const override { return "Parameters"; }

  entry_field StartDateField{"StartDateField", "Start date", date()}, StartTimeField{"StartTimeField", "Time", time()};
  entry_field EndDateField{"EndDateField", "End date", date()}, EndTimeField{"EndTimeField", "Time", time()};
  entry_field HydroSkipDateField{"HydroSkipDateField", "Skip Ahead to Date", date()},
      HydroSkipTimeField{"HydroSkipTimeField", "Skip Ahead Time", time()};
  entry_field FractionOfMaxTimeStepEdit{"FractionOfMaxTimeStepEdit", "Fraction of the largest stable step",
                                        number_cell("#######.##")};
  entry_field MaxTimeStepField{"MaxTimeStepField", "Largest time step (days)", number_cell("#.####")};
  entry_field MinTimeStepField{"MinTimeStepField", "Smallest time step (days)", number_cell("#.####")};
  entry_field BedCompactionTimeStepField{"BedCompactionTimeStepField", "Bed compaction time step (days)",
                                         number_cell("#######.##")};

  std::vector<entry_field*> entry_fields(); // all of them

  // Which controls are enabled; see the members of the same name. OK and "Load restart file now" are disabled while a
  // restart file is being loaded, but not during other jobs.
  struct enabled_controls {
    bool nps_file, bed_compaction_time_step, hydrodynamic_file, ok;
  };
  enabled_controls enabled() const;

  void FormShow() override;
  bool FormCloseQuery(bool by_ok) override; // while a restart file is being loaded, Cancel cancels that first
  void data_set_replaced() override;        // by a job: refreshes the controls that the user has not touched

  void StartDateFieldChange(); // the skip date follows the user's new start date
  void StartTimeFieldChange();
  void BrowseHydButtonClick();
  void BrowseNpsButtonClick();
  void LoadRestartFileButtonClick();
  void comments_edited() { comments_edited_ = true; }

  bool reads_hydrodynamic_file() const { return reads_hydrodynamic_file_; } // after OK
  std::string message() const;                                              // what OK will drop, or what a job did

private:
  static cell_type date() { return {cell_kind::date}; }
  static cell_type time() { return {cell_kind::time}; }
  static parameters_controls controls_of(const prevesk_dataset_data_type& data);
  void show_numbers(bool touched_too);
  bool OkButtonClick();
  void write_back(prevesk_dataset_data_type& data) const;
  std::uint32_t chosen_model_type(const prevesk_dataset_data_type& data) const;
  std::string stored_comments(const prevesk_dataset_data_type& data) const;

  editor_host& host_;
  parameters_controls shown_; // as last filled; differences are the user's entries
  std::uint32_t saved_model_type_ = 0;
  bool reinitialize_from_hyd_file_ = false, reads_hydrodynamic_file_ = false, comments_edited_ = false;
  bool was_replaced_ = false;      // the data set, by a job
  bool asked_for_restart_ = false; // the user has had a restart file loaded
};

} // namespace vesk
