// Each PUT changes its own member of the data set, and no other keyword's.
#include "noting_job.h"

#include <gtest/gtest.h>

namespace vesk {
namespace {

using data_set = const prevesk_dataset_data_type&;

struct put_target {
  const char* call; // puts a value that nothing else has
  double value;
  double (*read)(data_set);
};

// The engine's system 1 is second, its parameter 13 third.
const put_target targets[] = {
    {"PMAXDT 1001.", 1001, [](data_set d) { return d.max_dt; }},
    {"PMINDT 1002.", 1002, [](data_set d) { return d.min_dt; }},
    {"PSCALV 1003.", 1003, [](data_set d) { return d.volume_scale_factor; }},
    {"PCONVV 1004.", 1004, [](data_set d) { return d.volume_conversion_factor; }},
    {"PSEGTYPE 2 1005", 1005, [](data_set d) { return double(d.segments[1].segment_type); }},
    {"PVOLUME 2 1006.", 1006, [](data_set d) { return d.segments[1].volume; }},
    {"PVMULT 2 1007.", 1007, [](data_set d) { return d.segments[1].vmult; }},
    {"PVEXP 2 1008.", 1008, [](data_set d) { return d.segments[1].vexp; }},
    {"PDMULT 2 1009.", 1009, [](data_set d) { return d.segments[1].dmult; }},
    {"PDEXP 2 1010.", 1010, [](data_set d) { return d.segments[1].dexp; }},
    {"PSEGLENGTH 2 1011.", 1011, [](data_set d) { return d.segments[1].length; }},
    {"PSEGWIDTH 2 1012.", 1012, [](data_set d) { return d.segments[1].width; }},
    {"PSEGSLOPE 2 1013.", 1013, [](data_set d) { return d.segments[1].slope; }},
    {"PSEGROUGH 2 1014.", 1014, [](data_set d) { return d.segments[1].bottom_roughness; }},
    {"PSEGMINDEPTH 2 1015.", 1015, [](data_set d) { return d.segments[1].minimum_depth; }},
    {"PCONSTPARAM 2 13 1016.", 1016, [](data_set d) { return d.segments[1].parameters[2].value; }},
    {"PINITC 1 2 1017.", 1017, [](data_set d) { return d.segments[1].systems[1].initial_concentration; }},
    {"PFDISS 1 2 1018.", 1018, [](data_set d) { return d.segments[1].systems[1].fraction_dissolved; }},
    {"PIFIELD 1 1019", 1019, [](data_set d) { return double(d.systems[1].ifield); }},
    {"PDENSITY 1 1020.", 1020, [](data_set d) { return d.systems[1].density; }},
    {"PCMAX 1 1021.", 1021, [](data_set d) { return d.systems[1].cmax; }},
    {"PSCALB 1 1022.", 1022, [](data_set d) { return d.systems[1].scalb; }},
    {"PCONVB 1 1023.", 1023, [](data_set d) { return d.systems[1].convb; }},
    {"PSCALW 1 1024.", 1024, [](data_set d) { return d.systems[1].scalw; }},
    {"PCONVW 1 1025.", 1025, [](data_set d) { return d.systems[1].convw; }},
    {"PIBC 1 1 1026", 1025, [](data_set d) { return double(d.systems[1].boundaries[0].segment); }},
    {"PIWK 1 1 1028", 1027, [](data_set d) { return double(d.systems[1].loads[0].segment); }},
    {"PBOUNDFUNC 1 1 2 20. 1029.", 1029, [](data_set d) { return d.systems[1].boundaries[0].points[1].value; }},
    {"PLOADFUNC 1 1 2 20. 1030.", 1030, [](data_set d) { return d.systems[1].loads[0].points[1].value; }},
    {"PSCALEPARAM 13 1031.", 1031, [](data_set d) { return d.parameters[2].scale; }},
    {"PSCALER 1 1032.", 1032, [](data_set d) { return d.exchange_fields[0].scale; }},
    {"PCONVR 1 1033.", 1033, [](data_set d) { return d.exchange_fields[0].conversion; }},
    {"PXAREA 1 1 1 1034.", 1034, [](data_set d) { return d.exchange_fields[0].functions[0].pairs[0].area; }},
    {"PLENGTH 1 1 1 1035.", 1035, [](data_set d) { return d.exchange_fields[0].functions[0].pairs[0].length; }},
    {"PJRSEG 1 1 1 1036", 1035,
     [](data_set d) { return double(d.exchange_fields[0].functions[0].pairs[0].segment_one); }},
    {"PIRSEG 1 1 1 1038", 1037,
     [](data_set d) { return double(d.exchange_fields[0].functions[0].pairs[0].segment_two); }},
    {"PNORFUNC 1 1 2 20. 1039.", 1039, [](data_set d) { return d.exchange_fields[0].functions[0].points[1].value; }},
    {"PSCALEQ 1 1040.", 1040, [](data_set d) { return d.flow_fields[0].scale; }},
    {"PCONVQ 1 1041.", 1041, [](data_set d) { return d.flow_fields[0].conversion; }},
    {"PJQ 1 1 2 1042", 1041, [](data_set d) { return double(d.flow_fields[0].functions[0].pairs[1].from_segment); }},
    {"PIQ 1 1 2 1044", 1043, [](data_set d) { return double(d.flow_fields[0].functions[0].pairs[1].to_segment); }},
    {"PBQ 1 1 2 1045.", 1045, [](data_set d) { return d.flow_fields[0].functions[0].pairs[1].fraction; }},
    {"PNOQFUNC 1 1 2 20. 1046.", 1046, [](data_set d) { return d.flow_fields[0].functions[0].points[1].value; }},
    {"PDTFUNC 2 20. 1047.", 1047, [](data_set d) { return d.time_steps.points[1].value; }},
    {"PPRINTFUNC 2 20. 1048.", 1048, [](data_set d) { return d.print_intervals.points[1].value; }},
    {"PBRKTF 1 2 20. 1049.", 1049, [](data_set d) { return d.time_functions[1].points[1].value; }},
    {"PCONSTVALUE 104 1050.", 1050, [](data_set d) { return d.constant_groups[1].constants[0].value; }},
    {"POPENABLED 41 1", 1, [](data_set d) { return double(d.output_controls[0].enabled); }},
    {"PCSVOPENABLED 42 0", 0, [](data_set d) { return double(d.output_controls[1].csv_enabled); }},
    {"PNOQSYSPASS 5 1", 1, [](data_set d) { return double(d.systems[0].noqsysbypass); }},
    {"PNORSYSPASS 1 1", 1, [](data_set d) { return double(d.systems[1].norsysbypass); }},
};

TEST(PutTargets, EachPutChangesItsOwnMember) {
  noting_job job;
  const engine_job_scope serving(job);
  for (const put_target& target : targets) {
    EXPECT_NE(target.read(job.data), target.value) << target.call;
    call(target.call);
    EXPECT_EQ(target.read(job.data), target.value) << target.call;
  }
  for (const put_target& target : targets) EXPECT_EQ(target.read(job.data), target.value) << target.call;
}

TEST(PutTargets, EachArrayIsRegisteredAsItsOwn) {
  noting_job job;
  const engine_job_scope serving(job);
  float arrays[6] = {};
  const char* const names[] = {"PALLTFDATA",   "PALLLOADDATA",     "PALLBCDATA",
                               "PALLFLOWDATA", "PALLEXCHANGEDATA", "PPRINTTIMEFUNC"};
  for (int i = 0; i < 6; ++i) data_callback(names[i], &arrays[i], nullptr, nullptr, nullptr, nullptr);
  EXPECT_EQ(job.arrays(), (registered_arrays{&arrays[0], &arrays[1], &arrays[2], &arrays[3], &arrays[4], &arrays[5]}));
}

TEST(PutTargets, APointWithoutAMomentIsLeftAsItWas) {
  noting_job job;
  const engine_job_scope serving(job);
  const point_list before = job.data.time_steps.points;
  call("PDTFUNC 1 nan 9.");
  EXPECT_EQ(job.data.time_steps.points, before);
}

// Labels without terminators are legal, and so is logging them.
TEST(PutTargets, ATraceReadsNoFurtherThanTheFirstLabel) {
  noting_job job;
  job.traced = true;
  const engine_job_scope serving(job);
  std::vector<char> labels{'D', 'O', ' ', ' ', 'B', 'O', 'D', ' '};
  std::int32_t width = 4, columns = 2, rows = 1;
  data_callback("PGRIDINIT", labels.data(), &width, &columns, &rows, nullptr);
  EXPECT_NE(std::find(job.log.begin(), job.log.end(), "column_labels: DO   (STRING)"), job.log.end());

  const auto shows_none = [&](std::int32_t told_width, std::int32_t told_columns) {
    job.log.clear();
    data_callback("PGRIDINIT", std::vector<char>(1, 'x').data(), &told_width, &told_columns, &rows, nullptr);
    return std::count(job.log.begin(), job.log.end(), "column_labels:  (STRING)") == 2;
  };
  EXPECT_TRUE(shows_none(8, 0)) << "a grid without columns has no labels";
  EXPECT_TRUE(shows_none(4097, 1)) << "a width that is refused";
  EXPECT_TRUE(shows_none(8, 100'001)) << "a number of columns that is refused";
}

} // namespace
} // namespace vesk
