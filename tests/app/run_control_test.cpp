#include "app/commands.h"
#include "app/data_set_summary.h"
#include "app/main_form.h"
#include "app/time_remaining.h"
#include "behaviour_catalogue.h"
#include "noting_interface.h"
#include "temporary_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <sys/resource.h>

namespace vesk {
namespace {

using lines = std::vector<std::string>;

class RunControl : public testing::Test {
protected:
  RunControl() {
    write_behaviour_catalogue(folder.path);
    form.set_database_folder(folder.path);
    form.engine_path = MISBEHAVING_ENGINE;
    form.file_name = folder.file("river.vki");
  }
  ~RunControl() override {
    if (form.active_thread) form.cancel_job();
    finish();
  }

  // A new data set whose model makes the engine behave as named.
  void make_data(const std::string& behaviour) {
    form.new_data_set();
    form.file_name = folder.file("river.vki");
    form.current_data_set->model_type = model_of(behaviour);
    form.current_data_set->refresh_from_catalogue(false);
    form.current_data_set->segments.resize(1);
    ui.shown.clear();
  }
  // Serves the job until it has ended and its thread is gone.
  void finish() {
    while (form.active_thread || live_thread_count() > 0) wait_and_synchronize(std::chrono::milliseconds(1));
  }

  temporary_folder folder;
  noting_interface ui;
  TPreveskMainForm form{ui, folder.path / "settings.ini"};
};

TEST_F(RunControl, ARunLeavesItsRecordUnlessItLeftTheOldResults) {
  make_data("says run");
  form.RunModelButtonClick();
  finish();
  const std::string record = folder.read("river.run.json");
  EXPECT_NE(record.find("\"class\": \"good\""), record.npos) << record;
  EXPECT_NE(record.find("\"segments\": ["), record.npos);
  make_data("throws");
  form.RunModelButtonClick();
  finish();
  EXPECT_EQ(folder.read("river.run.json"), record);
}

// Good results are never lost to a cancelled, failed or careless run.
TEST_F(RunControl, TheResultsOfTheRunBeforeAreKeptAndCancelledOnesReplaceNone) {
  const auto run = [&](const char* behaviour, const char* name) {
    make_data(behaviour);
    form.current_data_set->segments.edit(0).name = name;
    form.RunModelButtonClick();
    while (std::string(behaviour) == "writes cancelled results" && form.active_thread &&
           !form.active_thread->Terminated())
      if (wait_and_synchronize(std::chrono::milliseconds(1)); !ui.lines.empty()) form.cancel_job();
    finish();
  };
  const auto class_in = [&](const char* record) {
    const std::string text = folder.read(record);
    const std::size_t at = text.find("\"class\": \"");
    return at == text.npos ? "" : text.substr(at + 10, text.find('"', at + 10) - at - 10);
  };
  const auto files = [&] {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder.path))
      if (const std::string name = entry.path().filename(); name.find("river") != name.npos) names.insert(name);
    return names;
  };
  run("publishes results", "not kept");
  run("publishes results", "one");
  EXPECT_EQ(files(), (std::set<std::string>{"river.nc", "river.run.json"})); // only in a window
  form.keeps_previous_results = true;
  const std::string record = folder.read("river.run.json");
  run("publishes results", "two");
  EXPECT_EQ(folder.read("river.nc") + folder.read("river.previous.nc"), "twoone");
  EXPECT_EQ(folder.read("river.previous.run.json"), record);
  EXPECT_EQ(ui.lines.back(), "0 Results written: river.nc (3 bytes), in " + folder.path.native() + ".");
  ui.lines.clear();

  run("writes cancelled results", "part");
  EXPECT_EQ(folder.read("river.cancelled.nc"), "part");
  EXPECT_EQ(class_in("river.cancelled.run.json"), "cancelled");
  EXPECT_EQ(class_in("river.run.json"), "good");
  run("throws", "");
  const std::set<std::string> all{"river.nc",           "river.run.json",
                                  "river.previous.nc",  "river.previous.run.json",
                                  "river.cancelled.nc", "river.cancelled.run.json"};
  EXPECT_EQ(files(), all);
  EXPECT_EQ(folder.read("river.nc") + folder.read("river.previous.nc"), "twoone");

