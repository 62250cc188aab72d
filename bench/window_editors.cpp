#include "window_editors.h"

#include "editing_host.h"
#include "editors/exchanges_flows_form.h"
#include "editors/segment_form.h"
#include "large_network.h"
#include "ui/editor_window.h"
#include "ui/grid_view.h"

#include <QApplication>
#include <QKeyEvent>
#include <QListView>
#include <benchmark/benchmark.h>
#include <chrono>
#include <functional>
#include <memory>

namespace vesk::bench {

namespace {

void time(benchmark::State& state, const std::function<void()>& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  state.SetIterationTime(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
}

// An editor and its window, painted.
template <class Form>
struct shown_editor {
  explicit shown_editor(editing_host& host) : form(host) {
    if constexpr (requires { form.exchange_mode; }) form.exchange_mode = false;
    window = std::make_unique<editor_window>(nullptr, form);
    window->show();
    paint();
  }
  void paint() { QApplication::processEvents(); }
  grid_view& grid(const char* name) { return *window->findChild<grid_view*>(name); }

  Form form;
  std::unique_ptr<editor_window> window;
};

editing_host& million_segments() {
  static editing_host host;
  if (host.data.segments.empty()) host.data = make_large_network(1'000'000);
  return host;
}

editing_host& many_functions() {
  static editing_host host;
  if (host.data.segments.empty()) {
    host.data = make_large_network(100'000);
    add_flow_functions(host.data, 100'000);
  }
  return host;
}

void open_segments(benchmark::State& state) {
  editing_host& host = million_segments();
  for (auto _ : state) {
    std::unique_ptr<shown_editor<TSegmentForm>> editor;
    time(state, [&] { editor = std::make_unique<shown_editor<TSegmentForm>>(host); });
  }
}

void insert_segment_at_front(benchmark::State& state) {
  editing_host host;
  host.data = million_segments().data;
  shown_editor<TSegmentForm> editor(host);
  for (auto _ : state) {
    host.forget_steps();
    time(state, [&] {
      editor.form.InsertButtonClick();
      editor.paint();
    });
  }
}

void append_segment(benchmark::State& state) {
  editing_host host;
  host.data = million_segments().data;
  shown_editor<TSegmentForm> editor(host);
  grid_view& grid = editor.grid("SegmentFillCalcTable");
  grid.table().set_active(host.data.segments.size() - 1, 0);
  editor.paint();
  for (auto _ : state)
    time(state, [&] {
      QKeyEvent down(QEvent::KeyPress, Qt::Key_Down, Qt::NoModifier);
      QApplication::sendEvent(&grid, &down);
      editor.paint();
    });
  if (host.data.segments.size() == 1'000'000) state.SkipWithError("no row was appended");
}

void open_functions(benchmark::State& state) {
  editing_host& host = many_functions();
  for (auto _ : state) {
    std::unique_ptr<shown_editor<TExchangesFlowsForm>> editor;
    time(state, [&] { editor = std::make_unique<shown_editor<TExchangesFlowsForm>>(host); });
  }
}

void open_list_of_segments(benchmark::State& state) {
  shown_editor<TExchangesFlowsForm> editor(many_functions());
  grid_view& pairs = editor.grid("PairsFillCalcTable");
  for (auto _ : state) {
    time(state, [&] {
      pairs.QAbstractItemView::edit(pairs.model().index(0, 0));
      editor.paint();
    });
    if (!editor.window->findChild<QListView*>("ItemList")) state.SkipWithError("no list");
    pairs.commit_open_editor();
    editor.paint();
  }
}

void add(const char* name, void (*work)(benchmark::State&), int iterations) {
  benchmark::RegisterBenchmark(name, work)->Iterations(iterations)->UseManualTime();
}

} // namespace

void add_editor_benchmarks() {
  add("segments/open", open_segments, 5);
  add("segments/insert", insert_segment_at_front, 3);
  add("segments/append", append_segment, 20);
  add("functions/open", open_functions, 5);
  add("list/open", open_list_of_segments, 20);
}

} // namespace vesk::bench
