#include "open_session.h"

#include <gmock/gmock.h>

#include <filesystem>

namespace vesk {
namespace {

using testing::ElementsAre;
namespace fs = std::filesystem;

TEST_F(OpenSession, ShowsTheFirstFileAndKeepsTheChoiceByNameInOthers) {
  open("river.nc");
  EXPECT_EQ(session.scenarios()[0].name, "river");
  EXPECT_THAT(chosen(session.variables), ElementsAre("DO"));
  EXPECT_THAT(chosen(session.segments), ElementsAre("s1"));
  ASSERT_TRUE(session.choose("DO", "s3"));
  EXPECT_FALSE(session.choose("DO", "s5"));
  open("longer.nc", {.segments = 6});
  EXPECT_EQ(session.segments.names.size(), 6U); // s5 and s6 are only in the second one
  EXPECT_FALSE(session.segments.names[5].position);
  EXPECT_FALSE(session.segment_in(session.scenarios()[0], 5));
  EXPECT_EQ(session.segment_in(session.scenarios()[1], 5), 5U);
  session.set_baseline(1);
  EXPECT_THAT(chosen(session.segments), ElementsAre("s1", "s3"));
  session.close(1);
  EXPECT_EQ(session.baseline(), 0U);
  EXPECT_EQ(session.segments.names.size(), 4U);
  EXPECT_THAT(chosen(session.segments), ElementsAre("s1", "s3"));
}

TEST_F(OpenSession, NamesScenariosByTheirFiles) {
  fs::create_directory(folder.path / "other");
  open("river.nc");
  open("other/river.nc");
  EXPECT_EQ(session.scenarios()[1].name, "other/river");
  session.rename(1, "less nitrogen");
  open("other/river.nc"); // again: the same scenario
  ASSERT_EQ(session.scenarios().size(), 2U);
  EXPECT_EQ(session.scenarios()[1].name, "less nitrogen");
  session.rename(1, "");
  EXPECT_EQ(session.scenarios()[1].name, "other/river");
}

TEST_F(OpenSession, RefusesBadFilesWithASentenceAndGoesOn) {
  open("river.nc");
  folder.write("text.nc", "This is no NetCDF file.");
  fs::copy_file(folder.path / "river.nc", folder.path / "cut.nc");
  fs::resize_file(folder.path / "cut.nc", 60);
  for (const char* name : {"text.nc", "cut.nc", "missing.nc"}) session.open(folder.file(name));
  session.open(written("months.nc", {.units = "months since 2000-01-01"}));
  session.open(written("empty.nc", {.times = 0}));
  settle();
  ASSERT_EQ(messages.size(), 5U);
  const char* const names[] = {"text.nc", "cut.nc", "missing.nc", "months.nc", "empty.nc"};
  for (std::size_t i = 0; i < messages.size(); ++i)
    EXPECT_THAT(messages[i], testing::AllOf(testing::HasSubstr(names[i]), testing::EndsWith(".")));
  EXPECT_EQ(session.scenarios().size(), 1U);
  open("second.nc");
  EXPECT_EQ(session.scenarios().size(), 2U);
}

TEST_F(OpenSession, WithdrawsAMessageWhenTheFileIsNoLongerTheRefusedOne) {
  open("river.nc");
  const auto refused = [&] {
    folder.write("river.nc", "cut off"); // in place, as by a copy that fails
    session.reload_changed();
    settle();
    session.forget_outdated_message();
    return messages.back();
  };
  EXPECT_THAT(refused(), testing::HasSubstr("river.nc"));
  EXPECT_FALSE(session.baseline_file()->is_intact());
  fs::remove(folder.path / "river.nc");
  session.forget_outdated_message();
  EXPECT_EQ(messages.back(), "");
  refused();
  written("river.nc");
  session.reload_changed();
  settle();
  EXPECT_EQ(messages.back(), "");
  EXPECT_TRUE(session.baseline_file()->is_intact());
}

TEST_F(OpenSession, ReadsAChangedFileAgainWhenAsked) {
  open("river.nc");
  const std::uint64_t before = session.scenarios()[0].number;
  session.reload_changed();
  EXPECT_TRUE(session.reader().is_idle());
  const std::string longer = written("longer.nc", {.times = 5});
  fs::rename(longer, folder.path / "river.nc");
  session.reload_changed();
  settle();
  EXPECT_NE(session.scenarios()[0].number, before);
  EXPECT_EQ(session.baseline_file()->times().size(), 5U);
}

TEST_F(OpenSession, MovesTheCursorToTheNearestTime) {
  session.set_cursor(7); // nothing is open
  EXPECT_EQ(session.cursor(), 0);
  open("river.nc");
  const double start = session.baseline_file()->times()[0];
  int moves = 0;
  session.listen({{}, {}, [&] { ++moves; }});
  session.set_cursor(start + 1.4);
  EXPECT_EQ(session.cursor(), start + 1);
  session.set_cursor(start + 0.9);
  EXPECT_EQ(moves, 1);
  session.set_cursor_position(100);
  EXPECT_EQ(session.cursor(), start + 2);
}

// The thread must not delay closing the window, and nothing may arrive afterwards.
TEST(ReadingThread, GivesUpWorkThatNobodyWaitsFor) {
  posted_calls calls;
  int done = 0;
  const auto post = [&](std::function<void()> call) { calls.post(std::move(call)); };
  const auto count = [&] { return [&done] { ++done; }; };
  {
    reading_thread reader(post);
    int one = 0, other = 0;
    reader.ask(&one, count, {});
    reader.ask(&one, count, {}); // replaces the first
    reader.add(&other, count, {});
    while (!reader.is_idle()) ASSERT_TRUE(calls.serve());
    EXPECT_EQ(done, 2);
    std::string failure;
    reader.ask(
        &one, []() -> std::function<void()> { throw std::runtime_error("no disk"); },
        [&](const std::string& text) { failure = text; });
    while (!reader.is_idle()) ASSERT_TRUE(calls.serve());
    EXPECT_EQ(failure, "no disk");
    reader.ask(&one, count, {});
  }
  bool is_last = false;
  calls.post([&] { is_last = true; });
  while (!is_last) ASSERT_TRUE(calls.serve());
  EXPECT_EQ(done, 2);
}

} // namespace
} // namespace vesk