  // Results without a record do not get the older one.
  std::filesystem::remove(folder.path / "river.run.json");
  run("publishes results", "three");
  EXPECT_EQ(folder.read("river.nc") + folder.read("river.previous.nc"), "threetwo");
  EXPECT_EQ(files(), (std::set<std::string>{"river.nc", "river.run.json", "river.previous.nc"}));
  run("writes into its results", "");
  EXPECT_EQ(folder.read("river.nc") + folder.read("river.previous.nc"), "written overtwo");
}

TEST_F(RunControl, ResultsSayWhatHasChangedSinceTheirRun) {
  make_data("publishes results");
  prevesk_dataset_data_type& data = *form.current_data_set;
  const auto words = [&] { return origin_in_words(state_of_results(data, folder.path / "river")); };
  const auto rows = [&] {
    const results_state state = state_of_results(data, folder.path / "river");
    std::string text;
    for (const summary_row& row : summary_of_runs(data, &state)) text += row.caption + ": " + row.text + "\n";
    return text;
  };
  EXPECT_EQ(rows(), "Queries: none\nResults: none yet; Model > Execute runs the model\n");
  import_query_descriptor& query = data.print_intervals.query.edit();
  query.file_name = "gauges.csv";
  query.deferred = true;
  folder.write("gauges.csv", "1");
  form.execute_query = [](const auto&, const auto&, point_list&) { return query_report{.rows = 1, .points = 1}; };
  form.RunModelButtonClick();
  finish();
  EXPECT_EQ(words(), "from this data set");
  EXPECT_NE(rows().find("Queries: 1 series filled before each run, last "), std::string::npos) << rows();
  EXPECT_NE(rows().find("\nResults: river.nc of "), std::string::npos) << rows();
  data.segments.edit(0).volume = 7;
  data.description = "another";
  EXPECT_EQ(words(), "changed since: 1 segment and description");
  folder.write("gauges.csv", "22");
  EXPECT_EQ(words(), "changed since: 1 segment and description; the table gauges.csv");
  folder.write("river.nc", "by another program");
  EXPECT_EQ(words(), "from which data set is not recorded");
  folder.write("river.run.json", "{");
  EXPECT_EQ(words(), "from which data set is not recorded");
}

TEST_F(RunControl, TheSummaryDescribesTheOpenDataSet) {
  make_data("returns");
  prevesk_dataset_data_type& data = *form.current_data_set;
  data.seed_date = 40909; // 1 January 2012
  data.end_date = 40940;
  data.seed_time = data.end_time = 0.25;
  data.segments.resize(3);
  data.systems.edit(0).loads.resize(2);
  const auto rows = [&] {
    std::string text;
    for (const summary_row& row : summary_of(data)) text += row.caption + ": " + row.text + "\n";
    return text;
  };
  EXPECT_EQ(rows(), "Model: Model\nPeriod: 1 Jan 2012 06:00 to 1 Feb 2012 06:00, 31 days\n"
                    "Network: 3 segments, 0 flow pairs, 0 exchange pairs\nSystems: 1 system, 2 loads, 0 boundaries\n"
                    "Solution: technique 0, net flows\n");
  data.end_date = 40909;
  data.model_type = 0;
  EXPECT_NE(rows().find("Model: none yet; Data > Data set chooses one\nPeriod: 1 Jan 2012 06:00 to 1 Jan 2012 06:00; "
                        "the end is not after the start\n"),
            std::string::npos)
      << rows();
  data.end_date = 1e9;
  EXPECT_NE(rows().find("\nPeriod: The end of the simulation, "), std::string::npos) << rows();
}

