// The numbers that the engine and the catalogue share.
#include "core/kinetics.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <map>

namespace reference_engine {
namespace {

// Rows of (number, value) in order of the number.
std::map<int, double> rows(sqlite3* catalogue, const std::string& sql, std::string_view library) {
  std::map<int, double> found;
  sqlite3_stmt* statement = nullptr;
  EXPECT_EQ(sqlite3_prepare_v2(catalogue, sql.c_str(), -1, &statement, nullptr), SQLITE_OK)
      << sqlite3_errmsg(catalogue);
  sqlite3_bind_text(statement, 1, library.data(), static_cast<int>(library.size()), SQLITE_STATIC);
  while (sqlite3_step(statement) == SQLITE_ROW)
    found[sqlite3_column_int(statement, 0)] = sqlite3_column_double(statement, 1);
  sqlite3_finalize(statement);
  return found;
}

// Default, minimum and maximum of a table's items are those of the engine.
void compare(sqlite3* catalogue, const std::string& table, const std::string& of_model, const ModelInfo& model,
             const std::vector<ValueInfo>& values) {
  const std::pair<const char*, double ValueInfo::*> columns[] = {
      {"\"Default\"", &ValueInfo::default_value}, {"Minimum", &ValueInfo::minimum}, {"Maximum", &ValueInfo::maximum}};
  for (const auto& [column, member] : columns) {
    std::map<int, double> known;
    for (const ValueInfo& value : values) known[value.isc] = value.*member;
    EXPECT_EQ(rows(catalogue, std::string("select ISC_number, ") + column + " from " + table + of_model, model.library),
              known)
        << column;
  }
}

std::map<int, double> numbers(const std::vector<int>& isc) {
  std::map<int, double> found;
  for (const int number : isc) found[number] = 0;
  return found;
}

TEST(Catalogue, HoldsWhatTheEngineKnows) {
  sqlite3* catalogue = nullptr;
  ASSERT_EQ(sqlite3_open_v2(CATALOGUE_FILE, &catalogue, SQLITE_OPEN_READONLY, nullptr), SQLITE_OK);
  const std::string of_model = " join models on models.Model_id = t.Model_id where Library = ?";
  EXPECT_EQ(rows(catalogue, "select Sort_key, 0 from models where Library <> ?", "").size(), known_models().size());
  for (const ModelInfo& model : known_models()) {
    SCOPED_TRACE(model.library);
    compare(catalogue, "Parameters t", of_model, model, model.parameters);
    compare(catalogue, "Constants c join Constants_groups t on t.Group_id = c.Group_id", of_model, model,
            model.constants);
    EXPECT_EQ(rows(catalogue, "select ISC_number, 0 from Time_functions t" + of_model, model.library),
              numbers(model.time_functions));
    EXPECT_EQ(rows(catalogue, "select ISC_number, 0 from output_control t" + of_model, model.library),
              numbers(model.outputs));
    const auto systems = rows(catalogue, "select Model_system_id, t.Sort_key from Systems t" + of_model, model.library);
    ASSERT_EQ(systems.size(), model.systems.size());
    for (const auto& [number, position] : systems) EXPECT_EQ(number, position); // the engine counts by position
  }
  sqlite3_close(catalogue);
}

} // namespace
} // namespace reference_engine
