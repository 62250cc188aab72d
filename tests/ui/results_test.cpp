// The results window: a run of the sample, viewed as a user would.
#include "accessible.h"
#include "charts/general_graph_data.h"
#include "dataset/series.h"
#include "driver.h"
#include "platform/settings_file.h"
#include "run_program.h"
#include "typist.h"
#include "ui/chart_view.h"
#include "ui/grid_view.h"
#include "ui/results/results_window.h"
#include "ui/schematic_view.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QElapsedTimer>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QPushButton>
#include <QSlider>
#include <QSpinBox>
#include <QTabWidget>
#include <QTest>
#include <QTreeView>
#include <QTreeWidget>
#include <cmath>
#include <map>
#include <regex>
#include <sstream>

namespace vesk {
namespace {

namespace fs = std::filesystem;

constexpr const char* oak_city = "km 112 Big Swash to Oak City";
enum page { time_series, agreement, table, compare, along_the_river, map_of_network };

results_window* shown_results() {
  for (QWidget* window : QApplication::topLevelWidgets())
    if (window->isVisible() && window->objectName() == "ResultsWindow") return static_cast<results_window*>(window);
  return nullptr;
}

class ResultsWindow : public testing::Test {
protected:
  ResultsWindow() {
    const fs::path sample(SAMPLE);
    fs::copy(sample, folder.path / "roanoke.vki");
    fs::copy(fs::path(sample).replace_extension(".measured.json"), folder.path / "roanoke.measured.json");
    fs::copy(sample.parent_path() / "data", folder.path / "data");
    program.form().open_file(folder.file("roanoke.vki"));
  }
  // Runs the model and waits until its results are shown.
  void run() {
    const std::uint64_t before = results() ? results()->session().scenarios()[0].number : 0;
    program.trigger("ExecuteModelItem");
    ASSERT_TRUE(wait_for([this] { return !program.form().active_thread; }, 60'000));
    EXPECT_EQ(program.form().last_job().failure, "");
    ASSERT_TRUE(wait_for([&] {
      results_window* window = results();
      return window && !window->session().scenarios().empty() && window->session().scenarios()[0].number > before &&
             is_idle();
    }));
  }
  results_window* results() const { return shown_results(); }
  bool is_idle() const { return results()->session().reader().is_idle(); }
  void choose(const char* variable, const char* segment) {
    results()->session().variables.chosen.assign(results()->session().variables.names.size(), false);
    results()->session().segments.chosen.assign(results()->session().segments.names.size(), false);
    ASSERT_TRUE(results()->session().choose(variable, segment));
    EXPECT_TRUE(wait_for([this] { return is_idle(); }));
  }
  void show(page wanted, const char* picture) {
    find<QTabWidget>(results(), "ResultPages")->setCurrentIndex(wanted);
    EXPECT_TRUE(wait_for([this] { return is_idle(); }));
    take_picture(results(), picture);
  }
  QString cell(const char* grid, int row, int column) const {
    return find<grid_view>(results(), grid)->model().index(row, column).data(Qt::EditRole).toString();
  }

  temporary_folder folder;
  running_program program;
};

TEST(ChartRow, KeepsItsRoomWithMoreSeriesThanALegendCanName) {
  TGraphForm form;
  for (int i = 0; i < 30; ++i) {
    auto data = std::make_unique<general_graph_data>(2);
    data->x = data->y = {0, 1};
    data->label = "Ammonium nitrogen, g N/m3, row " + std::to_string(i);
    form.add_series(std::move(data));
  }
  chart_view row(nullptr, chart_view::kind::row);
  row.resize(600, 300);
  row.show_graph(&form);
  row.show();
  const auto height_of_points = [&] {
    int top = row.height(), bottom = 0;
    for (int y = 0; y < row.height(); y += 3)
      for (int x = 0; x < row.width(); x += 3)
        if (form.point_at(x, y, 3)) top = std::min(top, y), bottom = y;
    return bottom - top;
  };
  QTest::qWait(100); // it is drawn several times until its ticks are known
  EXPECT_GT(height_of_points(), 150);
}

TEST_F(ResultsWindow, IsOpenedByTheLineThatNamesItsFile) {
  run();
  results()->close();
  auto* list = find<QTreeView>(&program.window(), "InfoListView");
  const auto enter = [&](int from_end) {
    list->setCurrentIndex(list->model()->index(list->model()->rowCount() - from_end, 0));
    QTest::keyClick(list, Qt::Key_Return);
    return results() != nullptr;
  };
  EXPECT_FALSE(enter(2));
  EXPECT_TRUE(enter(1));
  EXPECT_TRUE(wait_for([this] { return is_idle(); }));
  EXPECT_EQ(results()->session().scenarios().size(), 1U);
}

TEST_F(ResultsWindow, FitsIntoFiveHundredPixels) {
  run();
  results()->resize(500, 620);
  for (const page wanted : {time_series, agreement, table, compare, along_the_river, map_of_network}) {
    show(wanted, ("results_500_" + std::to_string(wanted)).c_str());
    EXPECT_EQ(results()->width(), 500);
    expect_in_reach_as_shown(results());
  }
  program.window().close(); // which saves the colours
  EXPECT_EQ(settings_file(program.form().settings.file()).get("SOFTWARE\\TALMO\\VESK\\7.0\\SeriesColours", "Series1"),
            "0\tNH4\tkm 212 Weldon rapids");
}

// Dots of a run that goes on take at most a hundredth of the time to draw.
TEST_F(ResultsWindow, LiveDotsLeaveTimeToTheRun) {
  run();
  class : public QObject {
    bool eventFilter(QObject*, QEvent* event) override {
      count += event->type() == QEvent::Paint;
      return false;
    }

  public:
    int count = 0;
  } paints;
  QElapsedTimer watch;
  watch.start();
  results()->sample(41000, {{0, 0, "DO, row 1"}}, [](int, int) { return 8.0; });
  QTest::qWait(1);
  for (QWidget* it : find<QWidget>(results(), "TimeSeriesView")->findChildren<QWidget*>())
    if (it->inherits("QCustomPlot")) it->installEventFilter(&paints);
  for (int i = 1; i < 100; ++i) {
    results()->sample(41000 + i, {{0, 0, "DO, row 1"}}, [](int, int) { return 8.0; });
    QTest::qWait(5);
  }
  EXPECT_LT(paints.count, 5 + watch.elapsed() / 25);
  take_picture(results(), "results_live");
}

// The sample's own comparison, as (period, estimate) -> columns.
std::map<std::string, std::vector<double>> comparison_of_sample(const temporary_folder& folder) {
  const std::string out = folder.file("compared.csv");
  const auto done = run_program("/usr/bin/env", {"PYTHONDONTWRITEBYTECODE=1", "python3", COMPARE_SAMPLE, VESK_RESULTS,
                                                 folder.file("roanoke.nc"), out});
  EXPECT_EQ(done.status, 0) << done.err;
  std::map<std::string, std::vector<double>> found;
  std::istringstream lines(folder.read("compared.csv"));
  std::string line;
  std::getline(lines, line);
  EXPECT_EQ(line, "period,estimate,days,measured,estimated,bias,rmse,r,efficiency\r");
  while (std::getline(lines, line)) {
    std::istringstream fields(line);
    std::string period, estimate, number;
    std::getline(fields, period, ',');
    std::getline(fields, estimate, ',');
    auto& row = found[(period == "year" ? "all" : period) + "," + estimate];
    while (std::getline(fields, number, ',')) row.push_back(std::stod(number));
  }
  return found;
}

TEST_F(ResultsWindow, ShowsTheRunItsAgreementAndWhatAConstantChanges) {
  run();
  EXPECT_FALSE(results()->isActiveWindow()); // the user may be typing
  choose("DO", oak_city);
  show(time_series, "results_time_series");
  EXPECT_EQ(results()->windowTitle(), "Results - roanoke.nc");
  EXPECT_EQ(find<QTreeWidget>(results(), "Legend")->topLevelItemCount(), 1);

  show(agreement, "results_agreement");
  auto expected = comparison_of_sample(folder);
  auto* scores = find<grid_view>(results(), "ScoreTable");
  constexpr int columns[] = {2, 3, 4, 5, 8, 10, 12}; // count, means, bias, RMSE, r, NSE
  ASSERT_EQ(scores->model().rowCount(), 26);         // 12 months and the year, of the model and of the monthly means
  for (int row = 0; row < scores->model().rowCount(); ++row) {
    const std::string estimate = cell("ScoreTable", row, 1).toStdString();
    const std::string key =
        cell("ScoreTable", row, 0).toStdString() + "," + (estimate == "roanoke" ? "model" : estimate);
    const auto& wanted = expected[key];
    ASSERT_EQ(wanted.size(), std::size(columns)) << key;
    for (std::size_t i = 0; i < wanted.size(); ++i) {
      const QString text = cell("ScoreTable", row, columns[i]);
      if (text.isEmpty())
        EXPECT_TRUE(std::isnan(wanted[i])) << key;
      else
        EXPECT_NEAR(text.toDouble(), wanted[i], 0.00005) << key << " " << i; // printed with four decimals
    }
  }

  program.form().current_data_set->constant_groups.edit(0).constants.edit(0).value *= 2;
  run();
  EXPECT_TRUE(fs::exists(folder.path / "roanoke.previous.nc") && fs::exists(folder.path / "roanoke.previous.run.json"));
  show(compare, "results_compare_alone");
  find<QPushButton>(results(), "PreviousRunButton")->click();
  EXPECT_TRUE(wait_for([this] { return results()->session().scenarios().size() == 2 && is_idle(); }));
  show(compare, "results_compare");
  ASSERT_EQ(find<grid_view>(results(), "DifferenceTable")->model().rowCount(), 1);
  EXPECT_NE(cell("DifferenceTable", 0, 4).toDouble(), 0);
  show(table, "results_table");
  EXPECT_EQ(find<grid_view>(results(), "SeriesTable")->model().columnCount(), 4);
  expect_accessible(results());
}

TEST_F(ResultsWindow, SavesEveryPictureAndSurvivesBadFiles) {
  run();
  for (const char* ending : {"png", "svg", "pdf", "csv"}) {
    const QString file = QString::fromStdString(folder.file("chart.")) + ending;
    with_dialog(
        [this] {
          QWidget* first = find<QTabWidget>(results(), "ResultPages")->widget(0);
          for (QAction* action : first->findChildren<QAction*>())
            if (action->text() == "Save as...") return action->trigger();
        },
        [&](QWidget* dialog) { return choose_file(dialog, file); });
    EXPECT_GT(fs::file_size(folder.path / (std::string("chart.") + ending)), 1000U) << ending;
  }
  const std::string values = folder.read("chart.csv"); // of single precision: 9 digits at most
  EXPECT_FALSE(std::regex_search(values, std::regex("\\.[0-9]{13}"))) << values.substr(0, 300);
  choose("DO", oak_city);
  for (const page each :
       {time_series, agreement, table, along_the_river, map_of_network}) { // one file: nothing to compare
    show(each, "");
    const QString file = QString::fromStdString(folder.file("page.csv"));
    results()->activateWindow();
    EXPECT_TRUE(wait_for([this] { return results()->isActiveWindow(); }));
    find<QListView>(results(), "VariableList")->setFocus(); // the keys work outside the page as well
    with_dialog([this] { QTest::keyClick(results(), Qt::Key_S, Qt::ControlModifier); },
                [&](QWidget* dialog) { return choose_file(dialog, file); });
    EXPECT_TRUE(fs::remove(folder.path / "page.csv")) << each;
  }
  auto* message = find<QLabel>(results(), "MessageLabel");
  folder.write("text.nc", "nothing of the kind");
  program.form().open_file(folder.file("text.nc")); // as on the command line
  EXPECT_TRUE(wait_for([&] { return message->text().contains("text.nc"); })) << message->text().toStdString();
  fs::remove(folder.path / "roanoke.nc");
  auto* age = find<QLabel>(results(), "AgeLabel");
  EXPECT_TRUE(wait_for([&] { return age->text().endsWith("was deleted; its values can still be shown."); }));
  choose("NH4", oak_city);
  EXPECT_EQ(results()->series().series().size(), 1U);
  take_picture(results(), "results_messages");
}

// Selection, cursor and names without a mouse.
TEST_F(ResultsWindow, IsWorkedByKeyboard) {
  run();
  typist user;
  user.in("ResultsWindow").go_to("SegmentListFind").text("Oak").keys("Down").keys("Space");
  user.until([this] { return is_idle() && results()->series().series().size() == 2; });
  user.go_to("TimeSlider").keys("End").check([this] {
    EXPECT_EQ(results()->session().cursor(), results()->session().baseline_file()->times().back());
  });
  user.go_to("ScenarioList").keys("F2").text("today").keys("Return");
  user.until([this] { return results()->session().scenarios()[0].name == "today"; });
  user.keys("Alt+A").check(
      [this] { EXPECT_EQ(find<QTabWidget>(results(), "ResultPages")->currentIndex(), agreement); });
  user.go_to("NewMeasuredButton").keys("Space").in("MeasuredDialog").check([] {
    expect_accessible(QApplication::activeModalWidget());
  });
  user.picture("results_measured").leave_by("OK").check([] { // no table yet
    EXPECT_EQ(find<QLabel>(QApplication::activeModalWidget(), "MeasuredMessage")->text(),
              "Choose the table that has the measured values.");
  });
  user.leave_by("Cancel").in("ResultsWindow").work();
}

TEST_F(ResultsWindow, ShowsTheRiverFromOneEndToTheOtherAndItsMap) {
  run();
  choose("DO", oak_city);
  expect_accessible(results()); // visits all pages, and ends on the first
  show(along_the_river, "results_river");
  auto* page = find<QWidget>(results(), "RiverPage");
  auto* ways = find<QTreeWidget>(page, "WayList");
  ASSERT_TRUE(wait_for([&] { return ways->topLevelItemCount() == 1; }, 20'000));
  EXPECT_EQ(ways->topLevelItem(0)->text(1), "104"); // km, the length of the sample's reaches
  EXPECT_EQ(ways->topLevelItem(0)->text(3), "1-26");
  auto* network = find<schematic_view>(page, "RiverSchematic");
  const auto click = [&](std::size_t segment, Qt::KeyboardModifiers keys = {}) {
    QTest::mouseClick(network, Qt::LeftButton, keys, network->place_of(segment)->toPoint());
  };
  click(4);
  EXPECT_EQ(find<QLabel>(page, "RiverNote")->text(), "Click the segment where the way ends.");
  click(9);
  EXPECT_EQ(ways->topLevelItem(0)->text(3), "5-10");
  const auto* from = find<QSpinBox>(page, "FromSegment");
  EXPECT_TRUE(from->text().startsWith("5: km "));
  EXPECT_TRUE(wait_for([&] { // with the arrows
    return from->width() > from->fontMetrics().horizontalAdvance(from->text()) + 20;
  }));
  click(20, Qt::ControlModifier);
  EXPECT_EQ(ways->topLevelItemCount(), 0);
  EXPECT_EQ(find<QLabel>(page, "RiverNote")->text(),
            "No way leads from segment 5 to segment 10 through 1 waypoint in this order.");
  find<QSpinBox>(page, "FromSegment")->setValue(26);
  EXPECT_EQ(ways->topLevelItem(0)->text(3), "26, 25, 24, 23, 22, 21, 20, 19 and 9 more");
  EXPECT_EQ(find<QLabel>(page, "RiverNote")->text(), "The way goes against the flow.");
  find<QSpinBox>(page, "FromSegment")->setValue(1);
  find<QSpinBox>(page, "ToSegment")->setValue(26);
  find<QCheckBox>(page, "RangeBox")->setChecked(true);
  show(along_the_river, "results_river_range");
  const auto has_range = [&] {
    return std::ranges::any_of(page->findChildren<chart_view*>(), [](const chart_view* chart) {
      return chart->isVisible() && chart->accessibleDescription().contains(", least, mean, greatest: 104 points");
    });
  };
  EXPECT_TRUE(wait_for(has_range));

  show(map_of_network, "results_map");
  auto* map = find<schematic_view>(find<QWidget>(results(), "MapPage"), "Schematic");
  ASSERT_TRUE(wait_for([&] { return map->network() != nullptr; }, 20'000));
  map->select(25);
  EXPECT_TRUE(wait_for([&] { return map->accessibleDescription().contains("DO, "); }));
  const QString before = map->accessibleDescription();
  find<QSlider>(results(), "TimeSlider")->setValue(100);
  EXPECT_TRUE(wait_for([&] { return map->accessibleDescription() != before; }));
  take_picture(results(), "results_map_later");

  program.form().new_data_set(); // the results do not belong to this one
  EXPECT_TRUE(wait_for([&] {
    return find<QLabel>(results(), "MapNote")->text().startsWith("The open data set has another network: 0 segments");
  }));
}

} // namespace
} // namespace vesk
