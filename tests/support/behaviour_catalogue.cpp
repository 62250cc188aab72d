#include "behaviour_catalogue.h"

#include <sqlite3.h>

#include <fstream>
#include <sstream>
#include <stdexcept>

namespace vesk {

const std::initializer_list<const char*> behaviours{
    "says run", "returns", "throws", "waits for cancel", "reports", "shows a grid", "throws after a cancel",
    // append only: the position in this list is the model's number
    "shows a short grid", "shows a short grid inverted", "crashes", "overflows its stack", "aborts", "calls exit",
    "ends its thread", "throws on its own thread", "writes results", "publishes results", "writes into its results",
    "writes cancelled results"};

unsigned model_of(const std::string& behaviour) {
  unsigned model = 1;
  for (const char* name : behaviours) {
    if (name == behaviour) return model;
    ++model;
  }
  throw std::invalid_argument("no behaviour " + behaviour);
}

void write_behaviour_catalogue(const std::filesystem::path& folder) {
  std::ostringstream sql;
  sql << "PRAGMA synchronous = OFF;"; // nothing here needs to survive a crash
  sql << std::ifstream(CATALOGUE_SCHEMA).rdbuf();
  for (const char* name : behaviours) {
    const unsigned model = model_of(name);
    sql << "INSERT INTO models VALUES (" << model << ", 'Model', '" << name << "', 0, " << model << ");"
        << "INSERT INTO Systems VALUES (" << model << ", 1, " << model << ", 'Tracer', 1);"
        << "INSERT INTO Parameters VALUES (NULL, " << model << ", 1, 0, 9, 1, 'One', 1), (NULL, " << model
        << ", 2, 0, 9, 1, 'Two', 2);";
  }
  sqlite3* database = nullptr;
  sqlite3_open((folder / "catalogue.sqlite").c_str(), &database);
  const bool good = sqlite3_exec(database, sql.str().c_str(), nullptr, nullptr, nullptr) == SQLITE_OK;
  const std::string cause = sqlite3_errmsg(database);
  sqlite3_close(database);
  if (!good) throw std::runtime_error(cause);
}

} // namespace vesk
