#include "query_tables.h"

#include "paradox_writer.h"

#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <sqlite3.h>
#include <stdexcept>
#include <string>

namespace vesk::bench {

namespace {

struct measurement {
  const char* station;
  int day; // days since 30 December 1899
  int hour;
  double value;
  char moment[24], digits[16]; // as texts
};

template <class Take>
void for_each_row(table_part part, Take take) {
  const std::chrono::sys_days origin = std::chrono::year(1899) / 12 / 30;
  std::uint64_t random = 1;
  measurement row{};
  for (std::size_t i = 0; i < part.rows; ++i) {
    row.station = stations[i / 2 % 4];
    const int hours = static_cast<int>(i / 8);
    row.day = part.first_day + hours / 24;
    row.hour = hours % 24;
    random = random * 6364136223846793005U + 1442695040888963407U;
    const auto noise = static_cast<double>(random >> 54) / 1024; // below 1
    row.value = std::round((12 + 8 * std::sin(row.day * 0.0172) + 2 * noise) * 100) / 100;
    const std::chrono::year_month_day date(origin + std::chrono::days(row.day));
    std::snprintf(row.moment, sizeof row.moment, "%04d-%02u-%02u %02d:00:00", static_cast<int>(date.year()),
                  static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()), row.hour);
    std::snprintf(row.digits, sizeof row.digits, "%.2f", row.value);
    take(row);
  }
}

} // namespace

void write_csv(const std::filesystem::path& file, table_part part) {
  std::ofstream out(file, std::ios::binary);
  out << "station,sampled,value\n";
  for_each_row(part,
               [&](const measurement& row) { out << row.station << ',' << row.moment << ',' << row.digits << '\n'; });
  if (!out.flush()) throw std::runtime_error("cannot write " + file.string());
}

void write_sqlite(const std::filesystem::path& file, table_part part) {
  std::filesystem::remove(file);
  sqlite3* database = nullptr;
  sqlite3_open(file.c_str(), &database);
  sqlite3_exec(database,
               "PRAGMA synchronous = OFF; CREATE TABLE measured (station TEXT, sampled DATETIME, value REAL); BEGIN",
               nullptr, nullptr, nullptr);
  sqlite3_stmt* insert = nullptr;
  sqlite3_prepare_v2(database, "INSERT INTO measured VALUES (?, ?, ?)", -1, &insert, nullptr);
  for_each_row(part, [&](const measurement& row) {
    sqlite3_bind_text(insert, 1, row.station, -1, SQLITE_STATIC);
    sqlite3_bind_text(insert, 2, row.moment, -1, SQLITE_STATIC);
    sqlite3_bind_double(insert, 3, row.value);
    sqlite3_step(insert);
    sqlite3_reset(insert);
  });
  sqlite3_finalize(insert);
  const bool good = sqlite3_exec(database, "COMMIT", nullptr, nullptr, nullptr) == SQLITE_OK;
  sqlite3_close(database);
  if (!good) throw std::runtime_error("cannot write " + file.string());
}

void write_sqlite_by_station(const std::filesystem::path& file, table_part part) {
  write_sqlite(file, part);
  sqlite3* database = nullptr;
  sqlite3_open(file.c_str(), &database);
  const bool good = sqlite3_exec(database,
                                 "PRAGMA synchronous = OFF; ALTER TABLE measured RENAME TO unordered;"
                                 "CREATE TABLE measured (station TEXT, sampled DATETIME, value REAL);"
                                 "INSERT INTO measured SELECT * FROM unordered ORDER BY station, rowid;"
                                 "DROP TABLE unordered; VACUUM",
                                 nullptr, nullptr, nullptr) == SQLITE_OK;
  sqlite3_close(database);
  if (!good) throw std::runtime_error("cannot write " + file.string());
}

void write_paradox(const std::filesystem::path& file, table_part part) {
  using enum paradox_writer::type;
  paradox_writer writer({{"station", alpha, 8}, {"sampled", timestamp}, {"value", number}});
  for_each_row(part, [&](const measurement& row) { writer.add({row.station, row.day + row.hour / 24.0, row.value}); });
  writer.save(file);
}

void write_dbf(const std::filesystem::path& file, table_part part) {
  struct field {
    const char* name;
    char type;
    char size, decimals;
  };
  constexpr field fields[] = {{"STATION", 'C', 8, 0}, {"SAMPLED", 'D', 8, 0}, {"VALUE", 'N', 8, 2}};
  const auto little_endian = [](std::size_t number, std::size_t size) {
    std::string bytes;
    for (; size > 0; --size, number >>= 8) bytes += static_cast<char>(number & 0xff);
    return bytes;
  };
  std::ofstream out(file, std::ios::binary);
  out << std::string("\x03\x69\x01\x01", 4) << little_endian(part.rows, 4) << little_endian(32 + 3 * 32 + 1, 2)
      << little_endian(25, 2) << std::string(20, '\0');
  for (const field& f : fields) {
    std::string description = f.name;
    description.resize(32);
    description[11] = f.type;
    description[16] = f.size;
    description[17] = f.decimals;
    out << description;
  }
  out << '\r';
  for_each_row(part, [&](const measurement& row) {
    char record[64];
    std::snprintf(record, sizeof record, " %-8s%.4s%.2s%.2s%8s", row.station, row.moment, row.moment + 5,
                  row.moment + 8, row.digits);
    out << record;
  });
  if (!(out << '\x1a').flush()) throw std::runtime_error("cannot write " + file.string());
}

} // namespace vesk::bench
