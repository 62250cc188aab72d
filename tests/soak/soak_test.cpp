// Jobs of all kinds through the bundled engine, one after the other in one process, cancelled and held up at random
// moments. At the end there is no more of memory, threads, open files and files than after the first ones.
//
// VESK_SOAK_JOBS sets how many; the moments are those of a fixed seed, as far as the machine's speed leaves them so.
#include "app/main_form.h"
#include "hydro_content.h"
#include "noting_interface.h"
#include "temporary_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <random>
#include <set>
#include <thread>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
extern "C" std::size_t __sanitizer_get_current_allocated_bytes(); // g++ comes without its header
constexpr bool sanitized = true;
#else
#include <malloc.h>
constexpr bool sanitized = false;
#endif

// What has been freed is kept for a while to find its users; little of it, so that the memory's growth can be told.
extern "C" const char* __asan_default_options();
extern "C" const char* __asan_default_options() {
  return "quarantine_size_mb=8";
}

namespace vesk {
namespace {

namespace fs = std::filesystem;
using std::chrono::microseconds;
using std::chrono::steady_clock;

constexpr int segments = 200;

// A chain of segments that water runs through.
std::string chain() {
  std::string text = "MODELTYPE 2\nSEEDDATE 1 11 2000\nSEEDTIME 0 0 0\nENDJULIAN 2\nMINDT 0.000001\nFRACMAXTS 0.9\n"
                     "NPRINT 1\nPRINTFUNC 1 0 0.5\nNUMDT 1\nDTFUNC 1 0 0.01\nHYDSKIPDATE 1 11 2000\nHYDSKIPTIME 0 0 "
                     "0\nICRD 1\nJMAS 1\n"
                     "NUMSEG " +
                     std::to_string(segments) + "\nNINQ 1 1\nNOQS 1 1 " + std::to_string(segments + 1) + "\n";
  for (int i = 1; i <= segments; ++i) {
    const std::string number = std::to_string(i);
    text += "SEGNAME " + number + " \"reach " + number + "\"\nVOLUME " + number + " 86400\nINITC 1 " + number + " 2\n";
  }
  for (int i = 1; i <= segments + 1; ++i) {
    const std::string pair = " 1 1 " + std::to_string(i) + " ";
    text += "JQ" + pair + std::to_string(i - 1) + "\nIQ" + pair + std::to_string(i > segments ? 0 : i) + "\n";
  }
  return text + "NBRKQ 1 1 1\nNOQFUNC 1 1 1 0 1\nCSVOPENABLED 11 1\n";
}

std::ptrdiff_t entries(const fs::path& folder) {
  return std::distance(fs::directory_iterator(folder), {});
}

struct resources {
  std::size_t in_use = 0;   // bytes of the heap
  std::size_t resident = 0; // bytes of the process
  std::ptrdiff_t threads = 0, open_files = 0;

  static resources now() {
    resources result;
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    result.in_use = __sanitizer_get_current_allocated_bytes();
#else
    const struct mallinfo2 heap = mallinfo2();
    result.in_use = heap.uordblks + heap.hblkhd;
#endif
    std::size_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages >> pages;
    result.resident = pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    result.threads = entries("/proc/self/task");
    result.open_files = entries("/proc/self/fd");
    return result;
  }
  void print(const char* when) const {
    std::printf("%-16s %8.3f MB in use, %7.1f MB resident, %td threads, %td open files\n", when,
                static_cast<double>(in_use) / 1e6, static_cast<double>(resident) / 1e6, threads, open_files);
  }
};

class Soak : public testing::Test {
protected:
  enum kind { run, import, export_, check, read_hyd, network, restart, linked_run, kinds };
  static constexpr const char* names[kinds] = {"run",      "import",         "export",       "check",
                                               "read hyd", "import network", "load restart", "linked run"};

