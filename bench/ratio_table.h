// Runs the benchmarks of a program and prints a table of ratios, one row per goal.
#pragma once

#include <string>
#include <vector>

namespace vesk::bench {

// Two benchmarks of the same run, and the goal for the ratio of their medians.
struct ratio_row {
  enum kind { at_least, at_most };

  std::string work; // what is measured
  std::string ours; // name of the benchmark, as printed
  std::string peer;
  kind asked = at_least; // at_least: `goal` times as fast as the peer, or more; at_most: `goal` times its cost, or less
  double goal = 0;       // 0: no goal, the ratio is only reported
  std::string metric = "cpu"; // "cpu", "wall", or a counter; one whose name starts with "seconds" is a time
};

// Runs the benchmarks selected on the command line, then prints the rows for which both sides were run, as a Markdown
// table. Every benchmark is repeated in random order, and its median counts. Returns the program's exit status.
int run_with_ratios(int argc, char** argv, const std::vector<ratio_row>& rows);

} // namespace vesk::bench
