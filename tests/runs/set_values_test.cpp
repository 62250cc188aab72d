#include "runs/set_values.h"
#include "sample_data_set.h"

#include <gtest/gtest.h>

#include <set>

namespace vesk {
namespace {

// The sample with unique item names.
prevesk_dataset_data_type river() {
  prevesk_dataset_data_type data = sample_data_set();
  data.parameters.edit(1).description = "R\u00e9a\u00e9ration rate";
  data.systems.edit(1).description = "Nitrate";
  data.systems.edit(1).boundaries.edit(1).segment = 0;
  data.constant_groups.edit(0).constants.edit(1).isc = 32;
  data.constant_groups.edit(0).constants.edit(1).description = "CBOD decay, 20.5 C";
  data.constant_groups.edit(0).constants.edit(1).used = false;
  return data;
}

assignment_rules rules(bool beyond_limits = false) {
  return {beyond_limits, [](const std::string& file) {
            return file == "two.csv" ? point_list{{{year_2000, 0}, 1}, {{year_2000 + 9, 0}, 3}} : point_list();
          }};
}

void set(prevesk_dataset_data_type& data, const std::string& text, bool beyond_limits = false) {
  apply(data, parse_assignment(data, text), rules(beyond_limits));
}

std::string failure_of(const std::string& text) {
  prevesk_dataset_data_type data = river();
  try {
    set(data, text);
  } catch (const value_error& error) {
    EXPECT_EQ(data, river()) << text;
    return error.what();
  }
  return "";
}

TEST(SetValues, ReachNumbersOfEveryKindOfRecord) {
  const struct {
    const char* text;
    const char* path;
    double result;
  } cases[] = {
      {"constant.31=2", "constant.31", 2},
      {"constant.{cbod DECAY, 20.5 c}*=2", "constant.32", 2 * 1.024}, // unused: from the default, and then used
      {"parameter.11.scale+=0.5", "parameter.11.scale", 1.25},
      {"segment.{reach 2}.volume*=0.5", "segment.1.volume", 1000.5},
      {"segment.1.parameter.{R\u00c9A\u00c9RATION RATE}=3", "segment.1.parameter.11", 3},
      {"segment.0.system.21.initial=7e-1", "segment.0.system.21.initial", 0.7},
      {"segment.0.system.21.dissolved=+1", "segment.0.system.21.dissolved", 1},
      {"system.20.scalw*=2", "system.20.scalw", 8},
      {"flow.{rain}.scale*=2", "flow.5.scale", 6.5},
      {"flow.5.1.pair.2.fraction=0.25", "flow.5.1.pair.2.fraction", 0.25},
      {"exchange.0.0.pair.1.area*=2", "exchange.0.0.pair.1.area", 8},
      {"max_dt=0.25", "max_dt", 0.25},
      {"start=2000-01-02T06:00", "start", 36527.25},
      {"end=2000-02-01", "end", 36557},
  };
  for (const auto& c : cases) {
    prevesk_dataset_data_type data = river();
    const value_assignment it = parse_assignment(data, c.text);
    EXPECT_EQ(it.ref.path, c.path);
    apply(data, it, rules());
    EXPECT_DOUBLE_EQ(it.ref.row->read(data, it.ref.at), c.result) << c.text;
    EXPECT_NE(data, river()) << c.text;
  }
  prevesk_dataset_data_type data = river();
  set(data, "constant.32=5");
  EXPECT_TRUE(data.constant_groups[0].constants[1].used);
  EXPECT_EQ(data.constant_groups[0].constants[0], river().constant_groups[0].constants[0]);
}

TEST(SetValues, SeriesAreScaledMovedOrReadFromAFile) {
  prevesk_dataset_data_type data = river();
  set(data, "time_function.1*=10");
  EXPECT_EQ(data.time_functions[0].points[1].value, -10);
  EXPECT_FALSE(data.time_functions[0].query->deferred); // otherwise the next run would undo it
  set(data, "system.21.boundary.0+=1");
  EXPECT_EQ(data.systems[1].boundaries[1].points[0].value, 9);
  EXPECT_EQ(data.systems[1].boundaries[0].points[0].value, 8);
  set(data, "system.20.load.{Reach 2}=two.csv");
  EXPECT_EQ(data.systems[0].loads[0].points.size(), 2U);
  set(data, "flow.5.1=two.csv");
  EXPECT_EQ(data.flow_fields[5].functions[1].points[1].value, 3);
  EXPECT_EQ(data.flow_fields[5].functions[0], river().flow_fields[5].functions[0]);
}

TEST(SetValues, AreRefusedInOneSentence) {
  EXPECT_EQ(failure_of("constnt.31=1"), "Unknown path constnt.31; the nearest is constant.31.");
  EXPECT_EQ(failure_of("konstant.99=1"), // constant.99 does not exist either
            "Unknown path konstant.99; paths begin with constant, parameter, segment, system, time_function, flow, "
            "exchange, print_intervals, time_steps, start, end, max_dt, min_dt, fraction_of_max_time_step, "
            "volume_scale_factor or volume_conversion_factor, and --list-paths lists them.");
  EXPECT_EQ(failure_of("segment.1.system.20.initail=1"),
            "Unknown path segment.1.system.20.initail; the nearest is segment.1.system.20.initial.");
  EXPECT_EQ(failure_of("constant.33=1"),
            "constant.33: there is no constant 33; the nearest is 32 (CBOD decay, 20.5 C).");
  EXPECT_EQ(
      failure_of("segment.99999999999999999999.volume=1"),
      "segment.99999999999999999999.volume: there is no segment 99999999999999999999; the nearest is 2 (Reach 3).");
  EXPECT_EQ(failure_of("exchange.1.0=two.csv"), "exchange.1.0: there is no exchange function.");
  EXPECT_EQ(failure_of("constant.{CBOD decoy}=1"),
            "constant.{CBOD decoy}: no constant has the name {CBOD decoy}; the nearest is {CBOD decay, 20.5 C}.");
  EXPECT_EQ(failure_of("flow.5.{main stem}*=2"),
            "flow.5.{main stem}: 2 items have the name {main stem}, such as flow function 0 and 1; give the number.");
  EXPECT_EQ(failure_of("segment.9223372036854775807.volume=1"),
            "segment.9223372036854775807.volume: there is no segment 9223372036854775807; the nearest is 2 (Reach 3).");
  EXPECT_EQ(failure_of("constant.31"), "\"constant.31\": expected PATH=VALUE, PATH*=VALUE or PATH+=VALUE.");
  EXPECT_EQ(failure_of("constant 31=1"),
            "\"constant 31=\": expected a path and =, *= or +=, found \" 31=\" after constant.");
  EXPECT_EQ(failure_of("constant.31=nan"), "constant.31: expected a finite number, found \"nan\".");
  EXPECT_EQ(failure_of("constant.31*=1,5"), "constant.31: expected a finite number, found \"1,5\".");
  EXPECT_EQ(failure_of("segment.0.volume*=1e308"), "segment.0.volume: the result is not a finite number.");
  EXPECT_EQ(failure_of("start=31/12/2000"),
            "start: expected a date such as 2011-10-01 or 2011-10-01T06:30, found \"31/12/2000\".");
  EXPECT_EQ(failure_of("start+=1"), "start: a date is set by =, not by +=.");
  EXPECT_EQ(failure_of("time_function.1=5"),
            "time_function.1: expected a file of dates and values (a number needs *= or +=), found \"5\".");
  EXPECT_EQ(failure_of("constant.31=100"),
            "constant.31 (Temperature coefficient): The value is outside the catalogue's range, from -1 to 99. Use "
            "--beyond-limits to set it all the same.");
  EXPECT_EQ(failure_of("flow.0.scale=2"), "flow.0.scale (Surface Water, scale) is not used by this data set, so that "
                                          "setting it would have no effect. Switch it on first.");
  prevesk_dataset_data_type data = river();
  set(data, "constant.31=100", true);
  EXPECT_EQ(data.constant_groups[0].constants[0].value, 100);
  const std::vector<value_assignment> twice{parse_assignment(data, "constant.31=1"),
                                            parse_assignment(data, "constant.{temperature coefficient}*=2")};
  EXPECT_THROW(refuse_repeated(twice), value_error);
}

TEST(SetValues, EveryListedPathIsFoundAgain) {
  const prevesk_dataset_data_type data = river();
  std::set<std::string_view> patterns;
  for_each_value(data, [&](const value_ref& ref) {
    patterns.insert(ref.row->pattern);
    const value_ref found = find_value(data, ref.path);
    EXPECT_EQ(found.row, ref.row) << ref.path;
    const bool is_second_of_segment = ref.path == "system.20.boundary.2" && ref.at[1] == 1;
    EXPECT_EQ(found.at, is_second_of_segment ? (value_positions{0, 0, 0}) : ref.at) << ref.path;
  });
  EXPECT_EQ(patterns.size(), value_rows().size());
}

} // namespace
} // namespace vesk
