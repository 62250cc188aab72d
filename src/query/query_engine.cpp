#include "query/query_engine.h"

#include "platform/file_lookup.h"
#include "query/import_query.h"
#include "query/sources/open_table_source.h"
#include "query/sources/text/column_form.h"
#include "query/sources/text/date_text.h"
#include "query/sources/text/number_text.h"
#include "query/sqlite_cancel.h"
#include "query/value_text.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <sqlite3.h>
#include <utility>

namespace vesk {

namespace {

constexpr const char* table_name = "source"; // to SQLite

// Whatever fails in a source is a failure of the query.
[[noreturn]] void rethrow_as_query_exception(const std::exception_ptr& failure, const std::string& file) {
  try {
    std::rethrow_exception(failure);
  } catch (const query_exception&) {
    throw;
  } catch (const query_cancelled&) {
    throw;
  } catch (const std::exception& error) {
    throw query_engine_exception(file + ": " + error.what());
  }
}

} // namespace

// Texts ignore the case of letters in a file of several tables, as those of the Jet provider do.
result_set::result_set(std::shared_ptr<table_source> source, std::size_t table, const select_statement& statement,
                       const statement_use& use)
    : source_(std::move(source)), table_{*source_, table, source_->fields(table), statement.of_several},
      statement_text_(shown_text(statement)) {
  const auto position = [&](const std::string& name) {
    const auto found = std::find_if(table_.fields.begin(), table_.fields.end(),
                                    [&](const table_field& field) { return field.name == name; });
    if (found == table_.fields.end())
      throw table_source_exception(source_->file(), source_->tables()[table], name, "the table has no such field.");
    return static_cast<std::size_t>(found - table_.fields.begin());
  };
  const auto& moment = statement.moment_field;
  if (moment && !is_date_or_time(moment->type)) table_.moment_field = position(moment->name);
  // The file may have changed since its fields were read; SQLite would name the statement in its complaint.
  if (moment) position(moment->name);
  for (const select_term& term : statement.terms) position(term.field.name);
  table_.sought = use.sought;
  for (sought_value& wanted : table_.sought) wanted.position = position(wanted.field);
  if (statement.distinct)
    fields_ = {table_.fields[position(statement.distinct->name)]};
  else if (use.columns.empty())
    fields_ = table_.fields;
  else
    for (const std::string& column : use.columns) fields_.push_back(table_.fields[position(column)]);
  try {
    prepare(sqlite_text(statement, table_name, use.columns, use.in_any_order, use.most_rows));
  } catch (...) {
    sqlite3_finalize(statement_);
    sqlite3_close(database_);
    throw;
  }
}

void result_set::prepare(const sqlite_statement& printed) {
  constexpr int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX; // of one thread
  if (sqlite3_open_v2(":memory:", &database_, flags, nullptr) != SQLITE_OK)
    throw query_engine_exception("Cannot start SQLite.");
  let_cancel(database_);
  attach_table(database_, table_name, table_);
  if (sqlite3_prepare_v2(database_, printed.sql.c_str(), -1, &statement_, nullptr) != SQLITE_OK) fail();
  int parameter = 0;
  for (const bound_value& value : printed.values) {
    ++parameter;
    int state = SQLITE_OK;
    if (const auto* whole = std::get_if<std::int64_t>(&value))
      state = sqlite3_bind_int64(statement_, parameter, *whole);
    else if (const auto* number = std::get_if<double>(&value))
      state = sqlite3_bind_double(statement_, parameter, *number);
    else if (const auto* text = std::get_if<std::string>(&value))
      state = sqlite3_bind_text64(statement_, parameter, text->data(), text->size(), SQLITE_TRANSIENT, SQLITE_UTF8);
    if (state != SQLITE_OK) fail();
  }
}

result_set::~result_set() {
  sqlite3_finalize(statement_);
  sqlite3_close(database_);
}

void result_set::fail() const {
  stop_if_cancelled();
  if (table_.failure) rethrow_as_query_exception(table_.failure, source_->file());
  throw query_engine_exception(source_->file() + ": " + sqlite3_errmsg(database_) +
                               ". The statement was: " + statement_text_);
}

bool result_set::next() {
  const int state = sqlite3_step(statement_);
  if (state == SQLITE_ROW) return true;
  if (state != SQLITE_DONE) fail();
  return false;
}

bool result_set::is_missing(std::size_t field) const {
  const int type = sqlite3_column_type(statement_, static_cast<int>(field));
  if (type != SQLITE_TEXT) return type == SQLITE_NULL;
  const std::string mark = text(field);
  return is_blank(mark) || marks_missing(mark);
}

bool result_set::is_comparable(std::size_t field) const {
  const int type = sqlite3_column_type(statement_, static_cast<int>(field));
  const bool is_value = type == SQLITE_INTEGER || type == SQLITE_FLOAT;
  const double number = is_value ? sqlite3_column_double(statement_, static_cast<int>(field)) : 0;
  if (is_date_or_time(fields_[field].type)) return is_value && is_date_time_number(number);
  if (is_number(fields_[field].type)) return is_value && std::isfinite(number);
  return type != SQLITE_NULL && (type != SQLITE_TEXT || !is_blank(text(field)));
}

void result_set::refuse(std::size_t field, const std::string& text, const char* wanted) const {
  throw table_source_exception(source_->file(), source_->tables()[table_.table], fields_[field].name,
                               not_of_its_kind(text, wanted));
}

double result_set::date_and_time(std::size_t field) const {
  const int column = static_cast<int>(field);
  const int type = sqlite3_column_type(statement_, column);
  if (type == SQLITE_FLOAT || type == SQLITE_INTEGER) {
    const double serial = sqlite3_column_double(statement_, column);
    if (!is_date_time_number(serial)) refuse(field, text(field), "a date");
    return serial;
  }
  const auto moment = type == SQLITE_TEXT ? moment_literal(text(field)) : std::nullopt;
  if (!moment) refuse(field, text(field), "a date");
  return *moment;
}

std::optional<double> result_set::number(std::size_t field) const {
  const int column = static_cast<int>(field);
  switch (sqlite3_column_type(statement_, column)) {
  case SQLITE_NULL: return {};
  case SQLITE_TEXT: return plain_number(text(field));
  default: {
    const double number = sqlite3_column_double(statement_, column);
    return std::isfinite(number) ? std::optional(number) : std::nullopt;
  }
  }
}

std::string result_set::text(std::size_t field) const {
  const int column = static_cast<int>(field);
  switch (sqlite3_column_type(statement_, column)) {
  case SQLITE_INTEGER: return integer_text(sqlite3_column_int64(statement_, column), fields_[field].type);
  case SQLITE_FLOAT: return number_text(sqlite3_column_double(statement_, column), fields_[field].type);
  case SQLITE_NULL: return {};
  default: {
    const auto* bytes = static_cast<const char*>(sqlite3_column_blob(statement_, column));
    return {bytes ? bytes : "", static_cast<std::size_t>(sqlite3_column_bytes(statement_, column))};
  }
  }
}

std::shared_ptr<table_source> query_engine::source_of(const import_query& query) {
  switch (query.source_kind) {
  case source_unknown: throw query_engine_exception("Cannot execute query on dataset of unknown type");
  case source_one_table: return source_of(query.stored.table_name); // the file itself
  case source_several_tables: connect(query); return source_;
  default: throw query_engine_exception("Cannot determine type of dataset");
  }
}

std::unique_ptr<result_set> query_engine::open(const import_query& query, const select_statement& statement,
                                               const statement_use& use) {
  std::shared_ptr<table_source> source = source_of(query);
  const std::size_t table = source->find_table(statement.table);
  return std::unique_ptr<result_set>(new result_set(std::move(source), table, statement, use));
}

std::vector<table_field> query_engine::fields_of(const import_query& query) {
  const std::shared_ptr<table_source> source = source_of(query);
  return source->fields(source->find_table(query.stored.table_name));
}

void query_engine::take_connection(query_engine& other) {
  connection_ = std::exchange(other.connection_, {});
  source_ = std::exchange(other.source_, nullptr);
}

void query_engine::connect(const import_query& query) {
  try {
    source_of(query.stored.file_name);
  } catch (const query_engine_exception& error) {
    std::string cause = error.what();
    const std::string file = resolved(query.stored.file_name).string() + ": ";
    if (cause.starts_with(file)) cause.erase(0, file.size()); // it is named already
    throw query_engine_exception("Cannot connect to ADO datasource: '" + query.stored.file_name + "': " + cause,
                                 error.fault());
  }
}

void query_engine::disconnect(const import_query& query) {
  if (query.source_kind == source_several_tables && source_) source_->let_go();
}

std::vector<std::string> query_engine::list_tables(const import_query& query) {
  connect(query);
  std::vector<std::string> tables = source_->tables();
  disconnect(query);
  return tables;
}

std::uint8_t query_engine::kind_of(const std::string& file_name) const {
  return has_several_tables(resolved(file_name)) ? source_several_tables : source_one_table;
}

std::filesystem::path query_engine::resolved(const std::string& file_name) const {
  std::filesystem::path found = find_file(file_name, folder_);
  if (!found.empty()) return found;
  std::error_code unknown; // a folder or a pipe of this name, which opening reports
  found = folder_ / file_name;
  return std::filesystem::exists(found, unknown) ? found : std::filesystem::path(file_name);
}

std::shared_ptr<table_source> query_engine::source_of(const std::string& file_name) {
  std::error_code unknown;
  if (!std::filesystem::exists(resolved(file_name), unknown) && !unknown)
    throw query_engine_exception(file_name + ": no such file" +
                                     (std::filesystem::path(file_name).is_absolute()
                                          ? "."
                                          : ", neither in the folder of the data file nor in the current folder."),
                                 query_fault::missing);
  std::filesystem::path file = resolved(file_name);
  if (source_ && connection_.front().file == file && is_up_to_date()) return source_;
  source_.reset();
  connection_ = {state_of(file)};
  try {
    source_ = open_table_source(file);
  } catch (...) {
    rethrow_as_query_exception(std::current_exception(), file_name);
  }
  for (const std::string& companion : source_->companions()) connection_.push_back(state_of(companion));
  return source_;
}

query_engine::file_state query_engine::state_of(std::filesystem::path file) {
  file_state state{std::move(file), {}, 0};
  std::error_code missing; // opening reports the cause
  state.written = std::filesystem::last_write_time(state.file, missing);
  const std::uintmax_t size = std::filesystem::file_size(state.file, missing);
  if (missing || size == 0) return {std::move(state.file), {}, 0}; // a log that comes and goes says nothing
  state.size = size;
  return state;
}

fill_time query_engine::last_written() const {
  fill_time last;
  for (const file_state& one : connection_) {
    if (one.written == std::filesystem::file_time_type()) continue; // a companion that is not there
    const auto since_1970 = std::chrono::file_clock::to_sys(one.written).time_since_epoch();
    const std::int64_t written = std::chrono::duration_cast<std::chrono::nanoseconds>(since_1970).count();
    last.nanoseconds = std::max(last.nanoseconds, written);
  }
  return last;
}

bool query_engine::is_up_to_date() const {
  return std::all_of(connection_.begin(), connection_.end(),
                     [](const file_state& then) { return state_of(then.file) == then; });
}

} // namespace vesk
