// Runs through the library's own functions, against a front end in memory.
#include "fake_host.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netcdf.h>

#include <cmath>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <sys/resource.h>
#include <unistd.h>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::StartsWith;

class RunTest : public testing::Test {
protected:
  // Two mixed segments, washed out by 1 m3/s each day once; results in a folder of this test's own.
  RunTest() {
    std::filesystem::remove_all(folder);
    std::filesystem::create_directories(folder);
    host.load("MODELTYPE 2\nSEEDDATE 2 28 2008\nSEEDTIME 18 0 0\nENDJULIAN 2\nMINDT 0.0001\nFRACMAXTS 0.5\nNPRINT 1\n"
              "PRINTFUNC 1 0 0.5\nNUMSEG 2\nVOLUME 1 86400\nVOLUME 2 86400\nSEGNAME 1 \"upper, reach\"\n"
              "SEGNAME 2 \"lower\"\nINITC 1 1 2\nINITC 1 2 2\nNINQ 1 1\nNOQS 1 1 3\nJQ 1 1 1 0\nIQ 1 1 1 1\n"
              "JQ 1 1 2 1\nIQ 1 1 2 2\nJQ 1 1 3 2\nIQ 1 1 3 0\nNBRKQ 1 1 1\nNOQFUNC 1 1 1 0 1\nSOLUTIONTYPE 2\n"
              "NUMDT 1\nDTFUNC 1 0 0.01\nCSVOPENABLED 11 1\nJMAS 1\nFRACMAXTS 0.9");
    host.load("FILENAME \"" + (folder / "river.vki").string() + "\"");
  }

  std::string after(const std::string& change) {
    host.load(change);
    execute_model("tracer", &FakeHost::callback);
    return host.failures.empty() ? std::string() : host.failures.back();
  }
  void load_restart() { // and back to the data file
    host.load("FILENAME \"" + (folder / "river.rst").string() + "\"");
    load_restart_file(&FakeHost::callback);
    host.load("FILENAME \"" + (folder / "river.vki").string() + "\"");
  }
  std::vector<std::string> files() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
      names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
  }
  std::string content(const std::string& name) const {
    std::ostringstream out;
    out << std::ifstream(folder / name).rdbuf();
    return out.str();
  }

  std::filesystem::path folder =
      std::filesystem::path(testing::TempDir()) /
      (std::string("reference_engine_") + testing::UnitTest::GetInstance()->current_test_info()->name());
  FakeHost host;
};

// Readers decode the names by what the file says of them.
TEST_F(RunTest, NamesSayHowTheyAreEncoded) {
  const std::pair<const char*, const char*> cases[] = {{"M\xc3\xbchle \xe2\x82\xac \xf0\x9f\x8c\x8a", "utf-8"},
                                                       {"M\xfchle", "windows-1252"},
                                                       {"cut \xe2\x82", "windows-1252"},
                                                       {"overlong \xc0\x80", "windows-1252"},
                                                       {"surrogate \xed\xa0\x80", "windows-1252"},
                                                       {"beyond \xf4\x90\x80\x80", "windows-1252"}};
  for (const auto& [name, encoding] : cases) {
    ASSERT_EQ(after("SEGNAME 2 \"" + std::string(name) + "\""), "");
    int id = 0, variable = 0;
    char found[32] = {};
    ASSERT_EQ(nc_open((folder / "river.nc").c_str(), NC_NOWRITE, &id), NC_NOERR);
    nc_inq_varid(id, "segment_name", &variable);
    nc_get_att_text(id, variable, "_Encoding", found);
    nc_close(id);
    EXPECT_STREQ(found, encoding) << name;
  }
}

// The header that docs/results-format.md shows is the one of these results.
TEST_F(RunTest, ResultsAreAsTheirDocumentShowsThem) {
  ASSERT_EQ(after("SEGLENGTH 1 1500"), "");
  const auto header_of = [&](const std::string& command) {
    std::FILE* const pipe = popen(command.c_str(), "r");
    std::string text, line;
    for (int c = std::fgetc(pipe); c != EOF; c = std::fgetc(pipe)) {
      line += static_cast<char>(c);
      if (c != '\n') continue;
      const bool varies = line.starts_with("\t\t:"); // texts of the one run
      text += varies ? line.substr(0, line.find(" =")) + "\n" : line;
      line.clear();
    }
    pclose(pipe);
    return text;
  };
  const std::string shown = header_of("sed -n '/^netcdf river {/,/^}/p' " RESULTS_DOCUMENT);
  EXPECT_THAT(shown, StartsWith("netcdf river {\n"));
  EXPECT_EQ(shown, header_of("ncdump -h '" + (folder / "river.nc").string() + "'"));
}

// A front end lets them pass, and the names of segments, which stand in the results, are a shell's commands.
TEST_F(RunTest, ACsvNameLeadsNowhereElse) {
  std::ofstream(folder / "profile") << "untouched";
  for (const char* name : {"out/../../profile", "../profile", "..", "a\\b", "a\x1b[2J.csv", "\x7f"}) {
    EXPECT_THAT(after("SEGNAME 1 \"$(id)\"\nCSVOPFILENAME 11 \"" + std::string(name) + "\""),
                AllOf(StartsWith("CSV output 11 ("), HasSubstr("the name \"" + std::string(name) + "\" ")));
    EXPECT_EQ(host.return_code, 3);
    EXPECT_THAT(files(), ElementsAre("profile"));
    EXPECT_EQ(content("profile"), "untouched");
  }
  host.failures.clear();
  EXPECT_EQ(after("CSVOPFILENAME 11 \"..flow of day 1.csv\""), "");
  EXPECT_THAT(files(), testing::Contains("river_..flow of day 1.csv"));
}

