#include "app/forms.h"

#include "app/configuration.h"

namespace vesk {

namespace {

constexpr std::string_view classes[] = {
    "TPreveskMainForm",
    "TVeskDataModule",
    "TSplashForm",
    "TLoadSplashFormForm",
    "TEditProjectForm",
    "TBoundaryForm",
    "TConstantsForm",
    "TAboutBox",
    "TExchangesFlowsForm",
    "TLoadsForm",
    "TParameterForm",
    "TParametersForm",
    "TPreferenceConfigurationForm",
    "TPrintIntervalForm",
    "TSegmentForm",
    "TSelectSegmentsForm",
    "TSetSeedDateForm",
    "TSystemForm",
    "TTimeFunctionsForm",
    "TTimeStepForm",
    "TImportTimeSeriesForm",
    "TOutputControlForm",
    "TFillCalculateForm",
    "TGraphForm",
};

#define VESK_MASK(value) #value, &configuration::value
constexpr picture_mask masks[] = {
    {VESK_MASK(EditProjectBasicNumericField), "TEditProjectForm", "BasicNumericField"},
    {VESK_MASK(BoundarySystemNumericField), "TBoundaryForm", "SystemNumericField"},
    {VESK_MASK(ConstantsBasicNumericField), "TConstantsForm", "BasicNumericField"},
    {VESK_MASK(ExchangeFlowFieldNumericField), "TExchangesFlowsForm", "FieldNumericField"},
    {VESK_MASK(ExchangeFlowPairNumericField), "TExchangesFlowsForm", "PairDoubleField"},
    {VESK_MASK(LoadsSystemNumericField), "TLoadsForm", "SystemNumericField"},
    {VESK_MASK(MainFormResultsNumericField), "TPreveskMainForm", "ResultsNumericField"},
    {VESK_MASK(ParameterBasicNumericField), "TParameterForm", "BasicNumericField"},
    {VESK_MASK(PrintIntervalBasicNumericField), "TPrintIntervalForm", "BasicNumericField"},
    {VESK_MASK(SegmentsBasicNumericField), "TSegmentForm", "BasicNumericField"},
    {VESK_MASK(SegmentsInitialConcentrationsNumericField), "TSegmentForm", "InitialConcentrationsNumericField"},
    {VESK_MASK(SegmentsFractionDissolvedNumericField), "TSegmentForm", "FractionDissolvedNumericField"},
    {VESK_MASK(SysParamsBasicNumericField), "TSystemForm", "BasicNumericField"},
    {VESK_MASK(TimeStepBasicNumericField), "TTimeStepForm", "BasicNumericField"},
    {VESK_MASK(BoundaryTimeFunctionValueSimpleField), "TBoundaryForm", "TimeFunctionValueField"},
    {VESK_MASK(ConstantsBasicSimpleField), "TConstantsForm", "BasicSimpleField"},
    {VESK_MASK(ExchangeFlowTimeFunctionValueSimpleField), "TExchangesFlowsForm", "TimeFunctionValueField"},
    {VESK_MASK(LoadsTimeFunctionValueSimpleField), "TLoadsForm", "TimeFunctionSimpleValueField"},
    {VESK_MASK(SegmentsBasicValueSimpleField), "TSegmentForm", "BasicSimpleValueField"},
    {VESK_MASK(SegmentsInitSimpleField), "TSegmentForm", "InitSimpleField"},
    {VESK_MASK(SegmentsParametersSimpleField), "TSegmentForm", "ParametersNumericField"},
    {VESK_MASK(TimeFunctionsBasicSimpleField), "TTimeFunctionsForm", "BasicSimpleField"},
    {VESK_MASK(SegmentsVolumeConversionFactorPictureField), "TSegmentForm", "VolumeConversionFactorField"},
    {VESK_MASK(SegmentsVolumeScaleFactorPictureField), "TSegmentForm", "VolumeScaleFactorField"},
};
#undef VESK_MASK

static_assert(std::size(classes) == 24 && std::size(masks) == 24);

} // namespace

std::span<const std::string_view> form_classes() {
  return classes;
}

std::span<const picture_mask> picture_masks() {
  return masks;
}

} // namespace vesk