TEST_F(RunControl, ALargeFileIsCopiedWholeOrNotAtAll) {
  const std::string content(9'000'000, 'x');
  folder.write("a", content);
  EXPECT_FALSE(copy_file_in_pieces(folder.path / "a", folder.path / "b", [](int percent) { return percent < 40; }));
  EXPECT_FALSE(std::filesystem::exists(folder.path / "b"));
  EXPECT_TRUE(copy_file_in_pieces(folder.path / "a", folder.path / "b", [](int) { return true; }));
  EXPECT_EQ(folder.read("b"), content);
  EXPECT_EQ(std::filesystem::last_write_time(folder.path / "b"), std::filesystem::last_write_time(folder.path / "a"));
  EXPECT_THROW(copy_file_in_pieces(folder.path / "a", folder.path / "b", [](int) { return true; }), file_exception);
}

TEST_F(RunControl, ARunWorksOnACopyAndShowsItsControls) {
  make_data("reports");
  const prevesk_dataset_data_type before = *form.current_data_set;
  form.RunModelButtonClick();
  EXPECT_FALSE(ui.commands.idle);
  finish();
  EXPECT_EQ(*form.current_data_set, before);
  EXPECT_EQ(ui.lines, (lines{"0 a line", "2 a failure"}));
  EXPECT_EQ(form.return_code(), 4);
  ASSERT_EQ(ui.headings.size(), 1U);
  EXPECT_TRUE(ui.headings[0].starts_with("Run of river.vki, ")) << ui.headings[0];
  EXPECT_NE(ui.headings[0].find(": failed with return code 4, 0."), std::string::npos) << ui.headings[0];
  EXPECT_EQ(form.file_name, "other.vki"); // named by the engine
  EXPECT_TRUE(ui.commands.idle);
  EXPECT_FALSE(ui.closed);
  const lines at_end{"run off", "grid off", "progress 0", "info ", "time"};
  ASSERT_GE(ui.shown.size(), at_end.size());
  EXPECT_EQ(lines(ui.shown.end() - 5, ui.shown.end()), at_end);
}

TEST_F(RunControl, ASecondClickCancels) {
  make_data("waits for cancel");
  form.quit_after_run = true;
  form.RunModelButtonClick();
  while (ui.lines.empty()) wait_and_synchronize(std::chrono::milliseconds(1)); // until the engine works
  form.RunModelButtonClick();
  finish();
  EXPECT_NE(std::find(ui.lines.begin(), ui.lines.end(), "0 Terminating model thread... please wait..."),
            ui.lines.end());
  EXPECT_TRUE(form.last_job().cancelled);
  EXPECT_TRUE(ui.closed);
}

TEST_F(RunControl, EachLauncherIsRefusedWhileAJobRuns) {
  make_data("waits for cancel");
  form.RunModelButtonClick();
  ui.file = "some.file";
  form.start_import_export(true);
  form.start_validity_check();
  form.start_read_hyd_file();
  form.start_import_network();
  form.start_load_restart_file();
  EXPECT_EQ(ui.boxes, (lines{"Cannot Import/Export now: The import/export thread is busy. Try again later.",
                             "Cannot determine parameters now: The parameter thread is busy. Try again later.",
                             "Cannot read hyd file now: The read hyd file thread is busy. Try again later.",
                             "Cannot import network now: The import network thread is busy. Try again later.",
                             "Cannot load restart file now: The load restart file thread is busy. Try again later."}));
}

TEST_F(RunControl, OtherJobsCopyTheirDataSetBack) {
  struct {
    void (*launch)(TPreveskMainForm&);
    const char* name;
  } const jobs[] = {{[](TPreveskMainForm& f) { f.start_read_hyd_file(); }, "hyd"},
                    {[](TPreveskMainForm& f) { f.start_import_network("a.vkn"); }, "network"},
                    {[](TPreveskMainForm& f) { f.start_load_restart_file("a.rst"); }, "restart"}};
  for (const auto& job : jobs) {
    make_data("returns");
    job.launch(form);
    EXPECT_TRUE(ui.commands.idle); // the busy boxes, not the commands, keep a second job away
    EXPECT_TRUE(ui.commands.running);
    finish();
    EXPECT_EQ(form.current_data_set->segments[0].name, job.name);
    EXPECT_EQ(ui.shown, (lines{"progress 0", "info ", "time"}));
  }
}

