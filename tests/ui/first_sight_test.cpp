// The first impressions of a new user: start page, summary, messages of jobs, and windows at any size.
#include "accessible.h"
#include "driver.h"
#include "ui/appearance.h"
#include "ui/elided_text.h"
#include "ui/info_list.h"
#include "ui/splash_form.h"

#include <QApplication>
#include <QClipboard>
#include <QDropEvent>
#include <QElapsedTimer>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMimeData>
#include <QScreen>
#include <QScrollBar>
#include <QTest>
#include <QTextBrowser>
#include <QToolButton>
#include <QUrl>
#include <cstdio>
#include <ctime>
#include <regex>

namespace vesk {
namespace {

QString text_of(QWidget* window, const char* label) {
  const auto* found = window->findChild<QLabel*>(label); // the rows are created with the first data set
  return found ? found->text() : QString();
}

TEST(FirstSight, AnEmptyWindowOffersHowToBeginAndTheRecentFiles) {
  const temporary_folder folder;
  std::filesystem::copy(SAMPLE, folder.path / "river.vki");
  running_program program({}, "RecentFile1=" + folder.file("river.vki") + "\nRecentFile2=" + folder.file("gone.vki") +
                                  "\n");
  main_window& window = program.window();
  auto* page = find<QWidget>(&window, "StartPage");
  ASSERT_TRUE(page->isVisible());
  expect_accessible(&window);
  take_picture(&window, "start");
  const auto recent = [&] { return page->findChildren<QPushButton*>("RecentFileButton"); };
  ASSERT_EQ(recent().size(), 2);
  QTest::mouseClick(recent()[1], Qt::LeftButton);
  EXPECT_TRUE(wait_for([&] { return recent().size() == 1; }));
  EXPECT_EQ(find<QMenu>(&window, "RecentFilesItem")->actions().size(), 3);
  program.form().open_outside = [](const std::string&, const std::filesystem::path&) {};
  program.form().has_browser = [] { return false; };
  QTest::mouseClick(find<QPushButton>(page, "StartGuideButton"), Qt::LeftButton);
  auto* guide = find<QWidget>(&window, "GuideWindow");
  ASSERT_TRUE(guide->isVisible());
  auto* text = find<QTextBrowser>(guide, "GuidePage");
  EXPECT_TRUE(text->toPlainText().contains("Running and stopping"));
  EXPECT_FALSE(text->toPlainText().contains("font-family")) << "styles shown as text";
  QTest::keyClicks(find<QLineEdit>(guide, "FindInGuide"), "Hydrodynamic linkage");
  QTest::keyClick(find<QLineEdit>(guide, "FindInGuide"), Qt::Key_Return);
  EXPECT_EQ(text->textCursor().selectedText().toLower(), "hydrodynamic linkage");
  take_picture(guide, "guide_window");
  guide->close();
  QTest::mouseClick(recent()[0], Qt::LeftButton);
  EXPECT_TRUE(wait_for([&] { return program.form().file_name == folder.file("river.vki"); }));
  EXPECT_TRUE(wait_for([&] { return !page->isVisible() && find<QWidget>(&window, "SummaryPage")->isVisible(); }));
}

TEST(FirstSight, TheSummaryFollowsDataSetAndResults) {
  const temporary_folder folder;
  std::filesystem::copy(SAMPLE, folder.path / "river.vki");
  std::filesystem::copy(std::filesystem::path(SAMPLE).parent_path() / "data", folder.path / "data");
  running_program program;
  main_window& window = program.window();
  program.form().open_file(folder.file("river.vki"));
  const auto shows = [&](const char* label, const std::string& pattern) {
    const bool shown =
        wait_for([&] { return std::regex_match(text_of(&window, label).toStdString(), std::regex(pattern)); });
    EXPECT_TRUE(shown) << text_of(&window, label).toStdString();
  };
  shows("SummaryResults", "none yet; .*");
  shows("SummaryNetwork", "26 segments, .*");
  shows("SummaryQueries", "[0-9]+ series filled before each run, not yet.*");
  take_picture(&window, "summary");
  program.form().RunModelButtonClick();
  EXPECT_TRUE(wait_for([&] { return !program.form().active_thread; }, 20000));
  shows("SummaryResults", "river\\.nc of .*, from this data set");
  shows("SummaryQueries", "[0-9]+ series filled before each run, last .*");
  take_picture(&window, "summary_after_run");
  auto* list = find<info_list>(&window, "InfoListView");
  const std::string messages = list->all_text().toStdString();
  EXPECT_TRUE(
      std::regex_search(messages, std::regex("^Run of river\\.vki, \\d\\d:\\d\\d:\\d\\d: finished.*, [0-9.]+ s\n")))
      << messages;
  EXPECT_TRUE(
      std::regex_search(messages, std::regex("\nResults written: river\\.nc \\(.*\\) and 7 CSV files, in .*\n$")))
      << messages;
  prevesk_dataset_data_type changed = *program.form().current_data_set;
  changed.constant_groups.edit(0).constants.edit(0).value += 1;
  program.form().take_content(changed);
  shows("SummaryResults", "river\\.nc of .*, changed since: 1 constant");
  for (const QSize size : {QSize(500, 400), QSize(900, 700)}) {
    window.resize(size);
    QTest::qWait(50);
    EXPECT_EQ(window.size(), size);
    EXPECT_GE(list->height(), 60);
    take_picture(&window, QString("summary_%1").arg(size.width()));
    window.show_results_grid(true);
    take_picture(&window, QString("summary_grid_%1").arg(size.width()));
    EXPECT_GE(list->height(), 40);
    window.show_results_grid(false);
  }
}

TEST(FirstSight, MessagesAreSavedCopiedClearedAndWrapped) {
  const temporary_folder folder;
  running_program program;
  main_window& window = program.window();
  auto* list = find<info_list>(&window, "InfoListView");
  window.begin_job_messages("Run of a.vki, 12:00:00");
  window.add_info_line(std::string(400, 'w') + " end", icon_plain);
  window.add_info_line("look here", icon_note);
  window.add_info_line("stopped", icon_failure);
  window.end_job_messages("failed, 1.0 s");
  window.begin_job_messages("Import of b.inp, 12:01:00");
  window.clear_info_lines(); // by the engine
  window.end_job_messages("cancelled, 0.1 s");
  EXPECT_EQ(list->all_text(), "Import of b.inp, 12:01:00: cancelled, 0.1 s\n");
  QTest::mouseClick(find<QToolButton>(&window, "ClearMessagesButton"), Qt::LeftButton);
  EXPECT_TRUE(list->is_empty());
  window.begin_job_messages("Run of a.vki, 12:00:00");
  window.add_info_line(QString("wide ").repeated(100).toStdString(), icon_plain);
  window.add_info_line("look here", icon_note);
  window.add_info_line("stopped", icon_failure);
  window.end_job_messages("failed, 1.0 s");
  const QString all = "Run of a.vki, 12:00:00: failed, 1.0 s\n" + QString("wide ").repeated(100) +
                      "\nNote: look here\nFailure: stopped\n";
  QTest::mouseClick(find<QToolButton>(&window, "CopyMessagesButton"), Qt::LeftButton);
  EXPECT_EQ(QApplication::clipboard()->text(), all);
  with_dialog([&] { QTest::mouseClick(find<QToolButton>(&window, "SaveMessagesButton"), Qt::LeftButton); },
              [&](QWidget* dialog) { return choose_file(dialog, QString::fromStdString(folder.file("said"))); });
  EXPECT_EQ(folder.read("said.txt"), all.toStdString());
  const auto height = [&](int row) { return list->visualRect(list->model()->index(row, 0)).height(); };
  const QScrollBar& sideways = *list->horizontalScrollBar();
  EXPECT_EQ(height(1), height(2));
  EXPECT_TRUE(wait_for([&] { return sideways.maximum() > 0; }));
  QTest::mouseClick(find<QToolButton>(&window, "WrapMessagesButton"), Qt::LeftButton);
  EXPECT_TRUE(wait_for([&] { return height(1) >= 2 * height(2) && sideways.maximum() == 0; }));
  const int before = height(1);
  window.resize(window.width() / 2, window.height());
  EXPECT_TRUE(wait_for([&] { return height(1) > before; }));
  take_picture(&window, "wrapped");
  EXPECT_TRUE(program.form().settings.WrapMessages); // in the next window as well
}

class paint_counter final : public QObject {
public:
  int paints = 0;

private:
  bool eventFilter(QObject*, QEvent* event) override {
    paints += event->type() == QEvent::Paint;
    return false;
  }
};

TEST(FirstSight, EightThousandLinesOfAnEngineDoNotStopTheWindow) {
  for (const char* wrapped : {"", "WrapMessages=1\n"}) {
    running_program program({}, wrapped);
    main_window& window = program.window();
    paint_counter list;
    find<info_list>(&window, "InfoListView")->viewport()->installEventFilter(&list);
    const std::clock_t begin = std::clock(); // of the processor: other programs may be at work
    QElapsedTimer watch;
    watch.start();
    for (int i = 0; i < 8000; ++i) {
      window.add_info_line("Line " + std::to_string(i) + " of an engine that reports every step of its work",
                           icon_plain);
      window.select_last_info_line();
      if (i % 10 == 0) QApplication::processEvents(); // as between the calls of a worker
    }
    QTest::qWait(50);
    const double took = static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC;
    std::printf("8000 lines%s: %.2f s, painted %d times\n", *wrapped ? ", wrapped" : "", took, list.paints);
    EXPECT_LT(took, 6); // a layout for each line would take minutes
    EXPECT_GT(list.paints, 0);
    EXPECT_LT(list.paints, 10 + watch.elapsed() / 25);
  }
}

TEST(FirstSight, DroppedFilesAreOpened) {
  running_program program;
  main_window& window = program.window();
  QMimeData files;
  const auto drop = [&](const QList<QUrl>& urls) {
    files.setUrls(urls);
    QDragEnterEvent enter(QPoint(50, 200), Qt::CopyAction, &files, Qt::LeftButton, {});
    enter.setAccepted(false);
    QApplication::sendEvent(&window, &enter);
    if (!enter.isAccepted()) return false;
    QDropEvent dropped(QPointF(50, 200), Qt::CopyAction, &files, Qt::LeftButton, {});
    QApplication::sendEvent(&window, &dropped);
    return true;
  };
  EXPECT_FALSE(drop({QUrl("https://example.org/river.vki")}));
  EXPECT_FALSE(drop({QUrl::fromLocalFile("/tmp/river.doc")}));
  EXPECT_TRUE(drop({QUrl::fromLocalFile("/tmp/river.doc"), QUrl::fromLocalFile(SAMPLE)}));
  EXPECT_TRUE(wait_for([&] { return program.form().file_name == SAMPLE; }));
}

TEST(FirstSight, AClickOrAKeyEndsTheSplash) {
  for (const bool by_key : {true, false}) {
    int shown = 0;
    splash_form splash(60000, [&] { ++shown; });
    splash.show();
    ASSERT_TRUE(wait_for([&] { return splash.isVisible(); }));
    for (int i = 0; i < 2; ++i)
      by_key ? QTest::keyClick(&splash, Qt::Key_Space) : QTest::mouseClick(&splash, Qt::LeftButton);
    EXPECT_TRUE(wait_for([&] { return shown == 1 && !splash.isVisible(); }));
    QTest::qWait(20);
    EXPECT_EQ(shown, 1);
  }
}

TEST(FirstSight, AStoredPlaceThatTheScreenNoLongerHasIsBroughtBack) {
  const QRect room = QGuiApplication::primaryScreen()->availableGeometry();
  const struct {
    int left, top, width, height;
  } places[] = {{1900, 40, 800, 600}, {900, 700, 800, 600}, {20, 2000, 600, 400}, {10, 40, 5000, 5000}};
  for (const auto& it : places) {
    running_program program({}, "MainFormLeft=" + std::to_string(it.left) + "\nMainFormTop=" + std::to_string(it.top) +
                                    "\nMainFormWidth=" + std::to_string(it.width) +
                                    "\nMainFormHeight=" + std::to_string(it.height) + "\n");
    const QRect place(program.window().mapToGlobal(QPoint(0, 0)), program.window().size());
    EXPECT_TRUE(room.contains(place)) << place.left() << " " << place.top() << " " << place.width() << " "
                                      << place.height();
  }
}

// In a window 500 pixels wide, and in the dark.
TEST(FirstSight, NothingIsCutWithoutAnEllipsis) {
  running_program program({},
                          "RecentFile1=/a/rather/long/folder/of/somebody/who/likes/long/names/of/folders/river.vki\n");
  main_window& window = program.window();
  window.resize(500, 400);
  QTest::qWait(50);
  EXPECT_EQ(window.width(), 500);
  take_picture(&window, "start_500");
  program.form().open_file(SAMPLE);
  program.form().RunModelButtonClick();
  wait_for([&] { return !program.form().active_thread; }, 20000);
  window.show_run_controls(true);
  window.set_info_label("Simulation Time: 10/01/2011 12:00");
  window.set_time_remaining_label(" Time remaining: 101:45:00");
  window.set_progress(40);
  QTest::qWait(50);
  take_picture(&window, "running_500");
  for (QLabel* label : window.findChildren<QLabel*>()) {
    if (!label->isVisible() || label->wordWrap() || dynamic_cast<elided_label*>(label)) continue;
    EXPECT_GE(label->contentsRect().width(), label->fontMetrics().horizontalAdvance(label->text()))
        << label->objectName().toStdString() << " " << label->text().toStdString();
  }
  const QPalette light = QApplication::palette();
  QApplication::setPalette(palette_of(appearance::dark));
  QTest::qWait(50);
  take_picture(&window, "dark_500");
  QApplication::setPalette(light);
}

} // namespace
} // namespace vesk
