// What programs read of vesk-run: the record of a run, its place, and the exit status that goes with it.
#include "app/catalogue_source.h"
#include "behaviour_catalogue.h"
#include "console/chosen_results.h"
#include "console/run_report.h"
#include "dataset/vki_file.h"
#include "platform/output_lock.h"
#include "run_program.h"
#include "sample_data_set.h"
#include "temporary_folder.h"
#include "written_results.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cmath>
#include <csignal>
#include <optional>
#include <sys/resource.h>

namespace vesk {
namespace {

using nlohmann::json;

class Report : public testing::Test {
protected:
  Report() {
    write_behaviour_catalogue(folder.path);
    setenv("XDG_CONFIG_HOME", folder.path.c_str(), 1);          // not the settings of who runs the tests
    for (const char* name : {"ASAN_OPTIONS", "TSAN_OPTIONS"}) { // a sanitizer would take the signals
      const char* present = std::getenv(name);
      setenv(name, ((present ? std::string(present) + ":" : "") + "handle_segv=0:handle_abort=0").c_str(), 1);
    }
  }

  std::string make_file(const std::string& behaviour, const std::string& name = "river.vki") {
    prevesk_dataset_data_type data(catalogue_source(folder.path).get());
    data.model_type = model_of(behaviour);
    data.refresh_from_catalogue(false);
    data.resize_segments(2);
    save_data_file(folder.path / name, data);
    return folder.file(name);
  }
  program_result run(std::vector<std::string> arguments, int signal = 0) {
    arguments.insert(arguments.begin(), {"--catalogue", folder.path.string(), "--engine", MISBEHAVING_ENGINE});
    return run_program(VESK_RUN, arguments, signal);
  }
  json record(const std::string& name) { return json::parse(folder.read(name), nullptr, false); }

