// Makes the record of a run: notes what goes into it, and afterwards what came out.
#pragma once

#include "app/job_outcome.h"
#include "dataset/dataset.h"
#include "runs/run_record.h"

#include <chrono>
#include <filesystem>
#include <future>
#include <string>
#include <vector>

namespace vesk {

// What a run's record says of its input.
struct run_input {
  prevesk_dataset_data_type data_set;   // before its queries ran
  std::filesystem::path data_file = {}; // empty: none
  std::filesystem::path base = {};      // of the results' names; empty: no results
  std::filesystem::path engine = {};
  std::vector<recorded_query> queries = {}; // without the hashes of their sources
};

// Main thread only. Hashes are made on a thread of their own, from `begin` on.
class run_recorder {
public:
  // `head`: what the program knows of itself and of this run.
  void begin(run_record head, run_input input);

  // Hashes files that many runs have in common: before processes are forked for them.
  void know(const std::vector<std::filesystem::path>& files);

  // The record so far; waits for the hashes.
  run_record& record();

  const std::filesystem::path& base() const { return base_; } // of the results' names, absolute; empty: no results

  // The whole record of the run that has ended. `bundled`: of the engine.
  run_record end(const job_outcome& job, bool bundled);

private:
  run_record record_;
  std::map<std::string, recorded_file> known_; // files whose hash is known, as they were then
  std::future<run_record> hashing_;            // of record_, while it lasts
  std::filesystem::path base_;
  output_snapshot before_; // the run
  process_use used_before_;
  std::chrono::steady_clock::time_point began_;
};

// Beside the results: "<base>.run.json".
std::filesystem::path record_file_of(const std::filesystem::path& base);

} // namespace vesk
