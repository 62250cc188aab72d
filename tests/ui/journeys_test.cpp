// Complete tasks, with the keyboard alone.
#include "dataset/findings.h"
#include "dataset/series.h"
#include "dataset/vki_file.h"
#include "driver.h"
#include "run_program.h"
#include "typist.h"
#include "ui/grid_view.h"

#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QTreeView>

namespace vesk {
namespace {

namespace fs = std::filesystem;

constexpr const char* main_window_name = "PreveskMainForm";

class Journey : public testing::Test {
protected:
  void open_sample() {
    fs::copy(SAMPLE, folder.path / "river.vki");
    fs::copy(fs::path(SAMPLE).parent_path() / "data", folder.path / "data");
    const std::string file = folder.file("river.vki");
    user.in(main_window_name).keys("Ctrl+O").in("file_dialog").text(QString::fromStdString(file)).keys("Return");
    user.in(main_window_name).until([this, file] { return program.form().file_name == file; });
  }

  // Runs the model and keeps its oxygen output.
  void run_model() {
    user.in(main_window_name).keys("F5").until([this] { return !program.form().active_thread; }).check([this] {
      EXPECT_EQ(program.form().last_job().failure, "");
      results.push_back(folder.read("river_oxygen.csv"));
      fs::remove(folder.path / "river_oxygen.csv");
    });
  }

  // Raises the water temperature by 5 %. The time functions are open, with the first one active.
  void scale_temperature() {
    user.go_to("TFFillCalcTable").keys("Ctrl+Home").keys("Right", 2).keys("Ctrl+Shift+End").keys("Alt+F");
    user.in("FillCalculateForm").text("x * 1.05").picture("journey_expression").keys("Return");
  }

  void change_rate() {
    user.in(main_window_name).keys("Alt+D").keys("C").in("ConstantsForm");
    user.keys("Right", 2).text("0.45").keys("Return").picture("journey_constants");
    user.leave_by("OK");
    user.in(main_window_name).check([this] { EXPECT_EQ(data().constant_groups[0].constants[0].value, 0.45); });
  }

  const prevesk_dataset_data_type& data() { return *program.form().current_data_set; }
  const point_list& temperature() { return data().time_functions[0].points; }

