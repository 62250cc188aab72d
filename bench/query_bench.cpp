// A stored query over 1,000,000 rows, one station in one year averaged to a point a moment, against other programs and
// libraries that answer the same from the same file.
#include "query/import_query.h"
#include "query_peers.h"
#include "query_tables.h"
#include "ratio_table.h"

#include <benchmark/benchmark.h>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
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
  void (*write)(const fs::path& file);
  std::size_t points; // of the answer
  std::vector<peer> peers;
};

const format formats[] = {
    {"sqlite", "rows.sqlite", write_sqlite, 365 * 24, {{"the SQLite library", by_sqlite_library}}},
    {"csv", "rows.csv", write_csv, 365 * 24, {{"the SQLite shell", by_sqlite_shell}, {"GDAL", by_gdal}}},
    {"dbf", "rows.dbf", write_dbf, 365, {{"GDAL", by_gdal}}},
    {"paradox", "rows.db", write_paradox, 365 * 24, {{"pxlib", by_pxlib}}},
};

fs::path folder;

// Opens the file, holds the query against it, and reads the points: all of it at each call.
query_report execute(const format& source, point_list& points) {
  import_query_descriptor query;
  query.file_name = source.file;
  if (source.write == write_sqlite) query.table_name = "measured";
  const bool is_dbase = source.write == write_dbf;
  query.date_time_field = is_dbase ? "SAMPLED" : "sampled";
  query.value_field = is_dbase ? "VALUE" : "value";
  query.conditions = {{is_dbase ? "STATION" : "station", 0, 0, asked_station}};
  prevesk_dataset_data_type model;
  model.seed_date = first_day;
  model.seed_time = 0;
  model.time_steps.points = {{moment_type::from_date_time(first_day), 1},
                             {moment_type::from_date_time(last_day + 23 / 24.0), 1}};
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
    if (!same) throw std::runtime_error(std::string(source.file) + ": " + other.name + " gives other points");
  }
}

constexpr const char* processor_time = "seconds of processor";

// Of this process and of the children that it has waited for.
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

// A figure of this process in bytes, by its name in the system's status file.
double memory(const std::string& figure) {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);)
    if (line.starts_with(figure + ":")) return 1024 * std::stod(line.substr(figure.size() + 1));
  throw std::runtime_error("the system does not tell " + figure);
}

// What a query takes at its peak beyond what this process, which has done nothing else yet, had before. Pages of a
// large file that is mapped, not read, count as memory of the process too.
void print_memory(const format& source) {
  point_list points;
  const double before = memory("VmRSS"), mapped_before = memory("RssFile");
  execute(source, points);
  constexpr double megabyte = 1e6, kept = asked_rows * sizeof(mean_value);
  std::printf(
      "%s: the peak memory grows by %.1f MB, %.1f MB of it mapped pages of files, for %.2f MB of kept rows and a "
      "file of %.1f MB\n",
      source.name, (memory("VmHWM") - before) / megabyte, (memory("RssFile") - mapped_before) / megabyte,
      kept / megabyte, static_cast<double>(fs::file_size(folder / source.file)) / megabyte);
}

} // namespace
} // namespace vesk::bench

int main(int argc, char** argv) {
  using namespace vesk::bench;
  folder = fs::absolute(argv[0]).parent_path() / "query_bench_tables";
  fs::create_directories(folder);
  fs::current_path(folder); // where the trace of the queries goes
  const std::string memory_option = "--memory=";
  for (const format& source : formats)
    if (argc == 2 && memory_option + source.name == argv[1]) {
      print_memory(source);
      return 0;
    }
  const std::string program = fs::read_symlink("/proc/self/exe").string();
  std::vector<ratio_row> rows;
  const std::string end = "/manual_time";
  for (const format& source : formats) {
    source.write(folder / source.file);
    check(source);
    std::fflush(stdout);
    if (std::system(("'" + program + "' " + memory_option + source.name).c_str()) != 0) return 1;
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
