#include "host/run_input.h"

#include "core/errors.h"
#include "core/inputs.h"
#include "core/kinetics.h"
#include "core/text.h"
#include "core/timeline.h"
#include "host/hydro_linkage.h"
#include "host/read_period.h"
#include "host/read_points.h"
#include "host/read_series.h"

#include <algorithm>
#include <cmath>

namespace reference_engine {

namespace {

enum FlowOption { net_flows = 1, gross_flows, linked_flows }; // IQOPT

// Options that this engine does not support are refused, never ignored.
void refuse_unsupported(Host& host) {
  switch (host.integer("IQOPT")) {
  case net_flows:
  case gross_flows:
  case linked_flows: break;
  case 4:
    throw InputError("The kinematic wave network is not part of this engine; choose net flows, gross flows or "
                     "hydrodynamic linkage.");
  default: throw InputError("Unknown flow option; choose net flows, gross flows or hydrodynamic linkage.");
  }
  if (host.integer("LOPT") != 0) throw InputError("Non-point-source files are not part of this engine.");
  if (host.integer("BEDOPT") != 0) throw InputError("Dynamic bed volumes are not part of this engine.");
  if (host.integer("VESKTOVESKLINK") != 0)
    throw InputError("Linkage of one model to another is not part of this engine.");
  if (const int option = host.integer("ICRD"); option != 0 && option != 1)
    throw InputError("Unknown restart option; choose whether runs create a restart file.");
}

double read_global(Host& host, const char* keyword, const char* what) {
  return host.finite(keyword, [&] { return text("The ", what); });
}

void read_segments(Host& host, RunInput& input) {
  const bool is_linked = host.integer("IQOPT") == linked_flows; // then the volumes come from the file
  const std::int32_t count = host.count("NUMSEG");
  if (count == 0) throw InputError("The data set has no segments.");
  input.volume_factor = read_global(host, "SCALV", "scale factor of volumes") *
                        read_global(host, "CONVV", "conversion factor of volumes");
  for (std::int32_t i = 1; i <= count; ++i) {
    host.stop_if_cancelled();
    Segment segment{.name = host.string("SEGNAME", i)};
    const auto where = [&] { return numbered(segment, static_cast<std::size_t>(i - 1)); };
    const auto read = [&](const char* keyword, const char* what) {
      return host.finite(
          keyword, [&] { return text("The ", what, " of segment ", where()); }, i);
    };
    segment.volume = read("VOLUME", "volume") * input.volume_factor;
    segment.velocity_multiplier = read("VMULT", "velocity multiplier");
    segment.velocity_exponent = read("VEXP", "velocity exponent");
    segment.depth_multiplier = read("DMULT", "depth multiplier");
    segment.depth_exponent = read("DEXP", "depth exponent");
    segment.length = read("SEGLENGTH", "length");
    segment.width = read("SEGWIDTH", "width");
    segment.minimum_depth = read("SEGMINDEPTH", "minimum depth");
    segment.type = host.integer("SEGTYPE", i);
    segment.bottom = host.integer("BOTSEG", i) - 1;
    if (!(segment.volume > 0) && !is_linked) throw InputError(text("Segment ", where(), " has no volume."));
    input.problem.segments.push_back(std::move(segment));
  }
}

void read_systems(Host& host, Problem& problem) {
  const std::int32_t count = host.count("NUMSYS");
  for (std::int32_t s = 1; s <= count; ++s) {
    const std::string name = host.string("SYSNAME", s);
    const auto read = [&](const char* keyword, const char* what) {
      return host.finite(
          keyword, [&] { return text("The ", what, " of ", name); }, s);
    };
    problem.systems.push_back(
        {.name = name,
         .simulated = host.integer("GSYSPASS", s) == 0,
         .flows = host.integer("NOQSYSPASS", s) == 0,
         .disperses = host.integer("NORSYSPASS", s) == 0,
         .solids_field = host.integer("IFIELD", s),
         .largest_concentration = read("CMAX", "maximum concentration"),
         .boundary_factor =
             read("SCALB", "scale factor of boundaries") * read("CONVB", "conversion factor of boundaries"),
         .load_factor = read("SCALW", "scale factor of loads") * read("CONVW", "conversion factor of loads")});
  }
  // JMAS reads back as a 0-based position; the number of systems means none is chosen.
  const std::int32_t balance = host.integer("JMAS");
  if (balance >= 0 && balance < count) problem.balance_system = balance;
}

void read_concentrations(Host& host, Problem& problem) {
  for (std::size_t s = 0; s < problem.systems.size(); ++s) {
    const System& system = problem.systems[s];
    for (std::size_t i = 0; i < problem.segments.size(); ++i) {
      const auto where = [&] { return text(system.name, " in segment ", numbered(problem.segments[i], i)); };
      const double dissolved = host.real("FDISS", s + 1, i + 1);
      const double initial = host.finite(
          "INITC", [&] { return text("The initial concentration of ", where()); }, s + 1, i + 1);
      if (initial < 0 && !problem.negative_allowed)
        throw InputError(
            text("The initial concentration of ", where(), " is below 0, which the data set does not allow."));
      if (!(dissolved >= 0 && dissolved <= 1))
        throw InputError(text("The dissolved fraction of ", where(), " is ", dissolved, ", not between 0 and 1."));
      problem.initial.push_back(initial);
      problem.dissolved.push_back(dissolved);
    }
    host.stop_if_cancelled();
  }
}

// A value outside its sensible range is used all the same. segment: the value's segment, empty if it has none.
void warn_of_range(Host& host, const ValueInfo& info, double value, const std::string& name,
                   const std::string& segment) {
  if (value < info.minimum || value > info.maximum)
    host.warning(text(name, segment, " is ", value, ", outside the range of the model's catalogue, ", info.minimum,
                      " to ", info.maximum, "."));
}

[[noreturn]] void refuse_unknown(std::int32_t isc, const char* what, std::string_view library) {
  throw InputError(text("The model ", library, " of this engine has no ", what, " with the number ", isc, "."));
}
void check_known(const std::vector<int>& known, std::int32_t isc, const char* what, std::string_view library) {
  if (std::ranges::find(known, isc) == known.end()) refuse_unknown(isc, what, library);
}
const ValueInfo& known_value(const std::vector<ValueInfo>& known, std::int32_t isc, const char* what,
                             std::string_view library) {
  const auto found = std::ranges::find(known, isc, &ValueInfo::isc);
  if (found == known.end()) refuse_unknown(isc, what, library);
  return *found;
}

void read_parameters(Host& host, const ModelInfo& model, Problem& problem) {
  const std::int32_t count = host.count("NOPAM", 1);
  for (std::int32_t p = 1; p <= count; ++p) {
    const std::int32_t isc = host.integer("ISCPARAM", 1, p);
    const ValueInfo& info = known_value(model.parameters, isc, "parameter", model.library);
    const auto name = [&] { return text("The parameter \"", host.string("DESCPARAM", p), "\""); };
    const double scale = host.finite(
        "SCALEPARAM", [&] { return name() + ": the scale factor"; }, p);
    std::vector<double>& values = problem.parameters[isc];
    values.clear();
    std::size_t farthest = 0; // from the middle of the range
    for (std::size_t i = 0; i < problem.segments.size(); ++i) {
      const auto where = [&] { return text(name(), " in segment ", numbered(problem.segments[i], i)); };
      values.push_back(scale * host.finite("CONSTPARAM", where, i + 1, p));
      const auto distance = [&](std::size_t k) { return std::abs(values[k] - (info.minimum + info.maximum) / 2); };
      if (distance(i) > distance(farthest)) farthest = i;
    }
    // Temperature is the sum of parameter and time function, which the run checks.
    if (isc != temperature_isc && !values.empty())
      warn_of_range(host, info, values[farthest], name(),
                    text(" in segment ", numbered(problem.segments[farthest], farthest)));
    host.stop_if_cancelled();
  }
}

void read_constants(Host& host, const ModelInfo& model, Problem& problem) {
  const std::int32_t constants = host.count("NUMCONST");
  for (std::int32_t k = 1; k <= constants; ++k) {
    const std::int32_t isc = host.integer("CONSTISC", k);
    const ValueInfo& info = known_value(model.constants, isc, "constant", model.library);
    const auto name = [&] { return text("The constant \"", host.string("CONSTDESC", k), "\""); };
    problem.constants[isc] = host.finite("CONSTVALUE", name, k);
    warn_of_range(host, info, problem.constants[isc], name(), {});
  }
  const std::int32_t functions = host.count("NUMTF");
  for (std::int32_t k = 1; k <= functions; ++k) {
    const std::int32_t isc = host.integer("TFISC", k);
    check_known(model.time_functions, isc, "time function", model.library);
    problem.time_functions.insert(isc);
  }
}

void read_times(Host& host, RunInput& input) {
  const Period period = read_period(host);
  input.start = period.start;
  input.days = period.days * seconds_per_day < 1 ? period.days : to_second(period.days);
  if (!(input.days > 0)) throw InputError("The end of the simulation is not after its start.");
  input.rules = {.steps = {},
                 .largest = read_global(host, "MAXDT", "maximum time step"),
                 .smallest = read_global(host, "MINDT", "minimum time step"),
                 .fraction = read_global(host, "FRACMAXTS", "fraction of the maximum time step"),
                 .automatic = host.integer("INTYP") != 0};
  const std::int32_t steps = host.count("NUMDT"), prints = host.count("NPRINT");
  for (std::int32_t k = 1; k <= steps; ++k) input.rules.steps.push_back(read_point(host, "DTFUNC", k));
  input.rules.check();
  if (prints == 0) throw InputError("The data set has no print interval.");
  for (std::int32_t k = 1; k <= prints; ++k) {
    const auto [day, interval] = input.print_intervals.emplace_back(read_point(host, "PRINTFUNC", k));
    if (!std::isfinite(day) || !std::isfinite(interval))
      throw InputError(text("Point ", k, " of the print intervals (day ", day, ", value ", interval,
                            ") is not a finite number. Correct or delete it."));
    if (!(interval > 0)) throw InputError(text("The print interval from day ", day, " on is 0 or less."));
    if (!(interval > same_moment))
      throw InputError(text("The print interval from day ", day, " on is too short: ", interval, " days."));
  }
}

std::vector<OutputVariable> read_outputs(Host& host, const ModelInfo& model, bool csv) {
  const auto keyword = [csv](const char* plain, const char* of_csv) { return csv ? of_csv : plain; };
  std::vector<OutputVariable> outputs;
  const std::int32_t count = host.count(keyword("NUMOP", "NUMCSVOP"));
  for (std::int32_t k = 1; k <= count; ++k) {
    OutputVariable output{.isc = host.integer(keyword("OPISC", "CSVOPISC"), k),
                          .name = host.string(keyword("OPSHORTDESC", "CSVOPSHORTDESC"), k),
                          .description = host.string(keyword("OPDESCRIPTION", "CSVOPDESCRIPTION"), k),
                          .units = host.string(keyword("OPUNITS", "CSVOPUNITS"), k),
                          .csv_file = csv ? host.string("CSVOPFILENAME", k) : std::string()};
    check_known(model.outputs, output.isc, "output variable", model.library);
    outputs.push_back(std::move(output));
  }
  return outputs;
}

} // namespace

void read_run_input(Host& host, std::string_view library, RunInput& input) {
  const ModelInfo& model = model_info(library);
  refuse_unsupported(host);
  const std::string file = host.string("FILENAME");
  if (file.empty())
    throw InputError("The data set has no file name, so there is no place for its results. Save it first.");
  input.base = std::filesystem::path(file).replace_extension();
  input.technique = host.integer("SOLUTIONTYPE");
  input.debug = host.integer("DEBUG");
  input.writes_restart = host.integer("ICRD") == 1;
  input.problem.net_flows = host.integer("IQOPT") == net_flows;
  input.problem.negative_allowed = host.integer("NEGSLN") != 0;
  read_times(host, input);
  read_segments(host, input);
  read_systems(host, input.problem);
  read_concentrations(host, input.problem);
  read_parameters(host, model, input.problem);
  read_constants(host, model, input.problem);
  input.outputs = read_outputs(host, model, false);
  input.csv_outputs = read_outputs(host, model, true);
  register_forcing(host, model, input.problem, input.forcing);
  const bool is_linked = host.integer("IQOPT") == linked_flows;
  read_pairs(host, !is_linked, input.forcing, input.problem);
  if (is_linked) input.hydro = link_hydro_file(host, input.days, input.forcing, input.problem);
  read_loads(host, input.problem);
  input.points = read_point_days(host, input.problem, input.forcing, input.days);
}

} // namespace reference_engine