TEST_F(RunTest, NoNameIsAFormulaInASpreadsheet) {
  for (const char* name : {"=cmd|' /C calc'!A0", "+1", "-1", "@SUM(1)"}) {
    EXPECT_EQ(after("SEGNAME 2 \"" + std::string(name) + "\""), "");
    EXPECT_THAT(content("river_out11.csv"), StartsWith("time,\"upper, reach\",'" + std::string(name) + "\n"));
  }
  EXPECT_EQ(after("SEGNAME 1 \"=A, B\"\nSEGNAME 2 \"=A, B\""), ""); // a name that is quoted and numbered, too
  EXPECT_THAT(content("river_out11.csv"), StartsWith("time,\"'=A, B [1]\",\"'=A, B [2]\"\n"));
}

// Upper: 2 exp(-t); lower: 2 (1 + t) exp(-t). Single precision and Runge-Kutta leave 1e-6.
TEST_F(RunTest, WritesItsResultsAndReports) {
  EXPECT_EQ(after("DEBUG 2\nICRD 1"), "");
  EXPECT_EQ(host.return_code, 0);
  EXPECT_THAT(host.wrong_calls, IsEmpty());
  EXPECT_THAT(files(), ElementsAre("river.nc", "river.rst", "river_out11.csv"));

  int id = 0, variable = 0;
  ASSERT_EQ(nc_open((folder / "river.nc").c_str(), NC_NOWRITE, &id), NC_NOERR);
  double time[5];
  float values[10], fill = 0;
  char text[64] = {}, names[24] = {};
  ASSERT_EQ(nc_inq_varid(id, "time", &variable), NC_NOERR);
  nc_get_var_double(id, variable, time);
  nc_get_att_text(id, variable, "units", text);
  EXPECT_STREQ(text, "days since 2008-02-28 18:00:00");
  EXPECT_THAT(time, ElementsAre(0, 0.5, 1, 1.5, 2));
  ASSERT_EQ(nc_inq_varid(id, "out_11", &variable), NC_NOERR);
  ASSERT_EQ(nc_get_att_float(id, variable, "_FillValue", &fill), NC_NOERR);
  nc_get_var_float(id, variable, values);
  for (int k = 0; k < 5; ++k) {
    EXPECT_NEAR(values[2 * k], 2 * std::exp(-time[k]), 1e-6);
    EXPECT_NEAR(values[2 * k + 1], 2 * (1 + time[k]) * std::exp(-time[k]), 1e-6);
  }
  ASSERT_EQ(nc_inq_varid(id, "segment_name", &variable), NC_NOERR);
  nc_get_var_text(id, variable, names);
  EXPECT_STREQ(names, "upper, reachlower");
  char note[200] = {};
  ASSERT_EQ(nc_get_att_text(id, NC_GLOBAL, "mass_balance_system_1", note), NC_NOERR);
  EXPECT_THAT(note, HasSubstr("outflow 252.06"));
  nc_close(id);

  const std::string csv = content("river_out11.csv");
  EXPECT_THAT(csv, StartsWith("time,\"upper, reach\",lower\n2008-02-28T18:00:00,2,2\n2008-02-29T06:00:00,1.213"));
  EXPECT_THAT(csv, HasSubstr("\n2008-03-01T18:00:00,0.2706"));

  EXPECT_EQ(host.grid_labels, "system 1|system 2|system 3|Volume, m3");
  ASSERT_EQ(host.last_grid.size(), 8u);
  EXPECT_NEAR(host.last_grid[4], 6 * std::exp(-2.0), 1e-6);
  EXPECT_EQ(host.last_grid[7], 86400);
  EXPECT_FALSE(host.grid_lent);
  EXPECT_EQ(host.last_progress, 100);
  EXPECT_THAT(host.infos.back(),
              MatchesRegex("Finished in 200 steps and [^ ]* s; longest step 0.01 days, most often limited by the data "
                           "set's time step .100 % of steps.\\."));
  const std::string mass = "Mass balance of system 1 in kg: inflow 0, outflow 252.06, loads 0, reacted 0, stored "
                           "-252.06, clipped 0, relative error [^ ]*\\.";
  EXPECT_THAT(host.infos[host.infos.size() - 3], MatchesRegex(mass));
  EXPECT_EQ(host.infos[host.infos.size() - 2],
            "Water balance in m3: inflow 1.728e+05, outflow 1.728e+05, stored 0, relative error 0.");
  EXPECT_THAT(host.statuses, testing::Contains(MatchesRegex(mass)));
  EXPECT_THAT(host.statuses, testing::Contains(StartsWith("Mass balance of system 3 in kg: inflow 0, ")));
}

