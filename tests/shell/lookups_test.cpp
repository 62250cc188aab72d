#include "noting_job.h"

#include <gmock/gmock.h>

namespace vesk {
namespace {

using testing::ElementsAre;

struct Lookups : testing::Test {
  noting_job job;
  engine_job_scope serving{job};
  shell_interface& shell = job.shell();
};

TEST_F(Lookups, CountWhatIsSwitchedOnThroughAllGroups) {
  EXPECT_EQ(shell.get_nth_constant(1), (constant_position{0, 1}));
  EXPECT_EQ(shell.get_nth_constant(3), (constant_position{1, 0}));      // D, in the second group
  EXPECT_EQ(shell.get_constant_by_isc(101), (constant_position{0, 0})); // A, which is off
  EXPECT_EQ(shell.get_nth_time_function(1), 1u);
  EXPECT_EQ(shell.get_time_function_by_isc(3), 0u);
  EXPECT_EQ(shell.get_nth_parameter(2), 2u);
  EXPECT_EQ(shell.get_parameter_by_isc(11), 0u);
  EXPECT_EQ(shell.get_nth_output_parameter(1), 1u);
  EXPECT_EQ(shell.get_nth_csv_output_parameter(1), 0u);
  EXPECT_EQ(shell.get_output_parameter_by_isc(42), 1u);
  EXPECT_EQ(shell.get_nth_exchange_field(2), 1u); // switched off
  EXPECT_EQ(shell.get_nth_flow_field(6), 5u);
  EXPECT_EQ(shell.get_actual_system_index(1), 1u);
  EXPECT_EQ(shell.get_nth_segment_parameter(4, 1), (segment_item_position{3, 1}));
  EXPECT_EQ(shell.get_segment_parameter_by_isc(1, 13), (segment_item_position{0, 2}));
  EXPECT_EQ(shell.get_nth_segment_system(2, 1), (segment_item_position{1, 1}));
  job.data.parameters.edit(2).isc = 11; // of two equal numbers the first wins
  EXPECT_EQ(shell.get_parameter_by_isc(11), 0u);
}

TEST_F(Lookups, LogTheirSearchAndTheirFailure) {
  const std::int32_t lowest = std::numeric_limits<std::int32_t>::min();
  const struct {
    std::function<bool()> search;
    std::vector<std::string> lines;
  } cases[] = {
      {[&] { return shell.get_nth_constant(0).has_value(); },
       {"get_nth_constant(0) SEARCHING...", "get_nth_constant(0) NOT FOUND"}},
      {[&] { return shell.get_nth_constant(4).has_value(); },
       {"get_nth_constant(4) SEARCHING...", "get_nth_constant(4) NOT FOUND"}},
      {[&] { return shell.get_nth_time_function(lowest).has_value(); },
       {"get_nth_time_function(-2147483648) SEARCHING...", "get_nth_time_function(-2147483648) NOT FOUND"}},
      {[&] { return shell.get_nth_parameter(3).has_value(); },
       {"get_nth_parameter(3) SEARCHING...", "get_nth_parameter(3) NOT FOUND"}},
      {[&] { return shell.get_nth_output_parameter(2).has_value(); },
       {"get_nth_output_parameter(2) SEARCHING...", "get_nth_output_parameter(2) NOT FOUND"}},
      {[&] { return shell.get_nth_csv_output_parameter(3).has_value(); },
       {"get_nth_csv_output_parameter(3) SEARCHING...", "get_nth_csv_output_parameter(3) NOT FOUND"}},
      {[&] { return shell.get_nth_exchange_field(3).has_value(); },
       {"get_nth_exchange_field(3) SEARCHING...", "get_nth_exchange_field(3) NOT FOUND"}},
      {[&] { return shell.get_nth_flow_field(0).has_value(); },
       {"get_nth_flow_field(0) SEARCHING...", "get_nth_flow_field(0) NOT FOUND"}},
      {[&] { return shell.get_constant_by_isc(1).has_value(); },
       {"get_constant_by_isc(1) SEARCHING...", "get_constant_by_isc(1) NOT FOUND"}},
      {[&] { return shell.get_parameter_by_isc(1).has_value(); },
       {"get_parameter_by_isc(1) SEARCHING...", "get_parameter_by_isc(1) NOT FOUND"}},
      {[&] { return shell.get_time_function_by_isc(2).has_value(); },
       {"get_time_function_by_isc(2) SEARCHING...", "get_time_function_by_isc(2) NOT FOUND"}},
      {[&] { return shell.get_output_parameter_by_isc(-1).has_value(); },
       {"get_output_parameter_by_isc(-1) SEARCHING...", "get_output_parameter_by_isc(-1) NOT FOUND"}},
      {[&] { return shell.get_nth_segment_parameter(2, 3).has_value(); },
       {"get_nth_segment_parameter(segment_index = 2, param_index = 3) SEARCHING...",
        "get_nth_segment_parameter(segment_index = 2, parameter_index = 3) NOT FOUND"}},
      {[&] { return shell.get_segment_parameter_by_isc(2, 99).has_value(); },
       {"get_segment_parameter_by_isc(99) SEARCHING...",
        "get_segment_parameter_by_param_isc(segment_index = 2, isc_number = 99) NOT FOUND"}},
  };
  for (const auto& c : cases) {
    job.take_log();
    EXPECT_FALSE(c.search());
    EXPECT_EQ(job.log, c.lines);
  }
}

TEST_F(Lookups, AWrongSystemFallsOnTheFirst) {
  EXPECT_EQ(call("GSYSNAME 9 '?'"), "9 Ammonia");
  EXPECT_THAT(job.take_log(), ElementsAre("get_nth_system(9) SEARCHING...", "get_actual_system_index(9) SEARCHING...",
                                          "get_actual_system_index(9) NOT FOUND - DEFAULTING TO ZERO"));
  job.data.systems.clear();
  EXPECT_EQ(call("GSYSNAME 1 '?'"), "1 ?");
  EXPECT_EQ(job.take_log().back(), "get_nth_system(1) NOT FOUND");
  job.data.segments.edit(0).systems.resize(0);
  EXPECT_EQ(call("GINITC 1 1 7."), "1 1 7");
  EXPECT_THAT(job.take_log(), ElementsAre("get_nth_segment_system(segment_index = 1, system_index = 1) SEARCHING...",
                                          "get_actual_system_index(1) SEARCHING...",
                                          "get_actual_system_index(1) NOT FOUND - DEFAULTING TO ZERO",
                                          "get_nth_segment_system(segment_index = 1, system_index = 1) NOT FOUND"));
}

} // namespace
} // namespace vesk
