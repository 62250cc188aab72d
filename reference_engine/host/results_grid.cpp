#include "host/results_grid.h"

#include <algorithm>
#include <atomic>
#include <string>

namespace reference_engine {

namespace {
constexpr std::int32_t label_size = 256; // for any name, including its terminator
}

ResultsGrid::ResultsGrid(Host& host, const Problem& problem) : host_(host) {
  std::string labels;
  const auto add_label = [&labels](std::string label) {
    label.resize(label_size - 1, '\0');
    labels += label + '\0';
  };
  for (std::size_t s = 0; s < problem.systems.size(); ++s) {
    if (!problem.systems[s].simulated) continue;
    systems_.push_back(s);
    add_label(problem.systems[s].name);
  }
  add_label("Volume, m3");

  std::int32_t size = label_size, columns = static_cast<std::int32_t>(systems_.size() + 1);
  std::int32_t rows = static_cast<std::int32_t>(problem.segments.size()), by_column = 0;
  cells_.resize(static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows));
  host_.put("GRIDINIT", {labels.data(), &size, &columns, &rows});
  host_.put("GRIDDATA", {cells_.data(), &columns, &rows, &by_column});
}

ResultsGrid::~ResultsGrid() {
  host_.put("DONE");
}

// The front end reads cells while they are being written, so each is written in one piece.
void ResultsGrid::show(const State& state) {
  const std::size_t columns = systems_.size() + 1;
  const auto set = [this](std::size_t cell, double value) {
    std::atomic_ref(cells_[cell]).store(static_cast<float>(value), std::memory_order_relaxed);
  };
  for (std::size_t i = 0; i < state.volume.size(); ++i) {
    for (std::size_t k = 0; k < systems_.size(); ++k) set(i * columns + k, state.of(systems_[k])[i]);
    set(i * columns + columns - 1, state.volume[i]);
  }
  host_.put("GRIDUPDATE");
}

} // namespace reference_engine