// The lower segment holds 2 (1 + t) exp(-t) g/m3; more digits than single precision has.
TEST_F(RunTest, ChosenSeriesAreOneTable) {
  const auto run = [&](const char* chosen) {
    setenv("VESK_RESULTS", chosen, 1);
    std::string failure = after("FRACMAXTS 0.9");
    unsetenv("VESK_RESULTS");
    return failure;
  };
  EXPECT_EQ(run("out_11@1,{output variable 1}@0,out_11@0"), "");
  EXPECT_THAT(files(), ElementsAre("river.results.csv"));
  const std::string table = content("river.results.csv");
  EXPECT_THAT(table, StartsWith("time,out_11@1,out_1@0,out_11@0\n2008-02-28T18:00:00,2,86400,2\n2008-02-29T06:00:00,"));
  double lower = 0;
  int digits = 0;
  const std::size_t last = table.rfind('\n', table.size() - 2);
  ASSERT_EQ(std::sscanf(table.c_str() + last, "\n2008-03-01T18:00:00,%n%lf", &digits, &lower), 1) << table;
  EXPECT_NEAR(lower, 6 * std::exp(-2.0), 1e-6);
  EXPECT_NE(lower, static_cast<double>(static_cast<float>(lower)));

  const std::pair<const char*, const char*> cases[] = {
      {"out_9@0", "Results \"out_9@0\": the model has no output out_9 that is on; there are out_1, out_11."},
      {"out_1@2", "Results \"out_1@2\": expected a segment from 0 to 1 after the @."},
      {"out_1", "Results \"out_1\": expected VARIABLE@SEGMENT."}};
  for (const auto& [chosen, sentence] : cases) {
    EXPECT_EQ(run(chosen), sentence);
    EXPECT_EQ(host.return_code, 3);
  }
}

TEST_F(RunTest, RestartFileBringsTheStateBack) {
  EXPECT_EQ(after("ICRD 1\nSCALV 2"), "");
  const std::vector<float> end = host.last_grid;
  host.load("INITC 1 1 0\nVOLUME 1 1");
  load_restart();
  EXPECT_EQ(host.return_code, 0) << host.failures.back();
  EXPECT_EQ(static_cast<float>(host.number("INITC 1 1")), end[0]);
  EXPECT_EQ(host.number("VOLUME 1"), 86400); // the data set's own unit, not that of SCALV
}

// A day, then another from the file that the first leaves, against both at once. The lower segment fills.
TEST_F(RunTest, ContinuingIsLikeOneRun) {
  host.load("BQ 1 1 3 0.5\nICRD 1");
  for (const char* technique : {"SOLUTIONTYPE 1", "SOLUTIONTYPE 2", "SOLUTIONTYPE 3\nDTFUNC 1 0 0.1"}) {
    host.load("SEEDDATE 2 28 2008\nINITC 1 1 2\nINITC 1 2 2\nVOLUME 2 86400\nENDJULIAN 2");
    EXPECT_EQ(after(technique), "");
    const std::vector<float> at_once = host.last_grid;
    EXPECT_EQ(after("ENDJULIAN 1"), "");
    EXPECT_THAT(content("river.rst"), StartsWith("# State at 2008-02-29 18:00:00 of 2 segments, 3 systems\nVOLUME 1 "));
    host.load("SEEDDATE 2 29 2008");
    load_restart();
    EXPECT_EQ(after(""), "");
    EXPECT_EQ(host.last_grid[7], 2 * 86400);
    for (std::size_t k = 0; k < at_once.size(); ++k)
      EXPECT_NEAR(host.last_grid[k], at_once[k], 1e-6f * at_once[k]) << technique << k;
  }
  EXPECT_THAT(host.warnings, IsEmpty());
}

TEST_F(RunTest, RestartFileIsOfTheSameModelAndTime) {
  EXPECT_EQ(after("ICRD 1"), "");
  load_restart();
  EXPECT_EQ(host.return_code, 0);
  EXPECT_THAT(host.warnings,
              ElementsAre(HasSubstr("river.rst holds the state of 2008-03-01 18:00:00, but the simulation "
                                    "starts at 2008-02-28 18:00:00. To continue the run")));
  host.load("NUMSEG 3");
  load_restart();
  EXPECT_EQ(host.return_code, 3);
  EXPECT_THAT(host.failures.back(), HasSubstr("holds 2 segments and 3 systems, but the data set has 3 and 3."));
  std::ofstream(folder / "river.rst") << "# State at 2008-02-30 18:00:00 of 2 segments, 3 systems\n";
  load_restart();
  EXPECT_THAT(host.failures.back(),
              HasSubstr("line 1: \"2008-02-30 18:00:00 of 2 segments, 3 systems\" does not give"));
}

