// The network that flows and exchanges make, and the ways through it.
#include "flow_networks.h"
#include "network/segment_text.h"
#include "network/ways.h"

#include <chrono>
#include <cmath>
#include <gtest/gtest.h>

namespace vesk {
namespace {

std::string print(const network_graph& network) {
  std::string text;
  for (const network_flow& flow : network.flows)
    text += std::to_string(flow.from + 1) + (flow.is_water ? ">" : ":>") + std::to_string(flow.to + 1) + " " +
            number_text(flow.mean) + "\n";
  for (const network_exchange& one : network.exchanges)
    text += std::to_string(one.one + 1) + "-" + std::to_string(one.two + 1) + "\n";
  return text;
}

// Each way as its segments, length and flow.
std::string print(const found_ways& found) {
  std::string text;
  for (const river_way& way : found.ways) {
    for (const segment_number one : way.segments)
      text += (text.empty() || text.back() == '\n' ? "" : "-") + std::to_string(one + 1);
    text += " " + (std::isnan(way.length) ? "?" : number_text(way.length)) + " m " + number_text(way.flow) + "\n";
  }
  const char* const courses[] = {"", "upstream\n", "across\n"};
  return text + courses[static_cast<int>(found.follows)] + (found.are_all ? "" : "more\n");
}

std::string ways(const network_graph& network, std::vector<segment_number> through, std::size_t most = 20) {
  for (segment_number& one : through) --one;
  return print(find_ways(network, through, most));
}

constexpr moment_type day(std::int32_t number) {
  return {146097 + number, 0}; // from 1 January 2000, date-time number 36526
}

TEST(Network, SumsFlowsOfTheSameTwoSegmentsByDirectionOfTheMean) {
  prevesk_dataset_data_type data =
      drawn_data(4, {{1, 2, 3}, {2, 1, 5}, {2, 3, -4}, {0, 1, 7}, {4, 0, -2}, {3, 4, 0}, {4, 3, 0}});
  data.flow_fields.edit(0).scale = 2;
  data.flow_fields.edit(0).conversion = 0.5;
  data.flow_fields.edit(2) = data.flow_fields[0]; // solids, of a field that is not used
  data.flow_fields.edit(2).used = false;
  exchange_function_data_type mixing;
  mixing.pairs = {{1, 1, 2, 0}, {1, 1, 0, 2}, {1, 1, 3, no_segment}, {1, 1, 1, 1}, {1, 1, 0, 99}};
  data.exchange_fields.edit(1).functions.push_back(mixing);
  data.systems.resize(2);
  for (const std::int32_t segment : {0, 0, 99}) {
    loads_data_type load;
    load.segment = segment;
    data.systems.edit(1).loads.push_back(load);
  }
  data.segments.edit(0).length = std::nan("");
  data.segments.edit(1).bottom_segment = 1; // itself
  data.segments.edit(2).bottom_segment = 3;
  const network_graph network = make_network(data);
  EXPECT_EQ(print(network), "2>1 2\n1:>2 0\n3>2 4\n2:>3 0\n3>4 0\n3:>4 0\n1-3\n");
  EXPECT_EQ(network.segments[0].inflow, 7);
  EXPECT_TRUE(network.segments[0].flows_in && !network.segments[0].flows_out);
  EXPECT_EQ(network.segments[3].inflow, 2); // a negative flow to the outside comes in
  EXPECT_TRUE(network.segments[3].exchanges_outside && !network.segments[3].flows_out);
  EXPECT_EQ(network.segments[0].loads, 2U);
  EXPECT_EQ(network.segments[1].bottom, no_segment);
  EXPECT_EQ(network.segments[2].bottom, 3);
  EXPECT_TRUE(std::isnan(network.segments[0].length));
  EXPECT_EQ(network.bad_pairs, 2U);

  network_graph other = network;
  other.segments[0].name = "renamed";
  other.flows[0].mean = 9;
  EXPECT_TRUE(network.has_shape_of(other));
  std::swap(other.flows[0].from, other.flows[0].to);
  EXPECT_FALSE(network.has_shape_of(other));
}

TEST(Network, MeanIsOfTheRunAsItIsInterpolated) {
  const point_list points = {{day(2), 10}, {day(4), 20}, {day(4), 0}, {day(6), 4}};
  EXPECT_DOUBLE_EQ(mean_over(points, false, 36526, 36534), (2 * 10 + 2 * 15 + 2 * 2 + 2 * 4) / 8.0);
  EXPECT_DOUBLE_EQ(mean_over(points, true, 36526, 36534), (2 * 10 + 2 * 10 + 2 * 0 + 2 * 4) / 8.0);
  EXPECT_DOUBLE_EQ(mean_over(points, false, 36529, 36530), 17.5);
  EXPECT_DOUBLE_EQ(mean_over(points, false, 36540, 36541), 4);
  EXPECT_DOUBLE_EQ(mean_over(points, false, 36500, 36501), 10);
  EXPECT_DOUBLE_EQ(mean_over(points, false, 36526, 36526), 10); // no period
  EXPECT_DOUBLE_EQ(mean_over({{day(0), std::nan("")}, {day(1), INFINITY}}, false, 36526, 36527), 0);
  EXPECT_DOUBLE_EQ(mean_over({}, false, 36526, 36527), 0);
  EXPECT_EQ(mean_over(points, false, NAN, 36527), 10);
}

TEST(Network, DescribesASegment) {
  prevesk_dataset_data_type data = drawn_data(12, {{0, 1, 7}, {1, 2, 3.5}, {2, 0, 1}});
  for (std::int32_t other = 2; other < 12; ++other) {
    flow_function_data_type side;
    side.pairs = {{1, other, 1}};
    data.flow_fields.edit(0).functions.push_back(side);
  }
  exchange_function_data_type mixing;
  mixing.pairs = {{1, 1, 0, 2}, {1, 1, no_segment, 0}};
  data.exchange_fields.edit(0).functions.push_back(mixing);
  data.segments.edit(0).bottom_segment = 1;
  data.systems.resize(1);
  data.systems.edit(0).loads.resize(2);
  data.systems.edit(0).boundaries.resize(1);
  data.segments.edit(1).length = 0;
  const network_graph network = make_network(data);
  EXPECT_EQ(describe_segment(network, 0), "Segment 1: S1\nLength: 100 m\nWater from: the outside (7 m3/s)\n"
                                          "Water to: 2 (3.5 m3/s)\nExchange with: 3, the outside\nBeneath it: 2\n"
                                          "2 loads\n1 boundary");
  EXPECT_EQ(describe_segment(network, 1),
            "Segment 2: S2\nWater from: 1 (3.5 m3/s), 3 (0 m3/s), 4 (0 m3/s), 5 (0 m3/s), 6 (0 m3/s), 7 (0 m3/s), "
            "8 (0 m3/s), 9 (0 m3/s) and 3 more\nWater to: the outside (1 m3/s)");
}

TEST(Ways, AreListedWithLengthAndLeastFlow) {
  const network_graph island =
      drawn_network(6, {{0, 1, 10}, {1, 2, 10}, {2, 3, 8}, {2, 4, 2}, {3, 5, 8}, {4, 5, 2}, {5, 6, 10}});
  EXPECT_EQ(ways(island, {1, 6}), "1-2-3-5-6 500 m 8\n1-2-4-5-6 500 m 2\n");
  EXPECT_EQ(ways(island, {1, 4, 6}), "1-2-4-5-6 500 m 2\n");
  EXPECT_EQ(ways(island, {6, 2}), "6-5-3-2 400 m 8\n6-5-4-2 400 m 2\nupstream\n");
  EXPECT_EQ(ways(island, {3, 4}), "3-2-4 300 m 2\n3-5-4 300 m 2\nacross\n");
  EXPECT_EQ(ways(island, {1, 3, 4, 6}), "across\n"); // each leg has a way, but not without a segment twice
  EXPECT_EQ(ways(island, {2}), "2 100 m 0\n");
  EXPECT_EQ(ways(island, {2, 2}), "2 100 m 0\n");
  EXPECT_EQ(ways(island, {1, 6}, 1), "1-2-3-5-6 500 m 8\nmore\n");
  EXPECT_EQ(ways(island, {1, 7}), "");
  EXPECT_EQ(ways(island, {}), "");
  EXPECT_EQ(ways({}, {1}), "");
}

// The least of the ways is kept although shorter ones fill the list.
TEST(Ways, KeepTheOneWithTheGreatestFlow) {
  const network_graph shortcuts =
      drawn_network(7, {{1, 7, 1}, {1, 2, 1}, {2, 7, 1}, {1, 3, 9}, {3, 4, 9}, {4, 5, 9}, {5, 7, 9}});
  EXPECT_EQ(ways(shortcuts, {1, 7}, 2), "1-3-4-5-7 500 m 9\n1-7 200 m 1\nmore\n");
  EXPECT_EQ(ways(shortcuts, {1, 7}), "1-3-4-5-7 500 m 9\n1-7 200 m 1\n1-2-7 300 m 1\n");
}

TEST(Ways, PassLoopsDisconnectedPartsAndMissingLengths) {
  prevesk_dataset_data_type data = drawn_data(6, {{1, 2, 5}, {2, 3, 5}, {3, 1, 5}, {3, 4, 5}, {5, 6, 1}, {2, 99, 1}});
  EXPECT_EQ(ways(make_network(data), {1, 4}), "1-2-3-4 400 m 5\n");
  EXPECT_EQ(ways(make_network(data), {1, 3}), "1-2-3 300 m 5\n");
  EXPECT_EQ(ways(make_network(data), {1, 6}), "across\n");
  data.segments.edit(1).length = 0;
  const network_graph network = make_network(data);
  EXPECT_EQ(ways(network, {1, 4}), "1-2-3-4 ? m 5\n");
  const std::vector<segment_number> ends{0, 3};
  const river_way way = find_ways(network, ends).ways[0];
  const way_axis counted = axis_along(way, lengths_of(network));
  EXPECT_FALSE(counted.is_in_metres);
  EXPECT_EQ(counted.at, (std::vector<double>{1, 2, 3, 4}));
  const way_axis metres = axis_along(way, {100, 50, 30, 20});
  EXPECT_TRUE(metres.is_in_metres);
  EXPECT_EQ(metres.at, (std::vector<double>{50, 125, 165, 190}));
  EXPECT_FALSE(axis_along(way, {}).is_in_metres);
}

// A braided delta of 60 x 60 segments has more ways than atoms: the answer says so, and comes soon.
TEST(Ways, GiveUpInTimeAndSaySo) {
  constexpr int side = 60;
  std::vector<drawn_flow> flows;
  for (int row = 0; row < side; ++row)
    for (int column = 0; column < side; ++column) {
      const int here = row * side + column + 1;
      if (column + 1 < side) flows.push_back({here, here + 1, 1.0 + row});
      if (row + 1 < side) flows.push_back({here, here + side, 1.0 + column});
    }
  const network_graph delta = drawn_network(side * side, flows);
  const std::vector<segment_number> ends{0, side * side - 1};
  const auto begin = std::chrono::steady_clock::now();
  const found_ways found = find_ways(delta, ends, 20);
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(20));
  EXPECT_FALSE(found.are_all);
  EXPECT_EQ(found.ways.size(), 20U);
  for (const river_way& way : found.ways) EXPECT_EQ(way.segments.size(), 2U * side - 1);
}

} // namespace
} // namespace vesk