TEST_F(RunControl, EveryJobCanBeCancelledWhateverTheDataSetAndLeavesNoProgress) {
  for (const bool run : {true, false}) {
    make_data("waits for cancel");
    run ? form.RunModelButtonClick() : form.start_validity_check();
    while (ui.lines.empty()) wait_and_synchronize(std::chrono::milliseconds(1));
    form.new_data_set(); // without a model
    EXPECT_TRUE(is_enabled(find_command("RunModelButton").condition, ui.commands));
    form.RunModelButtonClick();
    finish();
    EXPECT_TRUE(form.last_job().cancelled);
    EXPECT_FALSE(is_enabled(find_command("RunModelButton").condition, ui.commands));
    EXPECT_EQ(std::count(ui.shown.begin(), ui.shown.end(), "time"), run ? 2 : 1); // a run clears what its queries left
    ui.lines.clear();
  }
  form.cancel_job(); // too late
  EXPECT_EQ(ui.lines, lines{});
}

TEST_F(RunControl, TheValidityCheckListsWhatItFinds) {
  const std::string marks_follow =
      "0 Not limits of the engine, but worth a look; their cells are marked in the windows of Data:";
  make_data("returns"); // the engine's limit is one segment, none of anything else
  form.current_data_set->segments.resize(2);
  form.current_data_set->time_steps.points.push_back({});
  form.start_validity_check();
  finish();
  EXPECT_EQ(ui.boxes, lines{"Validity check failed: Problems were detected"});
  EXPECT_EQ(ui.lines, (lines{"2 Maximum of 1 segments exceeded", "2 Tracer system has no boundaries.",
                             "2 Maximum of 0 time/value pairs for time steps exceeded", marks_follow,
                             "1 Print Interval: This series is used, but it has no points.",
                             "1 Time Step, row 1: The bundled engine refuses an interval of 0 or less."}));
  EXPECT_FALSE(form.last_job().checked);

  ui.boxes.clear();
  ui.lines.clear();
  make_data("returns");
  form.current_data_set->systems.edit(0).gsysbypass = system_bypassed;
  form.start_validity_check();
  finish();
  EXPECT_EQ(ui.boxes, lines{"Validity check passed: No problems were detected"});
  EXPECT_EQ(ui.lines, (lines{"1 BYPASSED Tracer system has no boundaries.", marks_follow,
                             "1 Print Interval: This series is used, but it has no points.",
                             "1 Time Step: This series is used, but it has no points."}));
}

TEST_F(RunControl, AnImportIsFollowedByTheRunThatWasAskedFor) {
  form.run_on_start = form.quit_after_run = true;
  form.import_file(folder.file("old.inp"));
  finish();
  EXPECT_EQ(ui.lines, (lines{"0 import 1", "0 run"}));
  EXPECT_EQ(std::count(ui.shown.begin(), ui.shown.end(), "run on"), 1);
  EXPECT_TRUE(ui.closed);
}

TEST_F(RunControl, ADeferredQueryThatCannotBeExecutedStopsTheRun) {
  make_data("returns");
  form.current_data_set->time_steps.query.edit().deferred = true;
  form.execute_query = [](const import_query_descriptor&, const prevesk_dataset_data_type&,
                          point_list&) -> query_report { throw query_engine_exception("no such table"); };
  form.RunModelButtonClick();
  EXPECT_EQ(form.active_thread, nullptr);
  const std::string cause = "Live query for time series \"Time step\" failed: no such table";
  EXPECT_EQ(ui.boxes, lines{"Live query error: " + cause});
  EXPECT_EQ(ui.lines, lines{"2 " + cause});
  EXPECT_EQ(lines(ui.shown.end() - 3, ui.shown.end()), (lines{"progress 0", "info ", "time"}));
  EXPECT_EQ(form.failures(), 1);
  form.skip_deferred_queries = true;
  form.RunModelButtonClick();
  EXPECT_NE(form.active_thread, nullptr);
}

