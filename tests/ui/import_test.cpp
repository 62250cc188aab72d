// Long work in the window, and the import of series.
#include "accessible.h"
#include "app/catalogue_source.h"
#include "dataset/same_content.h"
#include "dataset/vki_file.h"
#include "driver.h"
#include "editors/import_time_series_form.h"
#include "query/cancellation.h"
#include "sqlite_file.h"
#include "typist.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QElapsedTimer>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QTableView>
#include <QTest>
#include <QTimer>
#include <atomic>
#include <fstream>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <thread>

namespace vesk {
namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

// Presses Cancel in the box of long work.
bool cancel_work(QWidget* box) {
  return box->objectName() == "progress_box" && press(box, "Cancel");
}

TEST(LongWork, RunsInAThreadBehindABoxWithCancel) {
  running_program program;
  user_questions& user = program.window();
  const auto main_thread = std::this_thread::get_id();
  std::string calls;
  EXPECT_TRUE(user.run_long_work("Counting", [&](work_progress& progress) {
    for (const char* digit : {"1", "2", "3"})
      progress.on_main_thread([&calls, digit, main_thread] {
        EXPECT_EQ(std::this_thread::get_id(), main_thread);
        calls += digit;
      });
    EXPECT_NE(std::this_thread::get_id(), main_thread);
  }));
  EXPECT_EQ(calls, "123");
  EXPECT_THROW(user.run_long_work("Failing", [](work_progress&) { throw query_engine_exception("gone"); }),
               query_engine_exception);

  bool done = true;
  with_dialog(
      [&] {
        done = user.run_long_work("Reading gauges & <b>.csv", [](work_progress& progress) {
          progress.percent_done(40);
          while (!progress.is_cancelled()) std::this_thread::yield();
        });
      },
      [](QWidget* box) {
        auto* bar = box->findChild<QProgressBar*>("ProgressBar");
        if (!bar || bar->value() != 40) return false;
        expect_accessible(box);
        EXPECT_EQ(find<QLabel>(box, "WhatLabel")->text(), "Reading gauges & <b>.csv...");
        take_picture(box, "progress");
        return cancel_work(box);
      });
  EXPECT_FALSE(done);
}

// A read from an unreachable server may never return.
TEST(LongWork, IsGivenUpWhenItDoesNotNoticeCancel) {
  running_program program;
  user_questions& user = program.window();
  const auto released = std::make_shared<std::atomic<bool>>(false), over = std::make_shared<std::atomic<bool>>(false);
  std::optional<int> result = 1;
  with_dialog(
      [&] {
        result =
            with_progress(user, "Hanging", {}, [released, over](prevesk_dataset_data_type&, work_progress& progress) {
              while (!*released) std::this_thread::yield();
              progress.on_main_thread([] { ADD_FAILURE() << "called after the work was given up"; });
              *over = true;
              return 2;
            });
      },
      cancel_work);
  EXPECT_FALSE(result);
  EXPECT_FALSE(*over);
  *released = true;
  EXPECT_TRUE(wait_for([&] { return over->load(); }));
}

TEST(LongWork, CancelEndsTheQueriesOfACommandAndOfARun) {
  const temporary_folder folder;
  const std::string file = folder.file("river.vki");
  prevesk_dataset_data_type data(catalogue_source(CATALOGUE).get());
  read_data_file(SAMPLE, data);
  auto& query = data.time_functions.edit(0).query.edit();
  query = {};
  query.file_name = write_endless_sqlite(folder.file("endless.sqlite"));
  query.table_name = "flow";
  query.date_time_field = "day";
  query.value_field = "value";
  query.deferred = true;
  save_data_file(file, data);
  running_program program;
  program.form().open_file(file);
  const prevesk_dataset_data_type before = *program.form().current_data_set;
  bool asked = false;
  with_dialog([&] { program.trigger("ExectutealldeferredqueriesItem"); },
              [&](QWidget* box) {
                if (!asked) return !(asked = press(box, "Yes"));
                return cancel_work(box);
              });
  with_dialog([&] { program.trigger("RunModelButton"); }, cancel_work);
  EXPECT_EQ(program.form().active_thread, nullptr);
  EXPECT_TRUE(same_content(before, *program.form().current_data_set));
  EXPECT_EQ(program.form().failures(), 0);
}

class ImportSeries : public testing::Test {
protected:
  ImportSeries() {
    fs::copy(SAMPLE, folder.path / "river.vki");
    for (const char* table : {"roanoke_daily.xlsx", "roanoke_daily.sqlite"})
      fs::copy(fs::path(TEST_DATA) / "tables" / table, folder.path / table);
    program.form().open_file(folder.file("river.vki"));
  }

