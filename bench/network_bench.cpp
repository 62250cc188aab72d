// Lays out networks: a river of 26 segments and a braided one of 10,000. Times are compared with the longest acceptable
// waiting times.
#include "network/schematic.h"
#include "network/ways.h"
#include "ratio_table.h"

#include <benchmark/benchmark.h>
#include <chrono>
#include <thread>

namespace vesk::bench {
namespace {

// A river with an arm beside each tenth segment.
network_graph river(std::size_t segments) {
  prevesk_dataset_data_type data;
  data.resize_segments(segments);
  flow_function_data_type function;
  const auto flow = [&](std::size_t from, std::size_t to) {
    if (to < segments) function.pairs.push_back({1, static_cast<std::int32_t>(from), static_cast<std::int32_t>(to)});
  };
  for (std::size_t i = 0; i < segments; ++i) {
    flow(i, i + 1);
    if (i % 10 == 0) flow(i, i + 3);
  }
  data.flow_fields.edit(0).functions.push_back(function);
  return make_network(data);
}

void draw(benchmark::State& state, std::size_t segments) {
  const network_graph network = river(segments);
  const graphviz_programs programs = find_graphviz();
  for (auto _ : state) {
    const auto picture = make_schematic(network, std::nullopt, programs, [] { return false; });
    if (!picture || picture->laid_out_by == schematic::method::plain_chains)
      state.SkipWithError("Graphviz did not finish");
  }
}

void list_ways(benchmark::State& state, std::size_t segments) {
  const network_graph network = river(segments);
  const std::vector<segment_number> ends{0, static_cast<segment_number>(segments - 1)};
  for (auto _ : state) benchmark::DoNotOptimize(find_ways(network, ends));
}

void wait_for(benchmark::State& state, int milliseconds) {
  for (auto _ : state) std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

} // namespace
} // namespace vesk::bench

int main(int argc, char** argv) {
  using namespace vesk::bench;
  const auto add = [](const char* name, auto work, auto argument) {
    benchmark::RegisterBenchmark(name, [=](benchmark::State& state) { work(state, argument); })
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime();
  };
  add("draw/26", draw, std::size_t{26});
  add("draw/10000", draw, std::size_t{10'000});
  add("ways/10000", list_ways, std::size_t{10'000});
  add("patience/500ms", wait_for, 500);
  add("patience/10s", wait_for, 10'000);
  return run_with_ratios(argc, argv,
                         {{.work = "schematic of 26 segments, against 0.5 s",
                           .ours = "draw/26/real_time",
                           .peer = "patience/500ms/real_time",
                           .asked = ratio_row::at_most,
                           .goal = 1,
                           .metric = "wall"},
                          {.work = "schematic of 10,000 segments, against 10 s",
                           .ours = "draw/10000/real_time",
                           .peer = "patience/10s/real_time",
                           .asked = ratio_row::at_most,
                           .goal = 1,
                           .metric = "wall"},
                          {.work = "ways through 10,000 segments, against 0.5 s",
                           .ours = "ways/10000/real_time",
                           .peer = "patience/500ms/real_time",
                           .asked = ratio_row::at_most,
                           .goal = 1,
                           .metric = "wall"}});
}
