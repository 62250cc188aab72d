#include "app/commands.h"
#include "app/main_form.h"
#include "app/previous_results.h"
#include "app/time_remaining.h"
#include "behaviour_catalogue.h"
#include "noting_interface.h"
#include "temporary_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
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

TEST_F(RunControl, TheResultsBeforeARunAreKeptAfterAGoodEndAlone) {
  const auto base = folder.path / "river";
  const auto run = [&](const char* results, bool is_good) {
    previous_results previous(base);
    if (results) {
      folder.write("new", results);
      std::filesystem::rename(folder.path / "new", folder.path / "river.nc");
    }
    if (is_good) previous.keep();
  };
  folder.write("river.run.json", "first record");
  run("first", true); // there were none before
  EXPECT_FALSE(std::filesystem::exists(previous_results::file_of(base)));
  run("second", true);
  EXPECT_EQ(folder.read("river.previous.nc"), "first");
  EXPECT_EQ(folder.read("river.previous.run.json"), "first record");
  run("third", false);
  run(nullptr, true); // an engine that wrote nothing
  EXPECT_EQ(folder.read("river.previous.nc"), "first");
  for (const auto& entry : std::filesystem::directory_iterator(folder.path))
    EXPECT_EQ(entry.path().native().find(".part-"), std::string::npos) << entry.path();
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
  make_data("returns"); // the engine's limit is one segment, none of anything else
  form.current_data_set->segments.resize(2);
  form.current_data_set->time_steps.points.push_back({});
  form.start_validity_check();
  finish();
  EXPECT_EQ(ui.boxes, lines{"Validity check failed: Problems were detected"});
  EXPECT_EQ(ui.lines, (lines{"2 Maximum of 1 segments exceeded", "2 Tracer system has no boundaries.",
                             "2 Maximum of 0 time/value pairs for time steps exceeded"}));
  EXPECT_FALSE(form.last_job().checked);

  ui.boxes.clear();
  ui.lines.clear();
  make_data("returns");
  form.current_data_set->systems.edit(0).gsysbypass = system_bypassed;
  form.start_validity_check();
  finish();
  EXPECT_EQ(ui.boxes, lines{"Validity check passed: No problems were detected"});
  EXPECT_EQ(ui.lines, lines{"1 BYPASSED Tracer system has no boundaries."});
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
  form.ExportItemClick();
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
