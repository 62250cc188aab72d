// A stored query over 1,000,000 rows, one station in one year with values at the same time averaged, against other
// programs and libraries that compute the same from the same file.
#include "query/import_query.h"
#include "query_peers.h"
#include "query_tables.h"
#include "ratio_table.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <sys/resource.h>

namespace vesk::bench {
namespace {

namespace fs = std::filesystem;

struct peer {
  const char* name;
  mean_values (*answer)(const fs::path& file);
};

struct format {
  const char* name;
  const char* file;
  void (*write)(const fs::path& file, table_part part);
  std::size_t points; // of the answer
  std::vector<peer> peers;
};

const format formats[] = {
    {"sqlite", "rows.sqlite", write_sqlite, 365 * 24, {{"the SQLite library", by_sqlite_library}}},
    {"sqlite by station",
     "stations.sqlite",
     write_sqlite_by_station,
     365 * 24,
     {{"the SQLite library", by_sqlite_library}}},
    {"csv", "rows.csv", write_csv, 365 * 24, {{"the SQLite shell", by_sqlite_shell}, {"GDAL", by_gdal}}},
    {"dbf", "rows.dbf", write_dbf, 365, {{"GDAL", by_gdal}}},
    {"paradox", "rows.db", write_paradox, 365 * 24, {{"pxlib", by_pxlib}}},
};

fs::path folder;

// A query on the file for the days from `first` to `last`.
import_query_descriptor query_on(const format& source, prevesk_dataset_data_type& model, int first, int last) {
  import_query_descriptor query;
  query.file_name = source.file;
  if (source.peers[0].answer == by_sqlite_library) query.table_name = "measured";
  const bool is_dbase = source.write == write_dbf;
  query.date_time_field = is_dbase ? "SAMPLED" : "sampled";
  query.value_field = is_dbase ? "VALUE" : "value";
  model.seed_date = first;
  model.seed_time = 0;
  model.time_steps.points = {{moment_type::from_date_time(first), 1},
                             {moment_type::from_date_time(last + 23 / 24.0), 1}};
  return query;
}

// Opens the file, checks the query against it, and reads the points of a station's year, all of it in each call.
query_report execute(const format& source, point_list& points) {
  prevesk_dataset_data_type model;
  import_query_descriptor query = query_on(source, model, first_day, last_day);
  query.conditions = {{source.write == write_dbf ? "STATION" : "station", 0, 0, asked_station}};
  return import_query(query, folder).execute(model, points);
}

void check(const format& source) {
  point_list points;
  if (execute(source, points).rows != asked_rows || points.size() != source.points)
    throw std::runtime_error(std::string(source.file) + ": the query gives the wrong rows");
  for (const peer& other : source.peers) {
    const mean_values means = other.answer(folder / source.file);
    bool same = means.size() == points.size();
    for (std::size_t i = 0; same && i < means.size(); ++i)
      same = moment_type::from_date_time(means[i].moment) == moment_type(points[i]) &&
             std::abs(means[i].value - points[i].value) <= 1e-12 * std::abs(points[i].value);
    if (!same) throw std::runtime_error(std::string(source.file) + ": " + other.name + " gives the wrong points");
  }
}

constexpr const char* processor_time = "seconds of processor";

// Of this process and its waited-for children.
double processor_seconds() {
  double sum = 0;
  for (const int who : {RUSAGE_SELF, RUSAGE_CHILDREN}) {
    rusage used{};
    getrusage(who, &used);
    for (const timeval& t : {used.ru_utime, used.ru_stime})
      sum += static_cast<double>(t.tv_sec) + 1e-6 * static_cast<double>(t.tv_usec);
  }
  return sum;
}

void measure(benchmark::State& state, const std::function<void()>& work) {
  double processor = 0;
  for (auto _ : state) {
    const double before = processor_seconds();
    const auto start = std::chrono::steady_clock::now();
    work();
    state.SetIterationTime(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    processor += processor_seconds() - before;
  }
  const auto iterations = static_cast<double>(state.iterations());
  state.counters[processor_time] = processor / iterations;
  state.counters["rows/s"] =
      benchmark::Counter(static_cast<double>(row_count) * iterations, benchmark::Counter::kIsRate);
}

// A figure of this process in bytes, by its name in /proc/self/status.
double memory(const std::string& figure) {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);)
    if (line.starts_with(figure + ":")) return 1024 * std::stod(line.substr(figure.size() + 1));
  throw std::runtime_error("/proc/self/status lacks " + figure);
}

// The peak memory of a query that keeps all rows of this number of days, beyond what this otherwise idle process used
// before. Includes pages of the program and its libraries that are used for the first time.
double peak_growth(const format& source, int first, int days) {
  prevesk_dataset_data_type model;
  import_query_descriptor query = query_on(source, model, first, first + days - 1);
  query.average_duplicates = false;
  point_list points;
  const double before = memory("VmRSS");
  import_query(query, folder).execute(model, points);
  if (points.size() != std::min<std::size_t>(row_count, static_cast<std::size_t>(days) * rows_per_day))
    throw std::runtime_error(std::string(source.file) + ": the query keeps the wrong rows");
  return memory("VmHWM") - before;
}

// The same in a separate process, in megabytes.
double peak_growth_elsewhere(const std::string& program, const format& source, int first, int days) {
  const std::string command =
      "'" + program + "' '--peak=" + source.name + "' " + std::to_string(first) + " " + std::to_string(days);
  const std::unique_ptr<FILE, int (*)(FILE*)> out(popen(command.c_str(), "r"), pclose);
  double bytes = 0;
  if (!out || std::fscanf(out.get(), "%lf", &bytes) != 1) throw std::runtime_error("no peak of " + command);
  return bytes / 1e6;
}

// The file's size must not affect it, and rows that are kept may cost less than twice their size.
void print_memory(const std::string& program, const format& source) {
  for (const table_part part : {tenth_of_table, whole_table}) {
    source.write(folder / source.file, part);
    const double fixed = peak_growth_elsewhere(program, source, part.first_day - 1, 0);
    std::printf("%s, a file of %.1f MB: the peak memory grows by %.2f MB if no row is kept", source.name,
                static_cast<double>(fs::file_size(folder / source.file)) / 1e6, fixed);
    for (const int days : {91, 520, 5209})
      if (const auto kept = static_cast<std::size_t>(days) * rows_per_day; kept < part.rows + rows_per_day)
        std::printf("; by %.2f MB more for %.2f MB of rows",
                    peak_growth_elsewhere(program, source, part.first_day, days) - fixed,
                    static_cast<double>(std::min(kept, part.rows) * sizeof(mean_value)) / 1e6);
    std::printf("\n");
  }
  std::fflush(stdout);
}

} // namespace
} // namespace vesk::bench

