#include "tools/collected_records.h"

#include "platform/file_io.h"
#include "runs/value_path.h"
#include "tools/results_output.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <filesystem>
#include <limits>
#include <map>

namespace vesk {

namespace {

namespace fs = std::filesystem;
using nlohmann::json;

constexpr const char* common_columns[] = {"record",
                                          "row",
                                          "status",
                                          "class",
                                          "cause_by",
                                          "cause",
                                          "return_code",
                                          "warnings",
                                          "host",
                                          "started",
                                          "ended",
                                          "wall_seconds",
                                          "processor_seconds",
                                          "peak_memory_bytes",
                                          "outputs",
                                          "output_bytes"};

struct run_row {
  std::uint64_t row = std::numeric_limits<std::uint64_t>::max(); // of runs without a table: after all others
  std::string file;
  std::vector<std::string> common;
  std::map<std::string, std::string> values; // by column
};

std::string plain(const json& value) {
  if (value.is_null()) return "";
  return value.is_string() ? value.get<std::string>() : value.dump();
}

run_row row_of(const std::string& file, const json& record) {
  run_row result{.file = file, .common = {}, .values = {}};
  const auto of = [&record](const char* name) { return plain(record.value(name, json())); };
  if (record.contains("row")) result.row = record.at("row");
  const json& cause = record.at("cause");
  std::uint64_t bytes = 0;
  for (const json& output : record.at("outputs")) bytes += output.at("bytes").get<std::uint64_t>();
  result.common = {file,
                   of("row"),
                   of("status"),
                   of("class"),
                   cause.is_null() ? "" : plain(cause.at("by")),
                   cause.is_null() ? "" : plain(cause.at("text")),
                   of("return_code"),
                   std::to_string(record.at("warnings").size()),
                   of("host"),
                   of("started"),
                   of("ended"),
                   of("wall_seconds"),
                   of("processor_seconds"),
                   of("peak_memory_bytes"),
                   std::to_string(record.at("outputs").size()),
                   std::to_string(bytes)};
  // A number is given as the run had it; of a series there is only what was done to it.
  for (const json& value : record.at("values")) {
    const std::string path = plain(value.at("path")), assignment = plain(value.at("assignment"));
    if (value.contains("result"))
      result.values[path] = plain(value.at("result"));
    else
      result.values[path + (assignment == "=" ? "" : assignment)] = plain(value.at("value"));
  }
  return result;
}

void read(const std::string& file, std::vector<run_row>& rows, std::vector<std::string>& faults) {
  try {
    const json record = json::parse(read_to_end(open_for_reading(file).get(), file), nullptr, false);
    if (!record.is_object() || record.value("format", json()) != json("vesk run record"))
      faults.push_back(file + ": not a run record.");
    else if (record.value("version", json()) != json(1))
      faults.push_back(file + ": unsupported record version; this program reads version 1.");
    else
      rows.push_back(row_of(file, record));
  } catch (const json::exception&) {
    faults.push_back(file + ": the record is incomplete.");
  } catch (const file_exception& error) {
    faults.emplace_back(error.what());
  }
}

std::vector<std::string> records_below(const std::vector<std::string>& folders) {
  std::vector<std::string> files;
  for (const std::string& folder : folders) {
    std::error_code error;
    if (fs::is_regular_file(folder, error)) {
      files.push_back(folder);
      continue;
    }
    for (fs::recursive_directory_iterator it(folder, error), end; !error && it != end; it.increment(error))
      if (it->path().native().ends_with(".run.json")) files.push_back(it->path().native());
    if (error) throw value_error("Cannot read folder " + folder + ": " + error.message() + ".");
  }
  if (files.empty()) throw value_error("There is no NAME.run.json below " + folders.front() + ".");
  return files;
}

std::string line_of(const std::vector<std::string>& fields) {
  std::string line;
  for (const std::string& field : fields) {
    const bool is_number = !field.empty() && field.find_first_not_of("+-.0123456789e") == field.npos;
    line += (line.empty() ? "" : ",") + (is_number && json::accept(field) ? field : table_field(field));
  }
  return line + "\n";
}

} // namespace

collected_records collect_records(const std::vector<std::string>& folders) {
  collected_records result;
  std::vector<run_row> rows;
  for (const std::string& file : records_below(folders)) read(file, rows, result.faults);
  std::ranges::sort(rows, {}, [](const run_row& it) { return std::pair(it.row, it.file); });
  std::map<std::string, std::size_t> columns;
  for (const run_row& row : rows)
    for (const auto& [column, value] : row.values) columns.emplace(column, 0);
  std::vector<std::string> fields(std::begin(common_columns), std::end(common_columns));
  for (auto& [column, position] : columns) {
    position = fields.size();
    fields.push_back(column);
  }
  result.table = line_of(fields);
  for (const run_row& row : rows) {
    fields.assign(row.common.begin(), row.common.end());
    fields.resize(std::size(common_columns) + columns.size());
    for (const auto& [column, value] : row.values) fields[columns[column]] = value;
    result.table += line_of(fields);
  }
  return result;
}

} // namespace vesk
