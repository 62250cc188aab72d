// An engine in plain C drives the whole vocabulary.
#include "noting_job.h"
#include "vesk_engine.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <set>

namespace vesk {
namespace {

// The keywords that do not read back what was put.
const std::vector<std::string> exceptions = {
    "line 0 JMAS", // counted from 1 when put, from 0 when read
};

// "GET NUMSEG" and so on, for each call in the trace.
std::set<std::string> calls_in(const std::vector<std::string>& log) {
  std::set<std::string> result;
  for (std::size_t i = 0; i + 1 < log.size(); ++i)
    if (log[i].starts_with("Mode: ")) result.insert(log[i].substr(6) + " " + log[i + 1].substr(9));
  return result;
}

TEST(StubEngine, UsesEveryKeywordInBothModesAndReadsBackWhatItPut) {
  void* library = dlopen(STUB_ENGINE, RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(library, nullptr) << dlerror();
  const auto execute = reinterpret_cast<decltype(&execute_model)>(dlsym(library, "execute_model"));
  ASSERT_NE(execute, nullptr);
  noting_job job;
  job.traced = true;
  const prevesk_dataset_data_type before = job.data;
  {
    const engine_job_scope serving(job);
    execute("OXYGEN.DLL", &data_callback);
  }
  dlclose(library);

  const std::set<std::string> calls = calls_in(job.log);
  std::vector<std::string> missing;
  for (const keyword_row& row : keyword_table)
    for (const char* mode : {"GET ", "PUT "})
      if (!calls.contains(mode + std::string(row.keyword))) missing.push_back(mode + std::string(row.keyword));
  EXPECT_EQ(missing, std::vector<std::string>());
  EXPECT_EQ(calls.size(), 314u);

  std::vector<std::string> different;
  for (const std::string& note : job.notes)
    if (note.starts_with("line 0 ") && note != "line 0 1") different.push_back(note);
  EXPECT_EQ(different, exceptions);
  EXPECT_EQ(std::count_if(job.notes.begin(), job.notes.end(), [](auto& n) { return n.starts_with("fail"); }), 0);

  // Bit for bit what it was, but for the float32 that every value went through.
  EXPECT_EQ(job.data.segments, before.segments);
  EXPECT_EQ(job.data.exchange_fields, before.exchange_fields);
  EXPECT_EQ(job.data.time_functions, before.time_functions);
  EXPECT_EQ(job.data.print_intervals, before.print_intervals);
  EXPECT_EQ(job.data.systems[1].loads, before.systems[1].loads);
  EXPECT_EQ(job.data.end_date_time(), before.end_date_time());
  EXPECT_EQ(job.data.max_num_segments, 1u);
}

} // namespace
} // namespace vesk
