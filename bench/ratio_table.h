// Runs the benchmarks of a program and ends with a table of ratios, one row for each number that is to be reached.
#pragma once

#include <string>
#include <vector>

namespace vesk::bench {

// Two benchmarks of one run, and what is asked of their medians.
struct ratio_row {
  enum kind { at_least, at_most };

  std::string work; // what is measured
  std::string ours; // name of the benchmark, as it is printed
  std::string peer;
  kind asked = at_least; // at_least: ours is to be `goal` times as fast, or more; at_most: ours is to cost `goal` times
                         // what the peer costs, or less
  double goal = 0;       // 0: none, the ratio is told for its own sake
  std::string metric = "cpu"; // "cpu", "wall", or a counter; one whose name begins with "seconds" is a time
};

// Runs what the command line asks for, then prints the rows of which both sides were run, as a Markdown table. Every
// benchmark is repeated, in random order, and its median counts. Returns the program's exit status.
int run_with_ratios(int argc, char** argv, const std::vector<ratio_row>& rows);

} // namespace vesk::bench
