#include "dataset/dataset.h"

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

} // namespace
} // namespace vesk
