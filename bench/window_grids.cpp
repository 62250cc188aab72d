#include "window_grids.h"

#include "charts/graph_form.h"
#include "editing_host.h"
#include "editors/loads_form.h"
#include "ui/chart_view.h"
#include "ui/grid_view.h"
#include "ui/tree_view.h"

#include <QApplication>
#include <QScrollBar>
#include <QWindow>
#include <chrono>
#include <cmath>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace vesk::bench {

namespace {

constexpr std::size_t rows = 1'000'000, column_count = 30;
constexpr int width = 1100, height = 700;

class million_rows final : public grid {
public:
  million_rows() {
    for (std::size_t i = 0; i < column_count; ++i)
      columns_.push_back({"Column " + std::to_string(i + 1), number_cell("#######.####")});
  }

  std::span<const grid_column> columns() const override { return columns_; }
  std::size_t row_count() const override { return rows; }
  cell_value value(std::size_t row, std::size_t column) const override {
    return 0.001 * static_cast<double>(row * columns_.size() + column);
  }
  void set_value(std::size_t, std::size_t, const cell_value&) override {}

private:
  std::vector<grid_column> columns_;
};

// Before a window is on the screen, Qt paints nothing.
void show_painted(QWidget& widget) {
  widget.resize(width, height);
  widget.show();
  while (!widget.windowHandle()->isExposed()) QApplication::processEvents();
  QApplication::processEvents();
}

struct shown_grid {
  shown_grid() : view(table, "Grid", nullptr) { show_painted(view); }

  million_rows content;
  TFillCalcTable table{content};
  grid_view view;
};

void time(benchmark::State& state, const std::function<void()>& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  state.SetIterationTime(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
}

void open_grid(benchmark::State& state) {
  for (auto _ : state) {
    std::unique_ptr<shown_grid> grid;
    time(state, [&] { grid = std::make_unique<shown_grid>(); });
  }
}

void scroll_grid(benchmark::State& state) {
  shown_grid grid;
  QScrollBar* bar = grid.view.verticalScrollBar();
  for (auto _ : state)
    time(state, [&] {
      bar->setValue(bar->value() + bar->pageStep());
      QApplication::processEvents();
    });
}

void repaint_column(benchmark::State& state) {
  shown_grid grid;
  for (auto _ : state)
    time(state, [&] {
      grid.view.model().cells_changed({0, 3, rows - 1, 3});
      QApplication::processEvents();
    });
}

// Five systems with a load in each of 20,000 segments, all nodes open.
void open_tree(benchmark::State& state) {
  constexpr std::size_t segments = 20'000, systems = 5;
  editing_host host;
  host.data.resize_segments(segments);
  for (std::size_t i = 0; i < systems; ++i) {
    system_data_type system;
    for (std::size_t segment = 0; segment < segments; ++segment) {
      loads_data_type load;
      load.segment = static_cast<std::int32_t>(segment);
      system.loads.push_back(load);
    }
    host.data.systems.push_back(system);
  }
  TLoadsForm form(host);
  for (auto _ : state) {
    std::unique_ptr<tree_view> tree;
    time(state, [&] {
      form.FormShow();
      tree = std::make_unique<tree_view>(
          form, [](const std::function<void()>& command) { command(); }, nullptr);
      tree->tree_changed();
      show_painted(*tree);
    });
  }
}

void redraw_chart(benchmark::State& state) {
  auto series = std::make_unique<general_graph_data>(static_cast<std::int32_t>(rows));
  for (std::size_t i = 0; i < rows; ++i) {
    series->x[i] = static_cast<double>(i) / 24;
    series->y[i] = std::sin(static_cast<double>(i) / 5000) + 0.1 * std::sin(static_cast<double>(i));
  }
  TGraphForm graph;
  graph.add_series(std::move(series));
  chart_view view(nullptr);
  view.resize(width, height);
  view.show();
  view.show_graph(&graph);
  QApplication::processEvents();
  for (auto _ : state)
    time(state, [&] {
      view.bounds_changed();
      QApplication::processEvents(); // paints here
    });
}

void add(const char* name, void (*work)(benchmark::State&)) {
  benchmark::RegisterBenchmark(name, work)->Iterations(20)->UseManualTime();
}

} // namespace

void add_grid_benchmarks() {
  add("grid/open", open_grid);
  add("grid/scroll", scroll_grid);
  add("grid/repaint", repaint_column);
  add("tree/open", open_tree);
}

void add_chart_benchmarks() {
  add("chart/redraw", redraw_chart);
}

} // namespace vesk::bench
