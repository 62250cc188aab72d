#include "noting_job.h"
#include "shell/current_shell.h"
#include "vesk_engine.h"

#include <gmock/gmock.h>
#include <sys/mman.h>

#include <thread>

namespace vesk {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const vesk_data_callback the_contract = &data_callback; // compiles only as long as the engine header agrees

TEST(Callback, OnlyGIsGetAndKeywordsMatchToTheByte) {
  noting_job job;
  const engine_job_scope serving(job);
  EXPECT_EQ(call("GNUMSEG 0"), "4");
  EXPECT_EQ(call("gNUMSEG 0"), "4");
  for (const char* name : {"PSCALV 2.", "pSCALV 3.", "xSCALV 4.", "1SCALV 5."}) call(name);
  EXPECT_EQ(call("GSCALV 0."), "5");
  EXPECT_EQ(job.take_log(), std::vector<std::string>());
  const std::pair<const char*, const char*> unknown[] = {
      {"GNUMSEGS 8", "NUMSEGS"},
      {"Gnumseg 8", "numseg"},
      {"GNUMSE 8", "NUMSE"},
      {"NUMSEG 8", "UMSEG"},
      {"G 8", ""},
      {"GEXCHANGEFUNCDESCX 8", "EXCHANGEFUNCDESCX"}, // 17 bytes, the first 16 of them a keyword
      {"GNOQSYSPASSNOQSYSPASSNOQSYSPASS 8", "NOQSYSPASSNOQSYSPASSNOQSYSPASS"}};
  for (const auto& [name, keyword] : unknown) {
    EXPECT_EQ(call(name), "8");
    EXPECT_THAT(job.take_log(), ElementsAre(std::string("Unrecognized Name: ") + keyword));
  }
  data_callback("", nullptr, nullptr, nullptr, nullptr, nullptr);
  EXPECT_THAT(job.take_log(), ElementsAre("Unrecognized Name: "));
}

// Names of each length that end with the last byte of the memory there is.
TEST(Callback, ReadsNoNameBeyondItsEnd) {
  noting_job job(false);
  const engine_job_scope serving(job);
  char* page = static_cast<char*>(mmap(nullptr, 8192, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
  ASSERT_EQ(mprotect(page + 4096, 4096, PROT_NONE), 0);
  for (std::size_t length = 0; length < 24; ++length) {
    char* at = page + 4095 - length;
    std::memset(at, 'X', length);
    at[length] = '\0';
    data_callback(at, nullptr, nullptr, nullptr, nullptr, nullptr);
  }
  std::int32_t count = 0;
  data_callback(std::strcpy(page + 4088, "GNUMSEG"), &count, nullptr, nullptr, nullptr, nullptr);
  EXPECT_EQ(count, 4);
  char text[256] = "";
  std::int32_t number = 1;
  data_callback(std::strcpy(page + 4096 - 18, "GCSVOPDESCRIPTION"), &number, text, nullptr, nullptr, nullptr);
  EXPECT_STREQ(text, "Oxygen");
  munmap(page, 8192);
}

// An engine's buffer ends with the last byte of the memory there is.
TEST(Callback, AFileNameThatEnginesHaveNoRoomForFailsTheJob) {
  noting_job job(false);
  const engine_job_scope serving(job);
  constexpr std::size_t room = 4096;
  char* pages = static_cast<char*>(mmap(nullptr, 2 * room, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
  ASSERT_EQ(mprotect(pages + room, room, PROT_NONE), 0);
  struct {
    const char* keyword;
    void (*set)(noting_job&, const std::string&);
  } const cases[] = {
      {"HYDROFILE", [](noting_job& j, const std::string& name) { j.data.hydrodynamic_file = name; }},
      {"NPSFILE", [](noting_job& j, const std::string& name) { j.data.nps_file = name; }},
      {"FILENAME", [](noting_job& j, const std::string& name) { j.set_file_name(name); }},
  };
  for (const auto& c : cases) {
    const std::string get = std::string("G") + c.keyword, longest(room - 1, 'x');
    c.set(job, longest);
    data_callback(get.c_str(), pages, nullptr, nullptr, nullptr, nullptr);
    EXPECT_EQ(pages, longest);
    EXPECT_THAT(job.take_notes(), IsEmpty());
    std::strcpy(pages, "as it was");
    c.set(job, std::string(100'000, 'x'));
    data_callback(get.c_str(), pages, nullptr, nullptr, nullptr, nullptr);
    EXPECT_STREQ(pages, "as it was");
    EXPECT_THAT(
        job.take_notes(),
        ElementsAre(std::string("fail GET ") + c.keyword +
                    " failed: the file name is 100000 bytes long, but an engine has room for 4095; shorten it."));
  }
  munmap(pages, 2 * room);
}

TEST(Callback, TracesACallToTheLetter) {
  noting_job job;
  job.traced = true;
  const engine_job_scope serving(job);
  call("GNUMSEG 12");
  EXPECT_THAT(job.take_log(),
              ElementsAre("", "Mode: GET", "Keyword: NUMSEG", "Description: number_of_segments",
                          "Input Parameters: ", "numseg: 12 (INTEGER)", "Output Parameters: ", "numseg: 4 (INTEGER)"));
  call("PCONSTVALUE 102 0.25");
  EXPECT_THAT(job.take_log(), ElementsAre("", "Mode: PUT", "Keyword: CONSTVALUE", "Description: constant_value",
                                          "Input Parameters: ", "constant_index (get)/isc_number (put): 102 (INTEGER)",
                                          "constvalue: 0.25 (REAL)", "get_constant_by_isc(102) SEARCHING...",
                                          "Output Parameters: ", "constant_index (get)/isc_number (put): 102 (INTEGER)",
                                          "constvalue: 0.25 (REAL)"));
  call("GSEGNAME 1 'old'");
  EXPECT_THAT(job.take_log(),
              ElementsAre("", "Mode: GET", "Keyword: SEGNAME", "Description: segment_name",
                          "Input Parameters: ", "segment_number: 1 (INTEGER)", "segment_name: old (STRING)",
                          "Output Parameters: ", "segment_number: 1 (INTEGER)", "segment_name: Vesk Segment (STRING)"));
  call("GDONE");
  EXPECT_THAT(job.take_log(),
              ElementsAre("", "Mode: GET", "Keyword: DONE", "Description: grid_stop",
                          "Input Parameters: ", "WARNING: You can only PUT grid stop.", "Output Parameters: "));
  EXPECT_THAT(job.last_line,
              testing::MatchesRegex("[0-9]+/[0-9]+/[0-9]{4} [0-9]+:[0-9]{2}:[0-9]{2}\\.[0-9]{3}: Output Parameters: "));
  job.traced = false;
  call("GNUMSEG 12");
  EXPECT_THAT(job.log, IsEmpty());
}

const engine_job* job_of_caller() {
  const shell_interface* shell = current_shell();
  return shell ? &shell->job() : nullptr;
}

TEST(Callback, AThreadOfTheEnginesServesTheActiveJobAndNewPointsStartAtItsStart) {
  EXPECT_EQ(job_of_caller(), nullptr);
  EXPECT_EQ(call("GNUMSEG 8"), "8"); // no job: nothing
  noting_job outer, inner;
  inner.data.model_name = "inner";
  const engine_job_scope serving_outer(outer);
  {
    const engine_job_scope serving_inner(inner);
    EXPECT_EQ(job_of_caller(), &inner);
    std::thread([&] {
      EXPECT_EQ(job_of_caller(), &inner);
      call("PNBRKTF 3 1");
      call("PNUMSEG 5");
    }).join();
    EXPECT_EQ(inner.data.time_functions[0].points, (point_list{{{146097, 21600}, 0.0}}));
    EXPECT_EQ(inner.data.segments[4].segment_type, 7u);
  }
  EXPECT_EQ(job_of_caller(), &outer);
}

TEST(Callback, WhatIsThrownEndsInTheJobAndNotInTheEngine) {
  noting_job job(false);
  const engine_job_scope serving(job);
  job.on_message = [] { throw std::runtime_error("no display"); };
  call("PINFO 'hello'");
  EXPECT_THAT(job.take_notes(), ElementsAre("fail PUT INFO failed: no display"));
  job.on_message = [] { throw 7; };
  call("PINFO 'hello'");
  EXPECT_THAT(job.take_notes(), ElementsAre("fail PUT INFO failed with an exception of unknown type"));
}

TEST(Callback, LogsTheTimeOfEachKeywordAtTheEnd) {
  for (const bool with_log : {true, false}) {
    noting_job job(with_log);
    const engine_job_scope serving(job);
    job.on_message = [] { std::this_thread::sleep_for(std::chrono::milliseconds(30)); };
    call("PINFO 'hello'");
    call("GNUMSEG 0");
    std::size_t info = 0, numseg = 0;
    ASSERT_TRUE(job.shell().find_function("INFO", info) && job.shell().find_function("NUMSEG", numseg));
    const std::uint32_t elapsed = job.shell().functions[info].elapsed_ms;
    job.shell().functions[numseg].elapsed_ms = 0; // usually is
    job.shell().log_metrics();
    if (with_log) {
      EXPECT_GE(elapsed, 20u);
      EXPECT_EQ(job.log.size(), 8u);
      EXPECT_EQ(job.log.at(0), "RUNTIME PERFORMANCE METRICS FOLLOW:");
      EXPECT_TRUE(job.last_line.ends_with(": INFO : " + std::to_string(elapsed) + " ms")) << job.last_line;
    } else {
      EXPECT_EQ(elapsed, 0u);
      EXPECT_THAT(job.log, IsEmpty());
    }
  }
}

} // namespace
} // namespace vesk
