// What replaces the current data set, and how Undo brings it back.
#include "app/main_form.h"
#include "behaviour_catalogue.h"
#include "dataset/vki_file.h"
#include "noting_interface.h"
#include "temporary_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

namespace vesk {
namespace {

using lines = std::vector<std::string>;

class Replacement : public testing::Test {
protected:
  Replacement() {
    write_behaviour_catalogue(folder.path);
    form.set_database_folder(folder.path);
    form.engine_path = MISBEHAVING_ENGINE;
  }
  ~Replacement() override {
    form.cancel_job();
    finish();
  }

  std::string make_file(const std::string& name) {
    prevesk_dataset_data_type data(form.catalogue.get());
    data.model_type = model_of("returns");
    data.refresh_from_catalogue(false);
    data.comments = name;
    data.resize_segments(1);
    for (std::size_t i = 0; i < data.systems.size(); ++i) data.systems.edit(i).gsysbypass = system_bypassed;
    save_data_file(folder.path / name, data);
    return folder.file(name);
  }
  // Name and content of what is open, and what the title says of it.
  std::string open_now() const {
    const std::string leaf = form.file_name.substr(form.file_name.rfind('/') + 1);
    return leaf + " with " + form.current_data_set->comments +
           (ui.caption.find(": " + form.file_name + " (") == std::string::npos ? ", not in the title" : "");
  }
  std::string steps() const { return ui.commands.undo + "|" + ui.commands.redo; }
  bool is_from_its_file() const {
    return form.current_data_set->origin.is_set() &&
           form.current_data_set->origin.identity == identity_of(std::filesystem::path(form.file_name));
  }
  // Serves jobs until the line is there, or until the last job has ended.
  void wait_for_line(const std::string& line) {
    while (std::find(ui.lines.begin(), ui.lines.end(), line) == ui.lines.end())
      wait_and_synchronize(std::chrono::milliseconds(1));
  }
  void finish() {
    while (form.active_thread || live_thread_count() > 0) wait_and_synchronize(std::chrono::milliseconds(1));
  }