TEST_F(RunTest, DamagedRestartFileLoadsNothing) {
  EXPECT_EQ(after("ICRD 1"), "");
  const std::string whole = content("river.rst");
  const auto refusal = [&](const std::string& file) {
    std::ofstream(folder / "river.rst") << file;
    host.load("VOLUME 1 7\nVOLUME 2 7\nINITC 1 1 7");
    load_restart();
    EXPECT_EQ(host.return_code, 3);
    for (const char* key : {"VOLUME 1", "VOLUME 2", "INITC 1 1"}) EXPECT_EQ(host.number(key), 7) << file;
    return host.failures.back().substr((folder / "river.rst").string().size());
  };
  const std::size_t second = whole.find("VOLUME 2");
  EXPECT_EQ(refusal(whole.substr(0, second)),
            ": holds 1 of 2 volumes and 0 of 6 concentrations, so a part of the file is missing. Nothing was loaded.");
  EXPECT_EQ(refusal(whole.substr(0, second) + whole.substr(whole.find("INITC")) + "VOLUME 1 5\n"),
            ": holds 1 of 2 volumes and 6 of 6 concentrations, so a part of the file is missing. Nothing was loaded.");
  EXPECT_EQ(refusal(whole.substr(0, whole.size() - 1)),
            ", line 9: the line does not end, so its last digits may be missing. Nothing was loaded.");
  for (const char* last : {"VOLUME 2 -5", "VOLUME 2 0"})
    EXPECT_THAT(refusal("VOLUME 1 5\n" + std::string(last)),
                HasSubstr("expected a volume above 0, found ")); // no label
  EXPECT_EQ(refusal(whole + "INITC 1 3 5\n"), ", line 10: there is no segment 3: NUMSEG says 2. Nothing was loaded.");
}

// The engine asks before each of the 200 steps.
TEST_F(RunTest, CancelEndsWithinOneStepAndKeepsWhatWasComputedBesideTheResults) {
  EXPECT_EQ(after("JMAS 1"), "");
  std::ofstream(folder / "river.nc") << "good";
  host.cancel_at_poll = host.cancel_polls - 99;
  host.cancel_polls = 0;
  EXPECT_EQ(after(""), "");
  EXPECT_EQ(host.return_code, 5);
  EXPECT_EQ(host.cancel_polls, host.cancel_at_poll);
  EXPECT_EQ(host.last_progress, 50);
  EXPECT_FALSE(host.grid_lent);
  EXPECT_EQ(host.infos.back(), "Cancelled. The results up to then are in river.cancelled.nc.");
  EXPECT_EQ(content("river.nc"), "good");
  EXPECT_THAT(files(), ElementsAre("river.cancelled.nc", "river.nc", "river_out11.csv"));
  int id = 0, dimension = 0;
  std::size_t times = 0;
  char mark[200] = {};
  ASSERT_EQ(nc_open((folder / "river.cancelled.nc").c_str(), NC_NOWRITE, &id), NC_NOERR);
  nc_inq_dimid(id, "time", &dimension);
  nc_inq_dimlen(id, dimension, &times);
  EXPECT_EQ(nc_get_att_text(id, NC_GLOBAL, "cancelled", mark), NC_NOERR);
  nc_close(id);
  EXPECT_EQ(times, 3U);
  EXPECT_THAT(mark, StartsWith("The run was cancelled on day 1 of 2 (2008-02-29 18:00:00); "));

  std::filesystem::remove(folder / "river.cancelled.nc");
  host.cancel_at_poll = 20; // before the first print time
  host.cancel_polls = 0;
  after("");
  EXPECT_EQ(host.infos.back(), "Cancelled; no file was written.");
  EXPECT_THAT(files(), ElementsAre("river.nc", "river_out11.csv"));
}

TEST_F(RunTest, BadInputIsRefusedInOneSentence) {
  const auto refused = [this](const std::string& change, const std::string& undo) {
    const std::string sentence = after(change);
    EXPECT_EQ(host.return_code, 3) << change;
    EXPECT_THAT(files(), IsEmpty());
    host.load(undo);
    host.failures.clear();
    return sentence;
  };
  EXPECT_EQ(refused("IQOPT 4", "IQOPT 1"),
            "The kinematic wave network is not part of this engine; choose net flows, gross flows or hydrodynamic "
            "linkage.");
  EXPECT_EQ(refused("IQOPT 3", "IQOPT 1"), "The data set does not name a hydrodynamic file.");
  EXPECT_EQ(refused("LOPT 1", "LOPT 0"), "Non-point-source files are not part of this engine.");
  EXPECT_EQ(refused("BEDOPT 1", "BEDOPT 0"), "Dynamic bed volumes are not part of this engine.");
  EXPECT_EQ(refused("VESKTOVESKLINK 1", "VESKTOVESKLINK 0"),
            "Linkage of one model to another is not part of this engine.");
  EXPECT_EQ(refused("VOLUME 2 0", "VOLUME 2 1"), "Segment 2 (lower) has no volume.");
  EXPECT_EQ(refused("NUMSEG 0", "NUMSEG 2"), "The data set has no segments.");
  EXPECT_EQ(refused("IQ 1 1 3 7", "IQ 1 1 3 0"), "A flow pair names segment 7, but the model has 2 segments.");
  EXPECT_EQ(refused("DTFUNC 1 0 0", "DTFUNC 1 0 1"), "The time step from day 0 on is 0 or less.");
  EXPECT_EQ(refused("DTFUNC 1 0 nan", "DTFUNC 1 0 1"),
            "A time step (day 0, value nan) is not a finite number. Correct or delete it.");
  EXPECT_EQ(refused("PRINTFUNC 1 0 inf", "PRINTFUNC 1 0 1"),
            "Point 1 of the print intervals (day 0, value inf) is not a finite number. Correct or delete it.");
  EXPECT_EQ(refused("PRINTFUNC 1 0 0", "PRINTFUNC 1 0 1"), "The print interval from day 0 on is 0 or less.");
  EXPECT_EQ(refused("CONSTVALUE 77 1", ""), "The model tracer of this engine has no constant with the number 77.");
  for (const char* end : {"1e30", "inf", "nan", "800000"})
    EXPECT_EQ(refused(std::string("ENDJULIAN ") + end, "ENDJULIAN 2"),
              "The simulation starts at 2008-02-28 18:00:00 and ends " +
                  std::string(end == std::string("1e30") ? "1e+30" : end) +
                  " days later: its end is not a date of the calendar, which reaches from 1600-01-01 to 3999-12-31.");
  execute_model("UNKNOWN.DLL", &FakeHost::callback);
  EXPECT_EQ(host.failures.back(),
            "The model library \"UNKNOWN.DLL\" is not known to this engine, which has oxygen and tracer.");
}

