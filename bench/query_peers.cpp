#include "query_peers.h"

#include "query/sources/text/date_text.h"
#include "query_tables.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <memory>
#include <sqlite3.h>
#include <stdexcept>
#include <string>

extern "C" {
#include <paradox.h>
}

namespace vesk::bench {

namespace {

[[noreturn]] void fail(const std::string& what) {
  throw std::runtime_error("a peer failed: " + what);
}

// `value`: the SQL name of the number. Dates are texts that sort chronologically.
std::string select_from(const std::string& table, const std::string& value, bool with_time) {
  const std::string year = std::to_string(asked_year);
  const std::string from = year + "-01-01" + (with_time ? " 00:00:00" : "");
  const std::string to = year + "-12-31" + (with_time ? " 23:00:00" : "");
  return "SELECT sampled, AVG(" + value + ") AS mean FROM " + table + " WHERE station = '" + asked_station +
         "' AND sampled >= '" + from + "' AND sampled <= '" + to + "' GROUP BY sampled ORDER BY sampled";
}

mean_value mean_of(std::string_view moment, double value) {
  const auto date = read_date(moment, date_form::iso);
  if (!date) fail("no date: " + std::string(moment));
  return {date->serial, value};
}

// The lines "date,number" printed by a command.
mean_values lines_of(const std::string& command) {
  const std::unique_ptr<FILE, int (*)(FILE*)> out(popen(command.c_str(), "r"), pclose);
  if (!out) fail(command);
  mean_values means;
  char line[256];
  while (std::fgets(line, sizeof line, out.get())) {
    const std::string_view text(line, std::strlen(line));
    const std::size_t comma = text.find(',');
    double value = 0;
    if (comma == text.npos ||
        std::from_chars(text.data() + comma + 1, text.data() + text.size(), value).ec != std::errc())
      continue; // the header
    std::string_view moment = text.substr(0, comma);
    if (moment.starts_with('"')) moment = moment.substr(1, moment.size() - 2);
    means.push_back(mean_of(moment, value));
  }
  return means;
}

} // namespace

mean_values by_sqlite_library(const std::filesystem::path& file) {
  sqlite3* database = nullptr;
  sqlite3_stmt* select = nullptr;
  const std::string sql = select_from("measured", "value", true);
  if (sqlite3_open_v2(file.c_str(), &database, SQLITE_OPEN_READONLY, nullptr) != SQLITE_OK ||
      sqlite3_prepare_v2(database, sql.c_str(), -1, &select, nullptr) != SQLITE_OK)
    fail(sqlite3_errmsg(database));
  mean_values means;
  while (sqlite3_step(select) == SQLITE_ROW) {
    const auto* const moment = reinterpret_cast<const char*>(sqlite3_column_text(select, 0));
    means.push_back(
        mean_of({moment, static_cast<std::size_t>(sqlite3_column_bytes(select, 0))}, sqlite3_column_double(select, 1)));
  }
  sqlite3_finalize(select);
  sqlite3_close(database);
  return means;
}

mean_values by_sqlite_shell(const std::filesystem::path& csv) {
  return lines_of("sqlite3 -csv :memory: '.import \"" + csv.string() + "\" measured' \"" +
                  select_from("measured", "value", true) + "\"");
}

mean_values by_gdal(const std::filesystem::path& table) {
  const bool is_csv = table.extension() == ".csv";
  const std::string value = is_csv ? "CAST(value AS REAL)" : "value";
  return lines_of("ogr2ogr -f CSV /vsistdout/ '" + table.string() + "' -dialect SQLITE -sql \"" +
                  select_from(table.stem().string(), value, is_csv) + "\"");
}

mean_values by_pxlib(const std::filesystem::path& table) {
  const std::unique_ptr<pxdoc_t, void (*)(pxdoc_t*)> document(PX_new(), PX_delete);
  if (PX_open_file(document.get(), table.c_str()) < 0) fail("pxlib cannot open " + table.string());
  constexpr int station_size = 8, moment_at = 8, value_at = 16, record_size = 24;
  const int records = PX_get_num_records(document.get());
  std::vector<char> record(record_size);
  mean_values found;
  for (int i = 0; i < records; ++i) {
    pxdatablockinfo_t block;
    int deleted = 0;
    if (!PX_get_record2(document.get(), i, record.data(), &deleted, &block)) fail("pxlib cannot read a record");
    if (std::strncmp(record.data(), asked_station, station_size) != 0) continue;
    double milliseconds = 0, value = 0;
    PX_get_data_double(document.get(), record.data() + moment_at, 8, &milliseconds);
    const double moment = milliseconds / 86400000.0 - 693594;
    if (moment < first_day || moment >= last_day + 1) continue;
    PX_get_data_double(document.get(), record.data() + value_at, 8, &value);
    found.push_back({moment, value});
  }
  PX_close(document.get());
  std::stable_sort(found.begin(), found.end(), [](const auto& a, const auto& b) { return a.moment < b.moment; });
  mean_values means;
  for (std::size_t i = 0; i < found.size();) {
    double sum = 0;
    std::size_t next = i;
    for (; next < found.size() && found[next].moment == found[i].moment; ++next) sum += found[next].value;
    means.push_back({found[i].moment, sum / static_cast<double>(next - i)});
    i = next;
  }
  return means;
}

} // namespace vesk::bench
