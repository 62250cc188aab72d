#include "app/configuration.h"

#include "app/catalogue_source.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <type_traits>
#include <utility>

namespace vesk {

namespace {

std::string default_database() {
  return (catalogue_source::default_directory() / "").string();
}

std::string recent_file_name(std::size_t number) {
  return "RecentFile" + std::to_string(number);
}

void put_in_front(std::vector<std::string>& names, const std::string& name) {
  std::erase(names, name);
  names.insert(names.begin(), name);
}

} // namespace

registry_configuration::registry_configuration(std::string_view company, std::string_view product,
                                               std::string_view version, const std::filesystem::path& file)
    : section_("SOFTWARE\\" + std::string(company) + "\\" + std::string(product) + "\\" + std::string(version)),
      path_(file), file_(file) {
  read("AdministrationMode", AdministrationMode);
}

void registry_configuration::save(const values& now, const values& as_read) const {
  settings_file::update(path_, [&](settings_file& file) {
    for (std::size_t i = 0; i < now.size(); ++i) {
      const auto& [name, text] = now[i];
      if (text != as_read[i].second || !file.get(section_, name)) file.set(section_, name, text);
    }
  });
}

void registry_configuration::update(const std::function<void(const value_getter&, const value_setter&)>& change) const {
  settings_file::update(path_, [&](settings_file& file) {
    change([&](std::string_view name) { return file.get(section_, name).value_or(std::string()); },
           [&](std::string_view name, const std::string& text) { file.set(section_, name, text); });
  });
}

void registry_configuration::read(std::string_view name, std::string& value) const {
  constexpr std::size_t longest = 1024;
  if (const auto text = file_.get(section_, name); text && text->size() <= longest) value = *text;
}

void registry_configuration::read(std::string_view name, int& value) const {
  const auto text = file_.get(section_, name);
  if (!text || text->empty()) return;
  using limits = std::numeric_limits<int>;
  value = static_cast<int>(std::clamp<long>(std::strtol(text->c_str(), nullptr, 10), limits::min(), limits::max()));
}

void registry_configuration::read(std::string_view name, bool& value) const {
  int number = value ? 1 : 0;
  read(name, number);
  value = number != 0;
}

template <class Self, class Visit>
void configuration::each_value(Self& self, Visit visit) {
// The stored name of a value is the name of its member.
#define VESK_SETTING(member) visit(#member, self.member)
  VESK_SETTING(ApplicationName);
  VESK_SETTING(EditionName);
  VESK_SETTING(PostProcessor);
  VESK_SETTING(HavlePostProcessor);
  VESK_SETTING(ExpertStyle);
  VESK_SETTING(ResultsTableHeight);
  VESK_SETTING(MainFormLeft);
  VESK_SETTING(MainFormTop);
  VESK_SETTING(MainFormWidth);
  VESK_SETTING(MainFormHeight);
  VESK_SETTING(MainFormWindowState);
  VESK_SETTING(RunTimeGridAlwaysVisible);
  VESK_SETTING(EditProjectBasicNumericField);
  VESK_SETTING(BoundarySystemNumericField);
  VESK_SETTING(ConstantsBasicNumericField);
  VESK_SETTING(ExchangeFlowFieldNumericField);
  VESK_SETTING(ExchangeFlowPairNumericField);
  VESK_SETTING(LoadsSystemNumericField);
  VESK_SETTING(MainFormResultsNumericField);
  VESK_SETTING(ParameterBasicNumericField);
  VESK_SETTING(PrintIntervalBasicNumericField);
  VESK_SETTING(SegmentsBasicNumericField);
  VESK_SETTING(SegmentsInitialConcentrationsNumericField);
  VESK_SETTING(SegmentsFractionDissolvedNumericField);
  VESK_SETTING(SysParamsBasicNumericField);
  VESK_SETTING(TimeStepBasicNumericField);
  VESK_SETTING(BoundaryTimeFunctionValueSimpleField);
  VESK_SETTING(ConstantsBasicSimpleField);
  VESK_SETTING(ExchangeFlowTimeFunctionValueSimpleField);
  VESK_SETTING(LoadsTimeFunctionValueSimpleField);
  VESK_SETTING(SegmentsBasicValueSimpleField);
  VESK_SETTING(SegmentsInitSimpleField);
  VESK_SETTING(SegmentsParametersSimpleField);
  VESK_SETTING(TimeFunctionsBasicSimpleField);
  VESK_SETTING(SegmentsVolumeConversionFactorPictureField);
  VESK_SETTING(SegmentsVolumeScaleFactorPictureField);
}

template <class Self, class Visit>
void configuration::each_optional_value(Self& self, Visit visit) {
  VESK_SETTING(UndoMegabytes);
  VESK_SETTING(ShowResultsAfterRun);
  VESK_SETTING(WrapMessages);
#undef VESK_SETTING
}

configuration::configuration(const std::filesystem::path& file, access granted)
    : registry_configuration("TALMO", "VESK", "7.0", file), access_(granted) {
  each_value(*this, [this](std::string_view name, auto& member) { read(name, member); });
  each_optional_value(*this, [this](std::string_view name, auto& member) { read(name, member); });
  optional_as_read_ = optional_values();
  for (std::size_t i = 1; i <= most_recent_files; ++i) {
    std::string name;
    read(recent_file_name(i), name);
    if (!name.empty() && std::ranges::count(recent_files_, name) == 0) recent_files_.push_back(name);
  }
  read("DatabaseDir", DatabaseDir);
  as_read_ = all_values();
  as_read_.back().second = DatabaseDir; // earlier versions stored the default folder's path
  if (DatabaseDir.empty()) DatabaseDir = default_database();
}

configuration::values configuration::all_values() {
  values all;
  each_value(*this, [&all](std::string_view name, const auto& member) { all.emplace_back(name, text_of(member)); });
  all.emplace_back("DatabaseDir", DatabaseDir == default_database() ? std::string() : DatabaseDir);
  return all;
}

configuration::values configuration::optional_values() const {
  values all;
  each_optional_value(*this,
                      [&all](std::string_view name, const auto& member) { all.emplace_back(name, text_of(member)); });
  return all;
}

std::string configuration::number_format(std::string_view name) const {
  std::string format;
  each_value(*this, [&](std::string_view value_name, const auto& member) {
    if constexpr (std::is_same_v<std::decay_t<decltype(member)>, std::string>)
      if (value_name == name) format = member;
  });
  return format;
}

// A name that would not be read back is not kept.
void configuration::add_recent_file(const std::string& name) {
  constexpr std::size_t longest = 1024; // of a value
  if (name.size() > longest || name.find_first_of("\r\n") != name.npos) return;
  std::erase(removed_files_, name);
  for (std::vector<std::string>* names : {&recent_files_, &added_files_}) {
    put_in_front(*names, name);
    names->resize(std::min(names->size(), most_recent_files));
  }
}

void configuration::remove_recent_file(const std::string& name) {
  std::erase(recent_files_, name);
  std::erase(added_files_, name);
  removed_files_.push_back(name);
}

void configuration::clear_recent_files() {
  recent_files_.clear();
  added_files_.clear();
  forgets_stored_files_ = true; // those of other windows as well
}

void configuration::save_recent_files() {
  if (added_files_.empty() && removed_files_.empty() && !forgets_stored_files_) return;
  update([this](const value_getter& get, const value_setter& set) {
    std::vector<std::string> names = std::exchange(added_files_, {});
    for (std::size_t i = 1; i <= most_recent_files; ++i)
      if (const std::string stored = get(recent_file_name(i));
          !forgets_stored_files_ && !stored.empty() &&
          std::ranges::count(names, stored) + std::ranges::count(removed_files_, stored) == 0)
        names.push_back(stored);
    names.resize(most_recent_files);
    for (std::size_t i = 0; i < most_recent_files; ++i)
      if (const std::string of = recent_file_name(i + 1); !names[i].empty() || !get(of).empty()) set(of, names[i]);
  });
  removed_files_.clear();
  forgets_stored_files_ = false;
}

void configuration::save_optional_values() {
  const values now = optional_values();
  values changed, before;
  for (std::size_t i = 0; i < now.size(); ++i)
    if (now[i] != optional_as_read_[i]) changed.push_back(now[i]), before.push_back(optional_as_read_[i]);
  if (!changed.empty()) save(changed, before);
  optional_as_read_ = now;
}

void configuration::save_all() {
  if (access_ == access::read_only) return;
  save_recent_files();
  values now = all_values();
  save(now, as_read_);
  save_optional_values();
  as_read_ = std::move(now);
}

} // namespace vesk
