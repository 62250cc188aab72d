// The SQL of stored queries, and what SQLite is given in its place.
//
// The text is the one that the user is shown:
//
//   SELECT *|DISTINCT field FROM table [WHERE terms] [ORDER BY field]
//
// where a table stands between apostrophes or brackets, a term is a field, a comparison and a literal, and terms are
// linked by AND and OR and put into groups by parentheses. It cannot be left to SQLite as it is: fields stand in it
// with their blanks and as words of the language, dates are #1/2/2000 3:00:00# or '1/2/2000, 3:00:00' and compare as
// moments, and an apostrophe inside a literal is not doubled. So what a word means is told by the table's fields, and
// the end of a literal by what its maker knows of it, or else by what has to follow it.
// Rows are put in order of time, so the field that they are put in order by is one of moments, whatever its type.
#pragma once

#include "query/sources/table_source.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace vesk {

// The name of the table in a statement, without its marks. Throws query_engine_exception when there is none.
std::string table_of_statement(std::string_view sql);

// What a parameter of a statement stands for. A number is bound, since the way through a text would not be exact.
using bound_value = std::variant<std::int64_t, double, std::string>;

struct translated_statement {
  std::string sql;                         // for SQLite, with parameters ?1, ?2 and so on
  std::vector<bound_value> values;         // of the parameters
  std::vector<std::size_t> fields;         // positions in the table of the columns of the result
  std::optional<std::size_t> moment_field; // whose texts have to be taken for the moments that they mean
};

// What the maker of a statement knows of it.
struct statement_hints {
  std::vector<std::size_t> columns = {};  // in place of all fields (*) only these are selected, unless it is empty
  std::vector<std::string> literals = {}; // the literals of the first terms, so far as they are known
  bool in_any_order = false;              // the rows need not be put in order
};

// The statement over a table with these fields, which SQLite knows as `table`. Throws query_engine_exception with the
// statement in its text.
translated_statement translate_statement(std::string_view sql, const std::vector<table_field>& fields,
                                         std::string_view table, const statement_hints& hints = {});

// The number that a literal means as a moment (a date, a time, or both), and nothing if it is none. Dates are
// month/day/year, year-month-day or with the month's name.
std::optional<double> moment_literal(std::string_view text);

// The quote around a literal for a field of this type; '\0' for none. `several_tables`: of a source that is named
// between brackets.
char literal_quote(field_type type, bool several_tables);

bool is_date_or_time(field_type type);
bool is_number(field_type type); // a flag counts as one

} // namespace vesk
