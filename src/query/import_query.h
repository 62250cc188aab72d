// A stored query being executed: its stored members, and what its source adds.
#pragma once

#include "dataset/dataset.h"
#include "query/query_engine.h"
#include "query/row_points.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace vesk {

// "Time function: flow: gauges.csv, 365 rows, 364 points, 1 row without a value": what came of the query of a series,
// and what to look at where it found no rows.
std::string in_words(const std::string& series, const import_query_descriptor& query, const query_report& report);

// As many items and rows as a dialog lists; how many there are in all is counted.
inline constexpr std::size_t most_listed = 10'000;

// Can be copied and assigned; a copy opens its source anew.
class import_query {
public:
  // Its texts become UTF-8; see source_file.h.
  explicit import_query(import_query_descriptor query = {}, const std::filesystem::path& data_folder = {});

  // The members of a condition that are not stored.
  struct condition_choice {
    std::size_t field_index = 0;      // of its field in field_names; set by validation
    std::int32_t selected_value = -1; // position of its value in `values`; -1: none
    // The distinct values of its field, the first `most_listed` of them; behind them the condition's own value where it
    // is not among these.
    std::vector<std::string> values;
    std::uint64_t value_count = 0; // of all distinct values

    friend bool operator==(const condition_choice&, const condition_choice&) = default;
  };

  import_query_descriptor stored;
  query_engine engine;
  std::uint8_t source_kind = source_unknown;
  std::vector<std::string> tables; // of kind 2
  std::vector<std::string> field_names;
  std::vector<field_type> field_types;
  std::vector<condition_choice> choices; // one for each condition
  bool drill_down = false;               // each condition's values are those that the others leave

  // Each of these throws query_engine_exception when the source cannot be read, and all that read it query_cancelled.
  void set_file(const std::string& name);
  void set_table(const std::string& name);

  // The table as the SQL names it: between apostrophes, or between brackets for a source of several tables.
  std::string quoted_table() const;

  // Holds the query against its source as it is now. Throws query_validation_exception.
  void validate();

  // The SQL of the query, as it is shown to the user. Empty when a condition has no value. After validation.
  std::string build_sql(const prevesk_dataset_data_type& data) const;

  // Reads the values of a condition's field and finds its own among them; with drill_down a value that was chosen
  // stays so. No field, or one that the table has not: no values.
  void refresh_values(std::size_t condition);

  // Reads all that a dialog lists: the tables, the fields, and the values of the conditions, as far as the query names
  // a file and a table. What the query lacks is no error.
  void read_lists();

  // Conditions, with what belongs to them in `choices`. Nothing is read. A condition without a field or a value is no
  // error before the query is executed.
  void insert_condition();                                     // at the end: the first field, AND, "=", no value
  void remove_condition(std::size_t condition);                //
  void clear_conditions();                                     //
  void choose_field(std::size_t condition, std::size_t field); // of field_names; the value is none then
  void choose_value(std::size_t condition, std::size_t value); // of its `values`
  void enter_value(std::size_t condition, std::string text);   // refresh_values finds out whether the field has it

  // Opens the statement of `build_sql`. Throws query_validation_exception when a condition has no value.
  std::unique_ptr<result_set> open_rows(const prevesk_dataset_data_type& data, const statement_use& use = {});

  // Fills `points` from the source, as it is now. The table is read once if its rows are about in order of time; the
  // values of the conditions are looked for on the way, and the lists in `choices` stay as they are. After a failure
  // the points are unchanged. Throws query_exception.
  query_report execute(const prevesk_dataset_data_type& data, point_list& points);

  // Reads the rows that the query selects, as they are now: date and time in the first field, value in the second. They
  // come in any order; when `take`, shown all of them, answers false, once more in order of time. For values that need
  // not be numbers. Throws query_exception.
  using row_taker = std::function<bool(result_set& rows, bool in_order)>;
  void read_rows(const prevesk_dataset_data_type& data, const row_taker& take);

  // Whether the two would do the same.
  friend bool operator==(const import_query& a, const import_query& b);

private:
  void reopen_source();                                       // as it is now
  void validate_source();                                     // file, table, and the fields of moments and values
  std::size_t field_position(const std::string& field) const; // throws query_validation_exception
  [[noreturn]] void refuse_value(std::size_t condition) const;

  bool has_value(std::size_t condition) const; // chosen
  const std::string& chosen_value(std::size_t condition) const;
  select_term term(std::size_t condition, const table_field& field, const std::string& value) const;
  select_term chosen_term(std::size_t condition) const;
  select_statement statement(const prevesk_dataset_data_type& data, std::vector<select_term> terms) const;
  std::optional<select_statement> shown_statement(const prevesk_dataset_data_type& data) const;
  select_statement values_statement(std::size_t condition) const;

  std::unique_ptr<result_set> open_values(std::size_t condition, const select_statement& statement, bool in_any_order);
  void find_value(std::size_t condition, const select_term& stored_term);
  void trace_refresh(std::size_t condition) const;
};

} // namespace vesk
