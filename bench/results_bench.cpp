// Reads 2 GB of results (100,000 segments, 1,000 times, 5 variables) and scores 1,000,000 pairs. Times are compared
// with the longest acceptable waiting times. The file is written first, to a temporary folder next to the program.
#include "ratio_table.h"
#include "results/pairing.h"
#include "results/results_file.h"

#include <benchmark/benchmark.h>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <netcdf.h>
#include <stdexcept>
#include <sys/resource.h>
#include <unistd.h>

namespace vesk::bench {
namespace {

namespace fs = std::filesystem;

std::size_t segments = 100'000, times = 1'000;
constexpr std::size_t variables = 5;
fs::path file;

void check(int status) {
  if (status != NC_NOERR) throw std::runtime_error(nc_strerror(status));
}

float value_of(std::size_t time, std::size_t segment, std::size_t variable) {
  return static_cast<float>(time % 100) + static_cast<float>(segment) * 1e-5F + static_cast<float>(variable);
}

// The format that the engine writes.
void write_results() {
  int id = 0, time = 0, data[variables], shape[2];
  check(nc_create(file.c_str(), NC_CLOBBER | NC_64BIT_OFFSET, &id));
  check(nc_def_dim(id, "time", NC_UNLIMITED, &shape[0]));
  check(nc_def_dim(id, "segment", segments, &shape[1]));
  check(nc_def_var(id, "time", NC_DOUBLE, 1, shape, &time));
  check(nc_put_att_text(id, time, "units", 21, "days since 2000-01-01"));
  for (std::size_t v = 0; v < variables; ++v)
    check(nc_def_var(id, ("v" + std::to_string(v)).c_str(), NC_FLOAT, 2, shape, &data[v]));
  int old_fill = 0;
  check(nc_set_fill(id, NC_NOFILL, &old_fill));
  check(nc_enddef(id));
  std::vector<float> row(segments);
  for (std::size_t t = 0; t < times; ++t) {
    const double day = static_cast<double>(t);
    check(nc_put_var1_double(id, time, &t, &day));
    for (std::size_t v = 0; v < variables; ++v) {
      for (std::size_t s = 0; s < segments; ++s) row[s] = value_of(t, s, v);
      const std::size_t start[] = {t, 0}, count[] = {1, segments};
      check(nc_put_vara_float(id, data[v], start, count, row.data()));
    }
  }
  check(nc_close(id));
}

// Drops the file from the system's cache, as far as the system allows.
void drop_from_memory() {
  const int opened = open(file.c_str(), O_RDONLY | O_CLOEXEC);
  fdatasync(opened);
  posix_fadvise(opened, 0, 0, POSIX_FADV_DONTNEED);
  close(opened);
}

// Reads the whole file into the system's cache, from which a benchmark before may have dropped it.
void keep_in_memory() {
  std::vector<char> block(std::size_t{1} << 20);
  std::ifstream in(file, std::ios::binary);
  while (in.read(block.data(), static_cast<std::streamsize>(block.size()))) {
  }
}

const results_file& results() {
  static const results_file opened(file);
  return opened;
}

template <class Work>
void cold(benchmark::State& state, const Work& work) {
  for (auto _ : state) {
    drop_from_memory();
    const auto begin = std::chrono::steady_clock::now();
    work();
    state.SetIterationTime(std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count());
  }
}

void open_file(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(results_file(file).times().size());
}
void open_cold(benchmark::State& state) {
  cold(state, [] { benchmark::DoNotOptimize(results_file(file).times().size()); });
}
void series(benchmark::State& state) {
  std::size_t segment = 0;
  for (auto _ : state) benchmark::DoNotOptimize(results().series(2, segment += 17).back());
}
void series_cold(benchmark::State& state) {
  std::size_t segment = 0;
  cold(state, [&] { benchmark::DoNotOptimize(results().series(2, segment += 17).back()); });
}
void fifty_series(benchmark::State& state) {
  keep_in_memory();
  for (auto _ : state)
    for (std::size_t i = 0; i < 50; ++i)
      benchmark::DoNotOptimize(results().series(i % variables, segments / 50 * i).back());
}
void profile(benchmark::State& state) {
  std::size_t time = 0;
  for (auto _ : state) benchmark::DoNotOptimize(results().profile(1, time = (time + 371) % times).back());
}
void player_step(benchmark::State& state) { // one variable in all segments, time by time
  std::size_t time = 0;
  for (auto _ : state) benchmark::DoNotOptimize(results().profile(1, time = (time + 1) % times).back());
}
void band(benchmark::State& state) {
  keep_in_memory();
  for (auto _ : state) benchmark::DoNotOptimize(results().bands(3, {0, times}).mean.back());
}

// The peak memory of this process and of a helper that has answered each kind of question, in megabytes.
double memory_to_look_at(const fs::path& name) {
  {
    const results_file looked_at(name);
    looked_at.series(0, 1);
    looked_at.profile(0, 1);
    looked_at.bands(0, {0, looked_at.times().size()});
  }
  rusage own{}, children{};
  getrusage(RUSAGE_SELF, &own);
  getrusage(RUSAGE_CHILDREN, &children);
  return static_cast<double>(own.ru_maxrss + children.ru_maxrss) / 1024;
}

constexpr const char* memory_option = "--memory-to-look-at";

// In a process without the other benchmarks.
void memory(benchmark::State& state) {
  double megabytes = 0;
  for (auto _ : state) {
    const fs::path program = fs::read_symlink("/proc/self/exe");
    std::FILE* const answer = popen((program.string() + " " + memory_option + " " + file.string()).c_str(), "r");
    if (!answer || std::fscanf(answer, "%lf", &megabytes) != 1) state.SkipWithError("no answer");
    if (answer) pclose(answer);
  }
  state.counters["megabytes"] = megabytes;
}
void two_hundred_megabytes(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(state.iterations());
  state.counters["megabytes"] = 200;
}

void agreement(benchmark::State& state) {
  constexpr std::size_t pairs = 1'000'000;
  modelled_series model;
  std::vector<measurement> measured;
  for (std::size_t i = 0; i < pairs; ++i) {
    const double time = 36526 + static_cast<double>(i) / 288;
    model.times.push_back(time);
    model.values.push_back(std::sin(time));
    measured.push_back({time + 0.001, std::sin(time + 0.3)});
  }
  for (auto _ : state) {
    const pairing paired = pair_up(measured, model, {});
    benchmark::DoNotOptimize(scores_by_month(paired.pairs).back().scores.r);
  }
}

template <int milliseconds>
void limit(benchmark::State& state) {
  for (auto _ : state) state.SetIterationTime(milliseconds / 1000.0);
}

void register_all() {
  const auto add = [](const char* name, auto work, int iterations) {
    return benchmark::RegisterBenchmark(name, work)->Unit(benchmark::kMillisecond)->Iterations(iterations);
  };
  add("results/open", open_file, 10)->UseRealTime();
  add("results/open_cold", open_cold, 2)->UseManualTime();
  add("results/series", series, 20)->UseRealTime();
  add("results/series_cold", series_cold, 2)->UseManualTime();
  add("results/fifty_series", fifty_series, 2)->UseRealTime();
  add("results/profile", profile, 50)->UseRealTime();
  add("results/player_step", player_step, 200)->UseRealTime();
  add("results/band", band, 1)->UseRealTime();
  add("results/memory", memory, 1)->UseRealTime();
  add("results/200_megabytes", two_hundred_megabytes, 1)->UseRealTime();
  add("results/agreement", agreement, 3)->UseRealTime();
  add("limit/5", limit<5>, 1)->UseManualTime();
  add("limit/16", limit<16>, 1)->UseManualTime();
  add("limit/20", limit<20>, 1)->UseManualTime();
  add("limit/50", limit<50>, 1)->UseManualTime();
  add("limit/100", limit<100>, 1)->UseManualTime();
  add("limit/200", limit<200>, 1)->UseManualTime();
  add("limit/500", limit<500>, 1)->UseManualTime();
}

ratio_row within(const std::string& work, const std::string& name, int iterations, int milliseconds,
                 const char* timing = "real_time") {
  return {work + ", against " + std::to_string(milliseconds) + " ms",
          name + "/iterations:" + std::to_string(iterations) + "/" + timing,
          "limit/" + std::to_string(milliseconds) + "/iterations:1/manual_time",
          ratio_row::at_most,
          1,
          "wall"};
}

} // namespace
} // namespace vesk::bench

