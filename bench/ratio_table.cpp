#include "ratio_table.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstdio>
#include <map>
#include <optional>

namespace vesk::bench {

namespace {

// Prints medians and keeps the figures of each repetition.
class keeping_reporter : public benchmark::ConsoleReporter {
public:
  keeping_reporter() : ConsoleReporter(OO_Tabular) {}

  void ReportRuns(const std::vector<Run>& runs) override {
    std::vector<Run> printed;
    for (const Run& run : runs) {
      if (run.error_occurred || (run.run_type == Run::RT_Aggregate && run.aggregate_name == "median"))
        printed.push_back(run);
      if (run.error_occurred || run.run_type != Run::RT_Iteration) continue;
      auto& metrics = figures_[run.run_name.str()];
      const auto iterations = static_cast<double>(run.iterations);
      metrics["cpu"].push_back(run.cpu_accumulated_time / iterations);
      metrics["wall"].push_back(run.real_accumulated_time / iterations);
      for (const auto& [name, counter] : run.counters) metrics[name].push_back(counter.value);
    }
    if (!printed.empty()) ConsoleReporter::ReportRuns(printed);
  }

  std::optional<double> median(const std::string& benchmark, const std::string& metric) const {
    const auto metrics = figures_.find(benchmark);
    if (metrics == figures_.end()) return {};
    const auto found = metrics->second.find(metric);
    if (found == metrics->second.end()) return {};
    std::vector<double> values = found->second;
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
  }

private:
  std::map<std::string, std::map<std::string, std::vector<double>>> figures_; // seconds; counters unchanged
};

std::string in_words(double value, const std::string& metric) {
  char text[48];
  const bool time = metric == "cpu" || metric == "wall" || metric.starts_with("seconds");
  if (!time)
    std::snprintf(text, sizeof text, "%.4g", value);
  else if (value < 1e-6)
    std::snprintf(text, sizeof text, "%.3g ns", value * 1e9);
  else if (value < 1e-3)
    std::snprintf(text, sizeof text, "%.3g us", value * 1e6);
  else
    std::snprintf(text, sizeof text, "%.3g ms", value * 1e3);
  return text;
}

void print_row(const ratio_row& row, double ours, double peer) {
  const bool speed = row.asked == ratio_row::at_least;
  const double ratio = speed ? peer / ours : ours / peer;
  const char* const form = speed ? "%.3gx faster" : "%.3gx";
  char reached[48], asked[48] = "";
  std::snprintf(reached, sizeof reached, form, ratio);
  if (row.goal != 0) std::snprintf(asked, sizeof asked, form, row.goal);
  const char* const verdict = row.goal == 0 ? "" : (speed ? ratio >= row.goal : ratio <= row.goal) ? "yes" : "no";
  std::printf("| %s | %s | %s | %s | %s | %s | %s |\n", row.work.c_str(), row.metric.c_str(),
              in_words(ours, row.metric).c_str(), in_words(peer, row.metric).c_str(), reached, asked, verdict);
}

} // namespace

int run_with_ratios(int argc, char** argv, const std::vector<ratio_row>& rows) {
  static char repetitions[] = "--benchmark_repetitions=5";
  static char order[] = "--benchmark_enable_random_interleaving=true";
  std::vector<char*> arguments{argv[0], repetitions, order};
  arguments.insert(arguments.end(), argv + 1, argv + argc);
  int count = static_cast<int>(arguments.size());
  arguments.push_back(nullptr);
  benchmark::Initialize(&count, arguments.data());
  if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) return 2;
  keeping_reporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);

  std::printf("\n| Work | By | ours | peer | ratio | to reach | reached |\n|---|---|---|---|---|---|---|\n");
  for (const ratio_row& row : rows) {
    const auto ours = reporter.median(row.ours, row.metric);
    const auto peer = reporter.median(row.peer, row.metric);
    if (ours && peer) print_row(row, *ours, *peer);
  }
  return 0;
}

} // namespace vesk::bench
