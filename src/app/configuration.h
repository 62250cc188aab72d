// The stored settings: text values under one key per user, read once at program start and written once at the end,
// possibly by several programs at the same time.
#pragma once

#include "platform/settings_file.h"

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vesk {

// The storage of the settings: one section, named by company, product and version.
class registry_configuration {
public:
  virtual ~registry_configuration() = default;

  // Whether the administration menu is shown. Read from the file, never written.
  virtual bool administration_mode() const { return AdministrationMode; }

protected:
  registry_configuration(std::string_view company, std::string_view product, std::string_view version,
                         const std::filesystem::path& file);

  // Each leaves `value` unchanged if nothing is stored. A flag or number is converted from the leading digits of the
  // text; without any it is 0. An empty text counts as not stored.
  void read(std::string_view name, std::string& value) const; // a text of more than 1024 bytes counts as not stored
  void read(std::string_view name, bool& value) const;
  void read(std::string_view name, int& value) const;

  // The stored text of a value.
  static std::string text_of(const std::string& value) { return value; }
  static std::string text_of(bool value) { return value ? "1" : "0"; }
  static std::string text_of(int value) { return std::to_string(value); }

  // Stores, of these values in their order, those that differ from `as_read` and those missing in the file. Everything
  // else in the file is kept, including changes saved by other programs in the meantime. Failures are silent.
  using values = std::vector<std::pair<std::string, std::string>>; // names and texts
  void save(const values& now, const values& as_read) const;
  // Changes values of the section as they are in the file now. `change` gets a function that reads and one that sets
  // one.
  using value_getter = std::function<std::string(std::string_view name)>;
  using value_setter = std::function<void(std::string_view name, const std::string& text)>;
  void update(const std::function<void(const value_getter&, const value_setter&)>& change) const;
  const std::filesystem::path& path() const { return path_; }

  bool AdministrationMode = false;

private:
  const std::string section_;
  const std::filesystem::path path_;
  const settings_file file_; // the file as read
};

// All settings of the program. The shell accesses the fields directly.
class configuration final : public registry_configuration {
public:
  enum class access { read_and_save, read_only };

  // Sets all defaults, then reads what is stored.
  explicit configuration(const std::filesystem::path& file, access granted = access::read_and_save);

  // Saves settings that have changed since they were last read or saved, and settings missing in the file, unless the
  // settings are read-only. Failures are silent.
  void save_all();

  // The picture of a number cell, by the name of its setting ("TimeStepBasicNumericField"); empty if there is no such
  // setting.
  std::string number_format(std::string_view name) const;

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

  // Saved only after a change.
  int UndoMegabytes = 0; // memory for the steps of Undo; 0: chosen by memory size
  bool ShowResultsAfterRun = true;
  bool WrapMessages = false;

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

  // The files opened or saved last, absolute names, the latest first: RecentFile1 and so on. Saved only after a change,
  // in front of those that other windows have stored meanwhile.
  static constexpr std::size_t most_recent_files = 9;
  const std::vector<std::string>& recent_files() const { return recent_files_; }
  void add_recent_file(const std::string& name);
  void remove_recent_file(const std::string& name);
  void clear_recent_files();

  std::string file() const { return path().string(); } // in which the settings are stored

  // Ends in a separator. The default folder is stored as an empty text, so that it is still found if the programs have
  // moved.
  std::string DatabaseDir;

private:
  // Calls `visit(name, member)` for every value that is always stored, except DatabaseDir, in the order of reading and
  // writing.
  template <class Self, class Visit>
  static void each_value(Self& self, Visit visit);
  // The same for those that are saved only after a change.
  template <class Self, class Visit>
  static void each_optional_value(Self& self, Visit visit);
  values all_values();
  values optional_values() const;
  void save_optional_values();
  void save_recent_files();

  const access access_;
  values as_read_, optional_as_read_;
  std::vector<std::string> recent_files_;
  std::vector<std::string> added_files_, removed_files_; // since they were read or saved
  bool forgets_stored_files_ = false;
};

} // namespace vesk
