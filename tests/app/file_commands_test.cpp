#include "app/file_names.h"
#include "app/main_form.h"
#include "behaviour_catalogue.h"
#include "dataset/vki_file.h"
#include "noting_interface.h"
#include "temporary_folder.h"

#include <gtest/gtest.h>

namespace vesk {
namespace {

using lines = std::vector<std::string>;

class FileCommands : public testing::Test {
protected:
  FileCommands() {
    write_behaviour_catalogue(folder.path);
    form.set_database_folder(folder.path);
  }

  // A data file with a segment of the given name.
  std::string make_file(const std::string& name, const std::string& segment, std::uint32_t model = 1) {
    prevesk_dataset_data_type data(form.catalogue.get());
    data.model_type = model;
    data.resize_segments(1);
    data.segments.edit(0).name = segment;
    save_data_file(folder.path / name, data);
    return folder.file(name);
  }
  std::string first_segment() const {
    if (!form.current_data_set) return "no data set";
    return form.current_data_set->segments.empty() ? "no segment" : form.current_data_set->segments[0].name.str();
  }

  temporary_folder folder;
  noting_interface ui;
  TPreveskMainForm form{ui, folder.path / "settings.ini"};
};

TEST_F(FileCommands, OpenByExtensionInAnyCase) {
  const std::string name = make_file("River.Vki", "upper");
  form.open_file(name);
  EXPECT_EQ(first_segment(), "upper");
  EXPECT_EQ(form.file_name, name);
  EXPECT_EQ(ui.caption, " TALMO VESK: " + name + " (Unnamed VESK Input Data Set, Model)");
  EXPECT_EQ(form.backup_data_set->segments.size(), 0U);
  form.open_file("notes.txt");
  form.open_file("noextension");
  EXPECT_EQ(ui.boxes, (lines{"Error: Could not open specified file type \"notes.txt\" (.TXT file)",
                             "Error: Could not open specified file type \"noextension\" ( file)"}));
  EXPECT_EQ(first_segment(), "upper");
  EXPECT_EQ(form.failures(), 2);
}

TEST_F(FileCommands, ResultsAreShownAndLeaveTheDataSetAlone) {
  form.open_file(folder.file("RIVER.NC"));
  form.ResultsItemClick(); // without a data file: the window alone
  folder.write("river.nc", "");
  form.file_name = folder.file("river.vki");
  form.ResultsItemClick();
  EXPECT_EQ(ui.results, (std::vector<std::string>{folder.file("RIVER.NC"), "", folder.file("river.nc")}));
  EXPECT_FALSE(form.current_data_set);
}

TEST_F(FileCommands, TheMeasuredSeriesOfTheDataSetAreListedOnce) {
  form.new_data_set();
  form.file_name = folder.file("river.vki");
  for (const char* name : {"river.measured.json", "river.measured.json", "other.measured.json"})
    form.list_related_file(folder.path / name);
  ASSERT_EQ(form.current_data_set->project_files.size(), 1U);
  EXPECT_EQ(form.current_data_set->project_files[0].str(), "river.measured.json");
  form.UndoItemClick();
  EXPECT_EQ(form.current_data_set->project_files.size(), 0U);
}

TEST_F(FileCommands, AFileThatCannotBeOpenedLeavesAnEmptyDataSetUnderItsName) {
  form.open_file(make_file("a.vki", "upper"));
  const std::string caption = ui.caption;
  form.open_file(folder.file("missing.vki"));
  EXPECT_EQ(ui.boxes, lines{"Error: Cannot open file."});
  EXPECT_EQ(first_segment(), "no segment");
  EXPECT_EQ(form.file_name, folder.file("missing.vki"));
  EXPECT_EQ(ui.caption, caption);
}

TEST_F(FileCommands, ADamagedFileLeavesAllAsItWas) {
  const std::string good = make_file("good.vki", "upper");
  form.open_file(good);
  const std::string bytes = folder.read("good.vki");
  folder.write("cut.vki", bytes.substr(0, bytes.size() / 2));
  folder.write("text.vki", "this is no data file at all");
  for (const char* name : {"cut.vki", "text.vki"}) {
    form.open_file(folder.file(name));
    const lines boxes = ui.take_boxes();
    ASSERT_EQ(boxes.size(), 1U);
    EXPECT_TRUE(boxes[0].starts_with("Error: " + folder.file(name))) << boxes[0];
    EXPECT_EQ(first_segment(), "upper");
    EXPECT_EQ(form.file_name, good);
  }
}

TEST_F(FileCommands, ANewerVersionIsKeptAndWarnedAbout) {
  const std::string name = make_file("newer.vki", "upper");
  std::string bytes = folder.read("newer.vki");
  bytes[0] = 8;
  folder.write("newer.vki", bytes + "0123456");
  form.open_file(name);
  EXPECT_EQ(ui.take_boxes(), lines{"Error: VKI Version not supported; data could be corrupt."});
  EXPECT_EQ(ui.lines, lines{"1 " + name +
                            " has version 7.8, newer than 7.7: 7 bytes at its end were not "
                            "read. A saved copy lacks them."});
  EXPECT_EQ(first_segment(), "upper");
  EXPECT_EQ(form.failures(), 0); // it has been opened
  EXPECT_EQ(form.files_partly_read(), 1);
  ui.answer = box_answer::no;
  form.SaveItemClick();
  EXPECT_EQ(ui.take_boxes(), lines{"Replace file?: " + name +
                                   " already exists and contains data that is not in this data set.\r\nReplace it?"});
  EXPECT_EQ(folder.read("newer.vki"), bytes + "0123456");
  EXPECT_TRUE(form.save_as(folder.file("copy.vki")));
  EXPECT_EQ(folder.read("copy.vki")[0], 7); // the version of what is in it
  form.SaveItemClick();
  EXPECT_EQ(ui.boxes, lines{}); // from now on it comes from there
}

TEST_F(FileCommands, RecordsThatTheCatalogueLacksAreReported) {
  const std::string name = make_file("other.vki", "upper", 77);
  form.open_file(name);
  EXPECT_EQ(ui.take_boxes(), lines{"Error: " + name +
                                   " is for model 77, which the catalogue does not have. Dropped: 1 system, 2 "
                                   "parameters. Open it with a catalogue that has the model."});
  EXPECT_EQ(form.failures(), 0);
  EXPECT_EQ(form.files_partly_read(), 1);
  EXPECT_EQ(form.current_data_set->library, "UNKNOWN.DLL");
  EXPECT_FALSE(form.current_data_set->origin.is_set());

  prevesk_dataset_data_type data(form.catalogue.get());
  data.systems.push_back(data.systems[0]);
  data.systems.edit(1).isc = 2;
  data.systems.edit(1).description = "Silica";
  data.systems.edit(1).loads.resize(2);
  save_data_file(folder.path / "silica.vki", data);
  form.open_file(folder.file("silica.vki"));
  EXPECT_EQ(ui.lines, lines{"1 " + folder.file("silica.vki") +
                            ": the catalogue no longer has system \"Silica\". Dropped: 1 system, 2 loads."});
  EXPECT_EQ(ui.boxes, lines{});
  EXPECT_EQ(form.files_partly_read(), 1); // some records only
  EXPECT_FALSE(form.current_data_set->origin.is_set());
}

TEST_F(FileCommands, SaveTakesTheDataFilesExtension) {
  form.SaveItemClick(); // no data set, a cancelled dialog
  form.open_file(make_file("a.vki", "upper"));
  form.file_name = folder.file("a.inp");
  form.SaveItemClick();
  EXPECT_EQ(form.file_name, folder.file("a.VKI"));
  EXPECT_EQ(folder.read("a.VKI"), folder.read("a.vki"));
  form.file_name = folder.file("gone/a.vki");
  form.SaveItemClick();
  EXPECT_EQ(ui.boxes, lines{"Error: Cannot open file for writing."});
  form.file_name.clear();
  ui.file = folder.file("river v1.2");
  form.SaveItemClick();
  ui.file = folder.file("river v1.3");
  form.SaveasItemClick();
  EXPECT_EQ(form.file_name, folder.file("river v1.3.vki"));
  for (const char* name : {"river v1.2.vki", "river v1.3.vki"}) EXPECT_EQ(folder.read(name), folder.read("a.vki"));
}

TEST_F(FileCommands, SaveAsksBeforeItReplacesAFileThatTheDataSetDidNotComeFrom) {
  const std::string name = make_file("a.vki", "upper"), other = make_file("b.vki", "other");
  const std::string question = "\r\nReplace it?";
  ui.answer = box_answer::no;
  form.open_file(name);
  form.current_data_set->comments = "first";
  form.SaveItemClick();
  form.current_data_set->comments = "second";
  form.SaveItemClick();
  EXPECT_EQ(ui.take_boxes(), lines{}); // its own file, read and then saved
  folder.write("a.vki", "written by somebody else");
  form.SaveItemClick();
  EXPECT_EQ(ui.take_boxes(), lines{"Replace file?: " + name +
                                   " has changed since this data set was read from it or saved to it." + question});
  form.file_name = other; // as an engine may set it
  form.SaveItemClick();
  form.new_data_set();
  form.file_name = folder.file("b.inp");
  std::filesystem::copy_file(other, folder.path / "b.VKI");
  form.SaveItemClick();
  EXPECT_EQ(form.file_name, folder.file("b.inp"));
  EXPECT_EQ(ui.take_boxes(), (lines{"Replace file?: " + other +
                                        " already exists and contains data that is not in this data set." + question,
                                    "Replace file?: " + folder.file("b.VKI") +
                                        " already exists and contains data that is not in this data set." + question}));
  EXPECT_EQ(folder.read("a.vki"), "written by somebody else");
  EXPECT_EQ(folder.read("b.vki"), folder.read("b.VKI"));
  ui.answer = box_answer::yes;
  EXPECT_TRUE(form.save());
  EXPECT_TRUE(form.save());
  EXPECT_EQ(ui.boxes.size(), 1U);
}

TEST_F(FileCommands, AfterSaveAsUndoKeepsTheNewName) {
  const std::string name = make_file("a.vki", "upper");
  form.open_file(name);
  const std::string bytes = folder.read("a.vki");
  form.begin_step("Edit", {});
  form.current_data_set->comments = "edited";
  form.end_step(true);
  EXPECT_TRUE(form.save_as(folder.file("b.vki")));
  form.UndoItemClick();
  EXPECT_EQ(form.current_data_set->comments, "");
  EXPECT_EQ(form.file_name, folder.file("b.vki"));
  form.SaveItemClick();
  EXPECT_EQ(ui.boxes, lines{});
  EXPECT_EQ(folder.read("a.vki"), bytes);
  EXPECT_EQ(folder.read("b.vki"), bytes);
}

TEST_F(FileCommands, AProjectOpensItsDataFileAndKeepsTheOtherMembers) {
  make_file("a.vki", "upper");
  folder.write("river.vkp", "\xef\xbb\xbf"
                            "5\r\nmap.shp\r\n\r\na.VKI\nobserved\\do.db\n");
  std::filesystem::rename(folder.path / "a.vki", folder.path / "a.VKI");
  form.open_file(folder.file("river.vkp"));
  EXPECT_EQ(first_segment(), "upper");
  EXPECT_EQ(form.file_name, folder.file("a.VKI"));
  EXPECT_EQ(form.current_data_set->project_files, (shared_list<short_text>{"map.shp", "observed\\do.db"}));
  EXPECT_EQ(ui.lines, lines{});
  folder.write("empty.vkp", "0\nmap.shp\n");
  form.open_file(folder.file("empty.vkp"));
  EXPECT_TRUE(form.current_data_set->project_files.empty());
  folder.write("huge.vkp", "99999999999999999999\nmap.shp");
  form.open_file(folder.file("huge.vkp"));
  EXPECT_EQ(form.current_data_set->project_files, (shared_list<short_text>{"map.shp"}));
  folder.write("noise.vkp", "abc\na.VKI\n");
  form.open_file(folder.file("noise.vkp"));
  EXPECT_EQ(ui.lines, (lines{"1 empty.vkp names no data file (.vki): a.VKI stays open, and its list of related files "
                             "now has 0 names, 2 before. Undo restores it.",
                             "1 huge.vkp names no data file (.vki): a.VKI stays open, and its list of related files "
                             "now has 1 name, 0 before. Undo restores it.",
                             "1 noise.vkp is not a project: its first line is not the number of its files; a.VKI stays "
                             "open, and its list of related files now has 0 names, 1 before. Undo restores it."}));
  EXPECT_EQ(ui.boxes, lines{});
  form.open_file(folder.file("missing.vkp"));
  EXPECT_EQ(ui.boxes,
            (lines{"Error: Failed to open " + folder.file("missing.vkp"),
                   "Error: Could not open specified file \"" + folder.file("missing.vkp") + "\" (.VKP file)"}));
}

TEST_F(FileCommands, AProjectWhoseDataFileCannotBeOpenedChangesNothing) {
  const std::string open_file = make_file("a.vki", "upper");
  form.open_file(open_file);
  folder.write("river.vkp", "2\nmap.shp\ngone.vki\n");
  form.open_file(folder.file("river.vkp"));
  EXPECT_EQ(ui.boxes, (lines{"Error: Failed to open " + folder.file("gone.vki"),
                             "Error: Could not open specified file \"" + folder.file("river.vkp") + "\" (.VKP file)"}));
  EXPECT_EQ(form.file_name, open_file);
  EXPECT_EQ(first_segment(), "upper");
  EXPECT_TRUE(form.current_data_set->project_files.empty());
}

TEST_F(FileCommands, AProjectWithADamagedDataFileChangesNothing) {
  form.open_file(make_file("a.vki", "upper"));
  form.current_data_set->project_files.push_back("kept.shp");
  folder.write("cut.vki", folder.read("a.vki").substr(0, 50));
  folder.write("river.vkp", "2\nmap.shp\ncut.vki\n");
  form.open_file(folder.file("river.vkp"));
  EXPECT_EQ(form.current_data_set->project_files, (shared_list<short_text>{"kept.shp"}));
  EXPECT_EQ(first_segment(), "upper");
  ui.take_boxes();
  form.open_file(folder.file(std::string(300, 'x') + ".vkp")); // a name that no file can have
  EXPECT_EQ(ui.take_boxes().size(), 2U);
}

TEST_F(FileCommands, OpeningAProjectAsksAboutTheOpenFile) {
  folder.write("river.vkp", "1\nmap.shp\n");
  ui.file = folder.file("river.vkp");
  form.OpenProjectItemClick(); // no data set, no question
  EXPECT_EQ(ui.boxes, lines{});
  form.open_file(make_file("a.vki", "upper"));
  form.current_data_set->comments = "edited";
  for (const box_answer answer : {box_answer::cancel, box_answer::no, box_answer::yes}) {
    ui.answer = answer;
    form.current_data_set->project_files.clear();
    form.OpenProjectItemClick();
    EXPECT_EQ(form.current_data_set->project_files.size(), answer == box_answer::cancel ? 0U : 1U);
    EXPECT_EQ(folder.read("a.vki").find("edited") != std::string::npos, answer == box_answer::yes);
  }
  EXPECT_EQ(ui.boxes.size(), 3U);
}

TEST_F(FileCommands, TheCommandLineIsWalkedInOrder) {
  const lines arguments{"-Run",    make_file("a.vki", "first"),  "-EXPERT", "-import",
                        "Old.INP", make_file("b.vki", "second"), "-quit"};
  const command_line_requests requests = form.walk_command_line(arguments);
  EXPECT_TRUE(requests.run && requests.quit && requests.import_requested);
  EXPECT_EQ(requests.import_name, "Old.INP");
  EXPECT_EQ(first_segment(), "second");
  const command_line_requests nothing = form.walk_command_line(lines{"-IMPORT"});
  EXPECT_TRUE(nothing.import_requested);
  form.import_file(nothing.import_name);
  form.import_file("net.vkn");
  EXPECT_EQ(ui.boxes, lines(2, "Error: Cannot import specified file type"));
}

TEST_F(FileCommands, ConditionsOfTheCommands) {
  EXPECT_EQ(form.conditions(), (command_conditions{true, false, false, false}));
  form.new_data_set();
  form.current_data_set->end_date = form.current_data_set->seed_date;
  EXPECT_EQ(form.conditions(), (command_conditions{true, true, true, false}));
  form.current_data_set->end_date += 1;
  EXPECT_EQ(form.conditions(), (command_conditions{true, true, true, true}));
  form.current_data_set->model_type = 0;
  EXPECT_EQ(form.conditions(), (command_conditions{true, true, false, false}));
}

TEST_F(FileCommands, ASnapshotRestoresTheDataSet) {
  form.commit_snapshot(); // nothing to take
  form.open_file(make_file("a.vki", "upper"));
  form.commit_snapshot();
  form.current_data_set->segments.edit(0).name = "edited";
  form.restore_snapshot();
  EXPECT_EQ(first_segment(), "upper");
}

TEST_F(FileCommands, AMissingCatalogueIsAskedForOnce) {
  form.set_database_folder(folder.path / "gone");
  form.new_data_set();
  ASSERT_EQ(ui.boxes.size(), 2U);
  EXPECT_TRUE(ui.boxes[0].starts_with("Cannot locate database: Unable to find ORLVesk database in folder\r\n"));
  EXPECT_TRUE(ui.boxes[1].starts_with("Failed to locate database: Failed to find ORLVesk database in folder\r\n"));
  EXPECT_EQ(form.current_data_set, nullptr);
  ui.boxes.clear();
  ui.folder = folder.path.string();
  form.check_database();
  EXPECT_EQ(ui.boxes.size(), 1U);
  form.new_data_set();
  EXPECT_NE(form.current_data_set, nullptr);
}

TEST(FileNames, AreSplitByBothSeparators) {
  const auto check = [](const char* name, const char* folder, const char* base, const char* extension) {
    const file_name_parts parts = split_file_name(name);
    EXPECT_EQ(parts.folder, folder);
    EXPECT_EQ(parts.base, base);
    EXPECT_EQ(parts.extension, extension);
  };
  check("C:\\rivers\\big.river.vki", "C:\\rivers\\", "big.river", ".vki");
  check("a.b/river", "a.b/", "river", "");
  check("", "", "", "");
}

} // namespace
} // namespace vesk