int main(int argc, char** argv) {
  using namespace vesk::bench;
  folder = fs::absolute(argv[0]).parent_path() / "query_bench_tables";
  fs::create_directories(folder);
  fs::current_path(folder); // the trace of the queries is written here
  for (const format& source : formats)
    if (argc == 4 && std::string("--peak=") + source.name == argv[1]) {
      std::printf("%.0f\n", peak_growth(source, std::atoi(argv[2]), std::atoi(argv[3])));
      return 0;
    }
  const std::string program = fs::read_symlink("/proc/self/exe").string();
  std::vector<ratio_row> rows;
  const std::string end = "/manual_time";
  for (const format& source : formats) {
    print_memory(program, source);
    check(source);
    const std::string ours = std::string(source.name) + "/vesk";
    benchmark::RegisterBenchmark(ours.c_str(), [&source](benchmark::State& state) {
      measure(state, [&source] {
        vesk::point_list points;
        execute(source, points);
        benchmark::DoNotOptimize(&points);
      });
    })->UseManualTime();
    for (const peer& other : source.peers) {
      const std::string name = std::string(source.name) + "/" + other.name;
      benchmark::RegisterBenchmark(name.c_str(), [&source, &other](benchmark::State& state) {
        measure(state, [&source, &other] {
          const mean_values means = other.answer(folder / source.file);
          benchmark::DoNotOptimize(&means);
        });
      })->UseManualTime();
      const std::string work = "a query over 1e6 rows, " + std::string(source.name) + ", against " + other.name;
      for (const char* const metric : {"wall", processor_time})
        rows.push_back({work, ours + end, name + end, ratio_row::at_least, 1, metric});
    }
  }
  const int status = run_with_ratios(argc, argv, rows);
  fs::remove_all(folder);
  return status;
}
