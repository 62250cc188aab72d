// Blocks of cells, long series and large networks in the editors' grids, against a frame of a 60 Hz screen: the user's
// waiting times.
#include "charts/graph_form.h"
#include "dataset/series.h"
#include "editing_host.h"
#include "editors/print_interval_form.h"
#include "editors/segment_form.h"
#include "large_network.h"
#include "ratio_table.h"

#include <benchmark/benchmark.h>
#include <chrono>
#include <functional>
#include <string>

namespace vesk::bench {
namespace {

constexpr std::size_t rows = 1'000'000;

// The editor of a series of a million hourly points, shared by all benchmarks.
struct long_series {
  long_series() {
    moment_type::set_seed(150000, 0);
    moment_type::moment_seed_is_set = true;
    point_list& points = host.data.print_intervals.points;
    points.reserve(rows);
    for (std::size_t i = 0; i < rows; ++i)
      points.push_back(
          {moment_type(150000 + static_cast<std::int32_t>(i / 24), static_cast<std::int32_t>(i % 24) * 3600),
           0.01 * static_cast<double>(i % 997)});
    form.FormShow();
  }
  TFillCalcTable& table() { return form.panels()[0]->table; }

  editing_host host;
  TPrintIntervalForm form{host};
};

long_series& editor_of_a_million() {
  static long_series editor;
  return editor;
}

void frame(benchmark::State& state) {
  for (auto _ : state) state.SetIterationTime(1.0 / 60);
}

void copy_rows(benchmark::State& state) {
  TFillCalcTable& table = editor_of_a_million().table();
  table.set_selection(cell_range{0, 0, rows - 1, 2});
  for (auto _ : state) benchmark::DoNotOptimize(table.do_copy());
}

// A million cells: a third of a million rows of date, time and value.
void paste_cells(benchmark::State& state) {
  TFillCalcTable& table = editor_of_a_million().table();
  table.set_selection(cell_range{0, 0, rows / 3, 2});
  const std::string text = table.do_copy();
  table.set_selection(std::nullopt);
  table.set_active(0, 0);
  for (auto _ : state) {
    if (!table.do_paste(text).refusal.empty()) state.SkipWithError("refused");
  }
}

void fill_values(benchmark::State& state) {
  TFillCalcTable& table = editor_of_a_million().table();
  table.set_selection(cell_range{0, 2, rows - 1, 2});
  for (auto _ : state) {
    if (!table.calculate_selection("x + 0.001").empty()) state.SkipWithError("refused");
  }
}

// Moves one date of the first day to the end, and back, with the sort that follows.
void edit_point(benchmark::State& state) {
  TFillCalcTable& table = editor_of_a_million().table();
  bool there = true;
  for (auto _ : state) {
    table.set_active(there ? 0 : rows - 1, 0);
    if (!table.enter(table.active_row(), 0, there ? "3000-01-01" : "1700-01-01")) state.SkipWithError("refused");
    there = !there;
  }
}

void chart_series(benchmark::State& state) {
  editor& form = editor_of_a_million().form;
  for (auto _ : state) {
    TGraphForm graph;
    graph.add_series(form.graph_data(*form.panels()[0]));
    benchmark::DoNotOptimize(graph.bounds());
  }
}

// The editor of a million segments, shared by all benchmarks.
struct large_network {
  large_network() {
    host.data = make_large_network(rows);
    form.FormShow();
  }
  TFillCalcTable& table(std::size_t page) { return form.panels()[page]->table; }

