// The record of a run, NAME.run.json: what went in, what came out, and how it ended. docs/run-record.schema.json
// describes it.
#pragma once

#include "runs/data_set_hashes.h"
#include "runs/run_status.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vesk {

struct recorded_file {
  std::string file = {}; // absolute
  std::uint64_t bytes = 0;
  std::string modified = {}; // ISO 8601, UTC
  std::string sha256 = {};   // of an input, 64 digits; empty: an output, or not a readable file
};

struct recorded_value {
  std::string path = {};             // with numbers only
  std::string assignment = {};       // "=", "*=" or "+="
  std::string value = {};            // as given
  std::optional<double> result = {}; // of a number; of a date as a date-time number
};

// A stored query or a file that filled a series for the run.
struct recorded_query {
  std::string series = {}; // as named in messages
  recorded_file source = {};
  std::uint64_t rows = 0, points = 0;
};

// The end. All times in seconds.
struct run_end {
  std::string ended = {}; // ISO 8601, UTC
  double wall_seconds = 0, processor_seconds = 0;
  std::uint64_t peak_memory_bytes = 0;
  int status = 0;
  run_class outcome = run_class::good;
  std::string cause_by = {}; // "vesk", "engine" or "system"; empty: no cause
  std::string cause = {};    // one sentence
};

struct run_record {
  std::string program, version;
  std::vector<std::string> arguments; // as given, starting with the program's name
  std::string folder;                 // working folder
  std::string host;
  std::int64_t process = 0;
  std::optional<std::int64_t> row; // in a table of values, from 0
  std::string started;             // ISO 8601, UTC
  std::vector<recorded_value> values;
  std::optional<recorded_file> data_file;
  std::optional<data_set_hashes> data_set; // before its queries ran, with the values set
  std::vector<recorded_query> queries;
  std::optional<recorded_file> engine;
  std::optional<int> return_code; // the engine's
  std::vector<std::string> warnings;
  std::vector<recorded_file> outputs;
  run_end end;
};

// Information about the running program: name, version, arguments, folder, host and process.
run_record record_of_this_program(std::string program, std::string version, std::vector<std::string> arguments);

// Current name, size and time of a file; with `hashed` also its SHA-256.
recorded_file describe_file(const std::filesystem::path& file, bool hashed);

// The current time, "2026-11-22T04:30:12.345Z".
std::string utc_now();

// Resources used so far by this process and its ended children.
struct process_use {
  double processor_seconds = 0;
  std::uint64_t peak_memory_bytes = 0;
};
process_use use_of_this_process();

std::string to_json(const run_record& record);

// A record's text with its end replaced. `json`: from to_json.
std::string with_end(std::string_view json, const run_end& end);

// The contents of the record file of a finished run.
struct past_run {
  std::string started = {}; // ISO 8601, UTC
  data_set_hashes data_set = {};
  std::vector<recorded_query> queries = {};
  std::vector<recorded_file> outputs = {};
};

// Throws value_error: not a record, or of another version; file_exception: cannot be read. Any thread.
past_run read_run_record(const std::filesystem::path& record);

// The data set's hashes in a record file. Throws value_error: not a record, or of another version.
data_set_hashes read_data_set_hashes(const std::filesystem::path& record);

// Writes the text completely or not at all; replaces an older file. Throws file_exception.
void write_record(const std::filesystem::path& file, std::string_view json);

// The regular files in the folder of `base` whose names start with its name plus a point or an underscore. Excludes the
// lock, the data file and records.
using output_snapshot = std::map<std::string, std::pair<std::uint64_t, std::int64_t>>; // size, last change in ns
output_snapshot outputs_of(const std::filesystem::path& base);

// The outputs that are new or have changed since `before`.
std::vector<recorded_file> new_outputs(const std::filesystem::path& base, const output_snapshot& before);

} // namespace vesk
