#include "runs/run_record.h"
#include "runs/sha256.h"
#include "runs/value_path.h"
#include "sample_data_set.h"
#include "temporary_folder.h"

#include <gtest/gtest.h>

namespace vesk {
namespace {

TEST(DataSetHashes, TellWhichRecordsHaveChanged) {
  const prevesk_dataset_data_type before = sample_data_set();
  const auto changes = [&](const auto& edit) {
    prevesk_dataset_data_type data = before;
    edit(data);
    return changes_in_words(hashes_of(before), hashes_of(data));
  };
  EXPECT_EQ(changes([](auto& data) { data.file_version = 0x00070006; }), "");
  EXPECT_EQ(changes([](auto& data) {
              data.systems.edit(0).loads.edit(0).points.edit(1).value = 1;
              data.systems.edit(1).loads.push_back({});
              data.constant_groups.edit(0).constants.edit(1).value = 3;
              data.end_date += 1;
            }),
            "1 constant, 2 loads and end date");
  EXPECT_EQ(changes([](auto& data) { data.segments.insert(0, {}); }), "1 segment");
  EXPECT_EQ(changes([](auto& data) { std::swap(data.segments.edit(0), data.segments.edit(2)); }),
            "the order of segments");
  EXPECT_EQ(changes([](auto& data) { data.systems.edit(0).scalw = 9; }), "1 system");
  EXPECT_EQ(changes([](auto& data) { data.time_steps.query.edit().value_field = "x"; }), "time steps query");
}

TEST(DataSetHashes, ALongListHasOneHash) {
  prevesk_dataset_data_type data = sample_data_set();
  data.segments.resize(10'001);
  const data_set_hashes before = hashes_of(data);
  EXPECT_TRUE(before.lists[2].one_for_all() && before.lists[2].name == "segments");
  data.segments.edit(9'999).volume = 7;
  EXPECT_EQ(changes_in_words(before, hashes_of(data)), "segments");
  EXPECT_NE(before.sha256, hashes_of(data).sha256);
}

TEST(RunRecord, ItsHashesAreReadBack) {
  const temporary_folder folder;
  run_record record = record_of_this_program("test", "1", {"test", "\xff"});
  record.data_set = hashes_of(sample_data_set());
  write_record(folder.path / "a.run.json", to_json(record));
  EXPECT_EQ(read_data_set_hashes(folder.path / "a.run.json"), *record.data_set);
  std::string text = folder.read("a.run.json");
  text.replace(text.find("\"version\": 1"), 12, "\"version\": 2");
  folder.write("b.run.json", text);
  folder.write("c.run.json", "[1");
  EXPECT_THROW(read_data_set_hashes(folder.path / "b.run.json"), value_error);
  EXPECT_THROW(read_data_set_hashes(folder.path / "c.run.json"), value_error);
}

TEST(RunRecord, OutputsAreTheFilesThatTheRunHasChanged) {
  const temporary_folder folder;
  for (const char* name : {"a.nc", "a_old.csv", "a.vki", "ab.nc", "a.run.json"}) folder.write(name, "1");
  const output_snapshot before = outputs_of(folder.path / "a");
  for (const char* name : {"a.nc", "a_new.csv", "a.vki", "ab.nc", "a.run.json"}) folder.write(name, "12");
  std::vector<std::string> names;
  for (const recorded_file& file : new_outputs(folder.path / "a", before)) {
    names.push_back(std::filesystem::path(file.file).filename());
    EXPECT_EQ(file.bytes, 2U);
  }
  EXPECT_EQ(names, (std::vector<std::string>{"a.nc", "a_new.csv"}));
}

TEST(Sha256, IsThatOfTheStandard) {
  const temporary_folder folder;
  folder.write("abc", "abc");
  EXPECT_EQ(sha256_of_file(folder.path / "abc"), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
  EXPECT_EQ(sha256_of_file(folder.path), "");
}

TEST(RunStatus, TellsProgramsWhatToDo) {
  EXPECT_EQ(status_of_return_code(3, true), 3);
  EXPECT_EQ(status_of_return_code(6, true), 74);
  EXPECT_EQ(status_of_return_code(7, true), 75);
  EXPECT_EQ(status_of_return_code(7, false), 7);
  EXPECT_EQ(status_of_return_code(64, false), 63);
  EXPECT_EQ(status_of_return_code(-1, false), 63);
  EXPECT_EQ(name_of(class_of(0, true)), "warnings");
  EXPECT_EQ(name_of(class_of(75, true)), "temporary");
  EXPECT_EQ(name_of(class_of(143, false)), "cancelled");
  EXPECT_EQ(name_of(class_of(124, false)), "permanent");
}

} // namespace
} // namespace vesk
