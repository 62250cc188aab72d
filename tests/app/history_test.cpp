#include "app/history.h"

#include <gtest/gtest.h>

namespace vesk {
namespace {

constexpr std::size_t points_of_a_megabyte = 62'500;

document document_of(const std::string& name) {
  document made;
  made.file_name = name;
  made.data_set.comments = name;
  return made;
}

TEST(History, GoesBackAndForthThroughItsSteps) {
  history steps;
  document now = document_of("a");
  EXPECT_EQ(steps.undo_label() + steps.redo_label(), "");
  for (const char* name : {"b", "c"}) {
    document before = std::exchange(now, document_of(name));
    steps.add(before, std::string("Open ") + name, now.data_set);
  }
  EXPECT_EQ(steps.undo_label(), "Open c");
  now = steps.undo(now);
  EXPECT_EQ(now.file_name + now.data_set.comments, "bb");
  now = steps.undo(now);
  EXPECT_EQ(now.file_name, "a");
  EXPECT_EQ(steps.undo_label(), "");
  EXPECT_EQ(steps.redo_label(), "Open b");
  now = steps.redo(now);
  EXPECT_EQ(now.file_name, "b");
  EXPECT_EQ(steps.redo_label(), "Open c");
  document before = std::exchange(now, document_of("d"));
  steps.add(before, "Open d", now.data_set);
  EXPECT_EQ(steps.redo_label(), ""); // c is gone
  EXPECT_EQ(steps.undo(now).file_name, "b");
}

TEST(History, KeepsToItsLimitButAlwaysTheNewestStep) {
  history steps(3'500'000);
  document now;
  const auto edit = [&] { // a new megabyte in the place of the old one
    document before = now;
    now.data_set.time_steps.points = point_list(points_of_a_megabyte, {{0, 0}, 1});
    steps.add(before, "Edit", now.data_set);
  };
  const auto steps_back = [&] {
    int count = 0;
    for (; !steps.undo_label().empty(); ++count) now = steps.undo(now);
    return count;
  };
  edit(); // of nothing: costs little
  for (int i = 0; i < 3; ++i) edit();
  EXPECT_NEAR(static_cast<double>(steps.bytes()), 3e6, 1e5);
  EXPECT_EQ(steps_back(), 4);
  EXPECT_NEAR(static_cast<double>(steps.bytes()), 4e6, 1e5); // the way forth is kept whole
  for (int i = 0; i < 9; ++i) edit();
  EXPECT_LE(steps.bytes(), 3'500'000u);
  EXPECT_EQ(steps_back(), 3);
  history narrow(10);
  narrow.add(now, "New", {});
  narrow.add(now, "Open", {});
  EXPECT_EQ(narrow.undo_label(), "Open");
  narrow.undo(now);
  EXPECT_EQ(narrow.undo_label(), "");
  EXPECT_LE(history::default_limit(), 1'000'000'000u);
  EXPECT_GE(history::default_limit(), 10'000'000u);
}

TEST(History, AnEditorUndoesOnlyItsSteps) {
  history steps;
  document now = document_of("a");
  const auto change = [&](const char* label) {
    document before = now;
    now.data_set.comments += label;
    steps.add(before, label, now.data_set);
  };
  change("1");
  change("2");
  now = steps.undo(now);
  steps.begin_editing();
  EXPECT_EQ(steps.undo_label() + steps.redo_label(), "");
  steps.end_editing();
  EXPECT_EQ(steps.undo_label() + steps.redo_label(), "12");
  steps.begin_editing();
  change("3");
  EXPECT_TRUE(steps.has_edits());
  EXPECT_EQ(steps.undo_label(), "3");
  now = steps.undo(now);
  EXPECT_EQ(now.data_set.comments, "a1");
  EXPECT_EQ(steps.undo_label(), "");
  EXPECT_EQ(steps.redo_label(), "3");
  EXPECT_FALSE(steps.has_edits());
  steps.end_editing();
  EXPECT_EQ(steps.undo_label(), "1");
}

TEST(History, EntriesUnderOneKeyThatFollowSoonAreOneStep) {
  using std::chrono::milliseconds;
  history steps;
  document now = document_of("");
  const auto begin = history::clock::now();
  const auto type = [&](const char* text, const char* key, int after) {
    document before = now;
    now.data_set.comments += text;
    steps.add(before, std::string("Type ") + text, now.data_set, key, begin + milliseconds(after));
  };
  type("a", "series 1", 0);
  type("b", "series 1", 1900);
  type("c", "series 1", 3800); // counted from the one before
  type("d", "series 1", 5900);
  type("e", "series 2", 6000);
  type("f", "", 6100);
  type("g", "", 6200);
  std::string back;
  while (!steps.undo_label().empty()) {
    now = steps.undo(now);
    back += now.data_set.comments + ";";
  }
  EXPECT_EQ(back, "abcdef;abcde;abcd;abc;;");
}

} // namespace
} // namespace vesk