TEST_F(RunTest, NumbersThatAreNotFiniteAreRefusedWithTheirPlace) {
  const auto refused = [this](const std::string& change, const std::string& undo) {
    const std::string sentence = after(change);
    EXPECT_EQ(host.return_code, 3) << change;
    host.load(undo);
    host.failures.clear();
    return sentence;
  };
  EXPECT_EQ(refused("VOLUME 2 inf", "VOLUME 2 9"), "The volume of segment 2 (lower) is inf, not a finite number.");
  EXPECT_EQ(refused("DEXP 1 nan", "DEXP 1 0"), "The depth exponent of segment 1 (upper, reach) is nan, not a finite "
                                               "number.");
  EXPECT_EQ(refused("SCALV -inf", "SCALV 1"), "The scale factor of volumes is -inf, not a finite number.");
  EXPECT_EQ(refused("MINDT nan", "MINDT 0"), "The minimum time step is nan, not a finite number.");
  EXPECT_EQ(refused("CONVW 3 inf", "CONVW 3 1"), "The conversion factor of loads of system 3 is inf, not a finite "
                                                 "number.");
  EXPECT_EQ(refused("INITC 2 1 nan", "INITC 2 1 0"),
            "The initial concentration of system 2 in segment 1 (upper, reach) is nan, not a finite number.");
  EXPECT_EQ(refused("CONSTVALUE 2 inf", "CONSTVALUE 2 1"), "The constant \"constant 2\" is inf, not a finite number.");
  EXPECT_EQ(refused("SCALEPARAM 4 1\nCONSTPARAM 2 4 nan", "CONSTPARAM 2 4 0"),
            "The parameter \"parameter 4\" in segment 2 (lower) is nan, not a finite number.");
}

// A table in degrees Fahrenheit: 50 to 68 over the run, in all segments alike.
TEST_F(RunTest, UnlikelyValuesAreReportedOnce) {
  EXPECT_EQ(after("CONSTVALUE 2 1.5\nSCALEPARAM 4 2\nCONSTPARAM 1 4 30\nCONSTPARAM 2 4 -1\nVMULT 1 1\nSEGMINDEPTH 1 1\n"
                  "SEGMINDEPTH 2 1\nNBRKTF 1 2\nBRKTF 1 1 0 36\nBRKTF 1 2 2 54\nSCALEPARAM 1 1\nMINDT 0"),
            "");
  EXPECT_THAT(
      host.warnings,
      ElementsAre("The parameter \"parameter 4\" in segment 1 (upper, reach) is 60, outside the range of the model's "
                  "catalogue, 0 to 50.",
                  "The constant \"constant 2\" is 1.5, outside the range of the model's catalogue, 1 to 1.2.",
                  MatchesRegex("The water temperature in segment 1 .upper, reach. is 45.* deg C on day 1[.0-9]* "
                               ".2008-02-29 .*, outside -2 to 45. Temperatures are in degrees Celsius; later "
                               "cases are not reported.")));
}

// No limit of stability shortens its steps, so none can fall below the minimum.
TEST_F(RunTest, ImplicitStepsAreTheDataSets) {
  EXPECT_EQ(after("SOLUTIONTYPE 3\nDTFUNC 1 0 0.5\nMINDT 0.4\nFRACMAXTS 0.1"), "");
  EXPECT_NEAR(host.last_grid[4], 6 * std::exp(-2.0), 2e-5);
  EXPECT_THAT(host.infos.back(), testing::AllOf(StartsWith("Finished in 4 steps"), HasSubstr("longest step 0.5 days")));
  EXPECT_EQ(after("SOLUTIONTYPE 4"), "The solution technique 4 is not known to this engine.");
}

