#include "runs/run_record.h"

#include "dataset/text_encoding.h"
#include "platform/file_identity.h"
#include "platform/file_io.h"
#include "runs/sha256.h"
#include "runs/value_path.h"

#include <nlohmann/json.hpp>

#include <cerrno>
#include <ctime>
#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace vesk {

namespace {

namespace fs = std::filesystem;
using json = nlohmann::ordered_json;

constexpr const char* format = "vesk run record";
constexpr int format_version = 1;

// JSON is UTF-8, but file names and arguments may contain any bytes.
std::string text(std::string_view bytes) {
  return shown_text(bytes);
}

std::string utc(std::int64_t seconds, std::int64_t nanoseconds) {
  const auto time = static_cast<std::time_t>(seconds);
  std::tm parts{};
  gmtime_r(&time, &parts);
  char text[64];
  const std::size_t size = std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &parts);
  std::snprintf(text + size, sizeof text - size, ".%03dZ", static_cast<int>(nanoseconds / 1'000'000));
  return text;
}

json file_of(const recorded_file& it) {
  json result{{"file", text(it.file)}, {"bytes", it.bytes}};
  if (!it.modified.empty()) result["modified"] = it.modified;
  if (!it.sha256.empty()) result["sha256"] = it.sha256;
  return result;
}

json value_of(const recorded_value& it) {
  json result{{"path", it.path}, {"assignment", it.assignment}, {"value", text(it.value)}};
  if (it.result) result["result"] = *it.result;
  return result;
}

json query_of(const recorded_query& it) {
  return {{"series", text(it.series)}, {"source", file_of(it.source)}, {"rows", it.rows}, {"points", it.points}};
}

json hashes_json(const data_set_hashes& hashes) {
  json lists = json::object();
  for (const list_hashes& list : hashes.lists) {
    if (list.one_for_all())
      lists[list.name] = {{"records", list.records}, {"sha256", list.hashes.front()}};
    else
      lists[list.name] = list.hashes;
  }
  return {{"sha256", hashes.sha256}, {"lists", std::move(lists)}};
}

// Throws a JSON exception unless it is a whole number from 0, since a conversion of others may be undefined.
std::uint64_t whole_number(const json& it) {
  return it.get_ref<const json::number_unsigned_t&>();
}
std::uint64_t whole_number(const json& it, const char* name) {
  return it.contains(name) ? whole_number(it.at(name)) : 0;
}

data_set_hashes read_hashes(const json& data_set) {
  data_set_hashes result{.lists = {}, .sha256 = data_set.at("sha256")};
  for (const auto& [name, list] : data_set.at("lists").items()) {
    if (list.is_array())
      result.lists.push_back({name, list.size(), list.get<std::vector<std::string>>()});
    else
      result.lists.push_back({name, whole_number(list.at("records")), {list.at("sha256").get<std::string>()}});
  }
  return result;
}

recorded_file read_file(const json& it) {
  return {.file = it.at("file"),
          .bytes = whole_number(it, "bytes"),
          .modified = it.value("modified", std::string()),
          .sha256 = it.value("sha256", std::string())};
}

json all(const auto& list, auto convert) {
  json result = json::array();
  for (const auto& it : list) result.push_back(convert(it));
  return result;
}

void put_end(json& record, const run_end& end) {
  record["ended"] = end.ended;
  record["wall_seconds"] = end.wall_seconds;
  record["processor_seconds"] = end.processor_seconds;
  record["peak_memory_bytes"] = end.peak_memory_bytes;
  record["status"] = end.status;
  record["class"] = name_of(end.outcome);
  record["cause"] = end.cause_by.empty() ? json() : json{{"by", end.cause_by}, {"text", text(end.cause)}};
}

// One line per record keeps lists of hashes short.
std::string printed(const json& record) {
  return record.dump(1) + "\n";
}

} // namespace

run_record record_of_this_program(std::string program, std::string version, std::vector<std::string> arguments) {
  char host[256] = "";
  gethostname(host, sizeof host - 1);
  std::error_code ignored;
  run_record record;
  record.program = std::move(program);
  record.version = std::move(version);
  record.arguments = std::move(arguments);
  record.folder = fs::current_path(ignored).native();
  record.host = text(host);
  record.process = getpid();
  return record;
}

recorded_file describe_file(const fs::path& file, bool hashed) {
  std::error_code ignored; // an empty name gives an error
  recorded_file result{.file = fs::absolute(file, ignored).native()};
  if (const auto identity = identity_of(file)) {
    result.bytes = identity->size;
    result.modified = utc(identity->changed_seconds, identity->changed_nanoseconds);
    if (hashed) result.sha256 = sha256_of_file(file);
  }
  return result;
}

