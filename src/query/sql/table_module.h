// A table of a source as a virtual table of SQLite.
#pragma once

#include "query/sources/table_source.h"

#include <exception>
#include <optional>
#include <string>
#include <vector>

struct sqlite3;

namespace vesk {

// A value, as the text that shows it, that is looked for in the rows which are read in any case.
struct sought_value {
  std::string field; // its name
  std::string text;
  std::size_t position = 0; // of the field in the table
  bool found = false;
};

// What the virtual table reads. It has to outlive the database.
struct module_table {
  table_source& source;
  std::size_t table;
  std::vector<table_field> fields;
  bool ignore_case; // whether texts compare without regard to the case of ASCII letters
  // The field whose values are moments, of any type; texts are the moments that they spell.
  std::optional<std::size_t> moment_field = {};
  std::vector<sought_value> sought = {}; // each is looked for until it is found
  std::exception_ptr failure = {};       // what the source has thrown, when a statement has failed by it
};

// Makes `table` known to the database under `name`. Dates and times are numbers in it, see table_value. Throws
// query_engine_exception.
void attach_table(sqlite3* database, const std::string& name, module_table& table);

} // namespace vesk