// Upper: 200 (1 - exp(-t)) + 2 exp(-t) passes 100 at t = 0.683; lower: another system, from the start.
TEST_F(RunTest, ConcentrationAboveTheMaximumIsReportedOnce) {
  host.load("NOBC 1 1\nIBC 1 1 1\nNBFP 1 1 1\nBOUNDFUNC 1 1 1 0 200\nCMAX 1 100\nCMAX 2 5\nINITC 2 2 8");
  for (const char* technique : {"SOLUTIONTYPE 1", "SOLUTIONTYPE 2", "SOLUTIONTYPE 3"}) {
    host.warnings.clear();
    EXPECT_EQ(after(technique), "");
    EXPECT_EQ(host.return_code, 0);
    EXPECT_GT(host.last_grid[0], 150);
    ASSERT_EQ(host.warnings.size(), 2u) << technique;
    EXPECT_EQ(host.warnings[0], "The concentration of system 2 in segment 2 (lower) is 8 g/m3 on day 0 "
                                "(2008-02-28 18:00:00), above the system's maximum concentration of 5 g/m3. The run "
                                "goes on; later cases of this system are not reported.");
    EXPECT_THAT(host.warnings[1], MatchesRegex("The concentration of system 1 in segment 1 .upper, reach. is "
                                               "100.* g/m3 on day 0.6[89] .2008-02-29 10:.*"));
  }
}

TEST_F(RunTest, FailureInTheRunLeavesNoResults) {
  EXPECT_EQ(after("MINDT 0.95"), "The stable time step in segment 1 (upper, reach) is 0.9 days, below the minimum time "
                                 "step of 0.95 days.");
  EXPECT_EQ(host.return_code, 4);
  EXPECT_THAT(files(), IsEmpty());
  EXPECT_FALSE(host.grid_lent);
}

TEST_F(RunTest, AFileThatCannotBeWrittenHasItsOwnCodes) {
  const std::string result = (folder / "river.nc").string();
  std::filesystem::create_directory(result);
  EXPECT_EQ(after(""), result + ": can't be written: Is a directory.");
  EXPECT_EQ(host.return_code, 6);
  std::filesystem::remove(result);

  rlimit before{};
  getrlimit(RLIMIT_FSIZE, &before);
  const auto handler = std::signal(SIGXFSZ, SIG_IGN);
  const rlimit little{.rlim_cur = 4096, .rlim_max = before.rlim_max};
  setrlimit(RLIMIT_FSIZE, &little);
  const std::string full = after("ICRD 1");
  const int code = host.return_code;
  host.load("FILENAME \"" + (folder / "out.inp").string() + "\"\nNPRINT 300");
  import_export(&FakeHost::callback, 0);
  setrlimit(RLIMIT_FSIZE, &before);
  std::signal(SIGXFSZ, handler);
  EXPECT_EQ(full, result + ": can't be written: File too large.");
  EXPECT_EQ(code, 7);
  EXPECT_EQ(host.failures.back(), (folder / "out.inp").string() + ": can't be written: File too large.");
  EXPECT_EQ(host.return_code, 7);
  EXPECT_THAT(files(), IsEmpty());
}

// A folder from a stranger, or one that others can write to.
TEST_F(RunTest, ResultsAreNeverWrittenThroughALink) {
  const std::string victim = "victim", left_over = "river.part-node7-4711-0123456789abcdef";
  std::ofstream(folder / victim) << "precious";
  std::ofstream(folder / left_over) << "of another process, which may be at work";
  for (const char* result : {"river.nc", "river_out11.csv"}) std::filesystem::create_symlink(victim, folder / result);
  std::vector<std::string> unfinished;
  host.at_days = [&] {
    if (!unfinished.empty()) return;
    for (const std::string& name : files())
      if (name.starts_with("river.part-") && name != left_over) unfinished.push_back(name);
  };
  EXPECT_EQ(after(""), "");
  ASSERT_EQ(unfinished.size(), 2u);
  for (const std::string& name : unfinished)
    EXPECT_THAT(name, MatchesRegex("river.part-[A-Za-z0-9_]+-[0-9]+-[0-9a-f]+"));
  EXPECT_THAT(files(), ElementsAre("river.nc", left_over, "river_out11.csv", victim));
  EXPECT_EQ(content(victim), "precious");
  for (const char* result : {"river.nc", "river_out11.csv"})
    EXPECT_FALSE(std::filesystem::is_symlink(folder / result)) << result;

  host.at_days = [&] { // another program puts a link in the place of each unfinished file
    for (const std::string& name : files()) {
      if (!name.starts_with("river.part-") || name == left_over) continue;
      std::filesystem::remove(folder / name);
      std::filesystem::create_symlink(victim, folder / name);
    }
  };
  EXPECT_THAT(after(""), HasSubstr("river.nc: can't be written: another program has replaced "));
  EXPECT_EQ(content(victim), "precious");
  EXPECT_EQ(content("river.nc").substr(0, 3), "CDF"); // of the run before
}

// Much BOD and little oxygen in groundwater: the first half day's oxidation takes all that is there, and no more comes.
TEST_F(RunTest, ReactionsThatRunShortAreReported) {
  host.load("MODELTYPE 1\nSEEDDATE 2 28 2008\nSEEDTIME 0 0 0\nENDJULIAN 2\nNPRINT 1\nPRINTFUNC 1 0 1\nNUMSEG 1\n"
            "VOLUME 1 1000\nSEGNAME 1 \"well\"\nSEGTYPE 1 2\nSEGMINDEPTH 1 1\nINITC 3 1 200\nINITC 4 1 8\nNUMDT "
            "1\nDTFUNC 1 0 0.5\n"
            "CONSTVALUE 21 0.4\nINTYP 0\nMAXDT 1\nFRACMAXTS 0.9\nCMAX 3 1000\nCMAX 4 1000\nJMAS 4\n"
            "IQOPT 1");
  execute_model("oxygen", &FakeHost::callback);
  EXPECT_THAT(host.failures, IsEmpty());
  EXPECT_THAT(host.infos, testing::Contains("In 1 of 4 steps reactions were limited by a lack of oxygen or of another "
                                            "reactant; first in segment 1 (well) on day 0. Shorter steps "
                                            "follow such reactions more closely."));
  EXPECT_THAT(host.infos, testing::Contains(HasSubstr("reacted -8, stored -8, clipped 0,")));
}