int main(int argc, char** argv) {
  using namespace vesk::bench;
  if (argc == 3 && std::string_view(argv[1]) == memory_option) {
    std::printf("%f\n", memory_to_look_at(argv[2]));
    return 0;
  }
  std::error_code ignored;
  const auto folder =
      std::filesystem::read_symlink("/proc/self/exe").parent_path() / ("results-" + std::to_string(getpid()));
  std::filesystem::create_directory(folder);
  file = folder / "river.nc";
  int status = 1;
  try {
    write_results();
    register_all();
    status = run_with_ratios(
        argc, argv,
        {within("opening 2 GB of results", "results/open", 10, 50),
         within("opening 2 GB of results, not in memory", "results/open_cold", 2, 200, "manual_time"),
         within("a series of 2 GB of results", "results/series", 20, 20),
         within("a series of 2 GB of results, not in memory", "results/series_cold", 2, 200, "manual_time"),
         within("50 scattered series", "results/fifty_series", 2, 500),
         within("a profile of 1e5 segments", "results/profile", 50, 5),
         within("a step of the player, 1e5 segments", "results/player_step", 200, 16),
         within("the band of a variable, 1e8 values", "results/band", 1, 500),
         within("scores of 1e6 pairs by month", "results/agreement", 3, 100),
         {"memory of program and helper, against 200 MB", "results/memory/iterations:1/real_time",
          "results/200_megabytes/iterations:1/real_time", ratio_row::at_most, 1, "megabytes"}});
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
  }
  std::filesystem::remove_all(folder, ignored);
  return status;
}