  temporary_folder folder;
  noting_interface ui;
  TPreveskMainForm form{ui, folder.path / "settings.ini"};
};

TEST_F(Replacement, UndoAndRedoPutBackDataSetNamesAndOrigin) {
  const std::string a = make_file("a.vki"), b = make_file("b.vki");
  form.open_file(a);
  EXPECT_EQ(steps(), "|"); // there was nothing before it
  const std::uint64_t generation = form.generation();
  form.open_file(b);
  EXPECT_GT(form.generation(), generation);
  form.new_data_set();
  form.open_file(folder.file("missing.vki"));
  EXPECT_EQ(steps(), "Open missing.vki|");
  form.UndoItemClick();
  EXPECT_EQ(open_now(), " with ");
  form.UndoItemClick();
  EXPECT_EQ(open_now(), "b.vki with b.vki");
  EXPECT_TRUE(is_from_its_file());
  form.UndoItemClick();
  EXPECT_EQ(open_now(), "a.vki with a.vki");
  EXPECT_EQ(steps(), "|Open b.vki");
  form.UndoItemClick(); // nothing left
  form.RedoItemClick();
  EXPECT_EQ(open_now(), "b.vki with b.vki");
  EXPECT_EQ(steps(), "Open b.vki|New");
  ui.take_boxes();
  form.SaveItemClick();
  EXPECT_EQ(ui.boxes, lines{}); // back in its own file
  folder.write("cut.vki", folder.read("a.vki").substr(0, 50));
  form.open_file(folder.file("cut.vki")); // refused: no step
  EXPECT_EQ(steps(), "Open b.vki|New");
  folder.write("river.vkp", "2\nmap.shp\na.vki\n");
  form.open_file(folder.file("river.vkp"));
  EXPECT_EQ(steps(), "Open river.vkp|");
  form.UndoItemClick();
  EXPECT_EQ(open_now(), "b.vki with b.vki");
  EXPECT_TRUE(form.current_data_set->project_files.empty());
}

TEST_F(Replacement, ADialogIsAStepByOkAndByCancel) {
  form.open_file(make_file("a.vki"));
  form.SystemsItemClick(); // nothing is changed in it
  ui.form_result = false;
  form.SystemsItemClick();
  EXPECT_EQ(steps(), "|");
  ui.in_form = [this] { form.current_data_set->comments = "typed"; };
  form.SystemsItemClick();
  EXPECT_EQ(open_now(), "a.vki with a.vki");
  EXPECT_EQ(steps(), "Cancel System Data|");
  form.UndoItemClick(); // what was typed before the Cancel
  EXPECT_EQ(open_now(), "a.vki with typed");
  form.RedoItemClick();
  ui.form_result = true;
  form.SegmentsItemClick();
  EXPECT_EQ(steps(), "Edit Segments|");
  form.UndoItemClick();
  EXPECT_EQ(open_now(), "a.vki with a.vki");

  // A dialog that has added steps needs no other for its OK.
  ui.in_form = [this] {
    EXPECT_EQ(form.undo_label(), ""); // none from before its opening
    for (const char* text : {"one", "two"}) {
      form.begin_step(text, "");
      form.current_data_set->comments = text;
      form.end_step(true);
    }
    form.begin_step("three", "");
    form.current_data_set->comments = "three";
    form.end_step(false);
    EXPECT_EQ(form.current_data_set->comments, "two");
  };
  form.LoadsItemClick();
  EXPECT_EQ(steps(), "two|");
  form.UndoItemClick();
  EXPECT_EQ(open_now(), "a.vki with one");

  // The project's files have no snapshot: a Cancel keeps them, and only Undo takes them back.
  ui.in_form = [this] {
    EXPECT_EQ(form.undo_label(), "");
    form.begin_step("Insert row", "");
    form.current_data_set->project_files.push_back("a.shp");
    form.end_step(true);
  };
  ui.form_result = false;
  form.EditProjectItemClick();
  EXPECT_EQ(steps(), "Insert row|");
  form.UndoItemClick();
  EXPECT_TRUE(form.current_data_set->project_files.empty());
}

TEST_F(Replacement, AnImportWithoutAnEngineReplacesNothing) {
  form.open_file(make_file("a.vki"));
  form.engine_path = folder.path / "gone.so";
  form.import_file("old.inp");
  EXPECT_EQ(ui.boxes, lines{"Error: Engine library " + folder.file("gone.so") + " does not exist."});
  EXPECT_EQ(open_now(), "a.vki with a.vki");
  EXPECT_EQ(form.import_file_name, "");
  EXPECT_EQ(steps(), "|");
}

TEST_F(Replacement, AnImportIsOneStepHoweverItEnds) {
  const auto import = [&](const std::string& name) {
    form.open_file(make_file("a.vki"));
    ui.lines.clear();
    form.import_file(name);
    if (name.find("waits") != name.npos) {
      wait_for_line("0 waiting");
      form.cancel_job();
    }
    finish();
    EXPECT_EQ(open_now(), "a.vki with ");
    EXPECT_FALSE(form.current_data_set->origin.is_set()); // Save asks before it replaces a.vki
    EXPECT_EQ(form.import_file_name, name);
    const std::string last = ui.lines.back();
    form.UndoItemClick();
    EXPECT_EQ(open_now(), "a.vki with a.vki");
    EXPECT_EQ(form.import_file_name, "");
    EXPECT_TRUE(is_from_its_file());
    EXPECT_EQ(ui.commands.redo, "Import " + name);
    return last;
  };
  EXPECT_EQ(import("old.inp"), "0 import 1");
  EXPECT_EQ(import("code-3.inp"),
            "1 \"Import code-3.inp\" failed, and its partial result has replaced a.vki. Undo brings it back.");
  EXPECT_EQ(import("waits.inp"),
            "1 \"Import waits.inp\" was cancelled, and its data set was dropped. Undo brings a.vki back.");
  EXPECT_EQ(ui.boxes, lines{});
  EXPECT_EQ(import("endless.inp"),
            "1 \"Import endless.inp\" failed, and its partial result has replaced a.vki. Undo brings it back.");
  EXPECT_EQ(ui.boxes.size(), 1U);
  EXPECT_NE(ui.boxes[0].find("is not a date from 1/1/1600 to 12/31/3999"), std::string::npos);
}

TEST_F(Replacement, ARefusedImportNamesWhatItReplaced) {
  form.open_file(make_file("a.vki"));
  form.start_import_network("waits.vkn");
  wait_for_line("0 waiting");
  form.import_file("old.inp");
  EXPECT_EQ(ui.lines.back(),
            "1 \"Import old.inp\" was refused, and an empty data set has replaced a.vki. Undo brings it back.");
  form.UndoItemClick();
  EXPECT_EQ(open_now(), "a.vki with a.vki");
  form.cancel_job();
  finish();
  EXPECT_EQ(ui.lines.back(), "1 \"Import network waits.vkn\" was cancelled, and its data set was dropped.");
  EXPECT_EQ(open_now(), "a.vki with a.vki");
  EXPECT_EQ(form.current_data_set->segments[0].name, "Vesk Segment");
  ui.lines.clear();
  form.start_import_network("renames_waits.vkn");
  wait_for_line("0 waiting");
  EXPECT_EQ(form.file_name, "engine.vki");
  form.cancel_job();
  finish();
  EXPECT_EQ(open_now(), "a.vki with a.vki"); // the name that the job has put is dropped, too
}

TEST_F(Replacement, AResultIsAStepAndKeepsTheOriginOfItsDocument) {
  form.open_file(make_file("a.vki"));
  form.start_import_network("renames.vkn");
  finish();
  EXPECT_EQ(ui.lines, lines{"0 network after Vesk Segment"});
  EXPECT_TRUE(form.current_data_set->origin.is_set());
  EXPECT_EQ(form.file_name, "engine.vki");
  EXPECT_EQ(steps(), "Import network renames.vkn|");
  form.UndoItemClick();
  EXPECT_EQ(open_now(), "a.vki with a.vki"); // the name, too
  EXPECT_EQ(form.current_data_set->segments[0].name, "Vesk Segment");

  form.current_data_set->resize_segments(3);
  form.current_data_set->systems.edit(0).loads.resize(1);
  form.current_data_set->systems.edit(0).loads.edit(0).segment = 2;
  form.start_import_network("one-segment.vkn");
  finish();
  EXPECT_EQ(ui.lines.back(),
            "1 2 segments were removed with all data: the data set had 3, the file has 1. 1 load still "
            "names one of them: correct or delete it. Undo restores the segments.");
  form.UndoItemClick();
  EXPECT_EQ(form.current_data_set->segments.size(), 3U);
  form.start_validity_check(); // finds limits, changes nothing
  finish();
  EXPECT_EQ(form.current_data_set->max_num_segments, 1U);
  EXPECT_EQ(steps(), "|Import network one-segment.vkn");

  // Not-a-number differs from itself, but is no edit.
  form.current_data_set->end_date = form.current_data_set->skip_time = std::numeric_limits<double>::quiet_NaN();
  ui.lines.clear();
  form.start_validity_check();
  finish();
  form.SystemsItemClick();
  for (const std::string& line : ui.lines) EXPECT_EQ(line.find("edited"), line.npos) << line;
  EXPECT_EQ(steps(), "|Import network one-segment.vkn");

  form.start_load_restart_file("code-5.rst");
  finish();
  EXPECT_EQ(ui.lines.back(), "1 \"Load restart file code-5.rst\" failed, and its partial result has replaced the data "
                             "set. Undo brings the data set back.");
  EXPECT_EQ(form.current_data_set->segments[0].name, "restart");

  // From the settings dialog, whose Cancel takes it back.
  form.UndoItemClick();
  ui.form_result = false;
  ui.in_form = [&] {
    form.start_load_restart_file("code-0.rst");
    EXPECT_TRUE(form.restart_file_is_loading());
    finish();
    EXPECT_EQ(form.current_data_set->segments[0].name, "restart");
  };
  form.ParameterizationItemClick();
  EXPECT_EQ(form.current_data_set->segments[0].name, "Vesk Segment");
}

TEST_F(Replacement, AResultThatReplacesTheUsersWorkIsReported) {
  // The job has begun and does nothing before the main thread serves it: there is time to work.
  form.open_file(make_file("a.vki"));
  form.start_import_network("a.vkn");
  form.current_data_set->comments = "edited";
  finish();
  EXPECT_EQ(ui.lines.back(),
            "1 \"Import network a.vkn\" has replaced the data set, which had been edited in the meantime. "
            "Undo brings the edits back.");
  EXPECT_TRUE(is_from_its_file());
  form.UndoItemClick();
  EXPECT_EQ(open_now(), "a.vki with edited");

  form.open_file(make_file("a.vki"));
  form.start_import_network("a.vkn");
  const std::string b = make_file("b.vki");
  form.open_file(b);
  finish();
  EXPECT_EQ(open_now(), "b.vki with a.vki");
  EXPECT_EQ(ui.lines.back(), "1 \"Import network a.vkn\" has ended after another data set was opened, and has replaced "
                             "that one (b.vki). Undo brings it back.");
  EXPECT_FALSE(form.current_data_set->origin.is_set());
  const std::string before = folder.read("b.vki");
  ui.answer = box_answer::no;
  form.SaveItemClick();
  EXPECT_EQ(folder.read("b.vki"), before);
  EXPECT_EQ(ui.boxes.size(), 1U);
  form.UndoItemClick();
  EXPECT_EQ(open_now(), "b.vki with b.vki");
  EXPECT_TRUE(is_from_its_file());

  // Back in the document that it began in, the result belongs there again.
  form.open_file(make_file("a.vki"));
  form.start_import_network("a.vkn");
  form.new_data_set();
  form.UndoItemClick();
  finish();
  EXPECT_TRUE(is_from_its_file());
}

TEST_F(Replacement, AnAnswerGivenAfterTheDataSetWasReplacedDoesNothing) {
  struct : noting_interface {
    TPreveskMainForm* form = nullptr;
    box_answer message_box(const std::string& title, const std::string& text, box_buttons buttons) override {
      if (buttons == box_buttons::yes_no) form->new_data_set(); // as a job's end may
      return noting_interface::message_box(title, text, buttons);
    }
  } asked;
  TPreveskMainForm other(asked, folder.path / "settings.ini");
  asked.form = &other;
  asked.answer = box_answer::yes;
  other.set_database_folder(folder.path);
  other.open_file(make_file("a.vki"));
  folder.write("b.vki", "a good file");
  other.file_name = folder.file("b.vki");
  EXPECT_FALSE(other.save());
  EXPECT_EQ(folder.read("b.vki"), "a good file");
  EXPECT_EQ(asked.lines.back(), "1 The data set was replaced while the question was open. Nothing was saved.");
}

TEST_F(Replacement, WithoutAHistoryThereAreNoSteps) {
  form.keep_no_history();
  form.open_file(make_file("a.vki"));
  form.open_file(make_file("b.vki"));
  form.import_file("code-3.inp");
  finish();
  EXPECT_EQ(steps(), "|");
  EXPECT_EQ(ui.lines, lines{"0 import 1"});
}

TEST_F(Replacement, TheMemoryOfTheStepsIsASetting) {
  folder.write("small.ini", "[SOFTWARE\\TALMO\\VESK\\7.0]\nUndoMegabytes=1\n");
  TPreveskMainForm small(ui, folder.path / "small.ini");
  small.set_database_folder(folder.path);
  const auto steps_after_three_edits = [this](TPreveskMainForm& edited) {
    edited.new_data_set();
    for (int i = 0; i < 3; ++i) {
      edited.begin_step("Type", "");
      edited.current_data_set->time_steps.points = point_list(50'000, {{0, 0}, 1}); // 0.8 MB
      edited.end_step(true);
    }
    int steps = 0;
    for (; !edited.undo_label().empty(); ++steps) edited.UndoItemClick();
    return steps;
  };
  EXPECT_EQ(steps_after_three_edits(form), 3);
  EXPECT_EQ(steps_after_three_edits(small), 1);
  small.set_undo_megabytes(100);                // in the preferences
  EXPECT_EQ(steps_after_three_edits(small), 4); // and its New
  small.save_settings();
  EXPECT_NE(folder.read("small.ini").find("UndoMegabytes=100\n"), std::string::npos);
}

TEST_F(Replacement, NoRunStartsOverAPeriodOutsideTheCalendar) {
  form.open_file(make_file("a.vki"));
  const double year_9999 = 2958101; // 1 January
  struct {
    double seed_date, end_date;
    std::string cause;
  } const cases[] = {{40000, std::numeric_limits<double>::infinity(), "end of the simulation, inf"},
                     {40000, 1e300, "end of the simulation, 1e+300"},
                     {40000, year_9999, "end of the simulation, 1/1/9999 0:00:00"},
                     {std::numeric_limits<double>::quiet_NaN(), 40000, "start of the simulation, nan"},
                     {-200000, 40000, "start of the simulation, 5/31/1352 0:00:00"}};
  form.current_data_set->seed_time = form.current_data_set->end_time = 0;
  for (const auto& c : cases) {
    form.current_data_set->seed_date = c.seed_date;
    form.current_data_set->end_date = c.end_date;
    form.RunModelButtonClick();
    EXPECT_EQ(form.active_thread, nullptr);
    const std::string sentence =
        "The " + c.cause + ", is not a date from 1/1/1600 to 12/31/3999; set it in the data set's settings";
    EXPECT_EQ(ui.take_boxes(), lines{"Error: " + sentence + "."});
    ui.lines.clear();
    form.start_validity_check();
    finish();
    EXPECT_EQ(ui.take_boxes(), lines{"Validity check failed: Problems were detected"});
    EXPECT_EQ(ui.lines.back(), "2 " + sentence);
  }
  form.current_data_set->seed_date = -109571; // 1 January 1600
  form.current_data_set->end_date = 767010;   // 31 December 3999
  EXPECT_EQ(form.current_data_set->period_fault(), "");
  form.current_data_set->end_date += 1;
  EXPECT_NE(form.current_data_set->period_fault(), "");
}

} // namespace
} // namespace vesk