  editing_host host;
  TSegmentForm form{host};
};

large_network& network_of_a_million() {
  static large_network editor;
  return editor;
}

// Each iteration starts with a snapshot, as each step in the dialog does. Freeing it is not timed.
void time_on_network(benchmark::State& state, const std::function<std::string()>& work) {
  for (auto _ : state) {
    const auto start = std::chrono::steady_clock::now();
    if (!work().empty()) state.SkipWithError("refused");
    state.SetIterationTime(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    network_of_a_million().host.forget_steps();
  }
}

// A million cells: all columns of the first rows.
void paste_segments(benchmark::State& state) {
  TFillCalcTable& table = network_of_a_million().table(0);
  const std::size_t columns = table.content().columns().size();
  table.set_selection(cell_range{0, 0, rows / columns, columns - 1});
  const std::string text = table.do_copy();
  table.set_selection(std::nullopt);
  table.set_active(0, 0);
  time_on_network(state, [&] { return table.do_paste(text).refusal; });
}

void compute_parameter(benchmark::State& state, bool after_snapshot) {
  TFillCalcTable& table = network_of_a_million().table(1);
  table.set_selection(cell_range{0, 0, rows - 1, 0});
  const auto begin = table.OnBeginChange;
  if (!after_snapshot) table.OnBeginChange = nullptr;
  time_on_network(state, [&] { return table.calculate_selection("x + row"); });
  table.OnBeginChange = begin;
}

// The work of Cancel: restores the snapshot and drops the changed segments.
void cancel_parameter(benchmark::State& state) {
  large_network& editor = network_of_a_million();
  editor.table(1).set_selection(cell_range{0, 0, rows - 1, 0});
  for (auto _ : state) {
    const prevesk_dataset_data_type backup = editor.host.data;
    if (!editor.table(1).calculate_selection("x + row").empty()) state.SkipWithError("refused");
    editor.host.forget_steps();
    const auto start = std::chrono::steady_clock::now();
    editor.host.data = backup;
    state.SetIterationTime(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
  }
}

constexpr auto milliseconds = benchmark::kMillisecond;
BENCHMARK(frame)->Name("editors/frame_of_60_Hz")->UseManualTime()->Unit(milliseconds)->Iterations(100);
BENCHMARK(copy_rows)->Name("editors/copy_1e6_rows")->Unit(milliseconds)->UseRealTime();
BENCHMARK(paste_cells)->Name("editors/paste_1e6_cells")->Unit(milliseconds)->UseRealTime();
BENCHMARK(fill_values)->Name("editors/fill_1e6_values")->Unit(milliseconds)->UseRealTime();
BENCHMARK(edit_point)->Name("editors/edit_1_of_1e6")->Unit(milliseconds)->UseRealTime();
BENCHMARK(chart_series)->Name("editors/chart_1e6")->Unit(milliseconds)->UseRealTime();
BENCHMARK(paste_segments)->Name("editors/paste_segments")->Unit(milliseconds)->UseManualTime()->Iterations(3);
BENCHMARK_CAPTURE(compute_parameter, first, true)
    ->Name("editors/compute_first")
    ->Unit(milliseconds)
    ->UseManualTime()
    ->Iterations(3);
BENCHMARK_CAPTURE(compute_parameter, again, false)
    ->Name("editors/compute_again")
    ->Unit(milliseconds)
    ->UseManualTime()
    ->Iterations(3);
BENCHMARK(cancel_parameter)->Name("editors/cancel_1e6")->Unit(milliseconds)->UseManualTime()->Iterations(3);

} // namespace
} // namespace vesk::bench

int main(int argc, char** argv) {
  using vesk::bench::ratio_row;
  const auto frames = [](const char* work, const char* ours, double milliseconds) {
    return ratio_row{
        work,  ours, "editors/frame_of_60_Hz/iterations:100/manual_time", ratio_row::at_most, milliseconds * 60 / 1000,
        "wall"};
  };
  return vesk::bench::run_with_ratios(
      argc, argv,
      {frames("copy of 1e6 rows of a series, in frames", "editors/copy_1e6_rows/real_time", 150),
       frames("paste of 1e6 cells into a series", "editors/paste_1e6_cells/real_time", 100),
       frames("an expression for 1e6 values", "editors/fill_1e6_values/real_time", 100),
       frames("edit of one point of 1e6", "editors/edit_1_of_1e6/real_time", 16),
       frames("chart data of 1e6 points", "editors/chart_1e6/real_time", 30),
       frames("paste of 1e6 cells into segments", "editors/paste_segments/iterations:3/manual_time", 500),
       frames("a parameter of 1e6 segments by an expression", "editors/compute_first/iterations:3/manual_time", 400),
       frames("the same again, without a snapshot before", "editors/compute_again/iterations:3/manual_time", 100),
       frames("Cancel after that", "editors/cancel_1e6/iterations:3/manual_time", 250)});
}
