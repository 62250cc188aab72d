#include "query/sql/table_module.h"

#include "query/sources/text/column_form.h"
#include "query/sources/text/date_text.h"
#include "query/sqlite_names.h"
#include "query/value_text.h"

#include <charconv>
#include <cstring>
#include <sqlite3.h>

namespace vesk {

namespace {

struct attached_table : sqlite3_vtab {
  module_table* what;
};

struct attached_cursor : sqlite3_vtab_cursor {
  std::unique_ptr<row_cursor> rows;
  bool at_end = true;
  // The last text that was taken for a moment, by each condition on it, and its position.
  std::uint64_t moment_row = 0;
  std::size_t moment_field = 0;
  table_value moment;
};

module_table& table_of(sqlite3_vtab_cursor* cursor) {
  return *static_cast<attached_table*>(cursor->pVtab)->what;
}

// Runs `work`; what it throws is kept for the caller that runs the statement.
template <class Work>
int guarded(sqlite3_vtab* table, Work work) noexcept {
  try {
    work();
    return SQLITE_OK;
  } catch (const std::bad_alloc&) {
    return SQLITE_NOMEM;
  } catch (...) {
    static_cast<attached_table*>(table)->what->failure = std::current_exception();
    return SQLITE_ERROR;
  }
}

// The moment that a text means; nothing when it says that there is none. `field`: named when it means nothing.
std::optional<double> moment_of_text(std::string_view text, const module_table& table, const std::string& field) {
  if (is_blank(text) || marks_missing(text)) return {};
  if (const auto moment = moment_literal(text)) return moment;
  throw table_source_exception(table.source.file(), table.source.tables()[table.table], field,
                               not_of_its_kind(text, "a date"));
}

// A value of the present row; a text in a column of moments as the moment that it means.
table_value value_of(attached_cursor& at, const module_table& table, std::size_t field) {
  const bool is_moment = is_date_or_time(table.fields[field].type) || table.moment_field == field;
  if (is_moment && at.moment_row == at.rows->row_number() && at.moment_field == field) return at.moment;
  const table_value value = at.rows->value(field);
  if (!is_moment || value.is_null()) return value;
  if (value.kind() != value_kind::text) {
    if (table.moment_field != field || is_date_time_number(value.number())) return value;
    throw table_source_exception(table.source.file(), table.source.tables()[table.table], table.fields[field].name,
                                 not_of_its_kind(value_text(value, table.fields[field].type), "a date"));
  }
  const auto moment = moment_of_text(value.text(), table, table.fields[field].name);
  at.moment = moment ? table_value::of_date_time(*moment) : table_value();
  at.moment_row = at.rows->row_number();
  at.moment_field = field;
  return at.moment;
}

void look_for(std::vector<sought_value>& sought, attached_cursor& at, const module_table& table) {
  for (sought_value& wanted : sought) {
    if (wanted.found) continue;
    const field_type type = table.fields[wanted.position].type;
    const bool is_date = is_date_or_time(type);
    const table_value value = is_date ? value_of(at, table, wanted.position) : at.rows->value(wanted.position);
    const bool is_text = value.kind() == value_kind::text;
    if (value.is_null() || (is_text && (is_date || is_number(type) || is_blank(value.text()))))
      continue; // nothing to compare with
    wanted.found = is_text ? value.text() == wanted.text : value_text(value, type) == wanted.text;
  }
}

int connect_table(sqlite3* database, void* what, int, const char* const*, sqlite3_vtab** table, char**) try {
  module_table& described = *static_cast<module_table*>(what);
  std::string declaration = "CREATE TABLE t(";
  for (std::size_t i = 0; i < described.fields.size(); ++i) {
    declaration += (i ? "," : "") + sql_quoted(described.fields[i].name);
    if (described.ignore_case && !is_number(described.fields[i].type)) declaration += " COLLATE NOCASE";
  }
  const int state = sqlite3_declare_vtab(database, (declaration + ")").c_str());
  if (state != SQLITE_OK) return state;
  auto* attached = new (std::nothrow) attached_table{};
  if (!attached) return SQLITE_NOMEM;
  attached->what = &described;
  *table = attached;
  return SQLITE_OK;
} catch (const std::bad_alloc&) {
  return SQLITE_NOMEM;
}

int disconnect_table(sqlite3_vtab* table) {
  delete static_cast<attached_table*>(table);
  return SQLITE_OK;
}

// What a constraint of SQLite can be to a cursor: its character in the plan, or '\0'.
char use_of(const module_table& table, const sqlite3_index_info& info, int i) {
  const auto& constraint = info.aConstraint[i];
  if (!constraint.usable || constraint.iColumn < 0) return '\0';
  const field_type type = table.fields[static_cast<std::size_t>(constraint.iColumn)].type;
  const bool number = is_number(type) || is_date_or_time(type);
  switch (constraint.op) {
  case SQLITE_INDEX_CONSTRAINT_EQ: return number ? '\0' : '=';
  case SQLITE_INDEX_CONSTRAINT_GT:
  case SQLITE_INDEX_CONSTRAINT_GE: return number ? '>' : '\0';
  case SQLITE_INDEX_CONSTRAINT_LT: // a number that is too large to be a date must not pass unseen
  case SQLITE_INDEX_CONSTRAINT_LE:
    return number && table.moment_field != static_cast<std::size_t>(constraint.iColumn) ? '<' : '\0';
  default: return '\0';
  }
}

// The plan is a text of uses and columns, such as "=0,>2,<2,". SQLite tests the conditions itself, too, but for texts
// in fields that have no other values: reading and comparing them once more is a tenth of a query's time.
int plan(sqlite3_vtab* table, sqlite3_index_info* info) try {
  const module_table& what = *static_cast<attached_table*>(table)->what;
  std::string uses;
  int arguments = 0;
  for (int i = 0; i < info->nConstraint; ++i) {
    const char use = use_of(what, *info, i);
    if (use == '\0') continue;
    const int column = info->aConstraint[i].iColumn;
    info->aConstraintUsage[i].argvIndex = ++arguments;
    info->aConstraintUsage[i].omit =
        use == '=' && what.fields[static_cast<std::size_t>(column)].type == field_type::string;
    uses += use + std::to_string(column) + ',';
  }
  info->idxStr = sqlite3_mprintf("%s", uses.c_str());
  if (!info->idxStr) return SQLITE_NOMEM;
  info->needToFreeIdxStr = 1;
  // The same whatever is tested: each use passes over the whole table. Cheaper ones would tempt SQLite to one use for
  // each side of an OR, with row numbers that must agree between them and do not where a source leaves rows out.
  info->estimatedCost = 1e6;
  return SQLITE_OK;
} catch (const std::bad_alloc&) {
  return SQLITE_NOMEM;
}

int open_cursor(sqlite3_vtab*, sqlite3_vtab_cursor** cursor) {
  *cursor = new (std::nothrow) attached_cursor{};
  return *cursor ? SQLITE_OK : SQLITE_NOMEM;
}

int close_cursor(sqlite3_vtab_cursor* cursor) {
  delete static_cast<attached_cursor*>(cursor);
  return SQLITE_OK;
}

int next_row(sqlite3_vtab_cursor* cursor) {
  auto& at = *static_cast<attached_cursor*>(cursor);
  module_table& table = table_of(cursor);
  return guarded(cursor->pVtab, [&] {
    at.at_end = !at.rows->next();
    if (!at.at_end && !table.sought.empty()) look_for(table.sought, at, table);
  });
}

row_filter filter_of(char use, std::size_t field, sqlite3_value* value, bool ignore_case) {
  row_filter filter;
  filter.field = field;
  if (use == '=') {
    filter.kind = row_filter::test::equal_text;
    if (const auto* text = reinterpret_cast<const char*>(sqlite3_value_text(value)))
      filter.text.assign(text, static_cast<std::size_t>(sqlite3_value_bytes(value)));
    filter.ignore_case = ignore_case;
  } else {
    filter.kind = use == '>' ? row_filter::test::at_least : row_filter::test::at_most;
    filter.number = sqlite3_value_double(value);
  }
  return filter;
}

int start_rows(sqlite3_vtab_cursor* cursor, int, const char* uses, int count, sqlite3_value** values) {
  auto& at = *static_cast<attached_cursor*>(cursor);
  module_table& table = table_of(cursor);
  const int state = guarded(cursor->pVtab, [&] {
    std::vector<row_filter> filters;
    for (int i = 0; i < count; ++i) {
      const char use = *uses++;
      std::size_t field = 0;
      uses = std::from_chars(uses, uses + std::strlen(uses), field).ptr + 1;
      const int type = sqlite3_value_type(values[i]);
      const bool fits = use == '=' ? type == SQLITE_TEXT : type == SQLITE_FLOAT || type == SQLITE_INTEGER;
      if (fits) filters.push_back(filter_of(use, field, values[i], table.ignore_case));
    }
    at.rows = table.source.rows(table.table, std::move(filters));
  });
  return state == SQLITE_OK ? next_row(cursor) : state;
}

int is_at_end(sqlite3_vtab_cursor* cursor) {
  return static_cast<attached_cursor*>(cursor)->at_end;
}

int give_value(sqlite3_vtab_cursor* cursor, sqlite3_context* context, int column) {
  auto& at = *static_cast<attached_cursor*>(cursor);
  return guarded(cursor->pVtab, [&] {
    const auto field = static_cast<std::size_t>(column);
    const table_value value = value_of(at, table_of(cursor), field);
    switch (value.kind()) {
    case value_kind::null: return sqlite3_result_null(context);
    case value_kind::integer: return sqlite3_result_int64(context, value.integer());
    case value_kind::number:
    case value_kind::date_time: return sqlite3_result_double(context, value.number());
    case value_kind::text:
      return sqlite3_result_text64(context, value.text().data(), value.text().size(), SQLITE_TRANSIENT, SQLITE_UTF8);
    }
  });
}

int give_row_number(sqlite3_vtab_cursor* cursor, sqlite3_int64* number) {
  *number = static_cast<sqlite3_int64>(static_cast<attached_cursor*>(cursor)->rows->row_number());
  return SQLITE_OK;
}

sqlite3_module make_module() {
  sqlite3_module made{};
  made.xConnect = connect_table; // and no xCreate: the module is the table
  made.xBestIndex = plan;
  made.xDisconnect = disconnect_table;
  made.xOpen = open_cursor;
  made.xClose = close_cursor;
  made.xFilter = start_rows;
  made.xNext = next_row;
  made.xEof = is_at_end;
  made.xColumn = give_value;
  made.xRowid = give_row_number;
  return made;
}

const sqlite3_module module_of_tables = make_module();

} // namespace

void attach_table(sqlite3* database, const std::string& name, module_table& table) {
  constexpr std::size_t most_fields = 2000; // of SQLite
  if (table.fields.size() > most_fields)
    throw table_source_exception(table.source.file(), table.source.tables()[table.table], "",
                                 "it has " + std::to_string(table.fields.size()) + " fields; at most " +
                                     std::to_string(most_fields) + " can be read.");
  if (sqlite3_create_module_v2(database, name.c_str(), &module_of_tables, &table, nullptr) != SQLITE_OK)
    throw query_engine_exception(std::string("Cannot pass a table to SQLite: ") + sqlite3_errmsg(database) + ".");
}

} // namespace vesk
