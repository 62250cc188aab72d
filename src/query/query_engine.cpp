#include "query/query_engine.h"

#include "platform/file_lookup.h"
#include "query/import_query.h"
#include "query/sources/column_form.h"
#include "query/sources/date_text.h"
#include "query/sources/number_text.h"
#include "query/sources/open_table_source.h"
#include "query/sql/select_statement.h"
#include "query/value_text.h"

#include <algorithm>
#include <cmath>
#include <sqlite3.h>

namespace vesk {

namespace {

constexpr const char* table_name = "source";

// Whatever fails in a source is a failure of the query.
[[noreturn]] void rethrow_as_query_exception(const std::exception_ptr& failure, const std::string& file) {
  try {
    std::rethrow_exception(failure);
  } catch (const query_exception&) {
    throw;
  } catch (const std::exception& error) {
    throw query_engine_exception(file + ": " + error.what());
  }
}

} // namespace

result_set::result_set(std::shared_ptr<table_source> source, std::size_t table, bool ignore_case,
                       const std::string& sql, const statement_use& use)
    : source_(std::move(source)), table_{*source_, table, source_->fields(table), ignore_case}, sql_(sql) {
  statement_hints hints{.literals = use.literals, .in_any_order = use.in_any_order};
  for (const std::string& name : use.fields)
    for (std::size_t i = 0; i < table_.fields.size(); ++i)
      if (table_.fields[i].name == name) hints.columns.push_back(i);
  const translated_statement translated = translate_statement(sql, table_.fields, table_name, hints);
  for (const std::size_t field : translated.fields) fields_.push_back(table_.fields[field]);
  table_.moment_field = translated.moment_field;
  table_.sought = use.sought;
  try {
    prepare(translated);
  } catch (...) {
    sqlite3_finalize(statement_);
    sqlite3_close(database_);
    throw;
  }
}

void result_set::prepare(const translated_statement& translated) {
  constexpr int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX; // of one thread
  if (sqlite3_open_v2(":memory:", &database_, flags, nullptr) != SQLITE_OK)
    throw query_engine_exception("SQLite cannot be started.");
  attach_table(database_, table_name, table_);
  if (sqlite3_prepare_v2(database_, translated.sql.c_str(), -1, &statement_, nullptr) != SQLITE_OK) fail();
  int parameter = 0;
  for (const bound_value& value : translated.values) {
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
  if (table_.failure) rethrow_as_query_exception(table_.failure, source_->file());
  throw query_engine_exception(source_->file() + ": " + sqlite3_errmsg(database_) + ". The statement was: " + sql_);
}

std::size_t result_set::position(std::string_view field) const {
  for (std::size_t i = 0; i < fields_.size(); ++i)
    if (fields_[i].name == field) return i;
  throw table_source_exception(source_->file(), source_->tables()[table_.table], std::string(field),
                               "there is no such field.");
}

bool result_set::next() {
  const int state = sqlite3_step(statement_);
  if (state == SQLITE_ROW) return true;
  if (state != SQLITE_DONE) fail();
  return false;
}

bool result_set::has_found_all() const {
  return std::all_of(table_.sought.begin(), table_.sought.end(), [](const sought_value& s) { return s.found; });
}

bool result_set::is_missing(std::size_t field) const {
  const int type = sqlite3_column_type(statement_, static_cast<int>(field));
  if (type != SQLITE_TEXT) return type == SQLITE_NULL;
  const std::string mark = text(field);
  return mark.find_first_not_of(' ') == mark.npos || marks_missing(mark);
}

bool result_set::is_comparable(std::size_t field) const {
  const int type = sqlite3_column_type(statement_, static_cast<int>(field));
  const bool is_value = type == SQLITE_INTEGER || type == SQLITE_FLOAT;
  const double number = is_value ? sqlite3_column_double(statement_, static_cast<int>(field)) : 0;
  if (is_date_or_time(fields_[field].type)) return is_value && is_date_time_number(number);
  return !is_number(fields_[field].type) || (is_value && std::isfinite(number));
}

void result_set::refuse_value(std::size_t field, const char* wanted) const {
  throw table_source_exception(source_->file(), source_->tables()[table_.table], fields_[field].name,
                               not_of_its_kind(text(field), wanted));
}

double result_set::date_and_time(std::size_t field) const {
  const int column = static_cast<int>(field);
  const int type = sqlite3_column_type(statement_, column);
  if (type == SQLITE_FLOAT || type == SQLITE_INTEGER) {
    const double serial = sqlite3_column_double(statement_, column);
    if (!is_date_time_number(serial)) refuse_value(field, "a date");
    return serial;
  }
  const auto moment = type == SQLITE_TEXT ? moment_literal(text(field)) : std::nullopt;
  if (!moment) refuse_value(field, "a date");
  return *moment;
}

double result_set::floating_point(std::size_t field) const {
  const int column = static_cast<int>(field);
  const int type = sqlite3_column_type(statement_, column);
  if (type == SQLITE_FLOAT || type == SQLITE_INTEGER) return sqlite3_column_double(statement_, column);
  const auto number = type == SQLITE_TEXT ? plain_number(text(field)) : std::nullopt;
  if (!number) refuse_value(field, "a number");
  return *number;
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

std::unique_ptr<result_set> query_engine::open(const import_query& query, const std::string& sql,
                                               const statement_use& use) {
  if (query.source_kind == source_unknown)
    throw query_engine_exception("Cannot execute query on dataset of unknown type");
  if (query.source_kind != source_one_table && query.source_kind != source_several_tables)
    throw query_engine_exception("Cannot determine type of dataset");
  const std::string table = table_of_statement(sql);
  if (query.source_kind == source_several_tables) connect(query);
  std::shared_ptr<table_source> source = query.source_kind == source_one_table ? source_of(table) : source_;
  if (query.source_kind == source_one_table && source->tables().size() > 1)
    throw query_engine_exception(source->file() + ": the file holds several tables, but the ending of its name is that "
                                                  "of a single one; rename it to one of .sqlite, .xlsx, .ods or .mdb.");
  const std::size_t position = source->find_table(table);
  return std::unique_ptr<result_set>(
      new result_set(std::move(source), position, query.source_kind == source_several_tables, sql, use));
}

void query_engine::connect(const import_query& query) {
  try {
    source_of(query.stored.file_name);
  } catch (const query_engine_exception& error) {
    std::string cause = error.what();
    const std::string file = resolved(query.stored.file_name).string() + ": ";
    if (cause.starts_with(file)) cause.erase(0, file.size()); // it is named already
    throw query_engine_exception("Cannot connect to ADO datasource: '" + query.stored.file_name + "': " + cause);
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
  return found.empty() ? std::filesystem::path(file_name) : found;
}

std::shared_ptr<table_source> query_engine::source_of(const std::string& file_name) {
  std::error_code unknown;
  if (!std::filesystem::exists(resolved(file_name), unknown) && !unknown)
    throw query_engine_exception(file_name + ": there is no such file" +
                                 (std::filesystem::path(file_name).is_absolute()
                                      ? "."
                                      : ", neither in the folder of the data file nor in the current one."));
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
  std::error_code missing; // opening tells
  state.written = std::filesystem::last_write_time(state.file, missing);
  const std::uintmax_t size = std::filesystem::file_size(state.file, missing);
  if (missing || size == 0) return {std::move(state.file), {}, 0}; // a log that comes and goes says nothing
  state.size = size;
  return state;
}

bool query_engine::is_up_to_date() const {
  return std::all_of(connection_.begin(), connection_.end(),
                     [](const file_state& then) { return state_of(then.file) == then; });
}

} // namespace vesk
