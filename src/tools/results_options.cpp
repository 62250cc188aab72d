#include "tools/results_options.h"

#include "query/sources/text/number_text.h"

#include <algorithm>
#include <string_view>

namespace vesk {

namespace {

using command_set = unsigned;
constexpr command_set in(results_command command) {
  return 1U << static_cast<unsigned>(command);
}
constexpr command_set in_series = in(results_command::series), in_profile = in(results_command::profile),
                      in_agreement = in(results_command::agreement);
constexpr command_set in_all = in(results_command::list) | in_series | in_profile | in_agreement;

struct command_name {
  std::string_view name;
  results_command command;
};
constexpr command_name command_names[] = {{"list", results_command::list},
                                          {"series", results_command::series},
                                          {"profile", results_command::profile},
                                          {"agreement", results_command::agreement},
                                          {"collect", results_command::collect}};

struct option {
  std::string_view name;
  command_set commands;
  bool has_value;
  void (*take)(results_options& options, const std::string& value);
};

[[noreturn]] void refuse(const std::string& name, const std::string& wanted, const std::string& value) {
  throw results_usage_error("option " + name + ": expected " + wanted + ", found \"" + value + "\".");
}

double moment(const char* name, const std::string& value) {
  const auto read = moment_of_text(value);
  if (!read) refuse(name, "a date such as 2011-10-01 or 2011-10-01T06:30:00", value);
  return *read;
}

double number(const char* name, const std::string& value) {
  const auto read = plain_number(value);
  if (!read) refuse(name, "a number", value);
  return *read;
}

void add_condition(results_options& options, const std::string& value) {
  const std::size_t at = value.find('=');
  if (at == value.npos || at == 0) refuse("--where", "FIELD=VALUE", value);
  query_condition& condition = options.series.query.conditions.emplace_back();
  condition.field_name = value.substr(0, at), condition.value_text = value.substr(at + 1);
}

constexpr option known_options[] = {
    {"--format", in_all, true,
     [](results_options& o, const std::string& v) {
       if (v != "csv" && v != "json") refuse("--format", "csv or json", v);
       o.format = v == "csv" ? output_format::csv : output_format::json;
     }},
    {"--variable", in_series | in_profile | in_agreement, true,
     [](results_options& o, const std::string& v) { o.variables.push_back(v); }},
    {"--segment", in_series | in_agreement, true,
     [](results_options& o, const std::string& v) { o.segments.push_back(v); }},
    {"--time", in_profile, true, [](results_options& o, const std::string& v) { o.time = moment("--time", v); }},
    {"--from", in_series | in_agreement, true,
     [](results_options& o, const std::string& v) { o.from = moment("--from", v); }},
    {"--to", in_series | in_agreement, true,
     [](results_options& o, const std::string& v) { o.to = moment("--to", v); }},
    {"--measured", in_agreement, true, [](results_options& o, const std::string& v) { o.measured_file = v; }},
    {"--estimates", in_agreement, true, [](results_options& o, const std::string& v) { o.estimates = v; }},
    {"--table", in_agreement, true, [](results_options& o, const std::string& v) { o.series.query.file_name = v; }},
    {"--sheet", in_agreement, true, [](results_options& o, const std::string& v) { o.series.query.table_name = v; }},
    {"--time-field", in_agreement, true,
     [](results_options& o, const std::string& v) { o.series.query.date_time_field = v; }},
    {"--value-field", in_agreement, true,
     [](results_options& o, const std::string& v) { o.series.query.value_field = v; }},
    {"--where", in_agreement, true, add_condition},
    {"--name", in_agreement, true, [](results_options& o, const std::string& v) { o.series.name = v; }},
    {"--units", in_agreement, true, [](results_options& o, const std::string& v) { o.series.units = v; }},
    {"--factor", in_agreement, true,
     [](results_options& o, const std::string& v) {
       o.series.factor = number("--factor", v);
       if (*o.series.factor == 0) refuse("--factor", "a number other than 0", v);
     }},
    {"--kind", in_agreement, true,
     [](results_options& o, const std::string& v) {
       const auto kind = measured_kind_named(v);
       if (!kind) refuse("--kind", measured_kind_names, v);
       o.series.rules.kind = *kind;
     }},
    {"--pairing", in_agreement, true,
     [](results_options& o, const std::string& v) {
       const auto way = pairing_way_named(v);
       if (!way) refuse("--pairing", pairing_way_names, v);
       o.series.rules.way = *way;
     }},
    {"--gap", in_agreement, true,
     [](results_options& o, const std::string& v) {
       o.series.rules.gap = number("--gap", v);
       if (*o.series.rules.gap < 0) refuse("--gap", "0 or more days", v);
     }},
    {"--keep", in_agreement, false, [](results_options& o, const std::string&) { o.keeps_series = true; }},
};

void check_series(results_options& options) {
  measured_series& series = options.series;
  const bool has_table = !series.query.file_name.empty();
  const bool has_part = options.keeps_series || !options.variables.empty() || !options.segments.empty() ||
                        !series.query.date_time_field.empty() || !series.query.value_field.empty() ||
                        !series.query.conditions.empty();
  if (!has_table && has_part) throw results_usage_error("a measured series requires --table.");
  if (!has_table) return;
  if (options.variables.size() != 1 || options.segments.size() != 1 || series.query.date_time_field.empty() ||
      series.query.value_field.empty())
    throw results_usage_error("--table requires one --variable, one --segment, --time-field and --value-field.");
  series.variable = options.variables[0], series.segment = options.segments[0];
  series.from = options.from, series.to = options.to;
}

void check(results_options& options) {
  const auto require = [](bool given, const char* what) {
    if (!given) throw results_usage_error(std::string(what) + " is missing.");
  };
  if (options.command == results_command::collect) return require(!options.folders.empty(), "a folder of runs");
  require(!options.file.empty(), "the file of results");
  if (options.command == results_command::series || options.command == results_command::profile)
    require(!options.variables.empty(), "option --variable");
  if (options.command == results_command::series) require(!options.segments.empty(), "option --segment");
  if (options.command == results_command::profile) require(options.time.has_value(), "option --time");
  if (options.command == results_command::agreement) check_series(options);
}

} // namespace

const char* const results_usage =
    "usage: vesk-results list FILE        what a file of results has\n"
    "       vesk-results series FILE --variable NAME... --segment NAME... [--from TIME] [--to TIME]\n"
    "                                     values over time\n"
    "       vesk-results profile FILE --variable NAME... --time TIME\n"
    "                                     values of all segments at the nearest time\n"
    "       vesk-results agreement FILE [OPTIONS]\n"
    "                                     scores against measured series\n"
    "       vesk-results collect DIR...    the records of all runs below these folders, a row each\n"
    "       vesk-results --help | --version\n"
    "\n"
    "  --format csv|json   csv unless given\n"
    "  --variable NAME     a variable of the results, by name or long name\n"
    "  --segment NAME      a segment, by name or by number, counted from 1\n"
    "  --time TIME         2011-10-01 or 2011-10-01T06:30:00\n"
    "  --from TIME         first time; for agreement, first measurement\n"
    "  --to TIME           last time\n"
    "\n"
    "Of agreement. Without --table, the series of the measured file are compared.\n"
    "  --measured FILE     the measured file, NAME.measured.json beside NAME.nc unless given\n"
    "  --estimates TABLE   a table of other estimates, a column each, to be scored as well\n"
    "  --table FILE        a table with a measured series: text, dBASE, workbook, database\n"
    "  --sheet NAME        its sheet or table, of several\n"
    "  --time-field NAME   its column of dates and times\n"
    "  --value-field NAME  its column of values\n"
    "  --where FIELD=VALUE only rows with this value\n"
    "  --name TEXT         what the series is called\n"
    "  --units TEXT        of the measured values, to be checked against the variable's\n"
    "  --factor NUMBER     from measured values to the units of the results\n"
    "  --kind KIND         \"point\", \"daily mean\" or \"monthly mean\"\n"
    "  --pairing WAY       \"interpolate\" or \"nearest\"\n"
    "  --gap DAYS          largest distance of results to interpolate between, two print intervals unless given\n"
    "  --keep              add the series to the measured file\n"
    "\n"
    "Exit status: 0 done, 1 a file failed, 2 wrong usage.\n";

results_options parse_results_options(const std::vector<std::string>& words) {
  results_options options;
  const auto command = std::ranges::find(command_names, words.empty() ? "" : words[0], &command_name::name);
  if (command == std::end(command_names))
    throw results_usage_error(words.empty() ? "no command given." : "unknown command \"" + words[0] + "\".");
  options.command = command->command;
  for (std::size_t i = 1; i < words.size(); ++i) {
    const std::string& word = words[i];
    if (!word.starts_with("--")) {
      if (options.command == results_command::collect) {
        options.folders.push_back(word);
        continue;
      }
      if (!options.file.empty())
        throw results_usage_error("expected one file of results, found \"" + word + "\" as well.");
      options.file = word;
      continue;
    }
    const auto found = std::ranges::find(known_options, word, &option::name);
    if (found == std::end(known_options) || (found->commands & in(options.command)) == 0)
      throw results_usage_error("\"" + word + "\" is not an option of " + words[0] + ".");
    if (found->has_value && i + 1 == words.size()) throw results_usage_error("option " + word + " requires a value.");
    found->take(options, found->has_value ? words[++i] : "");
  }
  check(options);
  return options;
}

} // namespace vesk
