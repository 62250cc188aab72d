// The main window's start and end.
#include "app/main_form.h"
#include "app/sample_river.h"
#include "behaviour_catalogue.h"
#include "documents/xml_documentation_index.h"
#include "noting_interface.h"
#include "temporary_folder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

namespace vesk {
namespace {

using lines = std::vector<std::string>;

class Window : public testing::Test {
protected:
  Window() {
    write_behaviour_catalogue(folder.path);
    store("");
  }
  // Settings of this folder's catalogue and `values`.
  void store(const std::string& values) {
    folder.write("settings.ini", "[SOFTWARE\\TALMO\\VESK\\7.0]\nDatabaseDir=" + folder.path.string() + "/\n" + values);
  }
  std::unique_ptr<TPreveskMainForm> make() {
    auto form = std::make_unique<TPreveskMainForm>(ui, folder.path / "settings.ini");
    form->engine_path = MISBEHAVING_ENGINE;
    form->documentation_directory = folder.path.string() + "/";
    return form;
  }
  void finish(const TPreveskMainForm& form) {
    while (form.active_thread || live_thread_count() > 0) wait_and_synchronize(std::chrono::milliseconds(1));
  }

  temporary_folder folder;
  noting_interface ui;
};

TEST_F(Window, IsMadeWithWhatWasStored) {
  store("ResultsTableHeight=0\nMainFormLeft=-4\nMainFormTop=1\nMainFormWidth=0\nMainFormHeight=700\n"
        "MainFormWindowState=2\nAdministrationMode=1\nEditionName=Student\n");
  const auto form = make();
  form->FormCreate();
  EXPECT_EQ(ui.window, (window_geometry{100, 10, 1, 800, 700, window_geometry::window_maximised}));
  EXPECT_EQ(ui.steps, lines{"administration"});
  EXPECT_EQ(form->base_caption, " TALMO VESK Student");
  for (const std::string& directory :
       {form->program_directory, form->documents_directory, form->application_data_directory})
    EXPECT_TRUE(directory.starts_with('/') && directory.ends_with('/') && !directory.ends_with("//")) << directory;
  store("ApplicationName=\n");
  EXPECT_EQ(make()->base_caption, "");
}

// Two windows of one user, also under different names of the file.
TEST_F(Window, ASecondOneOnTheSameFileSaysSo) {
  setenv("XDG_STATE_HOME", folder.path.c_str(), 1);
  const std::string file = folder.file("river.vki"), line = "1 river.vki is open in another window, too. Whoever saves "
                                                            "last replaces what the other has saved.";
  auto first = make(), second = make();
  for (const auto& form : {first.get(), second.get()}) form->serve_a_window();
  first->new_data_set();
  first->save_as(file);
  first->open_file(file);
  EXPECT_EQ(ui.lines, lines{});
  std::filesystem::create_directory_symlink(folder.path, folder.path / "link");
  second->open_file(folder.file("link/river.vki"));
  EXPECT_EQ(ui.lines, lines{line});
  second->new_data_set();
  second->open_file(file); // from another file back to it
  EXPECT_EQ(ui.lines, (lines{line, line}));
  first.reset();
  second->new_data_set();
  second->open_file(file);
  EXPECT_EQ(ui.lines.size(), 2U);
  second.reset();
  EXPECT_TRUE(std::filesystem::is_empty(folder.path / "vesk/open"));
}

TEST_F(Window, FilesAreOpenedWithoutTheMenu) {
  auto form = make();
  const auto file = folder.file("river.vki");
  form->new_data_set();
  form->save_as(file);
  form->new_data_set();
  EXPECT_EQ(form->settings.recent_files(), lines{file});
  form->open_recent(file);
  EXPECT_EQ(form->file_name, file);
  form->new_data_set();
  form->open_dropped(file);
  EXPECT_EQ(form->file_name, file);
  form->open_dropped(folder.file("waits.INP"));
  form->open_dropped(folder.file("second.inp"));
  EXPECT_EQ(ui.lines.back(), "1 second.inp was not imported: wait for the end of the running job, or cancel it.");
  form->cancel_job();
  finish(*form);
  EXPECT_EQ(form->import_file_name, folder.file("waits.INP"));
  std::filesystem::remove(file);
  form->file_name = "kept";
  form->open_recent(file);
  EXPECT_EQ(ui.lines.back(), "1 " + file + " does not exist any more. It was removed from the recent files.");
  EXPECT_EQ(form->file_name, "kept");
  EXPECT_TRUE(form->settings.recent_files().empty());
  EXPECT_EQ(ui.boxes, lines{});
}

TEST_F(Window, TheSampleIsCopiedOnceToWhereItCanBeRun) {
  const temporary_folder sample;
  std::filesystem::create_directory(sample.path / "data");
  sample.write("data/a.csv", "1");
  sample.write("roanoke.vki", "first");
  const auto copy = copy_sample(sample.path, folder.path);
  EXPECT_EQ(copy, folder.path / "Vesk sample river/roanoke.vki");
  EXPECT_EQ(folder.read("Vesk sample river/data/a.csv"), "1");
  sample.write("roanoke.vki", "second");
  copy_sample(sample.path, folder.path);
  EXPECT_EQ(folder.read("Vesk sample river/roanoke.vki"), "first"); // the user may have changed it
  EXPECT_THROW(copy_sample(sample.path, folder.path / "settings.ini"), file_exception);
}

TEST_F(Window, IsShownWithMenuFormatsAndCatalogueLookedAt) {
  store("RunTimeGridAlwaysVisible=1\nSegmentsParametersSimpleField=#.#\n");
  const auto form = make();
  form->document_index = std::make_unique<xml_documentation_index>();
  form->FormShow({});
  EXPECT_THAT(ui.lines,
              testing::ElementsAre(testing::HasSubstr("documentation.xml: No such file"))); // it is initialized
  EXPECT_EQ(ui.steps, lines{"splash hidden"});
  EXPECT_EQ(ui.shown, lines{"grid on"});
  EXPECT_EQ(ui.caption, " TALMO VESK");
  EXPECT_EQ(ui.commands, (command_conditions{true, false, false, false}));
  EXPECT_EQ(ui.boxes, lines{});
  EXPECT_EQ(form->number_format("ExchangeFlowPairNumericField"), "EEEEEEE.EEEEEEE");
  EXPECT_EQ(form->number_format("SegmentsParametersSimpleField"), "#.#");
  form->FormClose();
}

TEST_F(Window, TheCommandLineStartsARunOrAnImportThatARunFollows) {
  struct {
    lines arguments;
    lines infos;
    bool run, closed;
  } const cases[] = {
      {{"-run", "-Quit"}, {}, true, false}, // nothing to run
      {{"-RUN", "-import", folder.file("a.doc")}, {}, true, false},
      {{"-IMPORT", folder.file("a.inp")}, {"0 import 1"}, false, false},
      {{"-IMPORT", folder.file("a.inp"), "-RUN", "-QUIT"}, {"0 import 1", "0 run"}, true, true},
  };
  for (const auto& c : cases) {
    ui = {};
    const auto form = make();
    form->FormShow(c.arguments);
    finish(*form);
    EXPECT_EQ(ui.lines, c.infos);
    EXPECT_EQ(ui.closed, c.closed);
    EXPECT_EQ(ui.steps.back() == "minimised", c.run);
    // The command line's requests are used up: what the user does now starts no run and ends nothing.
    ui.lines.clear();
    ui.closed = false;
    form->import_file(folder.file("b.inp"));
    finish(*form);
    EXPECT_EQ(ui.lines, lines{"0 import 1"});
    form->RunModelButtonClick();
    finish(*form);
    EXPECT_FALSE(ui.closed);
    form->FormClose();
  }
}

TEST_F(Window, ItsPlaceAndTheDatabaseFolderAreStoredAtTheEnd) {
  auto form = make();
  ui.window = {111, 5, 6, 777, 555, window_geometry::window_maximised};
  form->walk_command_line(lines{"-RUN"});
  form->FormClose();
  ui.window.state = window_geometry::window_minimised;
  form->FormClose(); // minimised for the run, not by the user
  form->set_database_folder("/else");
  EXPECT_EQ(folder.read("settings.ini").find("777"), std::string::npos); // not before
  form.reset();
  const configuration stored(folder.path / "settings.ini");
  EXPECT_EQ(stored.ResultsTableHeight, 111);
  EXPECT_EQ(stored.MainFormLeft, 5);
  EXPECT_EQ(stored.MainFormTop, 6);
  EXPECT_EQ(stored.MainFormWidth, 777);
  EXPECT_EQ(stored.MainFormHeight, 555);
  EXPECT_EQ(stored.MainFormWindowState, 2);
  EXPECT_EQ(stored.DatabaseDir, "/else/");
}

} // namespace
} // namespace vesk
