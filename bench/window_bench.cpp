// The window: from the start of the process to the first paint of its content, against an empty Qt window; the longest
// time without response of the event loop during a run of 100,000 segments, against 50 ms; and a large grid and chart
// on the screen, against a frame of 60 Hz. Requires a display.
#include "long_river.h"
#include "ratio_table.h"
#include "ui/program.h"
#include "window_editors.h"
#include "window_grids.h"

#include <QApplication>
#include <QEvent>
#include <QTimer>
#include <benchmark/benchmark.h>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

namespace vesk::bench {
namespace {

using std::chrono::steady_clock;

std::string this_program;
std::filesystem::path folder;

double seconds(steady_clock::duration time) {
  return std::chrono::duration<double>(time).count();
}

// Ends the process at the first paint of a widget, and reports the time.
class first_paint final : public QObject {
public:
  bool eventFilter(QObject*, QEvent* event) override {
    if (event->type() == QEvent::Paint)
      QTimer::singleShot(0, [] {
        std::printf("%lld\n", static_cast<long long>(steady_clock::now().time_since_epoch().count()));
        std::fflush(stdout);
        std::_Exit(0);
      });
    return false;
  }
};

std::filesystem::path settings() {
  return folder / "window_bench.ini";
}

// The two child processes, which differ only in their windows.
[[noreturn]] void show_program(QApplication& application) {
  prepare_application(application);
  program whole(application, {{}, settings(), 0}); // the splash's five seconds are not counted
  first_paint watch;
  whole.window().findChild<QWidget*>("InfoPanel")->installEventFilter(&watch);
  whole.run();
}

[[noreturn]] void show_nothing(QApplication& application) {
  QMainWindow window;
  window.setCentralWidget(new QWidget);
  first_paint watch;
  window.centralWidget()->installEventFilter(&watch);
  window.resize(980, 640);
  window.show();
  application.exec();
  std::_Exit(1);
}

void measure_child(benchmark::State& state, const std::string& option) {
  for (auto _ : state) {
    const auto start = steady_clock::now();
    std::FILE* child = popen((this_program + " " + option).c_str(), "r");
    long long painted = 0;
    if (!child || std::fscanf(child, "%lld", &painted) != 1) throw std::runtime_error(option + " has not painted");
    pclose(child);
    state.SetIterationTime(seconds(steady_clock::duration(painted) - start.time_since_epoch()));
  }
}

// The longest time between two passes of the event loop, from the click on the run button to the end of the cancel.
double longest_stall(main_window& window) {
  constexpr auto length = std::chrono::seconds(4);
  TPreveskMainForm& form = window.form();
  steady_clock::duration longest{};
  auto last = steady_clock::now();
  QTimer beat;
  beat.setTimerType(Qt::PreciseTimer);
  QObject::connect(&beat, &QTimer::timeout, [&] {
    const auto now = steady_clock::now();
    longest = std::max(longest, now - last);
    last = now;
  });
  beat.start(1);
  form.RunModelButtonClick();
  if (!form.active_thread) throw std::runtime_error("the run did not start");
  const auto until = steady_clock::now() + length;
  bool moved = false;
  while (steady_clock::now() < until) {
    QApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
    moved = moved || form.ResultsTableGetCellData(99'999, 0);
  }
  if (!moved || !form.active_thread) throw std::runtime_error("nothing ran");
  form.cancel_job();
  while (form.active_thread) QApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
  return seconds(longest);
}

void measure_stall(benchmark::State& state, main_window* window) {
  for (auto _ : state) state.SetIterationTime(longest_stall(*window));
}

void fifty_milliseconds(benchmark::State& state) {
  for (auto _ : state) state.SetIterationTime(0.05);
}

void frame(benchmark::State& state) {
  for (auto _ : state) state.SetIterationTime(1.0 / 60);
}

ratio_row in_frames(const char* work, const char* name, double milliseconds, int iterations = 20) {
  return {work,
          name + ("/iterations:" + std::to_string(iterations)) + "/manual_time",
          "frame_of_60_Hz/iterations:1/manual_time",
          ratio_row::at_most,
          milliseconds * 60 / 1000,
          "wall"};
}

} // namespace
} // namespace vesk::bench

int main(int argc, char** argv) {
  using namespace vesk::bench;
  this_program = std::filesystem::read_symlink("/proc/self/exe").string();
  folder = std::filesystem::path(this_program).parent_path();
  std::ofstream(settings()) << "[SOFTWARE\\TALMO\\VESK\\7.0]\nDatabaseDir=" CATALOGUE "/\n";
  QApplication application(argc, argv);
  if (argc == 2 && std::string(argv[1]) == "--program") show_program(application);
  if (argc == 2 && std::string(argv[1]) == "--empty") show_nothing(application);

  vesk::prepare_application(application);
  vesk::program whole(application, {{}, settings(), 0});
  vesk::main_window& window = whole.window();
  window.form().engine_path = ENGINE;
  while (!window.isVisible() || window.windowTitle().isEmpty()) QApplication::processEvents();
  const auto river = make_long_river(window.form().catalogue.get(), 100'000, 0.0005, 3650);
  window.form().current_data_set = std::make_unique<vesk::prevesk_dataset_data_type>(river);
  window.form().backup_data_set = std::make_unique<vesk::prevesk_dataset_data_type>(river);
  window.form().file_name = (folder / "window_bench.vki").string(); // for the engine's results; the run is cancelled
  window.form().update_menus();

  const auto add = [](const char* name, auto... what) {
    benchmark::RegisterBenchmark(name, what...)->Iterations(1)->UseManualTime();
  };
  add("start/vesk", measure_child, "--program");
  add("start/empty", measure_child, "--empty");
  add("stall/vesk", measure_stall, &window);
  add("stall/limit", fifty_milliseconds);
  add("frame_of_60_Hz", frame);
  add_grid_benchmarks();
  add_chart_benchmarks();
  add_editor_benchmarks();
  const std::string end = "/iterations:1/manual_time";
  const int status = run_with_ratios(argc, argv,
                                     {{"from process start to first paint, against an empty window", "start/vesk" + end,
                                       "start/empty" + end, ratio_row::at_most, 5, "wall"},
                                      {"from process start to first paint, in frames", "start/vesk" + end,
                                       "frame_of_60_Hz" + end, ratio_row::at_most, 300 * 0.06, "wall"},
                                      in_frames("open a grid of 1e6 rows x 30, in frames", "grid/open", 50),
                                      in_frames("scroll it by a page", "grid/scroll", 16),
                                      in_frames("repaint a column of it", "grid/repaint", 16),
                                      in_frames("open a tree of 1e5 loads", "tree/open", 150),
                                      in_frames("redraw a chart of 1e6 points", "chart/redraw", 30),
                                      in_frames("open the segments dialog on 1e6 segments", "segments/open", 250, 5),
                                      in_frames("insert a segment at the front", "segments/insert", 250, 3),
                                      in_frames("append one by the Down key", "segments/append", 16),
                                      in_frames("open the flows dialog on 1e5 functions", "functions/open", 250, 5),
                                      in_frames("open the drop-down list of 1e5 segments", "list/open", 50),
                                      {"longest stall of the event loop in a run of 1e5 segments, against 50 ms",
                                       "stall/vesk" + end, "stall/limit" + end, ratio_row::at_most, 1, "wall"}});
  std::filesystem::remove(settings());
  std::fflush(nullptr);
  std::_Exit(status); // threads may still be ending
}
