#include "app/commands.h"
#include "driver.h"
#include "ui/appearance.h"
#include "ui/progress_panel.h"
#include "ui/results_table.h"

#include <QAbstractItemModel>
#include <QAction>
#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QScrollBar>
#include <QSlider>
#include <QStyleOptionSlider>
#include <QTableView>
#include <QTest>
#include <QTextDocument>
#include <QToolButton>
#include <QToolTip>
#include <QTreeView>
#include <chrono>
#include <set>

namespace vesk {
namespace {

using std::chrono::steady_clock;

QString cell(QTableView* table, int row, int column) {
  return table->model()->index(row, column).data().toString();
}

QStringList info_lines_of(main_window& window) {
  const auto* model = find<QTreeView>(&window, "InfoListView")->model();
  QStringList lines;
  for (int i = 0; i < model->rowCount(); ++i) lines << model->index(i, 0).data().toString();
  return lines;
}

TEST(MainWindow, HasEveryCommandOfTheTablesAndEnablesThemAsTheConditionsSay) {
  running_program program({}, "AdministrationMode=1\n"); // hidden items are disabled, too
  main_window& window = program.window();
  EXPECT_EQ(window.menuBar()->objectName(), "PreveskMainMenu");
  const auto expect_enabled = [&](const command_conditions& now) {
    for (const command_row& row : command_table()) {
      if (row.name.starts_with("Fenn") || row.name == "PreferencesItem") continue; // not in the short menu
      const QString name = QString::fromStdString(std::string(row.name));
      if (auto* menu = window.findChild<QMenu*>(name))
        EXPECT_EQ(menu->menuAction()->isEnabled(), is_enabled(row.condition, now)) << row.name;
      else
        EXPECT_EQ(find<QAction>(&window, row.name.data())->isEnabled(), is_enabled(row.condition, now)) << row.name;
    }
  };
  expect_enabled({});
  take_picture(&window, "nothing_open");
  program.form().open_file(SAMPLE);
  expect_enabled({true, true, true, true});
  EXPECT_FALSE(program.form().documentation_links.empty());
  EXPECT_EQ(static_cast<std::size_t>(find<QMenu>(&window, "DocumentationItem")->actions().size()),
            program.form().documentation_links.size());
}

TEST(MainWindow, ToolImagesDifferAndSuitBothAppearances) {
  running_program program;
  std::set<QByteArray> pictures;
  int buttons = 0;
  const auto add = [&](const QToolButton* button) {
    const QImage image = button->icon().pixmap(48, 48).toImage();
    pictures.insert(QByteArray(reinterpret_cast<const char*>(image.constBits()), image.sizeInBytes()));
  };
  for (const tool_row& row : tool_bar()) {
    if (row.name.empty()) continue;
    add(find<QToolButton>(&program.window(), row.name.data()));
    ++buttons;
  }
  program.window().show_run_controls(true);
  add(find<QToolButton>(&program.window(), "RunModelButton"));
  EXPECT_EQ(pictures.size(), 20U);
  EXPECT_EQ(buttons, 19);
  const QPalette light = QApplication::palette();
  QApplication::setPalette(palette_of(appearance::dark));
  add(find<QToolButton>(&program.window(), "FileNewButton"));
  EXPECT_EQ(pictures.size(), 21U);
  take_picture(&program.window(), "dark");
  QApplication::setPalette(light);
}

// A complete run, as a user would do it.
TEST(MainWindow, OpensRunsSlowsStopsResumesAndCancels) {
  const temporary_folder folder;
  const std::string file = folder.file("long.vki");
  write_long_sample(file);
  running_program program;
  main_window& window = program.window();
  with_dialog([&] { program.trigger("OpenItem"); },
              [&](QWidget* dialog) {
                take_picture(dialog, "open_dialog");
                return choose_file(dialog, QString::fromStdString(file));
              });
  EXPECT_TRUE(window.windowTitle().startsWith(" TALMO VESK: ")) << window.windowTitle().toStdString();
  take_picture(&window, "sample_open");

  auto* bar = find<QProgressBar>(&window, "StatusProgressBar");
  auto* time = find<QLabel>(&window, "InfoLabel");
  auto* grid = find<QTableView>(&window, "ResultsTable");
  auto* priority = find<QSlider>(&window, "PriorityTrackBar");
  auto* run_button = find<QToolButton>(&window, "RunModelButton");
  EXPECT_FALSE(priority->isVisible() || grid->isVisible());
  QTest::mouseClick(run_button, Qt::LeftButton);
  ASSERT_TRUE(program.form().active_thread);
  EXPECT_TRUE(priority->isVisible());
  EXPECT_EQ(run_button->text(), "Cancel Model Execution");
  EXPECT_EQ(find<QAction>(&window, "ExecuteModelItem")->text(), "Canc&el");

  EXPECT_TRUE(wait_for([&] { return bar->value() > 0 && time->text().startsWith("Simulation Time: "); }));
  EXPECT_TRUE(wait_for([&] { return grid->isVisible() && !cell(grid, 0, 0).isEmpty(); }));
  const auto* remaining = find<QLabel>(&window, "TimeRemainingLabel");
  EXPECT_TRUE(wait_for([&] { return remaining->text().startsWith(" Time remaining: "); }));
  const auto what_is_shown = [&] { return time->text() + cell(grid, 3, 0) + cell(grid, 20, 1); };
  const auto moves = [&](int milliseconds) {
    const QString before = what_is_shown();
    return wait_for([&] { return what_is_shown() != before; }, milliseconds);
  };
  EXPECT_TRUE(moves(3000));
  take_picture(&window, "running");

  for (int step = 0; step < 2; ++step) QTest::keyClick(priority, Qt::Key_Left);
  EXPECT_EQ(program.form().active_thread->priority_position, 1);
  EXPECT_TRUE(moves(4000));
  take_picture(&window, "slow");
  QTest::keyClick(priority, Qt::Key_Home);
  EXPECT_EQ(program.form().active_thread->priority_position, 0);
  QTest::qWait(1200); // the worker has reached its gate, and the timer has shown its last message
  EXPECT_FALSE(moves(1500));
  take_picture(&window, "stopped");
  QTest::keyClick(priority, Qt::Key_PageUp);
  priority->setValue(3);
  EXPECT_EQ(program.form().active_thread->priority_position, 3);
  EXPECT_TRUE(moves(3000));

  program.trigger("NewItem"); // a data set that cannot be run; the job continues and can be cancelled
  EXPECT_TRUE(run_button->isEnabled());
  auto* cancel = find<QPushButton>(&window, "CancelButton");
  EXPECT_TRUE(cancel->isVisible() && cancel->isEnabled());
  const auto cancelled = steady_clock::now();
  QTest::mouseClick(cancel, Qt::LeftButton);
  EXPECT_FALSE(cancel->isEnabled());
  EXPECT_TRUE(wait_for([&] { return !program.form().active_thread; }, 3000));
  EXPECT_FALSE(cancel->isVisible() || run_button->isEnabled());
  EXPECT_LT(steady_clock::now() - cancelled, std::chrono::seconds(1));
  EXPECT_TRUE(info_lines_of(window).contains("Terminating model thread... please wait..."));
  EXPECT_EQ(run_button->text(), "Execute Model");
  EXPECT_FALSE(priority->isVisible() || grid->isVisible());
  EXPECT_EQ(bar->value(), 0);
  EXPECT_EQ(time->text(), "");
  take_picture(&window, "cancelled");

  window.resize(900, 600);
  window.close();
  EXPECT_EQ(program.form().settings.MainFormWidth, 900);
  EXPECT_FALSE(window.isVisible());
}

TEST(MainWindow, ADragOfThePriorityIsOneChange) {
  std::vector<int> moved;
  progress_panel panel(
      nullptr, [&](int position) { moved.push_back(position); }, [] {});
  panel.show_priority(true);
  panel.resize(900, 40);
  panel.show();
  auto* bar = find<QSlider>(&panel, "PriorityTrackBar");
  QStyleOptionSlider option;
  option.initFrom(bar);
  option.maximum = bar->maximum();
  option.sliderPosition = option.sliderValue = bar->value();
  const QPoint handle = bar->style()->subControlRect(QStyle::CC_Slider, &option, QStyle::SC_SliderHandle, bar).center();
  QTest::mousePress(bar, Qt::LeftButton, {}, handle);
  for (int x = handle.x(); x < bar->width(); x += 5) QTest::mouseMove(bar, {x, handle.y()});
  EXPECT_EQ(moved, std::vector<int>{});
  QTest::mouseRelease(bar, Qt::LeftButton, {}, {bar->width() - 1, handle.y()});
  EXPECT_EQ(moved, std::vector<int>{6});
}

TEST(MainWindow, ShowsABoxForABusyJobAndStaysUsable) {
  const temporary_folder folder;
  write_long_sample(folder.file("long.vki"));
  running_program program;
  program.form().open_file(folder.file("long.vki"));
  program.form().RunModelButtonClick();
  with_dialog([&] { program.form().start_validity_check(); },
              [&](QWidget* box) {
                EXPECT_EQ(box->windowTitle(), "Cannot determine parameters now");
                return press(box, "OK");
              });
  program.form().cancel_job();
  EXPECT_TRUE(wait_for([&] { return !program.form().active_thread; }));
}

TEST(MainWindow, MessagesStayInSightUnlessTheUserLooksAtOlderOnes) {
  running_program program;
  main_window& window = program.window();
  auto* list = find<QTreeView>(&window, "InfoListView");
  const auto add = [&](int count) {
    for (int i = 0; i < count; ++i) window.add_info_line("line", icon_plain);
    QTest::qWait(50);
  };
  const auto at_end = [&] {
    return list->visualRect(list->model()->index(list->model()->rowCount() - 1, 0))
        .intersects(list->viewport()->rect());
  };
  add(200);
  EXPECT_TRUE(at_end());
  window.show_results_grid(true); // takes half of the list's space
  add(1);
  EXPECT_TRUE(at_end());
  window.add_info_line(std::string(1000, 'w'), icon_plain);
  QTest::qWait(50);
  list->horizontalScrollBar()->setValue(list->horizontalScrollBar()->maximum()); // to read the end of a long line
  EXPECT_GT(list->horizontalScrollBar()->value(), 0);
  add(1);
  EXPECT_TRUE(at_end());
  EXPECT_EQ(list->horizontalScrollBar()->value(), 0); // short lines are to the left
  list->horizontalScrollBar()->setValue(list->horizontalScrollBar()->maximum());
  window.show_results_grid(false);
  window.resize(window.size() - QSize(100, 0));
  QTest::qWait(50);
  EXPECT_TRUE(at_end());
  EXPECT_EQ(list->horizontalScrollBar()->value(), 0);
  QTest::keyClick(list, Qt::Key_Home);
  add(1);
  EXPECT_FALSE(at_end());
}

TEST(MainWindow, NamesAreShownLetterForLetter) {
  running_program program;
  const std::string name = "<img src='/etc/hostname'><b>A&lt;B</b>";
  program.window().add_info_line(name, icon_plain);
  program.window().initialize_grid({name}, 1);
  const QVariant tips[] = {
      find<QTreeView>(&program.window(), "InfoListView")->model()->index(0, 0).data(Qt::ToolTipRole),
      find<QTableView>(&program.window(), "ResultsTable")->model()->headerData(0, Qt::Horizontal, Qt::ToolTipRole)};
  for (const QVariant& tip : tips) {
    QToolTip::showText(QPoint(100, 100), tip.toString(), &program.window());
    const QLabel* label = nullptr;
    for (QWidget* window : QApplication::topLevelWidgets())
      if (window->inherits("QTipLabel")) label = qobject_cast<QLabel*>(window);
    ASSERT_TRUE(label);
    QTextDocument seen;
    Qt::mightBeRichText(label->text()) ? seen.setHtml(label->text()) : seen.setPlainText(label->text());
    EXPECT_EQ(seen.toPlainText().toStdString(), name);
  }
  EXPECT_EQ(find<QLabel>(&program.window(), "InfoLabel")->textFormat(), Qt::PlainText);
  with_dialog([&] { program.window().message_box("Error", name, box_buttons::ok); },
              [&](QWidget* box) {
                EXPECT_EQ(qobject_cast<QMessageBox*>(box)->textFormat(), Qt::PlainText);
                return press(box, "OK");
              });
}

TEST(MainWindow, TabLeavesTheGridOfResults) {
  running_program program({}, "RunTimeGridAlwaysVisible=1\n");
  program.window().initialize_grid({"one", "two"}, 3);
  auto* grid = find<QTableView>(&program.window(), "ResultsTable");
  grid->setFocus();
  ASSERT_TRUE(wait_for([&] { return grid->hasFocus(); }));
  QTest::keyClick(grid, Qt::Key_Tab);
  EXPECT_FALSE(grid->hasFocus());
}

TEST(MainWindow, GridColumnsGrowWithTheNumbersInSightAndKeepWhatTheUserGaveThem) {
  results_table grid(nullptr, [](int row, int) { return row < 900 ? 1.0 : 987654321.0; });
  grid.initialize_grid({"one"}, 1000);
  grid.resize(300, 200);
  grid.show();
  grid.repaint_cells();
  const auto needed = [&] { return grid.fontMetrics().horizontalAdvance(cell(&grid, 999, 0)); };
  EXPECT_LT(grid.columnWidth(0), needed());
  grid.scrollToBottom();
  QApplication::processEvents();
  EXPECT_GT(grid.columnWidth(0), needed());
  grid.setColumnWidth(0, 70);
  grid.scrollToTop();
  grid.scrollToBottom();
  QApplication::processEvents();
  grid.repaint_cells();
  EXPECT_EQ(grid.columnWidth(0), 70);

  double value = 1;
  results_table hidden(nullptr, [&](int, int) { return value; });
  hidden.initialize_grid({"one"}, 10);
  const int narrow = hidden.columnWidth(0);
  value = 987654321;
  hidden.table().display_rows();
  EXPECT_EQ(hidden.columnWidth(0), narrow);
  hidden.show();
  EXPECT_GT(hidden.columnWidth(0), narrow);
}

TEST(MainWindow, SaveAsCutsNothingOffANameAndAsksAboutTheFileThatItWillWrite) {
  running_program program;
  const temporary_folder folder;
  program.form().open_file(SAMPLE);
  const auto save_as = [&](const char* name, const std::function<bool(QWidget*)>& question) {
    bool typed = false;
    with_dialog([&] { program.trigger("SaveasItem"); },
                [&](QWidget* dialog) {
                  if (typed) return question(dialog);
                  find<QLineEdit>(dialog, "fileNameEdit")->setText(QString::fromStdString(folder.file(name)));
                  // The question is asked from within.
                  typed = QMetaObject::invokeMethod(dialog, "accept", Qt::QueuedConnection);
                  return typed && !question;
                });
  };
  save_as("river v1.2", {});
  save_as("river v1.3", {});
  EXPECT_EQ(program.form().file_name, folder.file("river v1.3.vki"));
  EXPECT_EQ(folder.read("river v1.2.vki"), folder.read("river v1.3.vki"));
  program.form().current_data_set->comments = "edited";
  const std::string before = folder.read("river v1.2.vki");
  QString question;
  save_as("river v1.2", [&](QWidget* box) {
    if (auto* asked = qobject_cast<QMessageBox*>(box)) {
      question = asked->text();
      return press(asked, "Yes");
    }
    return false;
  });
  EXPECT_TRUE(question.contains("river v1.2.vki already exists")) << question.toStdString();
  EXPECT_NE(folder.read("river v1.2.vki"), before);
}

TEST(MainWindow, TheEditMenuNamesTheStepsAndTakesThem) {
  running_program program;
  main_window& window = program.window();
  const temporary_folder folder;
  const std::string other = folder.file("low & high.vki");
  std::filesystem::copy_file(SAMPLE, other);
  auto* undo = find<QAction>(&window, "UndoItem");
  auto* redo = find<QAction>(&window, "RedoItem");
  EXPECT_FALSE(undo->isEnabled() || redo->isEnabled());
  EXPECT_EQ(undo->toolTip(), "Nothing to undo");
  program.form().open_file(SAMPLE);
  program.form().open_file(other);
  program.form().new_data_set();
  QTest::keyClick(&window, Qt::Key_Z, Qt::ControlModifier);
  EXPECT_EQ(program.form().file_name, other);
  EXPECT_TRUE(window.windowTitle().contains("low & high.vki"));
  EXPECT_EQ(undo->text(), "&Undo Open low && high.vki");
  EXPECT_EQ(redo->text(), "&Redo New");
  EXPECT_EQ(undo->toolTip(), "Take back: Open low & high.vki");
  auto* menu = find<QMenu>(&window, "EditItem");
  EXPECT_TRUE(menu->toolTipsVisible());
  menu->popup(window.mapToGlobal(QPoint(40, 30)));
  take_picture(menu, "edit_menu");
  menu->close();
  QTest::keyClick(&window, Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
  EXPECT_EQ(program.form().file_name, "");
  EXPECT_FALSE(redo->isEnabled());
}

TEST(MainWindow, TakesItsStoredPlaceAndGridHeight) {
  running_program program({}, "MainFormLeft=40\nMainFormTop=30\nMainFormWidth=700\nMainFormHeight=500\n"
                              "ResultsTableHeight=210\nRunTimeGridAlwaysVisible=1\nAdministrationMode=1\n");
  main_window& window = program.window();
  EXPECT_EQ(window.size(), QSize(700, 500));
  EXPECT_EQ(window.geometry().left, 40);
  EXPECT_EQ(window.geometry().top, 30);
  auto* grid = find<QTableView>(&window, "ResultsTable");
  EXPECT_TRUE(grid->isVisible());
  EXPECT_EQ(grid->height(), 210);
  EXPECT_TRUE(find<QMenu>(&window, "AdministrationItem")->menuAction()->isVisible());
  QTest::keyClick(&window, Qt::Key_D, Qt::ControlModifier);
  EXPECT_EQ(program.form().diagnostic_level(), 2);
  window.close();
  EXPECT_EQ(program.form().settings.ResultsTableHeight, 210);
  EXPECT_EQ(program.form().settings.MainFormLeft, 40);
}

} // namespace
} // namespace vesk
