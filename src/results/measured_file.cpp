// NAME.measured.json.
#include "dataset/moment.h"
#include "dataset/text_encoding.h"
#include "platform/file_io.h"
#include "platform/safe_file.h"
#include "query/value_text.h"
#include "results/measured_series.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <initializer_list>

namespace vesk {

namespace {

using nlohmann::json;
using nlohmann::ordered_json;

constexpr int current_version = 1;
constexpr std::size_t largest_file = std::size_t{16} << 20; // bytes

constexpr const char* kind_names[] = {"point", "daily mean", "monthly mean"}; // by measured_kind
constexpr const char* way_names[] = {"interpolate", "nearest"};               // by pairing_way

template <class Enumeration, std::size_t size>
std::optional<Enumeration> named(const char* const (&names)[size], std::string_view name) {
  for (std::size_t i = 0; i < size; ++i)
    if (name == names[i]) return static_cast<Enumeration>(i);
  return {};
}

// Reads the members of a JSON object, each once; those left over are unknown.
class members {
public:
  members(const json& object, std::string path) : object_(object), path_(std::move(path)) {
    if (!object.is_object()) fail("", "expected an object.");
  }

  const json* find(const char* name) {
    known_.emplace_back(name);
    const auto found = object_.find(name);
    return found == object_.end() || found->is_null() ? nullptr : &*found;
  }
  void take(const char* name, std::string& value) {
    if (const json* found = find(name)) {
      if (!found->is_string()) fail(name, "expected a text.");
      value = found->get<std::string>();
    }
  }
  void take(const char* name, bool& value) {
    if (const json* found = find(name)) {
      if (!found->is_boolean()) fail(name, "expected true or false.");
      value = found->get<bool>();
    }
  }
  void take(const char* name, std::uint32_t& value) {
    if (const json* found = find(name)) {
      if (!found->is_number_unsigned() || *found > UINT32_MAX) fail(name, "expected a whole number.");
      value = found->get<std::uint32_t>();
    }
  }
  void take(const char* name, std::optional<double>& value) {
    if (const json* found = find(name)) {
      if (!found->is_number()) fail(name, "expected a number.");
      value = found->get<double>();
    }
  }
  void take_moment(const char* name, std::optional<double>& value) {
    std::string text;
    take(name, text);
    if (text.empty()) return;
    value = moment_of_text(text);
    if (!value)
      fail(name, "expected a date such as \"2011-10-01\" or \"2011-10-01T06:30:00\", found \"" + text + "\".");
  }
  template <class Enumeration, std::size_t size>
  void take_name(const char* member, const char* const (&names)[size], const char* wanted, Enumeration& value) {
    std::string text = names[static_cast<std::size_t>(value)];
    take(member, text);
    const auto found = named<Enumeration>(names, text);
    if (!found) fail(member, std::string("expected ") + wanted + ", found \"" + text + "\".");
    value = *found;
  }
  const json& take_list(const char* name) {
    static const json none = json::array();
    const json* found = find(name);
    if (found && !found->is_array()) fail(name, "expected an array.");
    return found ? *found : none;
  }
  void refuse_others() const {
    for (const auto& [name, value] : object_.items())
      if (std::ranges::find(known_, name) == known_.end()) fail(name, "unknown member.");
  }
  std::string path_of(const std::string& name) const { return path_.empty() ? name : path_ + "." + name; }

