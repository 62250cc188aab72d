#include "results/nc_helper/content.h"

#include "results/nc_helper/attributes.h"
#include "results/nc_helper/refusal.h"

#include <netcdf.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <map>
#include <sstream>
#include <string_view>

namespace vesk::nc {

namespace {

void add(std::string& packed, std::uint64_t number) {
  packed.append(reinterpret_cast<const char*>(&number), sizeof number);
}
void add(std::string& packed, std::string_view text) {
  add(packed, text.size());
  packed += text;
}
void add(std::string& packed, const std::vector<double>& values) {
  add(packed, values.size());
  packed.append(reinterpret_cast<const char*>(values.data()), values.size() * sizeof(double));
}

std::string counted_times(std::uint64_t count, const char* what) {
  return "has " + std::to_string(count) + " " + what + "; at most " + std::to_string(most_positions) + " can be shown";
}

} // namespace

content::content(const char* name) {
  check(nc_open(name, NC_NOWRITE, &file_));
  variables_ = all_variables();
  find_time();
  find_segments();
  find_variables();
}

std::string content::dimension_name(int dimension) const {
  std::array<char, NC_MAX_NAME + 1> name{};
  check(nc_inq_dimname(file_, dimension, name.data()));
  return name.data();
}

std::string content::text(int variable, const char* name) const {
  return text_attribute(file_, variable, name);
}

std::vector<content::description> content::all_variables() const {
  int count = 0;
  check(nc_inq_nvars(file_, &count));
  std::vector<description> result;
  std::array<char, NC_MAX_NAME + 1> name{};
  std::array<int, NC_MAX_VAR_DIMS> shape{};
  for (int id = 0; id < count; ++id) {
    nc_type type = NC_NAT;
    int dimensions = 0;
    check(nc_inq_var(file_, id, name.data(), &type, &dimensions, shape.data(), nullptr));
    result.push_back({.id = id,
                      .name = name.data(),
                      .is_number = type >= NC_BYTE && type <= NC_UINT64 && type != NC_CHAR,
                      .is_text = type == NC_CHAR || type == NC_STRING,
                      .shape = {shape.begin(), shape.begin() + dimensions}});
  }
  return result;
}

bool content::counts_time(const description& it) const {
  if (!it.is_number || it.shape.size() != 1) return false;
  return text(it.id, "units").find(" since ") != std::string::npos || text(it.id, "axis") == "T" ||
         text(it.id, "standard_name") == "time" || it.name == "time";
}

// Prefers a variable called time, then a coordinate variable.
void content::find_time() {
  int best = 0;
  for (const description& it : variables_) {
    if (!counts_time(it)) continue;
    const bool is_coordinate = dimension_name(it.shape[0]) == it.name;
    const int rank = 1 + (is_coordinate ? 1 : 0) + (it.name == "time" ? 2 : 0);
    if (rank <= best) continue;
    best = rank;
    time_ = it.id, time_dimension_ = it.shape[0];
  }
  if (best == 0) refuse("has no times: no variable has a unit such as \"days since 2000-01-01 00:00:00\"");
  std::size_t size = 0;
  check(nc_inq_dimlen(file_, time_dimension_, &size));
  times_ = size;
  if (times_ == 0) refuse("has no times: its dimension \"" + dimension_name(time_dimension_) + "\" is empty");
  if (times_ > most_positions) refuse(counted_times(times_, "times"));
}

// The dimension called segment; otherwise the one that most variables share with time.
void content::find_segments() {
  std::map<int, int> uses;
  const std::string bounds = text(time_, "bounds"), climatology = text(time_, "climatology");
  for (const description& it : variables_) {
    if (!it.is_number || it.shape.size() != 2 || it.name == bounds || it.name == climatology) continue;
    if (it.shape[0] == it.shape[1]) continue;
    for (const int k : {0, 1})
      if (it.shape[static_cast<std::size_t>(k)] == time_dimension_) ++uses[it.shape[static_cast<std::size_t>(1 - k)]];
  }
  int most = 0;
  for (const auto& [dimension, count] : uses) {
    const bool is_segment = dimension_name(dimension) == "segment";
    if (count <= most && !is_segment) continue;
    most = is_segment ? static_cast<int>(variables_.size()) + 1 : count;
    segment_dimension_ = dimension;
  }
  if (most == 0)
    refuse("has no variable over time and segments. If it comes from a run of this program, no output is on for the "
           "results file: check Output in Data > Output control, and run again");
  std::size_t size = 0;
  check(nc_inq_dimlen(file_, segment_dimension_, &size));
  segments_ = size;
  if (segments_ == 0) refuse("has no segments: its dimension \"" + dimension_name(segment_dimension_) + "\" is empty");
  if (segments_ > most_positions) refuse(counted_times(segments_, "segments"));
}

void content::find_variables() {
  const std::vector<int> as_usual = {time_dimension_, segment_dimension_};
  const std::vector<int> turned = {segment_dimension_, time_dimension_};
  for (const description& it : variables_)
    if (it.is_number && (it.shape == as_usual || it.shape == turned))
      shown_.emplace_back(file_, it.id, it.shape == turned, times_, segments_);
}

std::vector<double> content::numbers(int id, std::uint64_t size) const {
  std::vector<double> values(size);
  check(nc_get_var_double(file_, id, values.data()));
  return values;
}

// In m; not-a-number if unknown; empty if the file has none.
std::vector<double> content::lengths() const {
  for (const description& it : variables_) {
    if (!it.is_number || it.name != "length" || it.shape != std::vector<int>{segment_dimension_}) continue;
    const std::string units = text(it.id, "units");
    const bool is_km = units == "km" || units == "kilometer" || units == "kilometre";
    if (!is_km && !units.empty() && !units.starts_with("m")) return {};
    auto values = numbers(it.id, segments_);
    auto fills = number_attribute(file_, it.id, "_FillValue");
    if (fills.empty()) fills = {NC_FILL_DOUBLE, double{NC_FILL_FLOAT}};
    bool some = false;
    for (double& value : values) {
      const bool is_there = std::isfinite(value) && std::ranges::find(fills, value) == fills.end();
      value = is_there ? value * (is_km ? 1000 : 1) : std::numeric_limits<double>::quiet_NaN();
      some = some || is_there;
    }
    return some ? values : std::vector<double>{};
  }
  return {};
}

// Likelihood that a variable holds the segments' names; 0 if it cannot.
int content::rank_as_names(const description& it) const {
  if (!it.is_text || it.shape.empty() || it.shape.size() > 2 || it.shape[0] != segment_dimension_) return 0;
  int rank = 1;
  if (it.name.find("name") != std::string::npos) rank += 1;
  if (!shown_.empty()) {
    std::istringstream coordinates(text(shown_[0].id(), "coordinates"));
    for (std::string name; coordinates >> name;)
      if (name == it.name) rank += 2;
  }
  if (text(it.id, "cf_role") == "timeseries_id") rank += 4;
  return rank;
}

std::vector<std::string> content::names() const {
  const description* best = nullptr;
  for (const description& it : variables_)
    if (const int rank = rank_as_names(it); rank > 0 && (!best || rank > rank_as_names(*best))) best = &it;
  if (!best) return {};
  nc_type type = NC_NAT;
  check(nc_inq_vartype(file_, best->id, &type));
  if (type == NC_CHAR) return letters(*best);
  return best->shape.size() == 1 ? strings(*best) : std::vector<std::string>{};
}

std::vector<std::string> content::letters(const description& it) const {
  std::size_t length = 1;
  if (it.shape.size() == 2) check(nc_inq_dimlen(file_, it.shape[1], &length));
  std::string all;
  if (length > all.max_size() / segments_) refuse("has segment names that are too long");
  all.resize(segments_ * length);
  if (!all.empty()) check(nc_get_var_text(file_, it.id, all.data()));
  std::vector<std::string> result;
  for (std::uint64_t i = 0; i < segments_; ++i) {
    std::string_view name = std::string_view(all).substr(i * length, length);
    name = name.substr(0, name.find('\0'));
    result.emplace_back(name.substr(0, name.find_last_not_of(' ') + 1));
  }
  return result;
}

std::vector<std::string> content::strings(const description& it) const {
  std::vector<std::string> result;
  for (std::size_t i = 0; i < segments_; ++i) {
    char* name = nullptr;
    check(nc_get_var1_string(file_, it.id, &i, &name));
    result.emplace_back(name ? name : "");
    nc_free_string(1, &name);
  }
  return result;
}

std::string content::packed() const {
  std::string packed;
  add(packed, numbers(time_, times_));
  add(packed, text(time_, "units"));
  add(packed, text(time_, "calendar"));
  add(packed, segments_);
  const auto all_names = names();
  add(packed, all_names.size());
  for (const std::string& name : all_names) add(packed, std::string_view(name));
  add(packed, lengths());
  for (const char* name : {"title", "source"}) add(packed, text(NC_GLOBAL, name));
  add(packed, shown_.size());
  for (const variable& it : shown_) {
    const auto found = std::ranges::find(variables_, it.id(), &description::id);
    add(packed, found->name);
    for (const char* name : {"long_name", "standard_name", "units", "cell_methods"}) add(packed, text(it.id(), name));
  }
  return packed;
}

std::vector<double> content::answer_to(const question& asked) const {
  const auto lies_in = [](std::uint64_t first, std::uint64_t count, std::uint64_t size) {
    return first <= size && count <= size - first;
  };
  if (asked.variable >= shown_.size() || !lies_in(asked.first_time, asked.times, times_) ||
      !lies_in(asked.first_segment, asked.segments, segments_))
    refuse("was asked for values that it does not have");
  const variable& from = shown_[asked.variable];
  if (asked.wanted == kind::bands) return from.bands(asked.first_time, asked.times);
  return from.values(asked.first_time, asked.times, asked.first_segment, asked.segments);
}

} // namespace vesk::nc