  temporary_folder folder;
};

TEST_F(Report, EveryEndHasItsStatusAndIsRecorded) {
  const auto output = [&](const std::string& name) { return "--output-dir=" + folder.file(name); };
  folder.write("damaged.vki", "no");
  folder.write("plain", "");
  const struct {
    std::string name;
    std::vector<std::string> arguments;
    int status;
    std::string outcome, by, cause;
    int signal = 0;
  } cases[] = {
      {"good", {make_file("says run", "a.vki"), "-RUN"}, 0, "good", "", ""},
      {"code", {make_file("reports", "b.vki"), "-RUN"}, 4, "permanent", "engine", "a failure"},
      {"throws",
       {make_file("throws", "c.vki"), "-RUN"},
       70,
       "permanent",
       "engine",
       "The engine failed: division by zero in segment 3"},
      {"crashes",
       {make_file("crashes", "d.vki"), "-RUN"},
       70,
       "permanent",
       "engine",
       "The run was ended by signal SEGV (Segmentation fault)."},
      {"exits",
       {make_file("calls exit", "e.vki"), "-RUN"},
       70,
       "permanent",
       "engine",
       "The run ended with status 1 before its work was done."},
      {"missing",
       {folder.file("f.vki"), "-RUN"},
       66,
       "permanent",
       "vesk",
       folder.file("f.vki") + ": Cannot open file."},
      {"damaged",
       {folder.file("damaged.vki"), "-RUN"},
       65,
       "permanent",
       "vesk",
       folder.file("damaged.vki") + ", section 0 (header), byte 0: 4 bytes of version, but only 2 are left."},
      {"path",
       {make_file("says run", "g.vki"), "-RUN", "--set", "segmnt.0.volume=1"},
       64,
       "permanent",
       "vesk",
       "Unknown path segmnt.0.volume; the nearest is segment.0.volume."},
      {"engine",
       {make_file("says run", "h.vki"), "-RUN", "--engine", folder.file("none.so")},
       69,
       "permanent",
       "vesk",
       "Engine library " + folder.file("none.so") + " does not exist."},
      {"asked",
       {make_file("waits for cancel", "i.vki"), "-RUN"},
       143,
       "cancelled",
       "vesk",
       "The run was cancelled.",
       SIGTERM},
      {"keyboard",
       {make_file("waits for cancel", "j.vki"), "-RUN"},
       130,
       "cancelled",
       "vesk",
       "The run was cancelled.",
       SIGINT},
      {"late",
       {make_file("waits for cancel", "k.vki"), "-RUN", "--time-limit", "0.2"},
       124,
       "permanent",
       "vesk",
       "The run was ended after its time limit of 0.2 s."},
  };
  for (const auto& c : cases) {
    std::vector<std::string> arguments = c.arguments;
    arguments.push_back(output(c.name));
    const program_result result = run(arguments, c.signal);
    EXPECT_EQ(result.status, c.status) << c.name << result.err;
    const std::string base = std::filesystem::path(c.arguments[0]).stem();
    const json it = record(c.name + "/" + base + ".run.json");
    ASSERT_TRUE(it.is_object()) << c.name;
    EXPECT_EQ(it["status"], c.status) << c.name;
    EXPECT_EQ(it["class"], c.outcome) << c.name;
    EXPECT_EQ(it["cause"], c.by.empty() ? json() : json({{"by", c.by}, {"text", c.cause}})) << c.name;
    EXPECT_EQ(it["arguments"].size(), arguments.size() + 5) << c.name;
    EXPECT_GT(it["processor_seconds"], 0) << c.name;
    EXPECT_GT(it["peak_memory_bytes"], 1'000'000) << c.name;
  }
  const json crashed = record("crashes/d.run.json");
  EXPECT_EQ(crashed["data_set"]["lists"]["segments"].size(), 2U); // noted before the engine began
}

TEST_F(Report, WhatCannotEvenStartHasItsStatus) {
  const std::string file = make_file("says run");
  folder.write("plain", "");
  EXPECT_EQ(run({file, "-RUN", "--output-dir", folder.file("out"), "--tme"}).status, 64);
  EXPECT_EQ(run({file, "-RUN", "--time-limit=1"}).status, 2);
  const program_result taken = run({file, "-RUN", "--output-dir", folder.file("plain")});
  EXPECT_EQ(taken.status, 73);
  EXPECT_EQ(taken.err, "vesk-run: Cannot create folder " + folder.file("plain") + ": Not a directory.\n");
  const output_lock lock(folder.path / "river");
  EXPECT_EQ(run({file, "-RUN", "--record", folder.file("busy.json")}).status, 75);
  EXPECT_EQ(record("busy.json")["class"], "temporary");
}

TEST_F(Report, TheRecordHoldsTheInput) {
  const std::string file = make_file("says run");
  folder.write("volumes.csv", "day,value\n2001-01-01,1\n2001-01-02,2\n");
  const program_result result = run({file, "-RUN", "--set", "segment.{VESK segment}.volume=5"});
  EXPECT_EQ(result.err,
            "vesk-run: segment.{VESK segment}.volume: 2 items have the name {VESK segment}, such as segment "
            "0 and 1; give the number.\n");
  EXPECT_EQ(result.status, 1);
  EXPECT_FALSE(std::filesystem::exists(folder.path / "river.run.json")); // nothing ran

  EXPECT_EQ(run({file, "-RUN"}).status, 0);
  const json before = record("river.run.json"); // of every run, beside the results
  EXPECT_EQ(before["data_file"]["sha256"].get<std::string>().size(), 64U);
  EXPECT_EQ(before["engine"]["file"], MISBEHAVING_ENGINE);
  EXPECT_EQ(before["values"], json::array());

  const program_result again =
      run({file, "-RUN", "--record", folder.file("b.json"), "--set", "segment.1.volume+=5", "--set=start=1999-01-01",
           "--set=time_steps=" + folder.file("volumes.csv"), "--save", folder.file("copy.vki")});
  EXPECT_EQ(again.err, "");
  const json after = record("b.json");
  EXPECT_EQ(after["values"][0],
            json({{"path", "segment.1.volume"}, {"assignment", "+="}, {"value", "5"}, {"result", 5}}));
  EXPECT_EQ(after["values"][1]["result"], 36161);
  EXPECT_EQ(after["data_file"], before["data_file"]);
  const json& lists = after["data_set"]["lists"];
  EXPECT_NE(lists["segments"][1], before["data_set"]["lists"]["segments"][1]);
  EXPECT_EQ(lists["segments"][0], before["data_set"]["lists"]["segments"][0]);
  EXPECT_NE(lists["seed_date"], before["data_set"]["lists"]["seed_date"]);

  prevesk_dataset_data_type saved(catalogue_source(folder.path).get());
  read_data_file(folder.path / "copy.vki", saved);
  EXPECT_EQ(saved.segments[1].volume, 5);
  EXPECT_EQ(saved.time_steps.points.size(), 2U);
}

TEST_F(Report, RowsRunOneByOneAndAllOfThem) {
  const std::string file = make_file("says run");
  folder.write("rows.csv", "id,segment.0.volume,segment.1.volume*=\nlow,1,2\nbad,x,2\nhigh,3,4\n");
  const std::vector<std::string> common{
      file, "-RUN", "--set-from", folder.file("rows.csv"), "--output-dir", folder.file("out"), "--set=max_dt=0.5"};
  const auto with = [&](std::vector<std::string> more) {
    more.insert(more.begin(), common.begin(), common.end());
    return more;
  };
  const program_result result = run(with({"--rows=0-2"}));
  EXPECT_EQ(result.out, "run\nrun\n");
  EXPECT_EQ(result.status, 64);
  EXPECT_EQ(record("out/bad/river.run.json")["cause"]["text"],
            folder.file("rows.csv") + ", row 1 (bad): segment.0.volume: expected a finite number, found \"x\".");
  const json low = record("out/low/river.run.json"), high = record("out/high/river.run.json");
  EXPECT_EQ(low["row"], 0);
  EXPECT_EQ(high["values"].size(), 3U);
  EXPECT_EQ(high["values"][1]["result"], 3);
  EXPECT_EQ(high["class"], "good");

  EXPECT_EQ(run(with({"--row=2", "--record=one.json"})).status, 0); // the same, alone
  const json one = record("out/high/one.json");
  EXPECT_EQ(one["values"], high["values"]);
  EXPECT_EQ(one["data_set"], high["data_set"]);
  EXPECT_EQ(one["row"], 2);

  const std::string rows = "vesk-run: " + folder.file("rows.csv") + " has 3 rows, 0 to 2; ";
  EXPECT_EQ(run(with({"--row=3"})).err, rows + "--row asks for 3.\n");
  const program_result beyond = run(with({"--rows=0-9"})); // nothing is run
  EXPECT_EQ(beyond.err + beyond.out, rows + "--rows asks for 0-9.\n");
  EXPECT_EQ(beyond.status, 64);
  for (const char* missing : {"out/3", "out/9"}) EXPECT_FALSE(std::filesystem::exists(folder.path / missing));
  EXPECT_EQ(run(with({"--rows=0", "--save", folder.file("x.vki")})).status, 64);
}

TEST_F(Report, ARowThatCrashesLeavesTheOthers) {
  folder.write("rows.csv", "max_dt\n1\n2\n");
  const program_result result = run({make_file("crashes"), "-RUN", "--set-from", folder.file("rows.csv"), "--rows",
                                     "0-1", "--output-dir", folder.file("out")});
  EXPECT_EQ(result.status, 70);
  for (const std::string row : {"0", "1"}) {
    EXPECT_EQ(record("out/" + row + "/river.run.json")["status"], 70) << result.err;
    EXPECT_NE(result.err.find("vesk-run: row " + row + ": The run was ended by signal SEGV"), std::string::npos)
        << result.err;
  }
}

TEST_F(Report, SeriesAreCutOutOfTheResultsOfAnotherEngine) {
  written_results{.values = {1, 0.1, 3, 4, 5, 6, 7, std::nan(""), 9, 10, 11, 12}}.write(folder.file("other.nc"));
  const std::string file = make_file("writes results", "a.vki");
  const auto run_with = [&](const std::string& results) {
    std::filesystem::remove(folder.path / "out/a.nc");
    return run({file, "-RUN", "--output-dir", folder.file("out"), "--results", results});
  };
  setenv("RESULTS_TO_COPY", folder.file("other.nc").c_str(), 1);
  EXPECT_EQ(run_with("{do}@1,DO@0").status, 0);
  EXPECT_EQ(folder.read("out/a.results.csv"), "time,DO@1,DO@0\n2000-01-01T00:00:00,0.10000000149011612,1\n"
                                              "2000-01-02T00:00:00,6,5\n2000-01-03T00:00:00,10,9\n");
  EXPECT_EQ(record("out/a.run.json")["outputs"].size(), 2U);

  const std::pair<const char*, const char*> cases[] = {
      {"DO@2", "Results \"DO@2\": there is no segment 2; the nearest is 1 (Vesk Segment)."},
      {"DO", "Results \"DO\": expected VARIABLE@SEGMENT, such as DO@24 or {name}@{name}."},
      {"DO@-1", "Results \"DO@-1\": expected a segment's number, from 0, or its {name} after the @."}};
  for (const auto& [results, sentence] : cases) {
    const program_result result = run_with(results);
    EXPECT_EQ(result.status, 64) << results;
    EXPECT_EQ(result.err, "vesk-run: " + std::string(sentence) + "\n");
  }
  EXPECT_EQ(run_with("DX@0").status, 65);
  unsetenv("RESULTS_TO_COPY");
  std::filesystem::copy(folder.path / "other.nc", folder.path / "out/a.nc", // of an older run
                        std::filesystem::copy_options::overwrite_existing);
  const program_result stale = run({file, "-RUN", "--output-dir", folder.file("out"), "--results=DO@0"});
  EXPECT_EQ(stale.status, 65);
  EXPECT_NE(stale.err.find("it has not written " + folder.file("out/a.nc") + "."), std::string::npos) << stale.err;
}

TEST_F(Report, SeriesInBracesAreGivenToTheEngineAsTheDataSetWritesThem) {
  prevesk_dataset_data_type data = sample_data_set();
  data.output_controls.edit(0).description = "Sauerstoff, gel\u00f6st";
  EXPECT_EQ(text_of(read_chosen_series("{SAUERSTOFF, GEL\u00d6ST}@0,do@1", data)), "{Sauerstoff, gel\u00f6st}@0,do@1");
}

// As when the child is killed while it writes.
TEST(RunReport, TheLastWholeOneCounts) {
  run_report report;
  EXPECT_EQ(report.get().json, "");
  report.put("a.run.json", "{}", false);
  report.put("b.run.json", "{1}", true);
  rlimit before{};
  getrlimit(RLIMIT_FSIZE, &before);
  const auto handler = std::signal(SIGXFSZ, SIG_IGN);
  const rlimit little{.rlim_cur = 100, .rlim_max = before.rlim_max};
  setrlimit(RLIMIT_FSIZE, &little);
  EXPECT_THROW(report.put("c.run.json", std::string(200, '3'), false), file_exception);
  setrlimit(RLIMIT_FSIZE, &before);
  std::signal(SIGXFSZ, handler);
  EXPECT_EQ(report.get().record_file, "b.run.json");
  EXPECT_EQ(report.get().json, "{1}");
  EXPECT_TRUE(report.get().whole);
}

TEST_F(Report, ListsWhatCanBeSet) {
  const program_result result = run({make_file("says run"), "--list-paths", "--csv"});
  EXPECT_TRUE(result.out.starts_with("name,path,minimum,maximum,start,transform,step\n")) << result.out;
  EXPECT_NE(result.out.find("segment.1.volume"), std::string::npos);
}

} // namespace
} // namespace vesk
