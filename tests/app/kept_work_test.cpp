// Unsaved work and earlier versions.
#include "app/forms.h"
#include "app/main_form.h"
#include "behaviour_catalogue.h"
#include "dataset/vki_file.h"
#include "noting_interface.h"
#include "temporary_folder.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <thread>

namespace vesk {
namespace {

namespace fs = std::filesystem;
using lines = std::vector<std::string>;

class KeptWork : public testing::Test {
protected:
  KeptWork() {
    write_behaviour_catalogue(folder.path);
    setenv("XDG_STATE_HOME", folder.path.c_str(), 1);
    start();
    form->new_data_set();
    form->save_as(river);
  }
  // A program with a window. The old one has ended without saying so, as in a crash, unless it was closed.
  void start() {
    form.reset();
    form = std::make_unique<TPreveskMainForm>(ui, folder.path / "settings.ini");
    form->set_database_folder(folder.path);
    form->documentation_directory = folder.path.string() + "/";
    form->serve_a_window();
  }
  void edit(const std::string& comments) { form->current_data_set->comments = comments; }
  // "river: earlier a, unsaved b": the comments of the kept files, as the window lists them.
  std::string kept() {
    std::string text;
    ui.in_form = [&] {
      for (const kept_file& file : form->forms().kept_work.files) {
        prevesk_dataset_data_type data;
        read_data_file(file.file, data);
        text += (text.empty() ? "" : ", ") +
                std::string(file.kind == kept_kind::unsaved_work ? "unsaved " : "earlier ") + data.comments +
                (file.original == river ? "" : " of " + file.original);
        struct stat status {};
        EXPECT_EQ(stat(file.file.c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 0777, 0600U) << file.file;
      }
    };
    ui.form_result = false;
    form->KeptWorkItemClick();
    ui.in_form = {};
    return text;
  }
  void open_kept(std::size_t number) {
    ui.in_form = [=, this] { form->forms().kept_work.selected = number; };
    ui.form_result = true;
    form->KeptWorkItemClick();
    ui.in_form = {};
  }
  fs::path unsaved() const { return folder.path / "vesk/unsaved"; }

  temporary_folder folder;
  const std::string river = folder.file("river.vki");
  noting_interface ui;
  std::unique_ptr<TPreveskMainForm> form;
};

TEST_F(KeptWork, UnsavedChangesAreKeptWhenAnotherDataSetReplacesThem) {
  form->open_file(river);
  form->new_data_set();
  form->open_file(river);
  EXPECT_EQ(kept(), "");
  edit("one");
  form->new_data_set();
  EXPECT_EQ(kept(), "unsaved one");
  EXPECT_TRUE(
      ui.lines.back().starts_with("0 Unsaved changes to river.vki are kept in " + unsaved().native() + "/river-"));
  edit("two");
  form->open_file(river);
  EXPECT_EQ(kept(), "unsaved two of , unsaved one");
  form->UndoItemClick(); // back in the unnamed one, unsaved as before
  edit("");
  form->open_file(river);
  form->FormClose();
  EXPECT_EQ(kept(), "") << "the program has ended";
  start();
  EXPECT_EQ(kept(), "unsaved two of , unsaved one");

  // It comes back under its own name, but not as what that file contains.
  open_kept(1);
  EXPECT_EQ(form->file_name, river);
  EXPECT_EQ(form->current_data_set->comments, "one");
  EXPECT_FALSE(form->current_data_set->origin.is_set());
  ui.answer = box_answer::no;
  EXPECT_FALSE(form->save());
  EXPECT_EQ(ui.take_boxes().size(), 1U);
}

TEST_F(KeptWork, ExitLeavesUnsavedChangesForTheNextStart) {
  edit("typed");
  form->FormClose();
  start();
  ui.lines.clear();
  form->FormShow({});
  const auto is_report = [](const std::string& line) {
    return line.starts_with("1 Vesk ended with unsaved changes to river.vki (");
  };
  EXPECT_EQ(std::ranges::count_if(ui.lines, is_report), 1);
  EXPECT_EQ(kept(), "unsaved typed");
  form->open_file(river);
  edit("undone");
  edit("");
  form->FormClose();
  start();
  ui.lines.clear();
  form->FormShow({});
  EXPECT_EQ(std::ranges::count_if(ui.lines, is_report), 0);
  EXPECT_EQ(kept(), "unsaved typed");
}

TEST_F(KeptWork, ASaveKeepsWhatItReplaces) {
  EXPECT_EQ(kept(), "");
  for (int i = 1; i < 14; ++i) {
    edit(std::to_string(i));
    EXPECT_TRUE(form->save());
    EXPECT_TRUE(form->save()); // unchanged: nothing is replaced
  }
  EXPECT_EQ(kept(),
            "earlier 12, earlier 11, earlier 10, earlier 9, earlier 8, earlier 7, earlier 6, earlier 5, earlier 4, "
            "earlier 3");
  fs::rename(river, folder.path / "linked.vki");
  fs::create_hard_link(folder.path / "linked.vki", river); // the other name may be changed at any time
  edit("14");
  EXPECT_TRUE(form->save_as(river));
  folder.write("linked.vki", "");
  EXPECT_TRUE(kept().starts_with("earlier 13, earlier 12, "));
  open_kept(0);
  EXPECT_EQ(form->current_data_set->comments, "13");
  EXPECT_EQ(form->file_name, river);
  form->UndoItemClick();
  EXPECT_EQ(form->current_data_set->comments, "14");
  EXPECT_TRUE(form->save());
  EXPECT_EQ(ui.boxes, lines{});
}

TEST_F(KeptWork, WhatCannotBeKeptHoldsUpNothing) {
  fs::create_directories(folder.path / "elsewhere");
  for (const char* name : {"earlier", "unsaved"})
    fs::create_directory_symlink(folder.path / "elsewhere", folder.path / "vesk" / name);
  edit("one");
  EXPECT_TRUE(form->save());
  EXPECT_EQ(ui.lines.size(), 1U);
  EXPECT_TRUE(ui.lines[0].starts_with("1 The earlier version of river.vki could not be kept. Cannot ")) << ui.lines[0];
  edit("two");
  form->new_data_set();
  EXPECT_EQ(ui.lines.size(), 2U);
  EXPECT_TRUE(ui.lines[1].starts_with("1 Unsaved changes to river.vki could not be kept. Cannot ")) << ui.lines[1];
  form->FormShow({});
  EXPECT_TRUE(std::ranges::any_of(ui.lines, [](const std::string& line) {
    return line.starts_with("1 Unsaved changes cannot be kept: save them before you close the window. Cannot ");
  }));
  EXPECT_TRUE(fs::is_empty(folder.path / "elsewhere"));
  EXPECT_EQ(ui.boxes, lines{});
}

TEST_F(KeptWork, ACopyAgainstACrashFollowsTheChanges) {
  const fs::path state = folder.path / "state";
  const prevesk_dataset_data_type saved = *form->current_data_set;
  prevesk_dataset_data_type data = saved;
  auto work = std::make_unique<kept_work>(state);
  work->interval = {};
  const auto copy = [&]() -> std::string { // its comments
    if (!fs::exists(state / "unsaved")) return "none";
    for (const auto& entry : fs::directory_iterator(state / "unsaved")) {
      prevesk_dataset_data_type found;
      if (entry.path().extension() != ".vki") continue;
      try {
        read_data_file(entry.path(), found);
        return found.comments;
      } catch (const file_open_exception&) { // it has just been removed
      }
    }
    return "none";
  };
  const auto becomes = [&](const std::string& wanted) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    do {
      EXPECT_EQ(work->renew(data, &saved, river), "");
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    } while (copy() != wanted && std::chrono::steady_clock::now() < end);
    return copy() == wanted;
  };
  EXPECT_TRUE(becomes("none"));
  data.comments = "one";
  EXPECT_TRUE(becomes("one"));
  data.comments = "two";
  EXPECT_TRUE(becomes("two"));
  kept_work other(state);
  EXPECT_TRUE(other.take_over().empty()); // its program runs
  data = saved;
  EXPECT_TRUE(becomes("none"));
  data.comments = "three";
  EXPECT_TRUE(becomes("three"));
  work.reset();
  const auto left = other.take_over();
  ASSERT_EQ(left.size(), 1U);
  EXPECT_EQ(left[0].original, river);
  read_data_file(left[0].file, data = {});
  EXPECT_EQ(data.comments, "three");
  EXPECT_TRUE(other.take_over().empty());
  EXPECT_EQ(other.list().size(), 1U);
}

TEST_F(KeptWork, TheOldestIsRemovedFirstButNeverTheNewestOfItsFile) {
  const kept_folder limited(folder.path / "limited", kept_kind::earlier_version);
  const auto add = [&](const char* original, std::uint64_t bytes, int hour) {
    const kept_folder::place made = limited.new_place(original, false);
    folder.write(fs::relative(made.file, folder.path).native(), "");
    fs::resize_file(made.file, bytes); // without taking room
    fs::last_write_time(made.file, fs::file_time_type::clock::now() - std::chrono::hours(hour));
  };
  add("/b", 700'000'000, 5);
  add("/a", 400'000'000, 4);
  add("/a", 200'000'000, 3);
  add("/a", 100'000'000, 2);
  limited.tidy();
  std::string left;
  for (const kept_file& file : limited.list())
    left += file.original + " " + std::to_string(file.bytes / 1'000'000) + ",";
  EXPECT_EQ(left, "/a 100,/a 200,/b 700,");
}

} // namespace
} // namespace vesk
