// The table of the query benchmark in four formats, and the benchmark's question.
#pragma once

#include <cstddef>
#include <filesystem>

namespace vesk::bench {

// Four stations, hourly from 1 January 1998, at two depths: station, sampled, value. Values have two decimals. The rows
// are in order of time. In the dBASE table, which has no time of day, `sampled` is the date alone.
constexpr std::size_t row_count = 1'000'000, rows_per_day = 4 * 24 * 2;

// A part of the table: this number of rows, starting on a day counted from 30 December 1899. The tenth part includes
// the year in question.
struct table_part {
  std::size_t rows;
  int first_day;
};
constexpr table_part whole_table = {row_count, 35796}, tenth_of_table = {row_count / 10, 38353};

constexpr const char* stations[] = {"BARRETT", "HALIFAX", "OAKCITY", "WELDON"};

constexpr const char* asked_station = "OAKCITY";
constexpr int asked_year = 2005;
constexpr int first_day = 38353, last_day = 38717; // of the year in question, counted from 30 December 1899
constexpr std::size_t asked_rows = 365 * 24 * 2;   // of the station and year in question

// Replaces an existing file.
void write_csv(const std::filesystem::path& file, table_part part = whole_table);
void write_sqlite(const std::filesystem::path& file, table_part part = whole_table); // table "measured", no index
void write_sqlite_by_station(const std::filesystem::path& file, table_part part = whole_table); // in that order
void write_paradox(const std::filesystem::path& file, table_part part = whole_table);
void write_dbf(const std::filesystem::path& file, table_part part = whole_table);

} // namespace vesk::bench