std::string utc_now() {
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  return utc(now.tv_sec, now.tv_nsec);
}

process_use use_of_this_process() {
  process_use use;
  for (const int who : {RUSAGE_SELF, RUSAGE_CHILDREN}) {
    rusage used{};
    getrusage(who, &used);
    for (const timeval& time : {used.ru_utime, used.ru_stime})
      use.processor_seconds += static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
    use.peak_memory_bytes = std::max(use.peak_memory_bytes, static_cast<std::uint64_t>(used.ru_maxrss) * 1024);
  }
  return use;
}

std::string to_json(const run_record& record) {
  json result{{"format", format},
              {"version", format_version},
              {"program", {{"name", record.program}, {"version", record.version}}},
              {"arguments", all(record.arguments, text)},
              {"folder", text(record.folder)},
              {"host", record.host},
              {"process", record.process}};
  if (record.row) result["row"] = *record.row;
  result["started"] = record.started;
  put_end(result, record.end);
  if (record.return_code) result["return_code"] = *record.return_code;
  result["warnings"] = all(record.warnings, text);
  result["values"] = all(record.values, value_of);
  result["outputs"] = all(record.outputs, file_of);
  if (record.engine) result["engine"] = file_of(*record.engine);
  if (record.data_file) result["data_file"] = file_of(*record.data_file);
  result["queries"] = all(record.queries, query_of);
  if (record.data_set) result["data_set"] = hashes_json(*record.data_set);
  return printed(result);
}

std::string with_end(std::string_view record, const run_end& end) {
  json result = json::parse(record);
  put_end(result, end);
  return printed(result);
}

past_run read_run_record(const fs::path& file) {
  const auto refuse = [&](const char* cause) { return value_error(file.native() + ": " + cause); };
  const json record = json::parse(read_to_end(open_for_reading(file).get(), file.native()), nullptr, false);
  if (!record.is_object() || record.value("format", json()) != json(format)) throw refuse("not a run record.");
  if (record.value("version", json()) != json(format_version))
    throw refuse("unsupported record version; this program reads version 1.");
  try {
    past_run run;
    run.data_set = read_hashes(record.at("data_set"));
    run.started = record.value("started", std::string());
    for (const json& it : record.value("outputs", json::array())) run.outputs.push_back(read_file(it));
    for (const json& it : record.value("queries", json::array()))
      run.queries.push_back({.series = it.value("series", std::string()),
                             .source = read_file(it.at("source")),
                             .rows = whole_number(it, "rows"),
                             .points = whole_number(it, "points")});
    return run;
  } catch (const nlohmann::json::exception&) {
    throw refuse("the record contains no hashes of a data set.");
  }
}

data_set_hashes read_data_set_hashes(const fs::path& file) {
  return read_run_record(file).data_set;
}

// Not through safe_file: losing a record in a power cut is harmless, and flushing would slow down each of many runs.
void write_record(const fs::path& file, std::string_view json) {
  const std::string& name = file.native();
  const std::string part =
      (file.parent_path() / ("." + file.filename().native() + "-" + std::to_string(getpid()))).native();
  unlink(part.c_str());
  file_descriptor opened(open(part.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666));
  if (!opened.is_open()) throw file_open_exception("write", name, errno);
  try {
    write_all(opened.get(), json, {}, name);
    if (close(opened.release()) != 0 || rename(part.c_str(), name.c_str()) != 0)
      throw file_exception("write", name, errno);
  } catch (const file_exception&) {
    unlink(part.c_str());
    throw;
  }
}

output_snapshot outputs_of(const fs::path& base) {
  const std::string head = base.filename().native();
  output_snapshot found;
  std::error_code error;
  fs::directory_iterator entry(base.has_parent_path() ? base.parent_path() : fs::path("."), error), end;
  for (; !error && entry != end; entry.increment(error)) {
    const std::string name = entry->path().filename().native();
    if (!name.starts_with(head) || name.size() == head.size()) continue;
    const std::string_view rest = std::string_view(name).substr(head.size());
    if ((rest[0] != '.' && rest[0] != '_') || rest.ends_with(".vki") || rest.ends_with(".run.json")) continue;
    if (const auto identity = identity_of(entry->path()))
      found[name] = {identity->size, identity->changed_seconds * 1'000'000'000 + identity->changed_nanoseconds};
  }
  return found;
}

std::vector<recorded_file> new_outputs(const fs::path& base, const output_snapshot& before) {
  std::vector<recorded_file> result;
  for (const auto& [name, state] : outputs_of(base)) {
    const auto old = before.find(name);
    if (old == before.end() || old->second != state) result.push_back(describe_file(base.parent_path() / name, false));
  }
  return result;
}

} // namespace vesk
