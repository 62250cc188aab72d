// Reading a data file against `cat` and against reading it field by field; writing it against `cp` and `sync`. The file
// is created first, next to the program: 300 MB, or --megabytes=N.
#include "bulk_series_data.h"
#include "dataset/vki_file.h"
#include "field_by_field_reader.h"
#include "ratio_table.h"

#include <benchmark/benchmark.h>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vesk::bench {
namespace {

std::filesystem::path folder;
std::filesystem::path input() {
  return folder / "bench_input.vki";
}
std::filesystem::path output() {
  return folder / "bench_output.vki";
}

double processor_seconds(int who) {
  rusage used{};
  getrusage(who, &used);
  const auto seconds = [](const timeval& t) {
    return static_cast<double>(t.tv_sec) + 1e-6 * static_cast<double>(t.tv_usec);
  };
  return seconds(used.ru_utime) + seconds(used.ru_stime);
}

constexpr const char* processor_time = "seconds of processor";

// Times `work`, wall and processor, the latter of this process or of its waited-for children.
template <class Work>
void measure(benchmark::State& state, int who, Work work) {
  double processor = 0;
  for (auto _ : state) {
    const double before = processor_seconds(who);
    const auto start = std::chrono::steady_clock::now();
    work();
    state.SetIterationTime(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    processor += processor_seconds(who) - before;
  }
  state.counters[processor_time] = processor / static_cast<double>(state.iterations());
}

void run_command(const std::string& command) {
  const pid_t child = fork();
  if (child == 0) {
    execl("/bin/sh", "sh", "-c", command.c_str(), static_cast<char*>(nullptr));
    _exit(127);
  }
  int status = 0;
  if (child < 0 || waitpid(child, &status, 0) != child || status != 0) throw std::runtime_error("failed: " + command);
}

void measure_command(benchmark::State& state, const std::string& command) {
  measure(state, RUSAGE_CHILDREN, [&] { run_command(command); });
}

void read_project(benchmark::State& state) {
  measure(state, RUSAGE_SELF, [] {
    prevesk_dataset_data_type data;
    read_data_file(input(), data);
    benchmark::DoNotOptimize(&data);
  });
}
void read_fields(benchmark::State& state) {
  measure(state, RUSAGE_SELF, [] {
    const deques_of_file read = read_field_by_field(input());
    benchmark::DoNotOptimize(&read);
  });
}
void write_project(benchmark::State& state) {
  prevesk_dataset_data_type data;
  read_data_file(input(), data);
  measure(state, RUSAGE_SELF, [&] { save_data_file(output(), data); });
}

// Nine tenths are hourly series, the rest segments with 30 parameters and 20 systems.
void make_input(std::size_t megabytes) {
  const std::size_t series = std::max<std::size_t>(20, megabytes * 1'000'000 * 9 / 10 / (8784 * 16) / 20 * 20);
  prevesk_dataset_data_type data = make_series({"", series, 8784, 8784, 0, 0});
  data.parameters.resize(30);
  data.systems.resize(20);
  data.resize_segments(megabytes * 1'000'000 / 10 / 900);
  save_data_file(input(), data);

  prevesk_dataset_data_type again;
  read_data_file(input(), again);
  const deques_of_file fields = read_field_by_field(input());
  std::size_t points = 0;
  for (const auto& one : fields.series) points += one.size();
  if (!(again == data) || points != series * 8784 || fields.parameters.size() != data.segments.size())
    throw std::runtime_error("the file does not read back");
  std::printf("%s: %ju bytes, %zu points, %zu segments\n", input().filename().c_str(),
              static_cast<std::uintmax_t>(std::filesystem::file_size(input())), points, data.segments.size());
}

} // namespace
} // namespace vesk::bench

int main(int argc, char** argv) {
  using namespace vesk::bench;
  folder = std::filesystem::absolute(argv[0]).parent_path();
  std::size_t megabytes = 300;
  if (argc > 1 && std::sscanf(argv[1], "--megabytes=%zu", &megabytes) == 1) {
    argv[1] = argv[0];
    ++argv, --argc;
  }
  make_input(megabytes);
  const auto add = [](const char* name, void (*function)(benchmark::State&)) {
    benchmark::RegisterBenchmark(name, function)->Iterations(1)->UseManualTime();
  };
  const std::string cat = "cat '" + input().string() + "' > /dev/null";
  const std::string cp =
      "cp '" + input().string() + "' '" + output().string() + "' && sync '" + output().string() + "'";
  add("read/vesk", read_project);
  benchmark::RegisterBenchmark("read/cat", measure_command, cat)->Iterations(1)->UseManualTime();
  benchmark::RegisterBenchmark("read/ifstream", read_fields)->Iterations(1)->UseManualTime();
  add("write/vesk", write_project);
  benchmark::RegisterBenchmark("write/cp", measure_command, cp)->Iterations(1)->UseManualTime();

  const std::string end = "/iterations:1/manual_time";
  const int status = run_with_ratios(
      argc, argv,
      {{"reading a data file, against cat", "read/vesk" + end, "read/cat" + end, ratio_row::at_most, 1.25, "wall"},
       {"reading a data file, against cat", "read/vesk" + end, "read/cat" + end, ratio_row::at_most, 0, processor_time},
       {"reading a data file, against fields by ifstream into deques", "read/vesk" + end, "read/ifstream" + end,
        ratio_row::at_least, 10, processor_time},
       {"writing a data file, against cp and sync", "write/vesk" + end, "write/cp" + end, ratio_row::at_most, 1.25,
        "wall"},
       {"writing a data file, against cp and sync", "write/vesk" + end, "write/cp" + end, ratio_row::at_most, 0,
        processor_time}});
  std::filesystem::remove(input());
  std::filesystem::remove(output());
  return status;
}
