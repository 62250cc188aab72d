// A catalogue in memory, and one with two small models.
#pragma once

#include "dataset/catalogue.h"

#include <algorithm>
#include <map>
#include <string>

namespace vesk {

class memory_catalogue_store : public catalogue_store {
public:
  struct table {
    std::vector<std::string_view> columns;
    std::vector<catalogue_row> rows;
  };
  std::map<std::string, table, std::less<>> tables;

  std::vector<catalogue_row> read(std::string_view name, const std::vector<std::string_view>& columns) override {
    const auto found = tables.find(name);
    if (found == tables.end()) throw catalogue_exception("no table " + std::string(name));
    const table& from = found->second;
    std::vector<catalogue_row> result(from.rows.size());
    for (const std::string_view column : columns) {
      const auto position = std::find(from.columns.begin(), from.columns.end(), column) - from.columns.begin();
      for (std::size_t i = 0; i < result.size(); ++i)
        result[i].push_back(from.rows[i].at(static_cast<std::size_t>(position)));
    }
    return result;
  }
};

// Model 7 "River" comes first by Sort_key and has items of every kind, stored out of order; model 3 "Lake" has only one
// parameter, not even a segment type.
inline memory_catalogue_store small_catalogue() {
  memory_catalogue_store store;
  store.tables["models"] = {{"Model_id", "Model_name", "Library", "Sort_key"},
                            {{3, "Lake", "lake.dll", 2}, {7, "River", "river.dll", 1}}};
  store.tables["solution"] = {{"ID", "Solution"}, {{2, "Euler"}, {1, "Runge-Kutta"}}};
  store.tables["Parameters"] = {
      {"Model_id", "ISC_number", "Minimum", "Maximum", "Default", "Description", "Sort_key"},
      {{7, 12, 0, 9.5, 2, "Slope", 2}, {7, 11, 0, 1, 0.5, "Shade", 1}, {3, 11, 0, 1, 0, "Depth", 1}}};
  store.tables["Systems"] = {{"Model_id", "Model_system_id", "Description", "Sort_key"},
                             {{7, 22, "Oxygen", 2}, {7, 21, "Nitrate", 1}}};
  store.tables["Constants_groups"] = {{"Model_id", "Group_id", "Description", "Sort_key"},
                                      {{7, 41, "Global", 1}, {7, 42, "Light", 2}}};
  store.tables["Constants"] = {
      {"Group_id", "ISC_number", "Minimum", "Maximum", "Default", "Description", "Sort_key"},
      {{42, 51, 0, 1, 0.5, "Extinction", 1}, {41, 52, 0, 2, 1, "Rate", 2}, {41, 53, 0, 3, 1.5, "Theta", 1}}};
  store.tables["Time_functions"] = {{"Model_id", "ISC_number", "Description", "Sort_key"},
                                    {{7, 31, "Wind", 1}, {7, 32, "Air temperature", 2}}};
  store.tables["segment_types"] = {{"Model_id", "Vesk_segment_type_id", "Description", "Sort_key"},
                                   {{7, 6, "Sediment", 2}, {7, 5, "Surface water", 1}}};
  store.tables["output_control"] = {
      {"Model_Id", "ISC_number", "Description", "Units", "Short_Desc", "Csv_filename", "Sort_key"},
      {{7, 61, "Dissolved oxygen", "mg/L", "DO", "oxygen.csv", 1}}};
  return store;
}

} // namespace vesk