// The label of a failure is given, all else counts segments as a user does.
TEST_F(RunControl, QueriesNameTheirSeries) {
  make_data("returns");
  form.current_data_set->segments.edit(0).name = "Weir";
  auto& loads = form.current_data_set->systems.edit(0).loads;
  loads = {{}, {}};
  loads.edit(1).segment = 7; // outside
  for (std::size_t i = 0; i < 2; ++i) loads.edit(i).query.edit().deferred = true;
  int executed = 0;
  form.execute_query = [&](const import_query_descriptor&, const prevesk_dataset_data_type&, point_list&) {
    if (++executed == 3) throw query_engine_exception("gone");
    return query_report{};
  };
  form.RunModelButtonClick();
  finish();
  EXPECT_EQ(ui.series, (lines{"Load of Tracer in segment 1 (Weir)", "Load of Tracer in segment 8"}));
  form.RunModelButtonClick();
  EXPECT_EQ(ui.boxes, lines{"Live query error: Live query for time series \"Loads for system 'Tracer' segment id: 0\" "
                            "failed: gone"});
}

TEST_F(RunControl, QueriesOfARunLeaveTheDataSetAndThoseOfTheCommandChangeIt) {
  make_data("returns");
  form.current_data_set->print_intervals.query.edit().deferred = true;
  form.current_data_set->time_steps.query.edit().deferred = true;
  int executed = 0;
  form.execute_query = [&](const import_query_descriptor&, const prevesk_dataset_data_type&, point_list& points) {
    if (++executed == 4) throw query_engine_exception("gone");
    points.push_back({});
    return query_report{};
  };
  form.RunModelButtonClick();
  finish();
  EXPECT_EQ(executed, 2);
  EXPECT_TRUE(form.current_data_set->time_steps.points.empty());
  EXPECT_FALSE(form.execute_all_deferred_queries()); // fails at the second: both are as before
  EXPECT_TRUE(ui.headings.back().ends_with(": not executed")) << ui.headings.back();
  EXPECT_TRUE(form.current_data_set->print_intervals.points.empty());
  EXPECT_TRUE(form.current_data_set->print_intervals.query->deferred);
  ui.take_boxes();
  for (const box_answer answer : {box_answer::no, box_answer::yes}) {
    ui.answer = answer;
    form.ExectutealldeferredqueriesItemClick();
    EXPECT_EQ(form.current_data_set->time_steps.points.size(), answer == box_answer::yes ? 1U : 0U);
  }
  EXPECT_EQ(ui.boxes, lines(2, "Execute all deferred queries?: This will execute all deferred queries and place the "
                               "query results\r\n in the appropriate tables within the VKI file. Are you sure "
                               "that\r\n you wish to do this?"));
  EXPECT_FALSE(form.current_data_set->time_steps.query->deferred);
  EXPECT_TRUE(ui.headings.back().starts_with("Deferred queries of ")) << ui.headings.back();
  EXPECT_NE(ui.headings.back().find(": finished, "), std::string::npos) << ui.headings.back();
  EXPECT_EQ(ui.shown.end()[-3], "progress 0");
}

TEST_F(RunControl, CancelledQueriesLeaveEverythingAsItWas) {
  make_data("returns");
  form.current_data_set->print_intervals.query.edit().deferred = true;
  form.current_data_set->time_steps.query.edit().deferred = true;
  int executed = 0;
  form.execute_query = [&](const import_query_descriptor&, const prevesk_dataset_data_type&, point_list& points) {
    points.push_back({});
    if (++executed == 2) stop_if_cancelled();
    return query_report{.rows = 1, .points = 1};
  };
  ui.cancels_long_work = true;
  EXPECT_FALSE(form.execute_all_deferred_queries());
  EXPECT_EQ(executed, 2);
  EXPECT_TRUE(form.current_data_set->print_intervals.points.empty());
  EXPECT_TRUE(form.current_data_set->print_intervals.query->deferred);
  executed = 0;
  form.RunModelButtonClick();
  EXPECT_EQ(form.active_thread, nullptr);
  EXPECT_EQ(ui.lines, lines(2, "1 The queries were cancelled. The data set is unchanged."));
  EXPECT_EQ(ui.shown.end()[-3], "progress 0");
  EXPECT_EQ(form.failures(), 0);
  EXPECT_EQ(ui.boxes, lines{});

  ui.cancels_long_work = false;
  ui.in_long_work = [this] { form.new_data_set(); }; // as a job's end may
  EXPECT_FALSE(form.execute_all_deferred_queries());
  EXPECT_TRUE(form.current_data_set->print_intervals.points.empty());
  EXPECT_EQ(ui.lines.back(), "1 The data set was replaced while its queries were executed. Their results were "
                             "dropped.");
}

