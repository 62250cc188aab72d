// The statement of a stored query as a value, and the two texts that are printed from it: the one that the user is
// shown, and the one that SQLite executes.
//
//   SELECT *|DISTINCT field FROM table [WHERE (terms) [AND] (period)] [ORDER BY field]
//
// Two texts, since the shown one keeps the form of older database layers, which SQLite does not understand: names of
// fields are bare, an apostrophe inside a value is not doubled, and dates are #1/2/2000 3:00:00# or '1/2/2000,
// 3:00:00'.
#pragma once

#include "dataset/moment.h"
#include "query/sources/table_source.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace vesk {

// In the order of their numbers in a stored query.
enum class term_comparison : std::uint8_t { equal, less, less_or_equal, greater, greater_or_equal };
enum class term_conjunction : std::uint8_t { both, either }; // AND, OR; AND binds more tightly

// A field compared with a value.
struct select_term {
  table_field field;
  term_comparison comparison = term_comparison::equal;
  std::string value = {}; // as value_text shows it; one that cannot be compared with the field selects no row
  term_conjunction conjunction = term_conjunction::both; // with the term before; not used in the first one
};

struct select_period {
  moment_type first;
  std::optional<moment_type> last = {}; // included
};

struct select_statement {
  std::string table;
  bool of_several = false;                  // the file holds several tables
  std::optional<table_field> distinct = {}; // only the values of this field, each once and in their order
  std::vector<select_term> terms = {};
  std::optional<table_field> moment_field = {}; // the rows are in the order of its dates and times
  std::optional<select_period> period = {};     // of moment_field
};

// The text that the user is shown.
std::string shown_text(const select_statement& statement);

// The value of a parameter. Numbers are bound, since the way through a text would not be exact.
using bound_value = std::variant<std::int64_t, double, std::string>;

struct sqlite_statement {
  std::string sql;                 // with parameters ?1, ?2 and so on
  std::vector<bound_value> values; // of the parameters
};

// What SQLite executes over a table that it knows as `table`. `columns`: the names of the fields that are selected,
// none for all; `in_any_order`: the rows need not be in order; `most_rows`: of the first ones, none for all. Throws
// query_engine_exception for more terms than SQLite takes.
sqlite_statement sqlite_text(const select_statement& statement, std::string_view table,
                             const std::vector<std::string>& columns = {}, bool in_any_order = false,
                             std::optional<std::size_t> most_rows = {});

} // namespace vesk
