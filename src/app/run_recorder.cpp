#include "app/run_recorder.h"

#include <algorithm>
#include <utility>

namespace vesk {

namespace {

namespace fs = std::filesystem;

using known_files = std::map<std::string, recorded_file>;

// One file serves many queries, and many runs.
recorded_file described(const fs::path& file, known_files& known) {
  const recorded_file now = describe_file(file, false);
  recorded_file& then = known[now.file];
  if (then.sha256.empty() || then.bytes != now.bytes || then.modified != now.modified) then = describe_file(file, true);
  return then;
}

run_record with_hashes(run_record record, const run_input& input, known_files known) {
  record.data_set = hashes_of(input.data_set);
  if (!input.data_file.empty()) record.data_file = described(input.data_file, known);
  record.engine = described(input.engine, known);
  for (recorded_query& query : record.queries) query.source = described(query.source.file, known);
  return record;
}

} // namespace

fs::path record_file_of(const fs::path& base) {
  return base.native() + ".run.json";
}

void run_recorder::begin(run_record head, run_input input) {
  record();
  record_ = std::move(head);
  if (record_.started.empty()) record_.started = utc_now();
  record_.queries.insert(record_.queries.end(), input.queries.begin(), input.queries.end());
  std::ranges::stable_sort(record_.queries, {}, &recorded_query::series); // whatever was executed first
  base_ = input.base.empty() ? fs::path() : fs::absolute(input.base);
  before_ = base_.empty() ? output_snapshot() : outputs_of(base_);
  used_before_ = use_of_this_process();
  began_ = std::chrono::steady_clock::now();
  hashing_ = std::async(std::launch::async, [start = record_, its_input = std::move(input), known = known_]() mutable {
    return with_hashes(std::move(start), its_input, std::move(known));
  });
}

void run_recorder::know(const std::vector<fs::path>& files) {
  for (const fs::path& file : files) described(file, known_);
}

run_record& run_recorder::record() {
  try {
    if (hashing_.valid()) record_ = hashing_.get();
  } catch (const std::exception&) { // no memory: rather a record without hashes than none
  }
  return record_;
}

run_record run_recorder::end(const job_outcome& job, bool bundled) {
  run_record result = std::move(record());
  const process_use used = use_of_this_process();
  run_end& end = result.end;
  end.ended = utc_now();
  end.wall_seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - began_).count();
  end.processor_seconds = used.processor_seconds - used_before_.processor_seconds;
  end.peak_memory_bytes = used.peak_memory_bytes;
  if (job.cancelled) {
    end.status = status_interrupted;
    end.cause_by = "vesk";
    end.cause = "The run was cancelled.";
  } else if (job.failed()) {
    end.status = status_of(failure_kind::software);
    end.cause_by = "engine";
    end.cause = job.failure;
  } else if (job.return_code != 0) {
    end.status = status_of_return_code(job.return_code, bundled);
    end.cause_by = "engine";
    end.cause = job.engine_failure.empty() ? "The engine set the return code " + std::to_string(job.return_code) + "."
                                           : job.engine_failure;
  }
  result.return_code = job.return_code;
  result.warnings = job.warnings;
  for (const recorded_query& query : result.queries)
    if (query.points == 0) result.warnings.push_back("The query of " + query.series + " found no values.");
  end.outcome = class_of(end.status, !result.warnings.empty());
  if (!base_.empty()) result.outputs = new_outputs(base_, before_);
  return result;
}

} // namespace vesk
