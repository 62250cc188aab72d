#include "query/import_query.h"

#include "dataset/text_encoding.h"
#include "platform/counted.h"
#include "query/query_log.h"
#include "query/source_file.h"

#include <algorithm>
#include <utility>

namespace vesk {

namespace {

// What a stored number means; one that is damaged in the file is refused.
template <class Enumeration>
Enumeration meaning_of(std::uint32_t number, Enumeration last, const import_query_descriptor& query, const char* what) {
  if (number <= static_cast<std::uint32_t>(last)) return static_cast<Enumeration>(number);
  throw query_validation_exception("Query '" + query.name + "' has a condition with the unknown " + what + " " +
                                   std::to_string(number));
}

} // namespace

import_query::import_query(import_query_descriptor query, const std::filesystem::path& data_folder)
    : stored(in_utf8(std::move(query), data_folder)), engine(data_folder) {}

void import_query::set_file(const std::string& name) {
  stored.file_name = name;
  source_kind = engine.kind_of(name);
  tables.clear();
  if (source_kind == source_several_tables)
    tables = engine.list_tables(*this);
  else
    set_table(name);
}

void import_query::set_table(const std::string& name) {
  stored.table_name = name;
  field_names.clear();
  field_types.clear();
  if (name.empty()) return;
  for (const table_field& field : engine.fields_of(*this)) {
    field_names.push_back(field.name);
    field_types.push_back(field.type);
  }
  engine.disconnect(*this);
}

std::string import_query::quoted_table() const {
  return source_kind == source_one_table ? "'" + stored.table_name + "'" : "[" + stored.table_name + "]";
}

std::size_t import_query::field_position(const std::string& field) const {
  const auto found = std::find(field_names.begin(), field_names.end(), field);
  if (found == field_names.end())
    throw query_validation_exception("Query '" + stored.name + "' contains reference to non-existent field '" + field +
                                     "'");
  return static_cast<std::size_t>(found - field_names.begin());
}

// `set_file` leaves the table of a source of several tables alone; a file that is one table is its table.
void import_query::reopen_source() {
  set_file(std::string(stored.file_name));
  if (source_kind == source_several_tables) set_table(std::string(stored.table_name));
}

void import_query::validate_source() {
  if (stored.file_name.empty()) throw query_validation_exception("File name not set");
  reopen_source();
  if (stored.table_name.empty()) throw query_validation_exception("Table name not set");
  if (stored.date_time_field.empty()) throw query_validation_exception("Date/Time field not set");
  field_position(stored.date_time_field);
  if (stored.value_field.empty()) throw query_validation_exception("Value field not set");
  field_position(stored.value_field);
}

void import_query::validate() {
  validate_source();
  choices.resize(stored.conditions.size());
  for (std::size_t i = 0; i < stored.conditions.size(); ++i) {
    field_position(stored.conditions[i].field_name);
    refresh_values(i);
    if (!has_value(i)) refuse_value(i);
  }
}

void import_query::read_lists() {
  if (stored.file_name.empty()) return;
  reopen_source();
  for (std::size_t i = 0; i < stored.conditions.size(); ++i) refresh_values(i);
}

// Conditions and their choices.

void import_query::insert_condition() {
  choices.resize(stored.conditions.size());
  choices.emplace_back();
  stored.conditions.emplace_back();
  if (!field_names.empty()) stored.conditions.back().field_name = field_names.front();
}

void import_query::remove_condition(std::size_t condition) {
  const auto place = static_cast<std::ptrdiff_t>(condition);
  choices.resize(stored.conditions.size());
  choices.erase(choices.begin() + place);
  stored.conditions.erase(stored.conditions.begin() + place);
}

void import_query::clear_conditions() {
  stored.conditions.clear();
  choices.clear();
}

void import_query::choose_field(std::size_t condition, std::size_t field) {
  choices.resize(stored.conditions.size());
  choices[condition] = {};
  choices[condition].field_index = field;
  stored.conditions[condition].field_name = field_names[field];
  stored.conditions[condition].value_text.clear();
}

void import_query::choose_value(std::size_t condition, std::size_t value) {
  stored.conditions[condition].value_text = choices[condition].values[value];
  choices[condition].selected_value = static_cast<std::int32_t>(value);
}

void import_query::enter_value(std::size_t condition, std::string text) {
  choices.resize(stored.conditions.size());
  stored.conditions[condition].value_text = std::move(text);
  choices[condition].selected_value = -1;
}

void import_query::refuse_value(std::size_t condition) const {
  throw query_validation_exception("Query '" + stored.name + "' contains query condition on field '" +
                                   stored.conditions[condition].field_name + "' which has no selected value");
}

// Conditions are added and fields and lists change between one validation and the next.
bool import_query::has_value(std::size_t i) const {
  if (i >= choices.size() || choices[i].selected_value < 0) return false;
  return static_cast<std::size_t>(choices[i].selected_value) < choices[i].values.size() &&
         choices[i].field_index < field_types.size();
}

const std::string& import_query::chosen_value(std::size_t i) const {
  return choices[i].values[static_cast<std::size_t>(choices[i].selected_value)];
}

select_term import_query::term(std::size_t i, const table_field& field, const std::string& value) const {
  const query_condition& condition = stored.conditions[i];
  const auto comparison = meaning_of(condition.comparison, term_comparison::greater_or_equal, stored, "comparison");
  if (i == 0) return {field, comparison, value};
  return {field, comparison, value, meaning_of(condition.conjunction, term_conjunction::either, stored, "conjunction")};
}

select_term import_query::chosen_term(std::size_t i) const {
  return term(i, {stored.conditions[i].field_name, field_types[choices[i].field_index]}, chosen_value(i));
}

select_statement import_query::statement(const prevesk_dataset_data_type& data, std::vector<select_term> terms) const {
  select_statement result{
      .table = stored.table_name, .of_several = source_kind != source_one_table, .terms = std::move(terms)};
  if (stored.date_time_field.empty()) return result;
  const auto found = std::find(field_names.begin(), field_names.end(), stored.date_time_field);
  const auto position = static_cast<std::size_t>(found - field_names.begin());
  result.moment_field = {stored.date_time_field,
                         position < field_types.size() ? field_types[position] : field_type::unknown};
  if (!stored.restrict_to_run_period) return result;
  result.period = {moment_type::from_date_time(data.start_date_time())};
  const point_list& steps = data.time_steps.points;
  if (!steps.empty()) result.period->last = steps[steps.size() - 1];
  return result;
}

std::optional<select_statement> import_query::shown_statement(const prevesk_dataset_data_type& data) const {
  std::vector<select_term> terms;
  for (std::size_t i = 0; i < stored.conditions.size(); ++i) {
    if (!has_value(i)) return {};
    terms.push_back(chosen_term(i));
  }
  return statement(data, std::move(terms));
}

std::string import_query::build_sql(const prevesk_dataset_data_type& data) const {
  const auto shown = shown_statement(data);
  return shown ? shown_text(*shown) : std::string();
}

std::unique_ptr<result_set> import_query::open_rows(const prevesk_dataset_data_type& data, const statement_use& use) {
  const auto shown = shown_statement(data);
  if (shown) return engine.open(*this, *shown, use);
  std::size_t without = 0;
  while (has_value(without)) ++without;
  refuse_value(without);
}

// The values of a condition's field, with drill_down those that the other conditions leave.
select_statement import_query::values_statement(std::size_t condition) const {
  const std::string& field = stored.conditions[condition].field_name;
  select_statement result{.table = stored.table_name,
                          .of_several = source_kind != source_one_table,
                          .distinct = table_field{field, field_types[field_position(field)]}};
  if (drill_down)
    for (std::size_t i = 0; i < stored.conditions.size(); ++i)
      if (i != condition && has_value(i)) result.terms.push_back(chosen_term(i));
  return result;
}

std::unique_ptr<result_set> import_query::open_values(std::size_t condition, const select_statement& values,
                                                      bool in_any_order) {
  trace_refresh(condition);
  return engine.open(*this, values, {.in_any_order = in_any_order});
}

void import_query::trace_refresh(std::size_t condition) const {
  trace_query("UPDATING VALUES FOR" + stored.conditions[condition].field_name + "with this=" + stored.name +
              "and RTItems=" + std::to_string(stored.conditions.size()));
}

void import_query::refresh_values(std::size_t condition) {
  choices.resize(stored.conditions.size());
  const bool was_chosen = has_value(condition);
  choices[condition] = {};
  const std::string &field = stored.conditions[condition].field_name, &own = stored.conditions[condition].value_text;
  const auto position = std::find(field_names.begin(), field_names.end(), field);
  if (position == field_names.end()) return;
  const auto rows = open_values(condition, values_statement(condition), false);
  condition_choice choice;
  choice.field_index = static_cast<std::size_t>(position - field_names.begin());
  constexpr std::size_t most_memory = std::size_t{64} << 20; // of the list, in bytes
  for (std::size_t memory = 0; rows->next();) {
    if (!rows->is_comparable(0)) continue;
    const bool is_listed = choice.value_count++ < most_listed && memory < most_memory;
    const bool is_own = choice.selected_value < 0 && rows->text(0) == own;
    if (!is_listed && !is_own) continue;
    if (is_own) choice.selected_value = static_cast<std::int32_t>(choice.values.size());
    choice.values.push_back(rows->text(0));
    memory += sizeof(std::string) + choice.values.back().size();
  }
  if (choice.selected_value < 0 && drill_down && was_chosen) { // the other conditions leave no row with it
    choice.selected_value = static_cast<std::int32_t>(choice.values.size());
    choice.values.push_back(own);
  }
  choices[condition] = std::move(choice);
  engine.disconnect(*this);
}

// Throws query_validation_exception when the condition's field has not its value.
void import_query::find_value(std::size_t condition, const select_term& stored_term) {
  select_statement values = values_statement(condition);
  const field_type type = stored_term.field.type;
  if (values.terms.empty() && !is_number(type) && !is_date_or_time(type)) { // sources look for texts themselves
    values.terms = {stored_term};
    values.terms[0].comparison = term_comparison::equal;
  }
  const auto rows = open_values(condition, values, true);
  while (rows->next())
    if (rows->is_comparable(0) && rows->text(0) == stored_term.value) return;
  refuse_value(condition);
}

void import_query::read_rows(const prevesk_dataset_data_type& data, const row_taker& take) {
  validate_source();
  std::vector<select_term> terms;
  statement_use use{.columns = {stored.date_time_field, stored.value_field}, .in_any_order = true};
  for (std::size_t i = 0; i < stored.conditions.size(); ++i) {
    const query_condition& condition = stored.conditions[i];
    terms.push_back(
        term(i, {condition.field_name, field_types[field_position(condition.field_name)]}, condition.value_text));
    use.sought.push_back({condition.field_name, condition.value_text});
  }
  const select_statement selection = statement(data, terms);
  std::unique_ptr<result_set> rows = engine.open(*this, selection, use);
  if (!take(*rows, false)) {
    use.in_any_order = false;
    rows = engine.open(*this, selection, use);
    take(*rows, true);
  }
  for (std::size_t i = 0; i < terms.size(); ++i) {
    if (drill_down || !rows->sought()[i].found)
      find_value(i, terms[i]);
    else
      trace_refresh(i);
  }
  rows.reset();
  if (!engine.is_up_to_date())
    throw query_engine_exception(stored.file_name + ": it changed while it was read. Run the query again.");
  engine.disconnect(*this);
}

query_report import_query::execute(const prevesk_dataset_data_type& data, point_list& points) {
  const fill_time begin = fill_time::now();
  row_points read(stored.average_duplicates, false);
  read_rows(data, [&](result_set& rows, bool in_order) {
    if (in_order) read = row_points(stored.average_duplicates, true);
    return read.take(rows);
  });
  query_report report = read.report();
  report.as_of.nanoseconds = std::max(begin.nanoseconds, engine.last_written().nanoseconds);
  if (stored.replace_existing) {
    points = std::move(read).points();
  } else {
    const point_list added = std::move(read).points();
    points.reserve(points.size() + added.size());
    for (const auto& point : added) points.push_back(point);
  }
  return report;
}

std::string in_words(const std::string& series, const import_query_descriptor& query, const query_report& report) {
  std::string line = series + ": " + shown_text(query.file_name);
  if (query.table_name != query.file_name && !query.table_name.empty())
    line += " [" + shown_text(query.table_name) + "]";
  if (report.rows == 0)
    return line + ", no rows found. Check the conditions, and that the table covers the time of the run.";
  line += ", " + counted(report.rows, "row") + ", " + counted(report.points, "point");
  if (report.without_moment > 0) line += ", " + counted(report.without_moment, "row") + " without a date";
  if (report.without_value > 0) line += ", " + counted(report.without_value, "row") + " without a value";
  return line;
}

bool operator==(const import_query& a, const import_query& b) {
  return a.stored == b.stored && a.source_kind == b.source_kind && a.tables == b.tables &&
         a.field_names == b.field_names && a.field_types == b.field_types && a.choices == b.choices &&
         a.drill_down == b.drill_down;
}

} // namespace vesk