// Steps get shorter as the segment empties; the run must end all the same.
TEST_F(RunTest, SegmentThatEmptiesEndsTheRun) {
  EXPECT_EQ(after("MINDT 0\nJQ 1 1 1 2\nIQ 1 1 1 0"), "Segment 1 (upper, reach) runs dry.");
  EXPECT_EQ(host.return_code, 3);
  host.load("JQ 1 1 1 0\nIQ 1 1 1 1\nDTFUNC 1 0 1e-20");
  EXPECT_THAT(after("ENDJULIAN 2"), HasSubstr("too short to go on"));
}

// 100 kg/day between 6 and 9 o'clock of each of ten days, into 86400 m3 of still water, by points for each hour:
// 125 kg. The same points read as linear: a ramp of an hour more before each morning and one less at its end, the same
// 125 kg. Steps are a day, unless a point comes first.
TEST_F(RunTest, WhatASeriesSaysArrivesWhateverTheStep) {
  std::string points = "NOWK 1 1\nIWK 1 1 1\nNBWK 1 1 241\nINITC 1 1 0\n";
  for (int hour = 0; hour <= 240; ++hour)
    points += "LOADFUNC 1 1 " + std::to_string(hour + 1) + " " + std::to_string(hour / 24.0) +
              (hour % 24 >= 6 && hour % 24 < 9 ? " 100\n" : " 0\n");
  host.load(points + "SCALEQ 1 0\nENDJULIAN 10\nDTFUNC 1 0 1\nPRINTFUNC 1 0 10");
  for (const char* kind : {"", "step LOADFUNC 1 1\n"}) {
    for (const char* technique : {"1", "2", "3"}) {
      host.days.clear();
      EXPECT_EQ(after(kind + std::string("SOLUTIONTYPE ") + technique), "");
      EXPECT_NEAR(host.last_grid[0] * 86400 / 125e3, 1, 1e-6) << kind << technique;
      EXPECT_THAT(host.infos.back(), HasSubstr("Finished in 240 steps"));
      EXPECT_THAT(host.infos[host.infos.size() - 3], HasSubstr("loads 125,"));
      EXPECT_EQ(host.days.size(), 3 + 2 * 240u); // to find the fields in use, and two a point
      EXPECT_TRUE(std::is_sorted(host.days.begin(), host.days.end()));
    }
  }
  EXPECT_EQ(after("MINDT 0.06"), ""); // every second point
  EXPECT_EQ(host.infos[host.infos.size() - 4],
            "120 times of series points lie closer to another event than the minimum time step of 0.06 days, or than "
            "single precision can distinguish, and are merged with that event.");
  EXPECT_THAT(after("LOADFUNC 1 1 7 0.25 nan"), HasSubstr("Point 7 of the load of system 1 in segment 1 (upper, reach) "
                                                          "(day 0.25, value nan) is not a finite number."));
  EXPECT_THAT(after("NBWK 1 1 1\nNOQFUNC 1 1 1 0 1e99"),
              HasSubstr("Point 1 of the flow function  (1 of field 1) (day 0, value inf) is not a finite number."));
}

// Hourly results of a year, by an interval that single precision can't hold, and then every 90 minutes from a quarter
// past an hour on: each within half a second of its time, none twice.
TEST_F(RunTest, ResultsComeAtTheirTimes) {
  EXPECT_EQ(after("ENDJULIAN 365\nDTFUNC 1 0 1\nSCALEQ 1 0.001\nNPRINT 2\nPRINTFUNC 1 0 0.041666667\n"
                  "PRINTFUNC 2 364.0104167 0.0625\nCSVOPENABLED 11 0"),
            "");
  int id = 0, variable = 0;
  std::size_t records = 0;
  ASSERT_EQ(nc_open((folder / "river.nc").c_str(), NC_NOWRITE, &id), NC_NOERR);
  nc_inq_dimlen(id, 0, &records);
  std::vector<double> time(records);
  nc_inq_varid(id, "time", &variable);
  nc_get_var_double(id, variable, time.data());
  nc_close(id);
  std::vector<double> expected;
  for (int hour = 0; hour <= 364 * 24; ++hour) expected.push_back(hour / 24.0);
  for (int k = 0; k < 16; ++k) expected.push_back(364 + (15 + 90 * k) / 1440.0);
  expected.push_back(365);
  ASSERT_EQ(time.size(), expected.size());
  for (std::size_t k = 0; k < time.size(); ++k) ASSERT_NEAR(time[k] * 86400, expected[k] * 86400, k <= 8736 ? 0.01 : 1);
}

