#include "dataset/boundary_changes.h"

#include <gtest/gtest.h>

namespace vesk {
namespace {

// A data set of `segments` segments and two systems whose first flow field's function has these pairs.
prevesk_dataset_data_type network(std::size_t segments, std::initializer_list<flow_pair_record_type> pairs) {
  prevesk_dataset_data_type data;
  data.segments.resize(segments);
  data.systems.resize(2);
  flow_function_data_type function;
  function.pairs = pairs;
  data.flow_fields.edit(0).functions.push_back(function);
  data.seed_date = 36526;
  data.end_date = 36527;
  data.seed_time = data.end_time = 0;
  data.apply_seed();
  return data;
}

std::string boundary_segments(const prevesk_dataset_data_type& data, std::size_t system) {
  std::string text;
  for (const auto& boundary : data.systems[system].boundaries)
    text += (text.empty() ? "" : " ") + std::to_string(boundary.segment);
  return text;
}

boundary_data_type typed_boundary(std::int32_t segment, double value) {
  boundary_data_type boundary;
  boundary.segment = segment;
  boundary.points = {{{1, 2}, value}};
  boundary.interpolation_type = interpolation_step;
  return boundary;
}

TEST(BoundarySearch, EachSegmentAtTheOutsideGetsOneBoundaryInEverySystem) {
  // Twice segment 5 by flows, once segment 2 by an exchange; both ends outside, or none, add nothing.
  auto data = network(7, {{1, -1, 5}, {1, 5, -1}, {1, 3, 4}, {1, -1, -1}});
  exchange_function_data_type mixing;
  mixing.pairs = {{1, 1, 2, -1}};
  data.exchange_fields.edit(1).functions.push_back(mixing); // a field that is not used counts too
  data.find_boundaries();
  for (const std::size_t system : {0u, 1u}) {
    EXPECT_EQ(boundary_segments(data, system), "2 5");
    EXPECT_EQ(data.systems[system].boundaries[1].points, (point_list{{{146097, 0}, 0}, {{146098, 0}, 0}}));
  }
  const auto first = data;
  data.find_boundaries();
  EXPECT_EQ(data, first);
}

TEST(BoundarySearch, WhatStaysKeepsItsDataAndItsPlace) {
  auto data = network(4, {{1, -1, 0}, {1, 2, -1}});
  data.systems.edit(1).boundaries = {typed_boundary(9, 1), typed_boundary(2, 2), typed_boundary(1, 3),
                                     typed_boundary(-1, 4)};
  data.find_boundaries();
  EXPECT_EQ(boundary_segments(data, 1), "9 2 -1 0"); // 1 has gone, 0 is new, 9 and -1 are never visited
  EXPECT_EQ(data.systems[1].boundaries[1], typed_boundary(2, 2));
  EXPECT_EQ(boundary_segments(data, 0), "0 2");
}

TEST(BoundarySearch, OfSeveralNeedlessRecordsOfASegmentTheFirstGoes) {
  auto data = network(2, {});
  data.systems.edit(0).boundaries = {typed_boundary(1, 1), typed_boundary(1, 2)};
  data.find_boundaries();
  ASSERT_EQ(boundary_segments(data, 0), "1");
  EXPECT_EQ(data.systems[0].boundaries[0].points[0].value, 2);
  data.find_boundaries();
  EXPECT_EQ(boundary_segments(data, 0), "");
}

TEST(BoundarySearch, SaysWhichSegmentsGotOrLostBoundaries) {
  auto data = network(9, {{1, -1, 0}, {1, 2, -1}});
  data.segments.edit(4).name = "Halifax";
  data.systems.edit(0).boundaries = {typed_boundary(4, 1), typed_boundary(0, 2)};
  data.systems.edit(0).boundaries.edit(0).points.resize(365, {});
  data.systems.edit(1).boundaries = {typed_boundary(0, 1), typed_boundary(2, 2), typed_boundary(11, 3)};
  const auto search = [&] {
    const auto before = data;
    data.find_boundaries();
    return in_words(changes_of_boundaries(before, data), data);
  };
  EXPECT_EQ(search(), "1 boundary added: segment 3 (Vesk Segment), 1 system; "
                      "1 removed with its 365 points: segment 5 (Halifax), 1 system");
  EXPECT_EQ(in_words({.added = {{4}, 1}, .removed = {{4}, 3}, .points = 365, .systems = 4}, data),
            "1 boundary added, 1 removed with its 365 points: segment 5 (Halifax), 4 systems");
  EXPECT_EQ(search(), "");
  auto& pairs = data.flow_fields.edit(0).functions.edit(0).pairs;
  pairs = {{1, -1, 0}, {1, 2, -1}, {1, 4, -1}};
  EXPECT_EQ(search(), "1 boundary added: segment 5 (Halifax), 2 systems");
  pairs = {{1, -1, 1}, {1, 3, -1}, {1, 4, -1}, {1, 5, -1}, {1, 6, -1}, {1, 7, -1}, {1, 8, -1}};
  search(); // 0 and 2 have gone, six are new
  pairs = {};
  const std::string some = "(Vesk Segment)";
  EXPECT_EQ(search(), "7 boundaries removed with their 28 points: segments 2 " + some + ", 4 " + some +
                          ", 5 (Halifax), 6 " + some + ", 7 " + some + " and 2 more, 2 systems");
}

} // namespace
} // namespace vesk
