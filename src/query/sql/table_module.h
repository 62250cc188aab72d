// A table of a source as a virtual table of SQLite.
#pragma once

#include "query/sources/table_source.h"

#include <exception>
#include <string>

struct sqlite3;

namespace vesk {

// What the virtual table reads. It has to outlive the database.
struct module_table {
  table_source& source;
  std::size_t table;
  std::vector<table_field> fields;
  bool ignore_case;                // whether texts compare without regard to the case of ASCII letters
  std::string moment_field = {};   // whose texts are moments, for messages
  std::exception_ptr failure = {}; // what the source has thrown, when a statement has failed by it
};

// Makes `table` known to the database under `name`, and the function that a translated statement may call. Dates and
// times are numbers in it, see table_value. Throws query_engine_exception.
void attach_table(sqlite3* database, const std::string& name, module_table& table);

} // namespace vesk
