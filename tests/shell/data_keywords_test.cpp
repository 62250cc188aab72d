// The keywords that read and write the data set, as an engine calls them.
#include "noting_job.h"

#include <gmock/gmock.h>

namespace vesk {
namespace {

using testing::ElementsAre;

struct DataKeywords : testing::Test {
  noting_job job;
  engine_job_scope serving{job};

  // Makes the calls in order, each "call -> what it leaves in its arguments".
  void expect(std::initializer_list<std::string_view> lines) {
    for (const std::string_view line : lines) {
      const std::size_t arrow = line.find(" -> ");
      EXPECT_EQ(call(std::string(line.substr(0, arrow))), line.substr(arrow + 4)) << line;
    }
  }
  // The warnings of the calls made so far.
  std::vector<std::string> warnings() {
    std::vector<std::string> result;
    for (const std::string& line : job.take_log())
      if (line.starts_with("WARNING: ")) result.push_back(line);
    return result;
  }
};

TEST_F(DataKeywords, ScalarsOfTheDataSet) {
  expect({"GSCALV 0. -> 1",        "PCONVV 2.5 -> 2.5",
          "GCONVV 0. -> 2.5",      "GFRACMAXTS 0. -> 0.9",
          "GMAXDT 0. -> 1",        "GMINDT 0. -> 0.0001",
          "PBEDDT 0.5 -> 0.5",     "GBEDDT 0. -> 0.5",
          "GIQOPT 0 -> 1",         "PICRD -3 -> -3",
          "GICRD 0 -> -3",         "PHYDROTYPE 2 -> 2",
          "PSOLUTIONTYPE 5 -> 5",  "GSOLUTIONTYPE 0 -> 5",
          "PLOPT 17 -> 17",        "GLOPT 0 -> 1",
          "PINTYP 0 -> 0",         "GINTYP 9 -> 0",
          "GNEGSLN 9 -> 0",        "PBEDOPT -1 -> -1",
          "GBEDOPT 0 -> 1",        "GNPSFILE '' -> runoff.nps",
          "PDEBUG 2 -> 2",         "GDEBUG 0 -> 2",
          "GIMPORT 0 -> 1",        "GFILENAME '' -> river.vki",
          "PVESKTOVESKLINK 1 -> 1"});
  EXPECT_EQ(job.data.hydrodynamic_file_type, 2u);
  EXPECT_EQ(job.data.vesk_to_vesk_linkage_option, 1u);
  EXPECT_EQ(job.notes, std::vector<std::string>());
  expect({"PHYDROFILE 'new.hyd' -> new.hyd", "GHYDROFILE '' -> new.hyd", "PFILENAME 'a.inp' -> a.inp",
          "GFILENAME '' -> a.inp"});
  EXPECT_THAT(job.notes, ElementsAre("read hyd file"));
  expect({"PMAXSEG 1 -> 1", "PMAXTRANFUNC 2 -> 2", "PMAXBREAK 3 -> 3", "PMAXBOUND 4 -> 4", "PMAXLOAD 5 -> 5"});
  EXPECT_EQ(job.data.max_num_segments + 10 * job.data.max_num_ef_functions + 100 * job.data.max_num_time_breaks +
                1000 * job.data.max_num_boundaries + 10000 * job.data.max_num_loads,
            54321u);
}

TEST_F(DataKeywords, CountsAndFieldSwitches) {
  expect({"GNUMCONST 0 -> 3", "GNUMTF 0 -> 1", "GNOPAM 99 0 -> 99 2", "GNUMOP 0 -> 1", "GNUMCSVOP 0 -> 2",
          "GNUMSYS 0 -> 2", "GNUMPROJECTFILES 0 -> 2", "GNUMDT 0 -> 2", "GNPRINT 0 -> 2", "GNRFLD 0 -> 1",
          "GNFIELD 0 -> 6", "PNRFLD 2 -> 2", "GNRFLD 0 -> 2", "PNRFLD 0 -> 0", "GNRFLD 9 -> 0", "PNFIELD 2 -> 2",
          "GNFIELD 0 -> 6"});
  EXPECT_TRUE(job.data.flow_fields[1].used);
  EXPECT_FALSE(job.data.flow_fields[2].used);
  expect({"PNRFLD -2147483648 -> -2147483648", "GNRFLD 9 -> 0"});
}

TEST_F(DataKeywords, ACsvNameThatLeadsOutOfTheFolderIsNotStored) {
  expect({"GCSVOPFILENAME 2 '' -> 2 flow.csv"});
  warnings();
  for (const char* name : {"out/../../.bashrc", "a\\b", "..", ".", "a\x1b", "a\x7f", "\xc2\x9b", "a\x01"})
    call("PCSVOPFILENAME 42 '" + std::string(name) + "'");
  const std::string separator = " has a path separator", control = " has a control character",
                    folder = " is a folder's";
  const auto warning = [](const std::string& name, const std::string& cause) {
    return "WARNING: CSVOPFILENAME: the name \"" + name + "\"" + cause;
  };
  EXPECT_THAT(warnings(),
              ElementsAre(warning("out/../../.bashrc", separator), warning("a\\b", separator), warning("..", folder),
                          warning(".", folder), warning("a\x1b", control), warning("a\x7f", control),
                          warning("\xc2\x9b", control), warning("a\x01", control)));
  expect({"GCSVOPFILENAME 2 '' -> 2 flow.csv", "PCSVOPFILENAME 42 '..x' -> 42 ..x", "GCSVOPFILENAME 2 '' -> 2 ..x"});
}

TEST_F(DataKeywords, MassBalanceCountsFromOneWhenPutAndFromZeroWhenRead) {
  expect({"GJMAS 9 -> 1", "PJMAS 1 -> 1", "GJMAS 9 -> 0", "GJMASS 1 9 -> 1 0", "GJMASS 5 9 -> 5 1", "PJMASS 5 0 -> 5 0",
          "GJMAS 9 -> 2", "PJMAS 3 -> 3", "GJMAS 9 -> 2"});
}

TEST_F(DataKeywords, IdentitiesAndTextsByPosition) {
  expect({"GCONSTISC 1 0 -> 1 102",
          "GCONSTDESC 3 '' -> 3 D",
          "GCONSTGROUPDESC 3 '' -> 3 Limits",
          "GTFISC 1 0 -> 1 1",
          "GTFDESC 1 '' -> 1 Wind",
          "GISCPARAM 99 2 0 -> 99 2 13",
          "GDESCPARAM 1 '' -> 1 Depth of light",
          "GSYSNAME 1 '' -> 1 Oxygen",
          "GPROJECTFILE 2 '' -> 2 upper.vki",
          "GOPISC 1 0 -> 1 42",
          "GCSVOPISC 1 0 -> 1 41",
          "GOPUNITS 1 '' -> 1 m3/s",
          "GCSVOPUNITS 1 '' -> 1 mg/L",
          "GOPENABLED 1 0 -> 1 1",
          "GCSVOPFILENAME 2 '' -> 2 flow.csv",
          "PCSVOPFILENAME 41 'do.csv' -> 41 do.csv",
          "GCSVOPFILENAME 1 '' -> 1 do.csv",
          "POPENABLED 41 5 -> 41 5", // now the first of two
          "POPSHORTDESC 41 'O2' -> 41 O2",
          "GOPSHORTDESC 1 '' -> 1 O2",
          "GCSVOPSHORTDESC 1 '' -> 1 O2",
          "POPDESCRIPTION 42 'Out' -> 42 Out",
          "GCSVOPDESCRIPTION 2 '' -> 2 Out",
          "PSEGNAME 2 'Weir_pool' -> 2 Weir pool",
          "GSEGNAME 2 '' -> 2 Weir pool"});
  job.data.constant_groups.edit(1).constants.edit(0).group = -1;
  expect({"GCONSTGROUPDESC 3 'kept' -> 3 kept"});
  call(("PSEGNAME 1 '" + std::string(300, 'x') + "'").c_str());
  EXPECT_EQ(job.data.segments[0].name.size(), 255u);
}

TEST_F(DataKeywords, ValuesByPositionWhenReadAndByIscWhenPut) {
  expect({"GCONSTVALUE 1 9. -> 1 0.125", "PCONSTVALUE 101 0.75 -> 101 0.75", "GCONSTVALUE 1 9. -> 1 0.75",
          "GCONSTVALUE 2 9. -> 2 0.125", "PCONSTVALUE 99 3. -> 99 3", "GNUMCONST 0 -> 4", "PSCALEPARAM 11 3. -> 11 3",
          "GSCALEPARAM 1 9. -> 1 3", "GCONSTPARAM 2 2 9. -> 2 2 1.5", "PCONSTPARAM 2 12 6.5 -> 2 12 6.5",
          "GCONSTPARAM 2 2 9. -> 2 2 6.5", "GCONSTPARAM 3 2 9. -> 3 2 2.5", "GINITC 1 3 9. -> 1 3 10",
          "PINITC 1 3 4.5 -> 1 3 4.5", "GINITC 1 3 9. -> 1 3 4.5", "GFDISS 1 3 9. -> 1 3 0.25",
          "PFDISS 5 4 0.5 -> 5 4 0.5", "GFDISS 5 4 9. -> 5 4 0.5"});
  EXPECT_TRUE(job.data.parameters[0].used);
}

TEST_F(DataKeywords, SegmentsSystemsAndPairs) {
  expect({"GVOLUME 4 0. -> 4 4002",
          "PVMULT 1 0.5 -> 1 0.5",
          "GVMULT 1 0. -> 1 0.5",
          "GVEXP 1 9. -> 1 0",
          "PSEGTYPE 1 3 -> 1 3",
          "GSEGTYPE 2 9 -> 2 7",
          "GBOTSEG 1 9 -> 1 0",
          "PBOTSEG 1 2 -> 1 2",
          "PIFIELD 1 2 -> 1 2",
          "GIFIELD 1 0 -> 1 2",
          "GIFIELD 5 9 -> 5 0",
          "GDENSITY 1 9. -> 1 1",
          "GGSYSPASS 1 9 -> 1 1",
          "PGSYSPASS 1 0 -> 1 0",
          "GGSYSPASS 1 9 -> 1 0",
          "PGSYSPASS 1 7 -> 1 7",
          "PNORSYSPASS 1 4 -> 1 4",
          "GNORSYSPASS 1 9 -> 1 1",
          "GNOQSYSPASS 1 9 -> 1 0",
          "GIWK 1 1 9 -> 1 1 3",
          "PIBC 1 2 1 -> 1 2 1",
          "GXAREA 1 1 1 9. -> 1 1 1 12.5",
          "GJRSEG 1 1 1 9 -> 1 1 1 1",
          "GIRSEG 1 1 1 9 -> 1 1 1 2",
          "GLENGTH 1 1 1 9. -> 1 1 1 300",
          "GJQ 1 1 1 9 -> 1 1 1 0",
          "GIQ 1 1 1 9 -> 1 1 1 1",
          "PBQ 1 1 2 0.75 -> 1 1 2 0.75",
          "GBQ 1 1 2 9. -> 1 1 2 0.75",
          "GSCALER 2 9. -> 2 1",
          "PCONVQ 6 2. -> 6 2",
          "GCONVQ 6 9. -> 6 2",
          "GFLOWFUNCDESC 1 1 '' -> 1 1 Flow Function",
          "PEXCHANGEFUNCDESC 1 1 'Tide' -> 1 1 Tide",
          "PJQ 1 1 2 -2147483648 -> 1 1 2 -2147483648"});
  EXPECT_EQ(job.data.segments[0].bottom_segment, 1);
  EXPECT_EQ(job.data.systems[1].gsysbypass, 2u);
  EXPECT_EQ(job.data.systems[1].boundaries[1].segment, 0);
  EXPECT_EQ(job.data.exchange_fields[0].functions[0].description, "Tide");
  EXPECT_EQ(warnings(), std::vector<std::string>());
}

TEST_F(DataKeywords, ReadingLeavesSharedMemoryShared) {
  const prevesk_dataset_data_type copy = job.data;
  expect({"GVOLUME 1 0. -> 1 1000.5", "GBRKTF 1 1 9. 9. -> 1 1 0 1.5", "GCONSTVALUE 1 9. -> 1 0.125"});
  EXPECT_TRUE(job.data.segments.shares_with(copy.segments));
  EXPECT_TRUE(job.data.time_functions.shares_with(copy.time_functions));
  EXPECT_TRUE(job.data.constant_groups.shares_with(copy.constant_groups));
  expect({"PVOLUME 1 2. -> 1 2"});
  EXPECT_EQ(copy.segments[0].volume, 1000.5);
}

TEST_F(DataKeywords, ResizingAppendsAndErasesAtTheEnd) {
  const point_list kept = job.data.time_steps.points;
  expect({"PNUMDT 2 -> 2"});
  EXPECT_TRUE(job.data.time_steps.points.shares_with(kept));
  expect({"PNUMDT 3 -> 3",
          "GDTFUNC 3 9. 9. -> 3 0 0",
          "PNUMDT 1 -> 1",
          "GDTFUNC 1 9. 9. -> 1 0 1.5",
          "PNPRINT 0 -> 0",
          "GNPRINT 9 -> 0",
          "PNBRKTF 3 2 -> 3 2",
          "GNUMTF 0 -> 1", // 3 stays switched off
          "PNOBC 5 1 -> 5 1",
          "GIBC 5 1 9 -> 5 1 1",
          "GNBFP 5 1 9 -> 5 1 0",
          "PNBFP 5 1 4 -> 5 1 4",
          "PNOWK 1 3 -> 1 3",
          "GNOWK 1 9 -> 1 3",
          "PNBWK 1 3 1 -> 1 3 1",
          "GNBWK 1 3 9 -> 1 3 1",
          "PNTEX 2 2 -> 2 2",
          "GNRFLD 9 -> 2",
          "GEXCHANGEFUNCDESC 2 2 '' -> 2 2 Exchange Function",
          "PNTEX 2 0 -> 2 0",
          "GNRFLD 9 -> 1",
          "PNORS 1 1 2 -> 1 1 2",
          "GJRSEG 1 1 2 9 -> 1 1 2 0",
          "PNOBRKS 1 1 1 -> 1 1 1",
          "PNINQ 4 1 -> 4 1",
          "PNOQS 4 1 1 -> 4 1 1",
          "GBQ 4 1 1 9. -> 4 1 1 1",
          "PNBRKQ 4 1 2 -> 4 1 2",
          "GNOQFUNC 4 1 2 9. 9. -> 4 1 2 0 0"});
  EXPECT_TRUE(job.data.flow_fields[3].used);
  EXPECT_EQ(job.data.exchange_fields[0].functions[0].points.size(), 1u);
  expect({"PNUMSEG 6 -> 6", "GSEGNAME 6 '' -> 6 Vesk Segment", "GBOTSEG 6 9 -> 6 0", "GINITC 1 6 9. -> 1 6 0",
          "GCONSTPARAM 6 1 9. -> 6 1 0", "GCONSTPARAM 4 1 9. -> 4 1 3.5", "PNUMSEG 2 -> 2", "GINITC 1 2 9. -> 1 2 9"});
  EXPECT_EQ(job.data.segments.size(), 2u);
}

TEST_F(DataKeywords, WildSizesAndIndicesAreRefused) {
  const prevesk_dataset_data_type before = job.data;
  expect({"PNUMSEG 2000000000 -> 2000000000", "PNUMDT -1 -> -1", "PNBFP 1 1 10000001 -> 1 1 10000001",
          "GVOLUME 5 7. -> 5 7", "PVOLUME 0 7. -> 0 7", "GSEGNAME -2147483648 'x' -> -2147483648 x",
          "GINITC 1 5 7. -> 1 5 7", "GCONSTPARAM 0 1 7. -> 0 1 7", "GIBC 1 3 7 -> 1 3 7", "GXAREA 1 2 1 7. -> 1 2 1 7",
          "GXAREA 1 1 2 7. -> 1 1 2 7", "PNOQFUNC 1 1 3 7. 7. -> 1 1 3 7 7", "GPROJECTFILE 3 'x' -> 3 x",
          "PBRKTF 1 3 7. 7. -> 1 3 7 7", "PENDJULIAN nan -> nan"});
  EXPECT_THAT(
      warnings(),
      ElementsAre(
          "WARNING: NUMSEG: numseg 2000000000 is outside 0 to 10000000",
          "WARNING: NUMDT: numdt -1 is outside 0 to 10000000", "WARNING: NBFP: nbfp 10000001 is outside 0 to 10000000",
          "WARNING: VOLUME: segment_index 5 is outside 1 to 4", "WARNING: VOLUME: segment_index 0 is outside 1 to 4",
          "WARNING: SEGNAME: segment_number -2147483648 is outside 1 to 4",
          "WARNING: INITC: segment_index 5 is outside 1 to 4", "WARNING: CONSTPARAM: segment_index 0 is outside 1 to 4",
          "WARNING: IBC: boundary_function_index 3 is outside 1 to 2",
          "WARNING: XAREA: function_index 2 is outside 1 to 1",
          "WARNING: XAREA: exchange_pair_index_index 2 is outside 1 to 1",
          "WARNING: NOQFUNC: point_index 3 is outside 1 to 2", "WARNING: PROJECTFILE: index 3 is outside 1 to 2",
          "WARNING: BRKTF: point_index 3 is outside 1 to 2", "WARNING: ENDJULIAN: days is not a number"));
  EXPECT_EQ(job.data, before);
}

// All in days since 1 January 2000, 6:00. The second point is at noon, ten days on.
TEST_F(DataKeywords, PointsOfASeries) {
  expect({"GDTFUNC 2 9. 9. -> 2 10.25 2.5", "PDTFUNC 2 0.75 4. -> 2 0.75 4", "GPRINTFUNC 1 9. 9. -> 1 0 1.5",
          "GBOUNDFUNC 1 1 2 9. 9. -> 1 1 2 10.25 2.5", "PLOADFUNC 1 1 1 -0.25 8. -> 1 1 1 -0.25 8",
          "GLOADFUNC 1 1 1 9. 9. -> 1 1 1 -0.25 8", "GNORFUNC 1 1 1 9. 9. -> 1 1 1 0 1.5",
          "PNOQFUNC 1 1 1 nan 1. -> 1 1 1 nan 1", "PNBRKTF 3 1 -> 3 1",
          "PBRKTF 3 1 2.5 6. -> 3 1 2.5 6", // switches it on, so that it is the first now
          "GBRKTF 1 1 9. 9. -> 1 1 2.5 6", "GTFISC 2 0 -> 2 1"});
  EXPECT_EQ(job.data.time_steps.points[1], (moment_value_pair_type{{146098, 0}, 4.0}));
  EXPECT_EQ(job.data.systems[1].loads[0].points[0], (moment_value_pair_type{{146097, 0}, 8.0}));
}

TEST_F(DataKeywords, AllPointsOfASeriesAtOnce) {
  std::int32_t number = 1, record = 1;
  float days[3] = {9, 9, 9}, values[3] = {9, 9, 9};
  data_callback("GALLBRKTF", &number, days, values, nullptr, nullptr);
  EXPECT_THAT(days, ElementsAre(0.f, 10.25f, 9.f));
  EXPECT_THAT(values, ElementsAre(1.5f, 2.5f, 9.f));
  days[1] = 20.75;
  values[1] = 6;
  data_callback("PALLBOUNDFUNC", &number, &record, days, values, nullptr);
  EXPECT_EQ(job.data.systems[1].boundaries[0].points, (point_list{{{146097, 21600}, 1.5}, {{146118, 0}, 6.0}}));
  data_callback("PALLLOADFUNC", &number, &record, days, values, nullptr);
  EXPECT_EQ(job.data.systems[1].loads[0].points[1].value, 6);
  EXPECT_EQ(job.data.time_functions[1].points[1].value, 2.5);
}

TEST_F(DataKeywords, DatesAndTimes) {
  expect({"GSEEDDATE 0 0 0 -> 1 1 2000", "GSEEDTIME 9 9 9 -> 6 0 0", "GHYDSKIPDATE 0 0 0 -> 1 5 2000",
          "GHYDSKIPTIME 0 0 0 -> 18 0 0", "GHYDSKIPJULIAN 0. -> 4.5", "GENDJULIAN 0. -> 30.25",
          "PENDJULIAN 2.875 -> 2.875", "PHYDSKIPTIME 3 4 5 -> 3 4 5", "PHYDSKIPDATE 2 29 2000 -> 2 29 2000",
          "GHYDSKIPDATE 0 0 0 -> 2 29 2000", "PSEEDDATE 12 31 1999 -> 12 31 1999", "PSEEDTIME 23 59 59 -> 23 59 59",
          "GSEEDTIME 0 0 0 -> 23 59 59"});
  EXPECT_EQ(job.data.end_date, 36529);
  EXPECT_EQ(job.data.end_time, 0.125);
  EXPECT_EQ(job.data.skip_time, 11045.0 / 86400);
  EXPECT_EQ(job.data.seed_date, 36525);
  EXPECT_EQ(moment_type(), moment_type(146096, 86399)); // new points start there from now on

  // Half a second before midnight is midnight of the next date; what is read can be put back.
  job.data.seed_date = 36526;
  job.data.seed_time = 1 - 0.4 / 86400;
  expect({"GSEEDDATE 0 0 0 -> 1 2 2000", "GSEEDTIME 9 9 9 -> 0 0 0", "PSEEDDATE 1 2 2000 -> 1 2 2000",
          "GSEEDDATE 0 0 0 -> 1 2 2000", "GSEEDTIME 9 9 9 -> 0 0 0"});
  job.data.seed_time = 0.25 + 0.4 / 86400; // the fraction of a second goes when the time is put
  expect({"GSEEDTIME 9 9 9 -> 6 0 0", "PSEEDTIME 6 0 0 -> 6 0 0", "PSEEDDATE 13 1 2000 -> 13 1 2000",
          "GSEEDDATE 0 0 0 -> 1 1 2001"});
  EXPECT_EQ(job.data.seed_time, 0.25);
}

TEST_F(DataKeywords, AnotherModelRebuildsTheDataSet) {
  expect({"PMODELTYPE 1 -> 1", "GCONSTVALUE 1 9. -> 1 0.125", "PMODELTYPE 2 -> 2", "GMODELTYPE 0 -> 2",
          "GNUMSYS 0 -> 1", "GSYSNAME 1 '' -> 1 Dye", "GNUMCONST 9 -> 0", "GVOLUME 2 9. -> 2 2001"});
  EXPECT_EQ(job.data.library, "TRACER.DLL");
  EXPECT_EQ(job.data.segments[0].parameters.size(), 0u);
  job.data = prevesk_dataset_data_type(); // without a catalogue
  const prevesk_dataset_data_type before = job.data;
  expect({"PMODELTYPE 5 -> 5"});
  EXPECT_THAT(job.notes, ElementsAre("fail PUT MODELTYPE failed: The data set has no model catalogue."));
  EXPECT_EQ(job.data, before);
}

TEST_F(DataKeywords, FindsTheBoundaries) {
  job.data.systems.edit(1).boundaries.edit(1).segment = 2; // without a reason
  call("PFINDBOUND");
  EXPECT_THAT(job.take_log(), ElementsAre("Starting boundary search...", "Boundary search complete."));
  expect({"GNOBC 1 9 -> 1 2", "GIBC 1 1 9 -> 1 1 4", "GIBC 1 2 9 -> 1 2 1", "GNBFP 1 2 9 -> 1 2 2",
          "GBOUNDFUNC 1 2 2 9. 9. -> 1 2 2 30.25 0", "GNOBC 5 9 -> 5 2"});
}

TEST_F(DataKeywords, StepsSeeWhatWasPutBetweenThem) {
  float functions[3] = {-1, -1, -1}, loads[8] = {}, days = 5.125;
  data_callback("PALLTFDATA", functions, nullptr, nullptr, nullptr, nullptr);
  data_callback("PALLLOADDATA", loads, nullptr, nullptr, nullptr, nullptr);
  data_callback("PDAYS", &days, nullptr, nullptr, nullptr, nullptr);
  EXPECT_THAT(functions, ElementsAre(2.f, -1.f, 0.f)); // half-way between 1.5 and 2.5; 3 is switched off
  EXPECT_EQ(loads[2 * 2 + 1 - 1], 2.f);                // segment 3, system 1
  EXPECT_THAT(job.notes, ElementsAre("time 36531.4"));
  expect({"PIWK 1 1 1 -> 1 1 1", "PNBRKTF 3 1 -> 3 1", "PBRKTF 3 1 0. 7. -> 3 1 0 7"});
  data_callback("PDAYS", &days, nullptr, nullptr, nullptr, nullptr);
  EXPECT_EQ(loads[0], 2.f);
  EXPECT_THAT(functions, ElementsAre(2.f, -1.f, 7.f));
}

} // namespace
} // namespace vesk