  Soak() {
    fs::create_directory(folder.path / "logs");
    form.set_database_folder(DATABASE_FOLDER);
    form.engine_path = ENGINE;
    form.log_file_name = folder.path / "logs/LOG.TXT";
    form.set_diagnostic_level(2);
  }
  ~Soak() override {
    if (form.active_thread) form.cancel_job();
    while (live_thread_count() > 0) wait_and_synchronize(std::chrono::milliseconds(1));
  }

  // What all jobs start from: the chain, the network of the hydrodynamic file, and the files that jobs read.
  void make_models() {
    folder.write("river.inp", chain());
    HydroContent content;
    content.values["flow"] = {2, 1, 1, 1, 1, 1, 1, 1, 1};
    content.values["volume"] = {86400, 86400, 100, 172800, 86400, 100, 172800, 86400, 100};
    content.write(folder.file("river.hyd"));
    form.import_file(folder.file("river.inp"));
    finish();
    ASSERT_TRUE(form.current_data_set);
    river = *form.current_data_set;
    river.hydrodynamic_file = "river.hyd";
    prepare(export_);
    form.export_file(folder.file("river.vkn"));
    finish();
    launch(export_);
    finish();
    launch(run);
    finish();
    launch(read_hyd);
    finish();
    linked = *form.current_data_set;
    linked.flow_option = 3;
    std::this_thread::sleep_for(std::chrono::milliseconds(200)); // a thread that has ended takes a moment to go
    threads_at_start = entries("/proc/self/task");
    ASSERT_EQ(problems(run), std::vector<std::string>{});
    ASSERT_EQ(linked.segments.size(), 3U);
    ASSERT_TRUE(fs::exists(folder.file("river.rst")));
  }

  void prepare(kind job) {
    for (auto* noted : {&ui.lines, &ui.boxes, &ui.headings, &ui.shown, &ui.series, &ui.results}) noted->clear();
    if (!form.current_data_set) form.new_data_set();
    *form.current_data_set = job == linked_run ? linked : river;
    form.current_data_set->solution_type = random(1, 3);
    form.commit_snapshot();
    form.file_name = folder.file(job == linked_run ? "linked.vki" : "river.vki"); // the restart file fits one of them
    form.set_logging_enabled(random(1, 20) == 1);
  }

  void launch(kind job, bool long_run = false) {
    prepare(job);
    if (long_run) form.current_data_set->end_date += job == linked_run ? 0 : 500;
    switch (job) {
    case run:
    case linked_run: return form.RunModelButtonClick();
    case import: return form.import_file(folder.file("river.inp"));
    case export_: return form.export_file(folder.file("out.inp"));
    case check: return form.start_validity_check();
    case read_hyd: return form.start_read_hyd_file();
    case network: return form.start_import_network(folder.file("river.vkn"));
    case restart: return form.start_load_restart_file(folder.file("river.rst"));
    case kinds: break;
    }
  }

  // Serves the job to its end, as the window does.
  void finish() {
    for (auto shown = steady_clock::now(); form.active_thread || live_thread_count() > 0;) {
      wait_and_synchronize(std::chrono::milliseconds(1));
      if (steady_clock::now() - shown < std::chrono::milliseconds(10)) continue;
      show();
      shown = steady_clock::now();
    }
  }

  void show() {
    form.UpdateTimerTimer();
#if !defined(__SANITIZE_THREAD__) // the grid is read while the engine writes into it, on purpose
    for (int row = 0; row < segments; ++row) form.ResultsTableGetCellData(row, row % 4);
#endif
  }

  void serve_for(microseconds time) {
    for (const auto end = steady_clock::now() + time; form.active_thread && steady_clock::now() < end;)
      if (!CheckSynchronize()) std::this_thread::yield();
  }