TEST_F(RunControl, AnEngineThatCannotBeLoadedStartsNothing) {
  make_data("returns");
  form.engine_path = folder.path / "gone.so";
  form.RunModelButtonClick();
  EXPECT_EQ(form.active_thread, nullptr);
  EXPECT_EQ(ui.boxes, lines{"Error: Engine library " + folder.file("gone.so") + " does not exist."});
}

TEST_F(RunControl, TheGridReadsTheEnginesArrayUntilTheEnd) {
  make_data("shows a grid"); // 1 2 / 3 4 by rows, set up for two rows
  form.RunModelButtonClick();
  while (ui.lines.empty()) wait_and_synchronize(std::chrono::milliseconds(1));
  EXPECT_EQ(form.ResultsTableGetCellData(0, 1), 2.0);
  EXPECT_EQ(form.ResultsTableGetCellData(1, 0), 3.0);
  EXPECT_EQ(form.ResultsTableGetCellData(2, 0), std::nullopt);
  EXPECT_EQ(form.ResultsTableGetCellData(-1, 0), std::nullopt);
  ui.shown.clear();
  form.UpdateTimerTimer();
  EXPECT_EQ(ui.shown, (lines{"progress 50", "time Time remaining: 0:00:00", "grid on", "repaint"}));
  ui.shown.clear();
  form.UpdateTimerTimer(); // nothing new
  EXPECT_EQ(ui.shown, lines{});
  form.cancel_job();
  finish();
  EXPECT_EQ(form.ResultsTableGetCellData(0, 0), std::nullopt);
}

TEST_F(RunControl, NoCellIsReadOutsideTheEnginesArray) {
  make_data("shows a short grid"); // set up for 4 rows of 2, with an array of 3 by 2: 1 2 3 / 4 5 6
  form.RunModelButtonClick();
  while (ui.lines.empty()) wait_and_synchronize(std::chrono::milliseconds(1));
  EXPECT_EQ(form.ResultsTableGetCellData(1, 2), 6.0);
  for (const auto& [row, column] : {std::pair(2, 0), std::pair(3, 1), std::pair(0, 3)})
    EXPECT_EQ(form.ResultsTableGetCellData(row, column), std::nullopt) << row << " " << column;
  form.cancel_job();
  finish();

  make_data("shows a short grid inverted");
  ui.lines.clear();
  form.RunModelButtonClick();
  while (ui.lines.empty()) wait_and_synchronize(std::chrono::milliseconds(1));
  EXPECT_EQ(form.ResultsTableGetCellData(2, 1), 6.0);
  for (const auto& [row, column] : {std::pair(3, 0), std::pair(0, 2)})
    EXPECT_EQ(form.ResultsTableGetCellData(row, column), std::nullopt) << row << " " << column;
}

// A platform that refuses all but to stop and to go on.
struct grudging_platform final : priority_platform {
  explicit grudging_platform(ResizableThread& thread) : worker(thread) {}
  bool suspend() override { return worker.Suspend(), true; }
  bool resume() override { return worker.Resume(), true; }
  bool set_process_class(process_class) override { return false; }
  bool set_thread_priority(int) override { return false; }
  ResizableThread& worker;
};

TEST_F(RunControl, AChangeOfPriorityThatIsRefusedTakesTheBarBack) {
  form.PriorityTrackBarChange(5); // no job
  make_data("waits for cancel");
  form.RunModelButtonClick();
  EXPECT_EQ(ui.priority_position, 3);
  while (ui.lines.empty()) wait_and_synchronize(std::chrono::milliseconds(1));
  form.priorities = std::make_unique<grudging_platform>(*form.active_thread);
  for (const int position : {4, 5, 6}) form.PriorityTrackBarChange(position); // one drag
  EXPECT_EQ(ui.priority_position, 3);
  EXPECT_EQ(ui.lines, (lines{"0 waiting", "2 Could not change model priority"}));
}

