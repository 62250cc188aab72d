// The keywords that are served by the job and the front end.
#include "noting_job.h"
#include "shell/handlers/format_values.h"

#include <gmock/gmock.h>

namespace vesk {
namespace {

using testing::ElementsAre;

struct JobKeywords : testing::Test {
  noting_job job;
  engine_job_scope serving{job};
};

TEST_F(JobKeywords, ReachTheJob) {
  for (const char* line : {"PINFO 'Day_1'", "PICONINFO 2 'Unstable'", "PCLEARINFO", "PPROGRESS 40", "PPROGRESS 41",
                           "PSTATUS 'Reading' 3", "PGRIDUPDATE", "PGRIDDATA 1.5 3 4 9", "PDONE", "PRETURNCODE 5"})
    call(line);
  EXPECT_THAT(job.take_notes(),
              ElementsAre("line 0 Day 1", "line 2 Unstable", "clear", "progress 40", "progress 41", "status Reading 3",
                          "grid changed", "grid data 1.5 3 4 1", "grid stop", "return 5"));
  EXPECT_EQ(call("GCANCEL 9"), "0");
  job.cancelled = true;
  EXPECT_EQ(call("GCANCEL 9"), "1");
  EXPECT_EQ(call("GELAPSED 0"), "12");
  EXPECT_EQ(call("GWINHANDLE 0"), "77");
}

TEST_F(JobKeywords, GridLabelsEndWithTheirSlot) {
  char labels[] = "DO  BOD\0NH3 "; // the first and the last fill their four bytes
  std::int32_t width = 4, columns = 3, rows = 12;
  data_callback("PGRIDINIT", labels, &width, &columns, &rows, nullptr);
  EXPECT_THAT(job.take_notes(), ElementsAre("grid 12", "label DO  ", "label BOD", "label NH3 "));
  width = 0, columns = 1;
  data_callback("PGRIDINIT", nullptr, &width, &columns, &rows, nullptr);
  EXPECT_THAT(job.take_notes(), ElementsAre("grid 12", "label "));
  for (std::int32_t* wild : {&width, &columns, &rows}) {
    const std::int32_t sane = std::exchange(*wild, -1);
    data_callback("PGRIDINIT", labels, &width, &columns, &rows, nullptr);
    *wild = sane;
  }
  call("PGRIDDATA 1.5 3 -4 0");
  EXPECT_EQ(job.notes, std::vector<std::string>());
  EXPECT_THAT(job.log, ElementsAre("WARNING: GRIDINIT: label_string_size -1 is outside 0 to 4096",
                                   "WARNING: GRIDINIT: num_columns -1 is outside 0 to 100000",
                                   "WARNING: GRIDINIT: num_rows -1 is outside 0 to 10000000",
                                   "WARNING: GRIDDATA: actual_rows -4 is outside 0 to 10000000"));
}

TEST_F(JobKeywords, FormatTexts) {
  const exchange calls[] = {{"GSPRINTFI '' 'n=%05d' 42", "n=00042 n=%05d 42"},
                            {"GSPRINTFR '' '%8.3f|' 2.5", "   2.500| %8.3f| 2.5"},
                            {"GSPRINTFII '' '%d/%x' 7 255", "7/ff %d/%x 7 255"},
                            {"GSPRINTFRR '' '%g%%_%.1e' 50.5 12.5", "50.5% 1.2e+01 %g%% %.1e 50.5 12.5"},
                            {"GSPRINTFIR '' '%-3ld:%lg' 5 0.25", "5  :0.25 %-3ld:%lg 5 0.25"},
                            {"GSPRINTFRI '' '%G_%c' 0.25 65", "0.25 A %G %c 0.25 65"},
                            {"GSPRINTFI 'old' 'plain' 1", "plain plain 1"}};
  for (const exchange& e : calls) EXPECT_EQ(call(e.call), e.answer);
  EXPECT_EQ(job.log, std::vector<std::string>());
  EXPECT_EQ(call("GSPRINTFI 'old' '%s' 1"), " %s 1");
  EXPECT_THAT(job.log, ElementsAre("WARNING: SPRINTFI: the format \"%s\" does not match its values"));
}

TEST(FormatValues, RefuseWhatWouldReadOrWriteElsewhere) {
  const format_value integer = 1, real = 1.5;
  for (const char* format : {"%s", "%n", "%p", "%f", "%*d", "%.*d", "%1$d", "%d %d", "%", "%5", "%hhd", "%256d",
                             "%.999d", "%99999999999999999999d", "%Lf"})
    EXPECT_EQ(format_values(format, {&integer, 1}), std::nullopt) << format;
  for (const char* format : {"%d", "%c", "%a %a", "%.256f"})
    EXPECT_EQ(format_values(format, {&real, 1}), std::nullopt) << format;
  const format_value huge = -std::numeric_limits<double>::max();
  EXPECT_EQ(format_values("%.255f", {&huge, 1})->size(), 1u + 309 + 1 + 255);
}

} // namespace
} // namespace vesk
