// Long work in the window, and the import of series.
#include "accessible.h"
#include "app/catalogue_source.h"
#include "dataset/same_content.h"
#include "dataset/vki_file.h"
#include "driver.h"
#include "query/cancellation.h"
#include "sqlite_file.h"

#include <QApplication>
#include <QLabel>
#include <QProgressBar>
#include <atomic>
#include <thread>

namespace vesk {
namespace {

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

// A read from a server that is gone may never return.
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

} // namespace
} // namespace vesk