  TImportTimeSeriesForm& form() { return program.form().import_form(); }
  const time_function_data_type& light() { return program.form().current_data_set->time_functions[1]; }
  static double sum_of(const point_list& points) {
    double sum = 0;
    for (const auto& point : points) sum += point.value;
    return sum;
  }

  temporary_folder folder;
  running_program program;
};

// With the keyboard alone: a new query on a sheet, with a condition, over all years.
TEST_F(ImportSeries, FromAWorkbookByKeyboard) {
  const char* const dialog = "ImportTimeSeriesForm";
  typist user;
  user.in("PreveskMainForm").keys("Alt+D").keys("T").in("TimeFunctionsForm").keys("Down").go_to("TFFillCalcTable");
  user.keys("Alt+M").in(dialog).until([this] { return QApplication::activeModalWidget() != nullptr; });
  user.keys("Alt+B").in("file_dialog").text(QString::fromStdString(folder.file("roanoke_daily.xlsx"))).keys("Return");
  user.in(dialog).until([this] { return form().field_names().size() == 7; });
  user.go_to("DateTimeFieldList").text("SA").until([this] { return form().date_time_field() == 1U; });
  user.go_to("ValueFieldList").text("DO").until([this] { return form().value_field() == 6U; });
  user.go_to("RestrictDateRangeCheckBox").keys("Space").keys("Alt+I").go_to("ConditionTable");
  user.until([this] { return !form().stored().conditions.empty(); });
  user.keys("F2").text("SITE").keys("Return").until(
      [this] { return form().stored().conditions[0].field_name == "SITE_NO"; });
  user.keys("Right", 2).keys("F2").text("02081022").keys("Return").until([this] {
    return form().sql() == "SELECT * FROM [daily] WHERE (SITE_NO='02081022') ORDER BY SAMPLED";
  });
  user.keys("Alt+Q").until([this] { return form().results_note() == "Results: 1823 rows"; }).picture("import");
  user.keys("Alt+M").in("message_box").picture("import_question").keys("Return");
  user.in("TimeFunctionsForm").until([this] { return light().points.size() == 1677; }).picture("imported");
  user.leave_by("OK").work();
  ASSERT_EQ(light().points.size(), 1677U);
  EXPECT_NEAR(sum_of(light().points), 14706, 1);
  EXPECT_EQ(light().query->file_name, "roanoke_daily.xlsx");
  EXPECT_EQ(light().query->table_name, "daily");
}

// The line below shows why, and the focus is on the entry to correct.
TEST_F(ImportSeries, NeverWithAConditionThatShowsARefusedEntry) {
  folder.write("gauges.csv", "DATE_TIME,SITE,RESULT\n2012-10-02,A,1\n2012-10-03,A,2\n");
  const auto in_import = [&](QWidget* window) {
    if (window->objectName() != "ImportTimeSeriesForm") return false;
    EXPECT_TRUE(form().FileNameEditChange("gauges.csv"));
    EXPECT_TRUE(press(window, "Insert"));
    auto* conditions = find<QTableView>(window, "ConditionTable");
    EXPECT_EQ(window->focusWidget(), conditions);
    EXPECT_EQ(conditions->currentIndex(), conditions->model()->index(0, 1)); // the new condition's field
    EXPECT_TRUE(form().ConditionTable.enter(0, 1, "SITE"));
    EXPECT_TRUE(wait_for([this] { return form().ConditionTable.enter(0, 3, "A"); })); // after the values have been read
    EXPECT_FALSE(form().ConditionTable.enter(0, 3, "C"));
    auto* message = find<QLabel>(window, "MessageLabel");
    EXPECT_TRUE(message->text().startsWith("Condition 1: \"C\" is not in the list.")) << message->text().toStdString();
    auto* file = find<QLineEdit>(window, "FileNameEdit");
    file->setText("typed.csv");
    file->setModified(true);
    press(window, "Import");
    EXPECT_TRUE(window->isVisible());
    EXPECT_EQ(window->focusWidget(), conditions);
    EXPECT_EQ(file->text(), "typed.csv"); // not applied yet
    file->setModified(false);
    return press(window, "Cancel");
  };
  const prevesk_dataset_data_type before = *program.form().current_data_set;
  with_dialog([&] { program.trigger("TimeFunctionsItem"); },
              [&](QWidget* dialog) {
                with_dialog([&] { press(dialog, "Import"); }, in_import);
                return press(dialog, "OK");
              });
  EXPECT_TRUE(same_content(before, *program.form().current_data_set));
}

// Presses the button, confirms its question, and returns the texts of the other boxes.
std::vector<std::string> complaints_after(QWidget* dialog, const char* button) {
  std::vector<std::string> texts;
  QTimer watch;
  QObject::connect(&watch, &QTimer::timeout, [&] {
    QWidget* box = QApplication::activeModalWidget();
    if (!box || box == dialog || !box->isVisible() || box->objectName() != "message_box") return;
    if (!box->windowTitle().startsWith("Confirm"))
      texts.push_back(box->windowTitle().toStdString() + ": " +
                      find<QLabel>(box, "qt_msgbox_label")->text().toStdString());
    press(box, "OK");
  });
  watch.start(10);
  EXPECT_TRUE(press(dialog, button)) << button;
  return texts;
}

void type_file_name(QWidget* dialog, const std::string& name) {
  auto* edit = find<QLineEdit>(dialog, "FileNameEdit");
  edit->setText(QString::fromStdString(name));
  edit->setModified(true);
}

TEST_F(ImportSeries, IsCancelledByOneClickWhateverIsTyped) {
  const auto in_import = [&](QWidget* window) {
    if (window->objectName() != "ImportTimeSeriesForm") return false;
    auto* file = find<QLineEdit>(window, "FileNameEdit");
    file->setFocus();
    QTest::keyClicks(file, "none.csv");
    auto* cancel = find<QPushButton>(window, "CancelButton");
    QTest::mousePress(cancel, Qt::LeftButton);
    QApplication::processEvents();
    EXPECT_EQ(QApplication::activeModalWidget(), window);
    QTest::mouseRelease(cancel, Qt::LeftButton);
    return !window->isVisible();
  };
  with_dialog([&] { program.trigger("TimeFunctionsItem"); },
              [&](QWidget* dialog) {
                with_dialog([&] { press(dialog, "Import"); }, in_import);
                return press(dialog, "Cancel");
              });
}

// Changes to a table that is open in the dialog.
struct spoilt_table {
  const char* table;
  std::function<void(const std::string& file)> spoil;
  const char* complaint; // part of the message
};

TEST_F(ImportSeries, FromSpoiltTablesIsRefusedInOneSentence) {
  sqlite3* other = nullptr; // another program's connection
  const auto lock = [&other](const std::string& file) {
    sqlite3_open(file.c_str(), &other);
    EXPECT_EQ(sqlite3_exec(other, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr), SQLITE_OK);
  };
  const auto cut = [](const std::string& file) { fs::resize_file(file, fs::file_size(file) / 2); };
  const auto fill_with_garbage = [](const std::string& file) {
    std::ofstream(file, std::ios::binary) << std::string(5000, '\x81');
  };
  const auto remove = [](const std::string& file) { fs::remove(file); };
  const auto make_a_folder = [](const std::string& file) { fs::remove(file), fs::create_directory(file); };
  const auto make_a_pipe = [](const std::string& file) {
    fs::remove(file);
    EXPECT_EQ(mkfifo(file.c_str(), 0600), 0);
  };
  const char* const wrong_content = "its content is not that of a ";
  const spoilt_table tables[] = {
      {"roanoke_daily.sqlite", lock, "another program has kept the database locked for more than 2 seconds."},
      {"roanoke_daily.sqlite", cut, "database disk image is malformed."},
      {"roanoke_daily.sqlite", fill_with_garbage, wrong_content},
      {"roanoke_daily.sqlite", remove, "no such file"},
      {"roanoke_daily.xlsx", cut, "the zip archive is damaged: its list of contents is missing."},
      {"roanoke_daily.xlsx", fill_with_garbage, wrong_content},
      {"roanoke_daily.xls", cut, "sector 545 of the compound file is missing."},
      {"roanoke_daily.ods", cut, "the zip archive is damaged: its list of contents is missing."},
      {"compIndexTestV1997.mdb", cut, "cannot read the fields: the database is damaged."},
      {"compIndexTestV1997.mdb", fill_with_garbage, wrong_content},
      {"roanoke_daily.dbf", cut, "the header claims 3650 records, but the file holds only 1823."},
      {"roanoke_daily.db", cut, "2006 bytes are missing at byte 110598"},
      {"roanoke_daily.csv", fill_with_garbage, "SAMPLED"},
      {"roanoke_daily.csv", make_a_folder, "not a regular file."},
      {"roanoke_daily.csv", make_a_pipe, "not a regular file."},
  };
  const prevesk_dataset_data_type before = *program.form().current_data_set;
  with_dialog([&] { program.trigger("TimeFunctionsItem"); },
              [&](QWidget* editor) {
                for (const auto& [table, spoil, complaint] : tables) {
                  const std::string file = folder.file(table);
                  fs::remove(file);
                  fs::copy(fs::path(TEST_DATA) / "tables" / table, file);
                  with_dialog([&] { press(editor, "Import"); },
                              [&](QWidget* dialog) {
                                if (dialog->objectName() != "ImportTimeSeriesForm") return false;
                                form().ResetAllButtonClick();
                                type_file_name(dialog, table);
                                EXPECT_THAT(complaints_after(dialog, "Delete"),
                                            IsEmpty()); // this opens the table first
                                form().DateTimeFieldChange(1);
                                form().ValueFieldChange(2);
                                spoil(file);
                                for (const char* button : {"Run query", "Import"}) {
                                  EXPECT_THAT(complaints_after(dialog, button),
                                              ElementsAre(AllOf(HasSubstr(complaint), Not(HasSubstr("SELECT")))))
                                      << table << ", " << button;
                                  EXPECT_TRUE(dialog->isVisible());
                                }
                                sqlite3_close(std::exchange(other, nullptr));
                                return press(dialog, "Cancel");
                              });
                }
                return press(editor, "OK");
              });
  EXPECT_TRUE(same_content(before, *program.form().current_data_set));
}

// The longest time without served events is recorded with the test's result.
TEST_F(ImportSeries, FromAMillionRows) {
  {
    std::ofstream table(folder.file("million.csv"));
    table << "DATE_TIME,RESULT\n";
    for (int i = 0; i < 1'000'000; ++i)
      table << 40000 + i / 1440 << '.' << 100000 + i % 1440 * 600 << ',' << i % 97 << '\n';
  }
  with_dialog(
      [&] { program.trigger("PrintIntervalItem"); },
      [&](QWidget* editor) {
        qint64 longest = 0;
        QElapsedTimer since;
        QTimer pulse;
        QObject::connect(&pulse, &QTimer::timeout, [&] { longest = std::max(longest, since.restart()); });
        since.start();
        pulse.start(10);
        with_dialog(
            [&] { press(editor, "Import"); },
            [&](QWidget* dialog) {
              if (dialog->objectName() != "ImportTimeSeriesForm") return false;
              form().ResetAllButtonClick();
              type_file_name(dialog, "million.csv");
              EXPECT_THAT(complaints_after(dialog, "Delete"), IsEmpty());
              QTest::mouseClick(find<QCheckBox>(dialog, "RestrictDateRangeCheckBox"), Qt::LeftButton, {}, {8, 8});
              EXPECT_THAT(complaints_after(dialog, "Run query"), IsEmpty());
              EXPECT_EQ(form().results_note(), "Results: the first 10000 of 1000000 rows");
              EXPECT_THAT(complaints_after(dialog, "Import"), IsEmpty());
              return true;
            });
        QTest::qWait(100); // paint the chart
        pulse.stop();
        RecordProperty("longest_pause_ms", static_cast<int>(longest));
        EXPECT_EQ(program.form().current_data_set->print_intervals.points.size(), 1'000'000U);
        return press(editor, "Cancel");
      });
}

// With the mouse: a series from a database, at the smallest supported size.
TEST_F(ImportSeries, FromADatabaseByMouse) {
  const auto choose = [](QWidget* dialog, const char* list, const char* item) {
    auto* box = find<QComboBox>(dialog, list);
    box->setCurrentIndex(box->findText(item));
    emit box->activated(box->currentIndex());
    QApplication::processEvents();
  };
  const auto in_import = [&](QWidget* window) {
    if (window->objectName() != "ImportTimeSeriesForm") return false;
    window->resize(700, 500);
    with_dialog([&] { press(window, "Browse..."); },
                [&](QWidget* dialog) {
                  return choose_file(dialog, QString::fromStdString(folder.file("roanoke_daily.sqlite")));
                });
    EXPECT_EQ(form().field_names().size(), 7U);
    expect_accessible(window);
    choose(window, "DateTimeFieldList", "SAMPLED");
    choose(window, "ValueFieldList", "FLOW_CFS");
    QTest::mouseClick(find<QCheckBox>(window, "RestrictDateRangeCheckBox"), Qt::LeftButton, {}, {8, 8});
    take_picture(window, "import_small");
    EXPECT_LE(window->height(), 500);
    EXPECT_LE(window->width(), 700);
    with_dialog([&] { press(window, "Import"); }, [](QWidget* box) { return press(box, "OK"); });
    return true;
  };
  with_dialog([&] { program.trigger("TimeFunctionsItem"); },
              [&](QWidget* dialog) {
                auto* functions = find<QTableView>(dialog, "TheFillCalcTable");
                functions->setCurrentIndex(functions->model()->index(1, 0));
                with_dialog([&] { press(dialog, "Import"); }, in_import);
                EXPECT_EQ(light().points.size(), 1827U);
                return press(dialog, "OK");
              });
  EXPECT_NEAR(sum_of(light().points), 11'051'140, 1);
}

} // namespace
} // namespace vesk
