// The lasting settings: text values under one key per user, read once at the start and written once at the end.
#pragma once

#include "platform/settings_file.h"

#include <filesystem>
#include <string>
#include <string_view>

namespace vesk {

// The store behind the settings: one section, named by company, product and version.
class registry_configuration {
public:
  virtual ~registry_configuration() = default;

  // Whether the administration menu is shown. Read from the store, never written.
  virtual bool administration_mode() const { return AdministrationMode; }

protected:
  registry_configuration(std::string_view company, std::string_view product, std::string_view version,
                         const std::filesystem::path& file);

  // Each leaves `value` as it is when there is nothing stored. A flag or number is converted from the leading digits
  // of the text, so that a text without any is 0; an empty text counts as nothing stored.
  void read(std::string_view name, std::string& value) const; // a text of more than 1024 bytes counts as not stored
  void read(std::string_view name, bool& value) const;
  void read(std::string_view name, int& value) const;

  void write(std::string_view name, const std::string& value) { file_.set(section_, name, value); }
  void write(std::string_view name, bool value) { file_.set(section_, name, value ? "1" : "0"); }
  void write(std::string_view name, int value) { file_.set(section_, name, std::to_string(value)); }
  void save() const { file_.save(); } // a failure is silent

  bool AdministrationMode = false;

private:
  const std::string section_;
  settings_file file_;
};

// All settings of the program. The shell reads and writes the fields directly.
class configuration final : public registry_configuration {
public:
  enum class access { read_and_save, read_only };

  // Sets all defaults, then reads what is stored.
  explicit configuration(const std::filesystem::path& file, access granted = access::read_and_save);

  // Writes all values, unless they may only be read. Nothing is told when that fails.
  void save_all();

  std::string ApplicationName = "TALMO VESK";
  std::string EditionName;
  std::string PostProcessor = "jovik.exe";
  std::string HavlePostProcessor = "havle.exe";
  bool ExpertStyle = false; // stored only
  int ResultsTableHeight = 0;
  int MainFormLeft = 0;
  int MainFormTop = 0;
  int MainFormWidth = 0;
  int MainFormHeight = 0;
  int MainFormWindowState = 0; // 0 normal, 1 minimised, 2 maximised
  bool RunTimeGridAlwaysVisible = false;

  // The entry pictures of the grids' fields: "#" a digit, "E" a position in exponent style.
  std::string EditProjectBasicNumericField = "#######.###";
  std::string BoundarySystemNumericField = "EEEEEEE.EEEEEEE";
  std::string ConstantsBasicNumericField = "#######.####";
  std::string ExchangeFlowFieldNumericField = "EEEEEEE.EEEEEEE";
  std::string ExchangeFlowPairNumericField = "EEEEEEE.EEEEEEE";
  std::string LoadsSystemNumericField = "EEEEEEE.EEEEEEE";
  std::string MainFormResultsNumericField = "############.######";
  std::string ParameterBasicNumericField = "#######.####";
  std::string PrintIntervalBasicNumericField = "#######.##";
  std::string SegmentsBasicNumericField = "#######.####";
  std::string SegmentsInitialConcentrationsNumericField = "#######.####";
  std::string SegmentsFractionDissolvedNumericField = "#######.####";
  std::string SysParamsBasicNumericField = "#######.####";
  std::string TimeStepBasicNumericField = "####.####";
  std::string BoundaryTimeFunctionValueSimpleField = "E";
  std::string ConstantsBasicSimpleField = "E";
  std::string ExchangeFlowTimeFunctionValueSimpleField = "E";
  std::string LoadsTimeFunctionValueSimpleField = "E";
  std::string SegmentsBasicValueSimpleField = "E";
  std::string SegmentsInitSimpleField = "E";
  std::string SegmentsParametersSimpleField = "E";
  std::string TimeFunctionsBasicSimpleField = "E";
  std::string SegmentsVolumeConversionFactorPictureField = "EEEEEEE.EEEEEEE";
  std::string SegmentsVolumeScaleFactorPictureField = "EEEEEEE.EEEEEEE";

  std::string DatabaseDir; // ends in a separator

private:
  // Calls `visit(name, member)` for every stored value, in the order of reading and writing.
  template <class Visit>
  void each_value(Visit visit);

  const access access_;
};

} // namespace vesk
