// The live results grid: one row for each segment, one column for each simulated system, and the volume.
#ifndef REFERENCE_ENGINE_HOST_RESULTS_GRID_H
#define REFERENCE_ENGINE_HOST_RESULTS_GRID_H

#include "core/problem.h"
#include "core/state.h"
#include "host/host.h"

#include <vector>

namespace reference_engine {

// Its array is borrowed by the front end. The destructor ends the loan before the array is freed.
class ResultsGrid {
public:
  ResultsGrid(Host& host, const Problem& problem);
  ~ResultsGrid();
  ResultsGrid(const ResultsGrid&) = delete;
  ResultsGrid& operator=(const ResultsGrid&) = delete;

  void show(const State& state);

private:
  Host& host_;
  std::vector<std::size_t> systems_;
  std::vector<float> cells_; // [segment][column]
};

} // namespace reference_engine

#endif