// As root the system grants all of it, as an ordinary user it refuses the upper three positions.
TEST_F(RunControl, PrioritiesReachTheSystemAndEndWithTheJob) {
  const auto nice_of = [](int thread) { return getpriority(PRIO_PROCESS, static_cast<id_t>(thread)); };
  const int before = nice_of(0);
  make_data("waits for cancel");
  form.RunModelButtonClick();
  while (ui.lines.empty()) wait_and_synchronize(std::chrono::milliseconds(1));
  const int worker = form.active_thread->thread_number();
  for (const auto& [position, nice] : {std::pair(5, -10), {6, -15}, {4, -5}, {6, -15}}) {
    const bool granted = form.change_priority(position);
    EXPECT_EQ(form.active_thread->priority_position, granted ? position : 3);
    EXPECT_EQ(nice_of(worker), granted ? nice : before) << position;
    EXPECT_EQ(nice_of(0), granted && position == 6 ? nice : before) << position;
    EXPECT_EQ(form.active_thread->GetPriority() < tpNormal, false); // the gate does not hold it back
  }
  form.cancel_job();
  finish();
  EXPECT_EQ(nice_of(0), before);
}

TEST_F(RunControl, AStoppedJobSeesACancelOnceItIsMoved) {
  make_data("waits for cancel");
  form.RunModelButtonClick();
  while (ui.lines.empty()) wait_and_synchronize(std::chrono::milliseconds(1));
  form.PriorityTrackBarChange(0);
  EXPECT_EQ(form.priority_word, "Stopped");
  EXPECT_TRUE(form.active_thread->Suspended());
  form.cancel_job();
  for (int i = 0; i < 20; ++i) wait_and_synchronize(std::chrono::milliseconds(2));
  ASSERT_NE(form.active_thread, nullptr);
  form.PriorityTrackBarChange(1);
  EXPECT_EQ(form.priority_word, "Idle");
  EXPECT_EQ(form.active_thread->GetPriority(), tpLowest);
  finish();
  EXPECT_TRUE(form.last_job().cancelled);
}

TEST_F(RunControl, ACancelledCheckGivesNoVerdict) {
  make_data("waits for cancel");
  form.start_validity_check();
  while (ui.lines.empty()) wait_and_synchronize(std::chrono::milliseconds(1));
  form.cancel_job();
  finish();
  EXPECT_EQ(ui.boxes, lines{});
  EXPECT_FALSE(form.last_job().checked);
}

TEST_F(RunControl, TheFileMenusJobsAskForAName) {
  make_data("returns");
  form.ImportItemClick(); // the dialog is cancelled
  EXPECT_EQ(ui.asked_file, "Import in " + folder.path.native() + "/");
  form.ExportItemClick();
  EXPECT_EQ(ui.asked_file, "Export in " + folder.path.native() + "/");
  ui.file = folder.file("a.doc");
  form.ImportItemClick();
  form.ExportItemClick();
  EXPECT_EQ(ui.boxes, (lines{"Error: Cannot import specified file type", "Error: Cannot export specified file type"}));
  ui.file = folder.file("a.vkn");
  form.ImportItemClick();
  finish();
  form.ExportItemClick();
  finish();
  EXPECT_EQ(ui.lines, (lines{"0 import 1", "0 export 0"}));
}

TEST(TimeRemaining, IsExtrapolatedFromTheStart) {
  EXPECT_EQ(time_remaining_text(90, 0), " Time remaining: 0:00:00");
  EXPECT_EQ(time_remaining_text(90, 100), " Time remaining: 0:00:00");
  EXPECT_EQ(time_remaining_text(90, 50), " Time remaining: 0:01:30");
  EXPECT_EQ(time_remaining_text(3700, 1), " Time remaining: 101:45:00");
}

} // namespace
} // namespace vesk
