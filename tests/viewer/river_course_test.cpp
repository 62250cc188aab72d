#include "flow_networks.h"
#include "open_session.h"
#include "viewer/river_course.h"

#include <cmath>
#include <gmock/gmock.h>

namespace vesk {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::shared_ptr<const network_graph> shared(network_graph network) {
  return std::make_shared<const network_graph>(std::move(network));
}

// An island between 2 and 5, with a brook that joins at 5.
std::shared_ptr<const network_graph> island() {
  return shared(drawn_network(
      7, {{0, 7, 3}, {0, 1, 10}, {1, 2, 10}, {2, 3, 8}, {2, 4, 2}, {3, 5, 8}, {4, 5, 2}, {7, 5, 3}, {5, 6, 13}}));
}

TEST(RiverCourse, IsChosenByClicks) {
  river_course course;
  EXPECT_EQ(course.note(), "Open the data set of these results to see its network.");
  course.click(0, false);
  EXPECT_FALSE(course.way());
  course.set_network(island());
  ASSERT_TRUE(course.way()); // the one with the most water
  EXPECT_THAT(course.way()->segments, ElementsAre(0, 1, 2, 4, 5));
  EXPECT_EQ(course.ways().ways.size(), 2U);
  EXPECT_EQ(course.note(), "");

  course.click(3, true); // a waypoint
  EXPECT_THAT(course.way()->segments, ElementsAre(0, 1, 3, 4, 5));
  EXPECT_THAT(course.waypoints(), ElementsAre(3));
  course.click(6, true);
  EXPECT_EQ(course.note(), "No way leads from segment 1 to segment 6 through 2 waypoints in this order.");
  course.click(6, true);
  course.click(3, true);
  EXPECT_THAT(course.waypoints(), IsEmpty());
  course.choose(1);
  EXPECT_THAT(course.way()->segments, ElementsAre(0, 1, 3, 4, 5));
  course.choose(7);
  EXPECT_EQ(course.chosen(), 1U);
  course.set_network(island()); // amounts may have changed; the selection stays
  EXPECT_EQ(course.chosen(), 1U);

  course.click(5, false);
  EXPECT_EQ(course.note(), "Click the segment where the way ends.");
  course.click(6, false);
  EXPECT_THAT(course.way()->segments, ElementsAre(5, 4, 6));
  EXPECT_EQ(course.note(), "The way goes against the flow.");
  course.set_ends(2, 3);
  EXPECT_EQ(course.note(), "No flow leads from one to the other; the way follows connections of any kind.");
  course.set_ends(2, 99);
  EXPECT_EQ(course.to(), 3U);
  course.set_network(shared(drawn_network(1, {})));
  EXPECT_THAT(course.way()->segments, ElementsAre(0));
  course.set_network(shared({}));
  EXPECT_EQ(course.note(), "The open data set has no segments.");
}

TEST(RiverCourse, SaysWhatIsUnusual) {
  prevesk_dataset_data_type data = drawn_data(3, {{1, 2, 5}});
  data.segments.edit(1).length = 0;
  river_course course;
  course.set_network(shared(make_network(data)));
  EXPECT_EQ(course.note(), "Some segments have no length, so the axis counts segments.");
  course.set_ends(0, 2);
  EXPECT_EQ(course.note(), "No way leads from segment 1 to segment 3.");
  EXPECT_EQ(segments_in_words({{0, 1, 2, 6, 4, 5}, 0, 0}), "1-3, 7, 5-6");
  EXPECT_EQ(segments_in_words({{0, 2, 4, 6, 8, 10, 12, 14, 16, 18}, 0, 0}), "1, 3, 5, 7, 9, 11, 13, 15 and 2 more");
  EXPECT_EQ(ends_of_main_course(drawn_network(3, {{1, 2, 1}, {2, 3, 1}, {3, 1, 1}})), std::pair(0U, 2U)); // a ring
}

TEST(RiverCourse, MakesAChartOverDistance) {
  const auto network = island();
  river_course course;
  course.set_network(network);
  const std::vector<double> lengths = lengths_of(*network);
  const double none = std::nan("");
  results_bands bands{{0, 1, 2, 3, 4, 5, 6}, {1, 2, 3, 4, 5, 6, 7}, {2, 3, 4, 5, 6, 7, 8}, {}};
  const auto chart =
      river_chart({course.way(), &lengths, {{0, "river", 36526.5, {5, 6, none, 8, 9, 10, 11}}}, &bands, "DO"});
  ASSERT_EQ(chart->series().size(), 4U);
  EXPECT_EQ(chart->series()[0]->label, "river, 2000-01-01 12:00:00");
  EXPECT_THAT(chart->series()[0]->x, ElementsAre(0.05, 0.15, 0.25, 0.35, 0.45)); // km
  EXPECT_THAT(chart->series()[0]->y, ElementsAre(5, 6, testing::IsNan(), 9, 10));
  EXPECT_THAT(chart->series()[3]->y, ElementsAre(2, 3, 4, 6, 7));
  EXPECT_EQ(chart->x_title(), "distance, km");
  EXPECT_EQ(chart->value_title(), "DO");
  EXPECT_FALSE(chart->date_axis());
  std::vector<double> unknown = lengths;
  unknown[4] = none;
  const auto counted = river_chart({course.way(), &unknown, {{0, "river", 0, {1}}}, nullptr, "DO"});
  EXPECT_EQ(counted->x_title(), "segments along the way, counted");
  EXPECT_THAT(counted->series()[0]->x, ElementsAre(1, 2, 3, 4, 5));
  EXPECT_THAT(counted->series()[0]->y,
              ElementsAre(1, testing::IsNan(), testing::IsNan(), testing::IsNan(), testing::IsNan()));
}

class Profiles : public OpenSession {
protected:
  profile_store store{session};
  std::vector<double> values(std::size_t i) { return store.profiles()[i].values; }
};

TEST_F(Profiles, FollowTheCursorInAllScenarios) {
  open("river.nc");
  open("short.nc", {.times = 2, .segments = 2});
  int changes = 0;
  store.OnChange = [&] { ++changes; };
  session.set_cursor_position(2);
  store.read(0);
  session.set_cursor_position(1);
  store.read(0); // while the first is being read
  store.read(0);
  settle();
  ASSERT_EQ(store.profiles().size(), 2U);
  EXPECT_EQ(changes, 2); // not three
  EXPECT_THAT(values(0), ElementsAre(10, 11, 12, 13));
  EXPECT_THAT(values(1), ElementsAre(10, 11));
  EXPECT_EQ(store.baseline_profile(), &store.profiles()[0]);
  store.read_bands(position_range{1, 2});
  EXPECT_TRUE(store.is_reading_bands());
  store.read_bands(position_range{1, 2});
  settle();
  ASSERT_TRUE(store.bands());
  EXPECT_THAT(store.bands()->least, ElementsAre(10, 11, 12, 13));
  EXPECT_THAT(store.bands()->greatest, ElementsAre(20, 21, 22, 23));
  store.read_bands(std::nullopt);
  EXPECT_FALSE(store.bands());
  store.read(std::nullopt);
  EXPECT_THAT(store.profiles(), IsEmpty());
  EXPECT_FALSE(store.baseline_profile());
}

TEST_F(Profiles, OfAnotherNetworkAreNotShownOnThisOne) {
  open("river.nc");
  const results_file& file = *session.baseline_file();
  network_graph network = drawn_network(4, {{1, 2, 1}});
  for (std::size_t i = 0; i < 4; ++i) network.segments[i].name = file.segment_name(i);
  EXPECT_TRUE(match_network(network, file).fits);
  EXPECT_EQ(match_network(network, file).remark, "");
  network.segments[1].name = "renamed";
  EXPECT_TRUE(match_network(network, file).fits);
  EXPECT_EQ(match_network(network, file).remark, "1 segment of the open data set has another name in the results.");
  for (auto& segment : network.segments) segment.name = "other";
  EXPECT_FALSE(match_network(network, file).fits);
  network.segments.pop_back();
  EXPECT_EQ(
      match_network(network, file).remark,
      "The open data set has another network: 3 segments, the results have 4. Open the data set of these results.");
}

} // namespace
} // namespace vesk
