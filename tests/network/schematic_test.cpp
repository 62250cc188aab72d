// The picture of a network, with Graphviz and without.
#include "flow_networks.h"
#include "network/schematic.h"

#include "temporary_folder.h"
#include <algorithm>
#include <cmath>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace vesk {
namespace {

const auto goes_on = [] { return false; };

schematic picture_of(const network_graph& network, const graphviz_programs& programs = find_graphviz()) {
  return make_schematic(network, std::nullopt, programs, goes_on).value();
}

std::vector<drawn_flow> chain(int segments) {
  std::vector<drawn_flow> flows{{0, 1, 10}};
  for (int i = 1; i < segments; ++i) flows.push_back({i, i + 1, 10});
  return flows;
}

// What holds for every picture: each segment once, no two boxes over each other, all within the frame.
void expect_sound(const schematic& picture, std::size_t segments) {
  ASSERT_EQ(picture.boxes.size(), segments);
  for (std::size_t i = 0; i < segments; ++i) {
    EXPECT_TRUE(i == 0 || picture.boxes[i - 1].segment < picture.boxes[i].segment);
    const schematic_point one = picture.boxes[i].middle;
    EXPECT_TRUE(one.x >= box_width / 2 && one.y >= box_height / 2 && one.x <= picture.width - box_width / 2 &&
                one.y <= picture.height - box_height / 2);
    for (std::size_t j = 0; j < i; ++j) {
      const schematic_point two = picture.boxes[j].middle;
      EXPECT_FALSE(std::abs(one.x - two.x) < box_width && std::abs(one.y - two.y) < box_height) << i << " over " << j;
    }
  }
  for (const schematic_line& line : picture.lines) {
    EXPECT_TRUE(line.curve.size() >= 4 && line.curve.size() % 3 == 1);
    for (const schematic_point& point : line.curve) EXPECT_TRUE(std::isfinite(point.x) && std::isfinite(point.y));
  }
}

const graphviz_programs without{};

class Layouts : public testing::TestWithParam<bool> {
protected:
  const graphviz_programs programs = GetParam() ? find_graphviz() : without;
};

TEST_P(Layouts, ShowEverySegmentOfAnyNetwork) {
  const auto sound = [&](const network_graph& network) {
    const schematic picture = picture_of(network, programs);
    expect_sound(picture, network.segments.size());
    return picture;
  };
  EXPECT_EQ(remark_on(sound({}), {}), "No segments. Add them in Data > Segments.");
  sound(drawn_network(1, {}));
  sound(drawn_network(1, {{0, 1, 1}, {1, 1, 1}, {1, 9, 1}}));
  sound(drawn_network(30, {}));
  sound(drawn_network(5, {{1, 2, 1}, {2, 3, 1}, {3, 1, 1}, {3, 2, -1}})); // a loop, and two alone
  const schematic river = sound(drawn_network(40, chain(40)));
  EXPECT_EQ(river.lines.size(), 39U);
  EXPECT_LT(river.width, 12 * river.height); // not one row of forty
  sound(drawn_network(7, {{1, 2, 5}, {2, 3, 4}, {2, 4, 1}, {3, 5, 4}, {4, 5, 1}, {5, 6, 5}, {7, 5, 2}}));

  prevesk_dataset_data_type lake = drawn_data(9, {{1, 2, 5}, {2, 3, 5}});
  for (int i = 0; i < 6; ++i) lake.segments.edit(static_cast<std::size_t>(i)).bottom_segment = i + 3;
  lake.segments.edit(8).bottom_segment = 2; // a ring of bottoms
  exchange_function_data_type mixing;
  mixing.pairs = {{1, 1, 0, 3}, {1, 1, 3, 6}, {1, 1, 0, 8}};
  lake.exchange_fields.edit(0).functions.push_back(mixing);
  const network_graph network = make_network(lake);
  const schematic layers = sound(network);
  for (const std::size_t top : {0U, 1U, 3U, 4U}) {
    EXPECT_NEAR(layers.boxes[top].middle.x, layers.boxes[top + 3].middle.x, 1) << top;
    EXPECT_LT(layers.boxes[top].middle.y, layers.boxes[top + 3].middle.y) << top;
  }
  using enum schematic_line::kind;
  const auto count = [&](schematic_line::kind what) {
    return std::ranges::count(layers.lines, what, &schematic_line::what);
  };
  EXPECT_EQ(count(flow), 2);
  EXPECT_EQ(count(exchange), 3);
  EXPECT_EQ(count(bottom), 5); // where no exchange shows it
}

INSTANTIATE_TEST_SUITE_P(Programs, Layouts, testing::Bool(),
                         [](const auto& with) { return with.param ? "Graphviz" : "Plain"; });

TEST(Schematic, RunsToTheRightAlongTheFlowAndFoldsLongRivers) {
  const schematic island = picture_of(drawn_network(5, {{1, 2, 5}, {2, 3, 4}, {2, 4, 1}, {3, 5, 4}, {4, 5, 1}}));
  EXPECT_EQ(island.laid_out_by, schematic::method::dot);
  for (const schematic_line& line : island.lines) {
    EXPECT_LT(island.boxes[line.from].middle.x, island.boxes[line.to].middle.x);
    // From one box to the other.
    EXPECT_NEAR(line.curve.front().x, island.boxes[line.from].middle.x + box_width / 2, 10);
    EXPECT_NEAR(line.curve.back().x, island.boxes[line.to].middle.x - box_width / 2, 15);
  }
  const schematic river = picture_of(drawn_network(26, chain(26)));
  EXPECT_GT(river.width / river.height, 1);
  EXPECT_LT(river.width / river.height, 4);
  std::size_t turns = 0;
  for (std::size_t i = 0; i + 1 < 26; ++i) {
    const schematic_point one = river.boxes[i].middle, two = river.boxes[i + 1].middle;
    if (std::abs(one.y - two.y) < 1)
      EXPECT_LT(std::abs(one.x - two.x), 200) << i; // neighbours in the river are neighbours in the picture
    else
      ++turns;
  }
  EXPECT_GE(turns, 2U);
}

// More than dot can do in time.
TEST(Schematic, LaysLargeNetworksOutByForces) {
  std::vector<drawn_flow> flows = chain(1200);
  for (int i = 1; i + 3 <= 1200; i += 10) flows.push_back({i, i + 3, 1});
  const schematic picture = picture_of(drawn_network(1200, flows));
  EXPECT_EQ(picture.laid_out_by, schematic::method::sfdp);
  expect_sound(picture, 1200);
  std::size_t near = 0;
  for (std::size_t i = 0; i + 1 < 1200; ++i) {
    const schematic_point one = picture.boxes[i].middle, two = picture.boxes[i + 1].middle;
    near += std::abs(one.x - two.x) < 5 * box_width && std::abs(one.y - two.y) < 5 * box_width;
  }
  EXPECT_GT(near, 1100U);
}

TEST(Schematic, ShowsTheNeighbourhoodOfASegmentInALargeNetwork) {
  const network_graph network = drawn_network(most_boxes + 1, chain(static_cast<int>(most_boxes) + 1));
  const auto around = [&](std::optional<segment_number> centre) {
    return make_schematic(network, centre, without, goes_on).value();
  };
  const schematic middle = around(5000);
  EXPECT_EQ(middle.boxes.size(), neighbourhood_boxes);
  EXPECT_EQ(middle.boxes.front().segment, 4850U);
  EXPECT_EQ(middle.boxes.back().segment, 5149U);
  EXPECT_EQ(remark_on(middle, network),
            "Of 10001 segments, the 300 nearest to segment 5001 are shown. Plain rows: the package graphviz, which "
            "finds a better layout, is missing or did not finish.");
  EXPECT_EQ(around(std::nullopt).centre, 0U);
  EXPECT_EQ(around(4'000'000).centre, 0U);
}

TEST(Schematic, IsMadePlainlyWhenGraphvizFails) {
  const temporary_folder folder;
  const auto program = [&](const char* name, const std::string& body) {
    const auto file = folder.path / name;
    std::ofstream(file) << "#!/bin/sh\n" << body << "\n";
    chmod(file.c_str(), 0755);
    return file;
  };
  const network_graph network = drawn_network(3, chain(3));
  const auto method_by = [&](const std::string& body) {
    const auto file = program("dot", body);
    const schematic picture = picture_of(network, {file, file});
    expect_sound(picture, 3);
    return picture.laid_out_by;
  };
  using enum schematic::method;
  EXPECT_EQ(method_by("exit 1"), plain_chains);
  EXPECT_EQ(method_by("kill -9 $$"), plain_chains);
  const std::string nodes = "echo 'node 0 0 0 1 1';echo 'node 1 3 0 1 1';echo 'node 2 6 0 1 1';";
  EXPECT_EQ(method_by(nodes), dot); // without lines: they are straight
  EXPECT_EQ(method_by(nodes + "echo 'edge 0 1 2 0 0 1 1'"), dot);
  EXPECT_EQ(method_by("echo 'node 0 0 0'"), plain_chains);
  EXPECT_EQ(method_by(nodes + "echo 'node 9 0 0'"), plain_chains);
  EXPECT_EQ(method_by(nodes + "echo 'edge 0 2 4 0 0 1 1 2 2 3 3'"), plain_chains);
  EXPECT_EQ(method_by(nodes + "echo 'edge 0 1 9999999999999 0 0'"), plain_chains);
  EXPECT_EQ(method_by(nodes + "echo 'node 0 nan inf'"), plain_chains);
}

TEST(Schematic, IsCancelledWhileGraphvizWorks) {
  const temporary_folder folder;
  const auto slow = folder.path / "dot";
  std::ofstream(slow) << "#!/bin/sh\nexec sleep 100\n";
  chmod(slow.c_str(), 0755);
  int asked = 0;
  EXPECT_FALSE(make_schematic(drawn_network(3, chain(3)), std::nullopt, {slow, slow}, [&] { return ++asked > 3; }));
}

TEST(Schematic, FindsBoxesByPlaceAndDirection) {
  const schematic picture = picture_of(drawn_network(5, {{1, 2, 5}, {2, 3, 4}, {2, 4, 1}, {3, 5, 4}, {4, 5, 1}}));
  for (std::size_t i = 0; i < 5; ++i) EXPECT_EQ(box_at(picture, picture.boxes[i].middle), i);
  EXPECT_FALSE(box_at(picture, {-5, -5}));
  EXPECT_EQ(next_box(picture, 0, 1, 0), 1U);
  EXPECT_EQ(next_box(picture, 1, -1, 0), 0U);
  EXPECT_FALSE(next_box(picture, 0, -1, 0));
  const std::size_t upper = picture.boxes[2].middle.y < picture.boxes[3].middle.y ? 2 : 3;
  EXPECT_EQ(next_box(picture, upper, 0, 1), 5 - upper);
  EXPECT_EQ(next_box(picture, 5 - upper, 0, -1), upper);
}

} // namespace
} // namespace vesk
