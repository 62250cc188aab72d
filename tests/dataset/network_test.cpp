#include "dataset/network.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>

namespace vesk {
namespace {

// Five segments with flows 1>2>3>4>5 and out of 5, a pair of exchange between 2 and 4, a bed below segment 3 in segment
// 5, a load into 3 and 5, a boundary at 5; three parameters and two systems.
prevesk_dataset_data_type river() {
  prevesk_dataset_data_type data;
  data.parameters.resize(3);
  data.systems.resize(2);
  data.segments.resize(5);
  reconcile_segment_records(data);
  for (std::size_t i = 0; i < 5; ++i) {
    data.segments.edit(i).name = "S" + std::to_string(i + 1);
    data.segments.edit(i).parameters.set(1, {0, 10.0 + static_cast<double>(i)});
  }
  data.segments.edit(2).bottom_segment = 4;
  flow_function_data_type flow;
  flow.pairs = {{1, 0, 1}, {1, 1, 2}, {1, 2, 3}, {1, 3, 4}, {1, 4, no_segment}};
  data.flow_fields.edit(0).functions.push_back(flow);
  exchange_function_data_type mixing;
  mixing.pairs = {{1, 1, 1, 3}};
  data.exchange_fields.edit(0).functions.push_back(mixing);
  for (const std::int32_t segment : {2, 4}) {
    loads_data_type load;
    load.segment = segment;
    data.systems.edit(0).loads.push_back(load);
  }
  data.find_boundaries();
  return data;
}

std::string pairs_by_name(const prevesk_dataset_data_type& data) {
  const auto name = [&](std::int32_t reference) {
    if (reference < 0) return std::string("outside");
    const auto position = static_cast<std::size_t>(reference);
    return position < data.segments.size() ? data.segments[position].name.str() : std::string("?");
  };
  std::string text;
  for (const auto& pair : data.flow_fields[0].functions[0].pairs)
    text += name(pair.from_segment) + ">" + name(pair.to_segment) + " ";
  for (const auto& pair : data.exchange_fields[0].functions[0].pairs)
    text += name(pair.segment_one) + "=" + name(pair.segment_two) + " ";
  for (const auto& load : data.systems[0].loads) text += "load " + name(load.segment) + " ";
  for (const auto& boundary : data.systems[1].boundaries) text += "boundary " + name(boundary.segment) + " ";
  for (const auto& segment : data.segments)
    if (segment.bottom_segment >= 0) text += segment.name.str() + " over " + name(segment.bottom_segment);
  return text;
}

TEST(Network, PlainInsertAndEraseLeaveReferencesWhereTheyPoint) {
  auto data = river();
  EXPECT_EQ(in_words(references_from(data, 2)), "5 pairs, 1 bottom reference, 2 loads and 2 boundaries");
  insert_segment(data, 2);
  EXPECT_EQ(verify(data), "");
  EXPECT_EQ(data.segments[2].parameters[1].value, 0);
  EXPECT_EQ(data.segments[3].parameters[1].value, 12);
  EXPECT_EQ(pairs_by_name(data), "S1>S2 S2>Vesk Segment Vesk Segment>S3 S3>S4 S4>outside S2=S3 load Vesk Segment "
                                 "load S4 boundary S4 S3 over S4");
  erase_segment(data, 2);
  EXPECT_EQ(data, river());

  while (data.segments.size() > 3) erase_segment(data, 3);
  EXPECT_EQ(verify(data), "");
  EXPECT_EQ(data.segments[2].bottom_segment, 2); // pulled to the last one
  EXPECT_EQ(data.flow_fields[0].functions[0].pairs[3].to_segment, 4);
  for (int i = 0; i < 4; ++i) erase_segment(data, 0); // once more than there are
  EXPECT_TRUE(data.segments.empty());
  EXPECT_EQ(references_from(data, 0).pairs, 6U);
}

TEST(Network, RenumberingKeepsWhatReferencesName) {
  auto data = river();
  const std::string before = pairs_by_name(data);
  const auto copy = data;
  EXPECT_EQ(in_words(insert_and_renumber(data, 0)), "6 pairs, 1 bottom reference, 2 loads and 2 boundaries");
  EXPECT_EQ(pairs_by_name(data), before);
  EXPECT_EQ(in_words(erase_and_renumber(data, 0)), "");
  EXPECT_EQ(data, copy);

  auto two_at_once = data;
  EXPECT_EQ(in_words(erase_and_renumber(two_at_once, 1, 2)), "4 pairs and 1 load");
  EXPECT_EQ(pairs_by_name(two_at_once), "S4>S5 S5>outside load S5 boundary S5 ");
  erase_and_renumber(two_at_once, 1, 9); // more than there are
  EXPECT_EQ(two_at_once.segments.size(), 1U);

  EXPECT_EQ(in_words(erase_and_renumber(data, 4)), "2 pairs, 1 bottom reference, 1 load and 2 boundaries");
  EXPECT_EQ(pairs_by_name(data), "S1>S2 S2>S3 S3>S4 S2=S4 load S3 ");
  EXPECT_EQ(in_words(erase_and_renumber(data, 1)), "3 pairs");
  EXPECT_EQ(pairs_by_name(data), "S3>S4 load S3 ");
  EXPECT_EQ(verify(data), "");
}

TEST(Network, TheLargestReferenceDoesNotOverflow) {
  auto data = river();
  data.systems.edit(0).loads.edit(0).segment = std::numeric_limits<std::int32_t>::max();
  EXPECT_EQ(insert_and_renumber(data, 0).loads, 1U); // the other one
  EXPECT_EQ(data.systems[0].loads[0].segment, std::numeric_limits<std::int32_t>::max());
}

// Whatever order they come in, every segment has its records, and renumbered references name existing segments.
TEST(Network, RandomChangesKeepTheRecordsWhole) {
  std::mt19937 random(7);
  auto data = river();
  for (int i = 0; i < 300; ++i) {
    const std::size_t position = random() % (data.segments.size() + 1);
    if (data.segments.size() < 3 || random() % 2 == 0)
      insert_and_renumber(data, position);
    else
      erase_and_renumber(data, position);
    ASSERT_EQ(verify(data), "");
    ASSERT_EQ(pairs_by_name(data).find('?'), std::string::npos);
  }
}

} // namespace
} // namespace vesk
