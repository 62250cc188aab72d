// Copies of a data set against deep copies of the same points, and memory per segment against the bare numbers.
#include "bulk_series_data.h"
#include "dataset/vki_file.h"
#include "ratio_table.h"

#include <benchmark/benchmark.h>
#include <cstring>
#include <deque>
#include <filesystem>
#include <fstream>
#include <malloc.h>
#include <unistd.h>

namespace vesk::bench {
namespace {

// 1000 hourly series over a year: 8.8e6 points.
const prevesk_dataset_data_type& points_data() {
  static const prevesk_dataset_data_type data = make_series({"", 1'000, 8784, 8784, 0, 0});
  return data;
}

// A point as a separate object, in a deque: the cost of copying every record.
struct plain_point {
  explicit plain_point(const moment_value_pair_type& p) : date(p.date), time(p.time), value(p.value) {}
  plain_point(const plain_point&) = default;
  plain_point& operator=(const plain_point&) = default;
  virtual ~plain_point() = default;
  std::int32_t date, time;
  double value;
};
using plain_series = std::vector<std::deque<plain_point>>;

template <class Visit>
void each_series(const prevesk_dataset_data_type& data, Visit visit) {
  for (const system_data_type& system : data.systems) {
    for (const loads_data_type& load : system.loads) visit(load.points);
    for (const boundary_data_type& boundary : system.boundaries) visit(boundary.points);
  }
}

void copy_data_set(benchmark::State& state) {
  const prevesk_dataset_data_type& data = points_data();
  for (auto _ : state) {
    prevesk_dataset_data_type copy = data;
    benchmark::DoNotOptimize(&copy);
  }
}

void copy_deques(benchmark::State& state) {
  plain_series all;
  each_series(points_data(), [&](const point_list& points) { all.emplace_back(points.begin(), points.end()); });
  for (auto _ : state) {
    plain_series copy = all;
    benchmark::DoNotOptimize(copy.data());
  }
}

void copy_bytes(benchmark::State& state) {
  std::vector<moment_value_pair_type> all;
  each_series(points_data(), [&](const point_list& points) { all.insert(all.end(), points.begin(), points.end()); });
  std::vector<moment_value_pair_type> copy = all;
  for (auto _ : state) {
    std::memcpy(static_cast<void*>(copy.data()), all.data(), all.size() * sizeof all[0]);
    benchmark::ClobberMemory();
  }
}

// The first change of each series after a copy of the data set.
void edit_first(benchmark::State& state) {
  const prevesk_dataset_data_type& data = points_data();
  prevesk_dataset_data_type copy = data;
  std::size_t next = 0;
  for (auto _ : state) {
    const std::size_t system = next / data.systems[0].loads.size() % data.systems.size();
    const std::size_t load = next++ % data.systems[0].loads.size();
    if (system == 0 && load == 0) { // all series have been changed
      state.PauseTiming();
      copy = data;
      state.ResumeTiming();
    }
    copy.systems.edit(system).loads.edit(load).points.edit(100).value = 1;
  }
}

// A memcpy of each of the same series, into memory used before.
void copy_one_series(benchmark::State& state) {
  const prevesk_dataset_data_type& data = points_data();
  std::vector<std::vector<moment_value_pair_type>> copies;
  for (const system_data_type& system : data.systems)
    for (const loads_data_type& load : system.loads) copies.emplace_back(load.points.begin(), load.points.end());
  std::size_t next = 0;
  for (auto _ : state) {
    const std::size_t system = next / data.systems[0].loads.size() % data.systems.size();
    const std::size_t load = next % data.systems[0].loads.size();
    const point_list& points = data.systems[system].loads[load].points;
    auto& to = copies[next++ % copies.size()];
    std::memcpy(static_cast<void*>(to.data()), points.data(), points.size() * sizeof points[0]);
    benchmark::ClobberMemory();
  }
}

double resident_bytes() {
  std::ifstream file("/proc/self/statm");
  double pages = 0, resident = 0;
  file >> pages >> resident;
  return resident * static_cast<double>(sysconf(_SC_PAGESIZE));
}

constexpr std::size_t parameter_count = 30;
constexpr std::size_t item_system_count = 20;
constexpr std::size_t segment_count = 1'000'000;

// Memory of the result of `make`, in bytes per segment.
template <class Make>
void measure_memory(benchmark::State& state, Make make) {
  for (auto _ : state) {
    malloc_trim(0);
    const double before = resident_bytes();
    const auto made = make();
    benchmark::DoNotOptimize(&made);
    state.counters["bytes"] = (resident_bytes() - before) / static_cast<double>(segment_count);
  }
}

std::shared_ptr<const model_catalogue> catalogue() {
  catalogue_model model{};
  model.model_id = 1;
  model.parameters.resize(parameter_count);
  model.systems.resize(item_system_count);
  auto result = std::make_shared<model_catalogue>();
  result->models.push_back(model);
  return result;
}

// Sets every value of every segment to a different number.
prevesk_dataset_data_type make_segments() {
  prevesk_dataset_data_type data(catalogue());
  data.resize_segments(segment_count);
  for (std::size_t i = 0; i < segment_count; ++i) {
    segment_data_type& segment = data.segments.edit(i);
    const auto value = static_cast<double>(i);
    segment.volume = value;
    for (std::size_t p = 0; p < parameter_count; ++p) segment.parameters.set(p, {segment.parameters[p].isc, value});
    for (std::size_t s = 0; s < item_system_count; ++s) segment.systems.set(s, {segment.systems[s].isc, value, 0.5});
  }
  return data;
}

void edited_segments(benchmark::State& state) {
  measure_memory(state, make_segments);
}

void read_segments(benchmark::State& state) {
  const std::filesystem::path file = std::filesystem::temp_directory_path() / "vesk_bench_segments.vki";
  save_data_file(file, make_segments());
  measure_memory(state, [&] {
    prevesk_dataset_data_type data;
    read_data_file(file, data);
    return data;
  });
  std::filesystem::remove(file);
}

// The numbers and the name of each segment, in one array each.
void bare_memory(benchmark::State& state) {
  measure_memory(state, [] {
    struct fields {
      double numbers[11];
      std::int32_t segment_type, bottom_segment;
      char name[13];
    };
    struct {
      std::vector<double> parameters = std::vector<double>(segment_count * parameter_count, 1.0);
      std::vector<double> systems = std::vector<double>(segment_count * item_system_count * 2, 1.0);
      std::vector<fields> segments = std::vector<fields>(segment_count);
    } bare;
    return bare;
  });
}

} // namespace
} // namespace vesk::bench

int main(int argc, char** argv) {
  using namespace vesk::bench;
  benchmark::RegisterBenchmark("copy/data_set", copy_data_set);
  benchmark::RegisterBenchmark("copy/deques", copy_deques)->Iterations(3);
  benchmark::RegisterBenchmark("copy/memcpy", copy_bytes)->Iterations(5);
  benchmark::RegisterBenchmark("first_edit/series", edit_first)->Iterations(5'000);
  benchmark::RegisterBenchmark("first_edit/memcpy", copy_one_series)->Iterations(5'000);
  benchmark::RegisterBenchmark("memory/edited", edited_segments)->Iterations(1)->Repetitions(1);
  benchmark::RegisterBenchmark("memory/read", read_segments)->Iterations(1)->Repetitions(1);
  benchmark::RegisterBenchmark("memory/bare", bare_memory)->Iterations(1)->Repetitions(1);
  const std::string once = "/iterations:1/repeats:1";
  return run_with_ratios(
      argc, argv,
      {{"copy of 8.8e6 points, against deques", "copy/data_set", "copy/deques/iterations:3", ratio_row::at_least,
        10'000},
       {"copy of 8.8e6 points, against one memcpy", "copy/data_set", "copy/memcpy/iterations:5", ratio_row::at_least},
       {"first edit of a series of 8784 points, against its memcpy", "first_edit/series/iterations:5000",
        "first_edit/memcpy/iterations:5000", ratio_row::at_most, 2},
       {"bytes of a segment with 30 + 20 values, read from a file, against bare numbers", "memory/read" + once,
        "memory/bare" + once, ratio_row::at_most, 1.25, "bytes"},
       {"bytes of a segment with 30 + 20 values, typed in, against bare numbers", "memory/edited" + once,
        "memory/bare" + once, ratio_row::at_most, 1.25, "bytes"}});
}
