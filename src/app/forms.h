// The windows of the program by name, and the pictures that their number fields are entered through.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace vesk {

class configuration;

// The dialogs that the main window opens.
enum class form_id {
  TEditProjectForm,
  TBoundaryForm,
  TConstantsForm,
  TAboutBox,
  TExchangesFlowsForm,
  TLoadsForm,
  TParameterForm,
  TParametersForm, // the "Data set" dialog
  TPreferenceConfigurationForm,
  TPrintIntervalForm,
  TSegmentForm,
  TSystemForm,
  TTimeFunctionsForm,
  TTimeStepForm,
  TOutputControlForm,
};

// The classes of all windows in the order in which they are made at the start; each lives as long as the program. The
// first is the main window.
std::span<const std::string_view> form_classes();

// A numeric picture of the settings and the one field of one form that it is for.
struct picture_mask {
  std::string_view value_name; // in the settings
  std::string configuration::*value;
  std::string_view form; // the class
  std::string_view field;
};

std::span<const picture_mask> picture_masks();

} // namespace vesk