  // One job, perhaps stopped and resumed, perhaps cancelled.
  void work(kind job) {
    const bool cancelled = random(0, 1) == 1, stopped = random(0, 7) == 0;
    launch(job, cancelled);
    serve_for(microseconds(random(0, 1) == 0 ? random(0, 300) : random(0, 20'000)));
    if (stopped && form.active_thread) {
      form.PriorityTrackBarChange(0);
      serve_for(microseconds(random(0, 2000)));
    }
    if (cancelled && form.active_thread) {
      form.cancel_job();
      ++cancels;
    }
    if (stopped && form.active_thread) form.PriorityTrackBarChange(random(1, 3));
    finish();
    if (form.last_job().cancelled && form.return_code() == 5) ++cut_short;
    ASSERT_EQ(problems(job), std::vector<std::string>{}) << names[job] << (cancelled ? ", cancelled" : "");
    ASSERT_TRUE(form.return_code() == 0 || (cancelled && form.return_code() == 5)) << names[job];
  }

  // Messages that the user should not have seen.
  std::vector<std::string> problems(kind job) const {
    std::vector<std::string> result;
    if (form.last_job().failed()) result.push_back(form.last_job().failure);
    if (job == check) return result;
    result.insert(result.end(), ui.boxes.begin(), ui.boxes.end());
    std::copy_if(ui.lines.begin(), ui.lines.end(), std::back_inserter(result),
                 [](const std::string& line) { return line.starts_with("2 "); });
    return result;
  }

  // The steps of Undo are kept on purpose: all but one are dropped before anything is counted.
  void drop_steps() {
    while (!form.undo_label().empty()) form.UndoItemClick();
    launch(import);
    finish();
  }

  resources at_rest() {
    drop_steps();
    prepare(run);
    const auto end = steady_clock::now() + std::chrono::seconds(5); // threads that have ended take a moment to go
    resources result = resources::now();
    while (result.threads > threads_at_start && steady_clock::now() < end) {
      std::this_thread::yield();
      result = resources::now();
    }
    return result;
  }

  int random(int first, int last) {
    return std::uniform_int_distribution(first, last)(numbers);
  }

  std::ptrdiff_t threads_at_start = 0; // after the first jobs: a sanitizer has started one by then
  std::mt19937 numbers{20'000'111};
  temporary_folder folder;
  noting_interface ui;
  TPreveskMainForm form{ui, folder.path / "settings.ini"};
  prevesk_dataset_data_type river, linked;
  int cancels = 0, cut_short = 0;
};

TEST_F(Soak, ManyJobsLeaveNoFilesOrThreads) {
  const char* wanted = std::getenv("VESK_SOAK_JOBS");
  const int jobs = wanted ? std::max(std::atoi(wanted), 20) : 100;
  make_models();
  const auto began = steady_clock::now();
  resources early;
  for (int i = 0; i < jobs && !HasFatalFailure(); ++i) {
    if (i == jobs / 4) early = at_rest();
    work(static_cast<kind>(i < kinds ? i : random(0, kinds - 1)));
  }
  if (HasFatalFailure()) return;
  const resources late = at_rest();
  std::printf("%d jobs in %.1f s, %d cancelled, %d of them before their end\n", jobs,
              std::chrono::duration<double>(steady_clock::now() - began).count(), cancels, cut_short);
  early.print("after a quarter");
  late.print("at the end");
  EXPECT_LE(late.threads, early.threads);
  EXPECT_LE(late.open_files, early.open_files);
  // The tables of the deques that hold the steps of Undo never shrink: some 30 bytes a job.
  EXPECT_LE(late.in_use, early.in_use + 16'384 + 40 * static_cast<std::size_t>(jobs));
  EXPECT_LE(late.resident, early.resident + (sanitized ? 64'000'000 : 8'000'000));

  std::set<std::string> files;
  for (const auto& entry : fs::directory_iterator(folder.path)) {
    const std::string name = entry.path().filename();
    if (name.find(".cancelled.") == name.npos) files.insert(name); // kept where the last run was cut short
  }
  const std::set<std::string> expected{
      "linked.nc", "linked.rst", "linked.run.json", "linked_tracer.csv", "logs",      "out.inp",         "river.hyd",
      "river.inp", "river.nc",   "river.rst",       "river.run.json",    "river.vkn", "river_tracer.csv"};
  EXPECT_EQ(files, expected);
}

} // namespace
} // namespace vesk