  [[noreturn]] void fail(const std::string& name, const std::string& cause) const {
    const std::string where = name.empty() ? path_ : path_of(name);
    throw measured_file_exception(where.empty() ? cause : where + ": " + cause);
  }

private:
  const json& object_;
  std::string path_;
  std::vector<std::string> known_;
};

std::string element(const std::string& list, std::size_t at) {
  return list + "[" + std::to_string(at) + "]";
}

import_query_descriptor read_query(const json& object, const std::string& path) {
  members all(object, path);
  import_query_descriptor query;
  all.take("name", query.name);
  all.take("file_name", query.file_name);
  all.take("table_name", query.table_name);
  all.take("average_duplicates", query.average_duplicates);
  all.take("date_time_field", query.date_time_field);
  all.take("value_field", query.value_field);
  const json& conditions = all.take_list("conditions");
  for (std::size_t i = 0; i < conditions.size(); ++i) {
    members one(conditions[i], element(all.path_of("conditions"), i));
    query_condition& condition = query.conditions.emplace_back();
    one.take("field_name", condition.field_name);
    one.take("conjunction", condition.conjunction);
    one.take("comparison", condition.comparison);
    one.take("value_text", condition.value_text);
    one.refuse_others();
  }
  all.refuse_others();
  if (query.file_name.empty()) all.fail("file_name", "expected the name of a file.");
  return query;
}

measured_series read_series(const json& object, const std::string& path) {
  members all(object, path);
  measured_series series;
  all.take("name", series.name);
  all.take("variable", series.variable);
  all.take("segment", series.segment);
  all.take("units", series.units);
  all.take("factor", series.factor);
  all.take_name("kind", kind_names, measured_kind_names, series.rules.kind);
  all.take_name("pairing", way_names, pairing_way_names, series.rules.way);
  all.take("gap_days", series.rules.gap);
  all.take_moment("from", series.from);
  all.take_moment("to", series.to);
  if (const json* query = all.find("query")) series.query = read_query(*query, all.path_of("query"));
  all.refuse_others();
  if (series.variable.empty()) all.fail("variable", "expected the name of a variable of the results.");
  if (series.segment.empty()) all.fail("segment", "expected the name of a segment.");
  if (series.query.file_name.empty()) all.fail("query", "expected where the values come from.");
  if (series.factor && *series.factor == 0) all.fail("factor", "expected a number other than 0.");
  if (series.rules.gap && *series.rules.gap < 0) all.fail("gap_days", "expected 0 or more days.");
  return series;
}

std::vector<measured_series> read_file(const json& content) {
  members all(content, "");
  std::uint32_t version = 0;
  all.take("version", version);
  if (version != current_version)
    all.fail("version", version == 0
                            ? "expected 1."
                            : "version " + std::to_string(version) + " is newer than this program; expected 1.");
  const json& list = all.take_list("series");
  std::vector<measured_series> result;
  for (std::size_t i = 0; i < list.size(); ++i) result.push_back(read_series(list[i], element("series", i)));
  all.refuse_others();
  return result;
}

// Bytes that are not UTF-8 would make the library throw; a text from a table may contain them.
std::string text(const std::string& bytes) {
  return shown_text(bytes);
}

ordered_json json_of(const import_query_descriptor& query) {
  ordered_json conditions = ordered_json::array();
  for (const query_condition& it : query.conditions)
    conditions.push_back({{"field_name", text(it.field_name)},
                          {"conjunction", it.conjunction},
                          {"comparison", it.comparison},
                          {"value_text", text(it.value_text)}});
  return {{"name", text(query.name)},
          {"file_name", text(query.file_name)},
          {"table_name", text(query.table_name)},
          {"average_duplicates", query.average_duplicates},
          {"date_time_field", text(query.date_time_field)},
          {"value_field", text(query.value_field)},
          {"conditions", conditions}};
}

ordered_json json_of(const measured_series& series) {
  ordered_json object = {{"name", text(series.name)},
                         {"variable", text(series.variable)},
                         {"segment", text(series.segment)},
                         {"units", text(series.units)}};
  if (series.factor) object["factor"] = *series.factor;
  object["kind"] = kind_names[static_cast<std::size_t>(series.rules.kind)];
  object["pairing"] = way_names[static_cast<std::size_t>(series.rules.way)];
  if (series.rules.gap) object["gap_days"] = *series.rules.gap;
  if (series.from) object["from"] = text_of_moment(*series.from);
  if (series.to) object["to"] = text_of_moment(*series.to);
  object["query"] = json_of(series.query);
  return object;
}

// Omits the library's error number.
std::string sentence_of(const json::exception& error) {
  const std::string_view what = error.what();
  const std::size_t prefix = what.find("] ");
  return std::string(what.substr(prefix == what.npos ? 0 : prefix + 2)) + ".";
}

} // namespace

std::optional<measured_kind> measured_kind_named(std::string_view name) {
  return named<measured_kind>(kind_names, name);
}
std::optional<pairing_way> pairing_way_named(std::string_view name) {
  return named<pairing_way>(way_names, name);
}

std::filesystem::path measured_file_of(const std::filesystem::path& file) {
  return std::filesystem::path(file).replace_extension("measured.json");
}

std::optional<double> moment_of_text(std::string_view text) {
  std::string literal(text);
  constexpr std::size_t between = 10; // "2011-10-01T"
  if (literal.size() > between && literal[between] == 'T') literal[between] = ' ';
  const auto moment = moment_literal(literal);
  const bool has_date = moment && std::floor(*moment) != 0; // day 0: a time without a date
  return has_date && in_calendar(*moment) ? moment : std::nullopt;
}

std::string text_of_moment(double date_time) {
  const moment_type moment = moment_type::from_date_time(date_time);
  const calendar_date date = date_of(moment.date);
  const clock_time time = time_of(moment.time);
  std::array<char, 96> text{};
  std::snprintf(text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02d", date.year, date.month, date.day, time.hour,
                time.minute, time.second);
  return text.data();
}

std::vector<measured_series> read_measured_file(const std::filesystem::path& file) {
  const file_descriptor opened = open_for_reading(file);
  const std::string content =
      read_to_end(opened.get(), file.string(), [](std::string_view text) { return text.size() <= largest_file; });
  try {
    if (content.size() > largest_file) throw measured_file_exception("larger than 16 MB.");
    return read_file(json::parse(content));
  } catch (const measured_file_exception& error) {
    throw measured_file_exception(file.string() + ": " + error.what());
  } catch (const json::exception& error) {
    throw measured_file_exception(file.string() + ": " + sentence_of(error));
  }
}

void write_measured_file(const std::filesystem::path& file, const std::vector<measured_series>& series) {
  ordered_json list = ordered_json::array();
  for (const measured_series& it : series) list.push_back(json_of(it));
  const ordered_json content = {{"version", current_version}, {"series", list}};
  safe_file output(file);
  write_all(output.descriptor(), content.dump(2), "\n", file.string());
  output.commit();
}

} // namespace vesk