  temporary_folder folder;
  running_program program;
  typist user;
  std::vector<std::string> results;
};

TEST_F(Journey, TheRiverIsMadeWarmerAndNitrifiesFaster) {
  open_sample();
  run_model();
  user.keys("Alt+F").picture("journey_menu").keys("Q").in("message_box").picture("journey_question").keys("Alt+Y");
  user.in(main_window_name).until([this] { return !data().time_functions[0].query->deferred; });
  double before = 0;
  user.check([&] { before = temperature()[100].value; });
  user.picture("journey_queries").keys("Alt+D").keys("T").in("TimeFunctionsForm").picture("journey_functions");
  scale_temperature();
  user.in("TimeFunctionsForm").keys("Alt+G").in("GraphForm").picture("journey_chart");
  user.in("TimeFunctionsForm").picture("journey_warmer").leave_by("OK");
  user.in(main_window_name).check([&] { EXPECT_EQ(temperature()[100].value, before * 1.05); });
  change_rate();
  user.keys("Ctrl+S");
  run_model();
  user.picture("journey_results").work();
  ASSERT_EQ(results.size(), 2U);
  EXPECT_GT(results[0].size(), 1000U);
  EXPECT_FALSE(results[0] == results[1]);
  prevesk_dataset_data_type saved;
  read_data_file(folder.file("river.vki"), saved);
  EXPECT_EQ(saved.time_functions[0].points[100].value, before * 1.05);
}

TEST_F(Journey, TheWarmerWaterAloneChangesTheResults) {
  open_sample();
  run_model();
  user.keys("Alt+D").keys("T").in("TimeFunctionsForm").keys("Alt+K");
  user.until([this] { return !data().time_functions[0].query->deferred; }).picture("journey_kept");
  user.go_to("TheFillCalcTable");
  scale_temperature();
  user.in("TimeFunctionsForm").leave_by("OK");
  run_model();
  change_rate();
  run_model();
  user.work();
  ASSERT_EQ(results.size(), 3U);
  EXPECT_FALSE(results[0] == results[1] || results[1] == results[2]);
}

// A model without segments: the check reports its boundaries and nothing else.
TEST_F(Journey, ANewDataSetIsWhatTheSameValuesAsTextAre) {
  const std::string typed = folder.file("typed.vki"), loaded = folder.file("loaded.vki");
  user.in(main_window_name).keys("Ctrl+N").until([this] { return program.form().current_data_set != nullptr; });
  user.keys("Alt+D").keys("D").in("ParametersForm").go_to("DatasetNameEdit").text("Мельница at Übersee");
  user.go_to("ModelTypeComboBox").text("Dis");
  user.go_to("StartDateField").text("10/01/2012").keys("Tab").text("06:30:15");
  user.go_to("EndDateField").text("10/11/2012").keys("Tab").text("06:30:15").picture("journey_settings");
  user.leave_by("OK");
  const auto steps = [this]() -> const point_list& { return data().time_steps.points; };
  user.in(main_window_name).keys("Alt+D").keys("M").in("TimeStepForm").keys("Alt+I");
  user.until([steps] { return steps().size() == 1; }).go_to("TheFillCalcTable").keys("Ctrl+Home").keys("Right", 2);
  user.text("6 min").keys("Return").until([steps] { return steps()[0].value > 0; }).keys("Down");
  user.until([steps] { return steps().size() == 2; }).keys("Home").text("10/11/2012").keys("Tab").keys("Right");
  user.text("0.0104166666666666667").keys("Return").picture("journey_steps").leave_by("OK");
  user.in(main_window_name).keys("Alt+D").keys("I").in("PrintIntervalForm").keys("Ctrl+Home").keys("Right", 2);
  user.picture("journey_intervals").text("1").keys("Return").text("1 h").keys("Return").leave_by("OK");
  user.in(main_window_name).keys("Alt+D").keys("C").in("ConstantsForm").keys("Right").keys("Space").keys("Right");
  user.text("0.12345678901234").keys("Return").leave_by("OK");
  user.in(main_window_name).keys("Ctrl+S").in("file_dialog").text(QString::fromStdString(typed)).keys("Return");
  user.in(main_window_name).until([&] { return program.form().file_name == typed; });
  user.keys("Alt+M").keys("V").in("message_box").keys("Return").in(main_window_name);
  user.until([this] { return !program.form().active_thread; }).picture("journey_check").work();

  std::vector<std::string> findings, expected;
  for (const validation_information& finding : data().validation_results) findings.push_back(finding.message);
  for (const system_data_type& system : data().systems)
    expected.push_back(system.description.str() + " system has no boundaries.");
  EXPECT_EQ(expected.size(), 4U);
  EXPECT_EQ(findings, expected);

  folder.write("same.json", R"({
    "description": "Мельница at Übersee", "model_type": 1, "solution_type": 1,
    "seed_date": 41183, "seed_time": 0.27100694444444445, "skip_date": 41183, "skip_time": 0.27100694444444445,
    "end_date": 41193, "end_time": 0.27100694444444445,
    "time_steps": {"points": [[150754, 23415, 0.004166666666666667], [150764, 23415, 0.0104166666666666667]]},
    "print_intervals": {"points": [[150754, 23415, 1], [150764, 23415, 0.041666666666666664]]},
    "time_functions": [
      {"isc": 1, "points": [[150754, 23415, 0], [150764, 23415, 0]]},
      {"isc": 2, "points": [[150754, 23415, 0], [150764, 23415, 0]]},
      {"isc": 3, "points": [[150754, 23415, 0], [150764, 23415, 0]]}],
    "constant_groups": [{"constants": [{"isc": 11, "used": true, "value": 0.12345678901234}]}]})");
  EXPECT_EQ(run_program(VKI, {"load", folder.file("same.json"), loaded}).err, "");
  program.form().open_file(loaded); // adopts the model's lists, as the new data set has
  EXPECT_TRUE(program.form().save());
  EXPECT_EQ(difference(run_program(VKI, {"dump", loaded}).out, run_program(VKI, {"dump", typed}).out), "");
}

} // namespace
} // namespace vesk