// Still water: dV/dt = 0 and dM/dt = load. Boundaries, loads, volumes and flows with their factors, by hand.
TEST_F(RunTest, FactorsAreApplied) {
  EXPECT_EQ(after("SCALW 1 2\nCONVW 1 5\nNOWK 1 1\nIWK 1 1 2\nNBWK 1 1 1\nLOADFUNC 1 1 1 0 8.64\nSCALEQ 1 0"), "");
  EXPECT_NEAR(host.last_grid[4], 2 + 2.0 * 8.64e3 * 10 / 86400, 1e-5); // 2 days of 86.4 kg/day in 86400 m3
  EXPECT_EQ(after("NOWK 1 0\nSCALEQ 1 4\nCONVQ 1 0.5\nNOBC 1 1\nIBC 1 1 1\nNBFP 1 1 1\nBOUNDFUNC 1 1 1 0 3\n"
                  "SCALB 1 2\nCONVB 1 0.25\nCONVV 4"),
            "");
  const double x = 2 * 2.0 / 4; // twice the flow, four times the volume, 2 days
  EXPECT_NEAR(host.last_grid[0], 1.5 + 0.5 * std::exp(-x), 1e-5);
}

// All would end with 0 and wrong values, if nobody was told.
TEST_F(RunTest, WhatMakesResultsWrongIsRefusedOrWarnedOf) {
  EXPECT_EQ(after("INTYP 1\nFRACMAXTS 5"), "The fraction of the maximum time step is 5, which is above 1.");
  EXPECT_EQ(host.return_code, 3);
  host.failures.clear();
  EXPECT_EQ(after("INTYP 0"), ""); // has no effect
  EXPECT_EQ(after("INTYP 1\nFRACMAXTS 1"), "");
  EXPECT_THAT(host.warnings, IsEmpty());

  EXPECT_EQ(after("NBRKQ 1 1 2\nNOQFUNC 1 1 1 5 2\nNOQFUNC 1 1 2 1 3"), "");
  EXPECT_THAT(host.warnings, ElementsAre("The points of the flow function  (1 of field 1) are not in time order: "
                                         "point 2 (day 1) is before the one above it. Values between them may be "
                                         "wrong; sort them."));
  host.warnings.clear();

  // A system that no balance is reported of. Nothing but the load moves it: -8.64 kg/day, 2 days.
  EXPECT_EQ(after("NBRKQ 1 1 1\nNOQFUNC 1 1 1 0 1\nNOWK 2 1\nIWK 2 1 2\nNBWK 2 1 1\nLOADFUNC 2 1 1 0 -8.64"), "");
  EXPECT_THAT(host.warnings, ElementsAre("The concentration of system 2 would have fallen below 0 and was held at 0, "
                                         "which added 17.28 kg in all. Look for loads, boundaries and net "
                                         "photosynthesis below 0, or allow negative solutions."));
  host.warnings.clear();
  EXPECT_EQ(after("NEGSLN 1"), "");
  EXPECT_THAT(host.warnings, IsEmpty());
}

TEST_F(RunTest, FactorsThatAreNotFiniteAreRefusedWithTheirPlace) {
  const struct {
    const char *change, *back, *subject;
  } cases[] = {
      {"SCALEQ 1 nan", "SCALEQ 1 1", "The scale factor of flow field 1 is nan"},
      {"CONVQ 1 inf", "CONVQ 1 1", "The conversion factor of flow field 1 is inf"},
      {"BQ 1 1 2 nan", "BQ 1 1 2 1", "The fraction of pair 2 of flow function 1 in field 1 is nan"},
      {"NTEX 1 1\nNORS 1 1 1\nJRSEG 1 1 1 1\nIRSEG 1 1 1 2\nNOBRKS 1 1 1\nNORFUNC 1 1 1 0 1\nLENGTH 1 1 1 5\n"
       "XAREA 1 1 1 inf",
       "XAREA 1 1 1 1", "The area of pair 1 of exchange function 1 in field 1 is inf"},
      {"LENGTH 1 1 1 inf", "LENGTH 1 1 1 5", "The mixing length of pair 1 of exchange function 1 in field 1 is inf"},
      {"CONVR 1 nan", "CONVR 1 1", "The conversion factor of exchange field 1 is nan"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(after(c.change), std::string(c.subject) + ", not a finite number.");
    EXPECT_EQ(host.return_code, 3);
    host.load(c.back);
  }
  host.failures.clear();
  EXPECT_EQ(after(""), "");
}

// A field that is not in use carries nothing, though its functions and pairs are still there.
TEST_F(RunTest, FieldNotInUseIsLeftOut) {
  EXPECT_EQ(after("unused NINQ 1"), "");
  EXPECT_EQ(host.last_grid[0], 2);
}

TEST(Limits, AreGivenAndThePeriodIsChecked) {
  FakeHost host;
  get_maximum_parameters("oxygen", &FakeHost::callback);
  EXPECT_EQ(host.return_code, 0);
  host.load("ENDJULIAN inf");
  get_maximum_parameters("oxygen", &FakeHost::callback);
  EXPECT_EQ(host.return_code, 3);
  EXPECT_THAT(host.failures, ElementsAre(HasSubstr("its end is not a date of the calendar")));
  EXPECT_EQ(host.limits.size(), 5u);
  for (const auto& [keyword, limit] : host.limits) EXPECT_GE(limit, 1000000) << keyword;
}

} // namespace
