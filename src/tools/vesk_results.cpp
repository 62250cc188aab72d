// vesk-results: what a file of results has, and its agreement with measurements, as tables or JSON.
#include "dataset/text_encoding.h"
#include "platform/file_io.h"
#include "platform/program_start.h"
#include "results/comparison.h"
#include "tools/collected_records.h"
#include "tools/results_options.h"
#include "tools/results_output.h"

#include <algorithm>
#include <cstdio>
#include <new>
#include <unistd.h>

namespace {

using namespace vesk;
namespace fs = std::filesystem;

enum exit_status { success = 0, failed_file = 1, wrong_usage = 2 };

void complain(const std::string& text) {
  std::fprintf(stderr, "%s\n", printable_text(text).c_str());
}

void print(std::string_view text) {
  write_all(STDOUT_FILENO, text, {}, "standard output");
}

std::vector<std::size_t> variables_of(const results_file& results, const results_options& options) {
  std::vector<std::size_t> found;
  for (const std::string& name : options.variables) found.push_back(results.find_variable(name));
  return found;
}

std::string series(const results_file& results, const results_options& options) {
  chosen_values chosen{.variables = variables_of(results, options), .segments = {}, .times = {}};
  for (const std::string& name : options.segments) chosen.segments.push_back(results.find_segment(name));
  const auto& times = results.times();
  const auto begin = options.from ? std::ranges::lower_bound(times, *options.from) : times.begin();
  const auto end = options.to ? std::ranges::upper_bound(times, *options.to) : times.end();
  chosen.times.first = static_cast<std::size_t>(begin - times.begin());
  if (begin < end) chosen.times.count = static_cast<std::size_t>(end - begin);
  return series_text(results, chosen, options.format);
}

std::string profile(const results_file& results, const results_options& options) {
  const auto& times = results.times();
  constexpr double half_a_second = 0.5 / 86400;
  if (*options.time < times.front() - half_a_second || *options.time > times.back() + half_a_second)
    throw results_exception(results.path().string() + ": covers " + text_of_moment(times.front()) + " to " +
                            text_of_moment(times.back()) + ", not " + text_of_moment(*options.time) + ".");
  auto nearest = std::ranges::lower_bound(times, *options.time);
  if (nearest == times.end() || (nearest != times.begin() && *options.time - nearest[-1] <= *nearest - *options.time))
    --nearest;
  return profile_text(results,
                      {.variables = variables_of(results, options),
                       .segments = {},
                       .times = {static_cast<std::size_t>(nearest - times.begin()), 1}},
                      options.format);
}

// Names in the measured file are relative to its folder, those of the command line to the current one.
std::string agreement(const results_file& results, const results_options& options) {
  const fs::path measured_file =
      options.measured_file.empty() ? measured_file_of(options.file) : fs::path(options.measured_file);
  fs::path folder;
  std::vector<measured_series> all;
  if (options.series.query.file_name.empty()) {
    all = read_measured_file(measured_file);
    folder = fs::absolute(measured_file).parent_path();
    if (all.empty()) throw measured_file_exception(measured_file.string() + ": has no series.");
  } else {
    all.push_back(options.series);
  }
  std::vector<estimate_series> others;
  if (!options.estimates.empty()) others = read_estimates(options.estimates, fs::current_path());
  std::vector<comparison> comparisons;
  for (measured_series& it : all) {
    if (options.from) it.from = options.from;
    if (options.to) it.to = options.to;
    comparisons.push_back(compare(results, it, others, folder));
  }
  if (options.keeps_series) {
    std::error_code missing;
    std::vector<measured_series> kept;
    if (fs::exists(measured_file, missing)) kept = read_measured_file(measured_file);
    kept.push_back(options.series);
    kept.back().query.file_name = fs::absolute(options.series.query.file_name)
                                      .lexically_proximate(fs::absolute(measured_file).parent_path())
                                      .string();
    write_measured_file(measured_file, kept);
  }
  return agreement_text(results, comparisons, options.format);
}

int collect(const results_options& options) {
  const collected_records found = collect_records(options.folders);
  print(found.table);
  for (const std::string& fault : found.faults) complain(fault);
  return found.faults.empty() ? success : failed_file;
}

int run(const results_options& options) {
  if (options.command == results_command::collect) return collect(options);
  const results_file results(options.file);
  switch (options.command) {
  case results_command::list: print(listing(results, options.format)); break;
  case results_command::series: print(series(results, options)); break;
  case results_command::profile: print(profile(results, options)); break;
  case results_command::agreement: print(agreement(results, options)); break;
  case results_command::collect: break;
  }
  return success;
}

} // namespace

int main(int count, char** arguments) {
  prepare_process();
  const std::vector<std::string> words(arguments + 1, arguments + count);
  results_options options;
  try {
    if (!words.empty() && (words[0] == "--help" || words[0] == "-h")) return print(results_usage), success;
    if (!words.empty() && words[0] == "--version") return print("vesk-results " VESK_VERSION "\n"), success;
    options = parse_results_options(words);
    return run(options);
  } catch (const results_usage_error& error) {
    complain(std::string("vesk-results: ") + error.what() + " Try vesk-results --help.");
    return wrong_usage;
  } catch (const std::bad_alloc&) {
    complain(memory_failure(options.file));
    return failed_file;
  } catch (const std::exception& error) {
    complain(error.what());
    return failed_file;
  }
}
