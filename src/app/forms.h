// The forms of the program: one object each, for the life of the main form.
#pragma once

#include "app/kept_work_form.h"
#include "editors/boundary_form.h"
#include "editors/constants_form.h"
#include "editors/edit_project_form.h"
#include "editors/exchanges_flows_form.h"
#include "editors/fill_calculate_form.h"
#include "editors/import_time_series_form.h"
#include "editors/loads_form.h"
#include "editors/output_control_form.h"
#include "editors/parameter_form.h"
#include "editors/parameters_form.h"
#include "editors/preferences_form.h"
#include "editors/print_interval_form.h"
#include "editors/segment_form.h"
#include "editors/set_seed_date_form.h"
#include "editors/system_form.h"
#include "editors/time_functions_form.h"
#include "editors/time_step_form.h"

#include <string>
#include <string_view>

namespace vesk {

// The product, its version and its edition.
class TAboutBox final : public form {
public:
  explicit TAboutBox(std::string edition) : edition_name(std::move(edition)) {}

  std::string_view class_name() const override { return "TAboutBox"; }
  std::string caption() const override { return "About Vesk"; }

  const std::string edition_name;
  std::string engine; // its file and version
};

struct program_forms {
  program_forms(editor_host& host, const std::string& edition)
      : data_set(host), systems(host), segments(host), exchanges_flows(host), parameters(host), constants(host),
        time_functions(host), print_interval(host), time_step(host), output_control(host), seed_date(host), loads(host),
        boundaries(host), project(host), preferences(host), about(edition), import_time_series(host) {}

  TParametersForm data_set;
  TSystemForm systems;
  TSegmentForm segments;
  TExchangesFlowsForm exchanges_flows; // its mode is set before it is shown
  TParameterForm parameters;
  TConstantsForm constants;
  TTimeFunctionsForm time_functions;
  TPrintIntervalForm print_interval;
  TTimeStepForm time_step;
  TOutputControlForm output_control;
  TSetSeedDateForm seed_date; // no command opens it yet
  TLoadsForm loads;
  TBoundaryForm boundaries;
  TEditProjectForm project;
  TPreferenceConfigurationForm preferences;
  TAboutBox about;
  TKeptWorkForm kept_work;
  TFillCalculateForm fill_calculate;
  TImportTimeSeriesForm import_time_series;
};

} // namespace vesk
