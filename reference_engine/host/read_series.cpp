#include "host/read_series.h"

#include "core/errors.h"
#include "core/text.h"

#include <algorithm>
#include <set>

namespace reference_engine {

namespace {

std::size_t element(std::int32_t function, std::int32_t field) {
  return static_cast<std::size_t>(function - 1) * fields_per_function + static_cast<std::size_t>(field - 1);
}

// No keyword says which fields are in use. The front end writes only the elements of fields in use, and writes the same
// value whatever was there before. A single marker value could equal it, so two different ones are tried.
class FieldsInUse {
public:
  FieldsInUse(Host& host, Forcing& forcing) : flows_(forcing.flows.size()), exchanges_(forcing.exchanges.size()) {
    for (const float before : {1.0f, 0.0f}) {
      std::ranges::fill(forcing.flows, before);
      std::ranges::fill(forcing.exchanges, before);
      set_days(host, 0);
      note(forcing.flows, before, flows_);
      note(forcing.exchanges, before, exchanges_);
    }
  }

  bool flows(std::int32_t field, std::int32_t functions) const { return any(flows_, field, functions); }
  bool exchanges(std::int32_t field, std::int32_t functions) const { return any(exchanges_, field, functions); }

private:
  static void note(const std::vector<float>& values, float before, std::vector<bool>& written) {
    for (std::size_t k = 0; k < values.size(); ++k) written[k] = written[k] || !(values[k] == before);
  }
  static bool any(const std::vector<bool>& written, std::int32_t field, std::int32_t functions) {
    for (std::int32_t function = 1; function <= functions; ++function)
      if (written[element(function, field)]) return true;
    return false;
  }

  std::vector<bool> flows_, exchanges_;
};

std::vector<float> make_functions(Host& host, std::string_view keyword, std::int32_t fields) {
  std::int32_t most = 1; // an array is registered even if no function writes to it
  for (std::int32_t field = 1; field <= fields; ++field) most = std::max(most, host.count(keyword, field));
  return std::vector<float>(static_cast<std::size_t>(most) * fields_per_function);
}

double read_factor(Host& host, const char* keyword, const char* what, std::int32_t field) {
  return host.finite(
      keyword, [&] { return text("The ", what, " ", field); }, field);
}

void read_flow_field(Host& host, std::int32_t field, std::int32_t functions, Problem& problem) {
  const double factor = read_factor(host, "SCALEQ", "scale factor of flow field", field) *
                        read_factor(host, "CONVQ", "conversion factor of flow field", field);
  for (std::int32_t function = 1; function <= functions; ++function) {
    host.stop_if_cancelled();
    const std::int32_t pairs = host.count("NOQS", field, function);
    for (std::int32_t pair = 1; pair <= pairs; ++pair) {
      const auto fraction = [&] {
        return text("The fraction of pair ", pair, " of flow function ", function, " in field ", field);
      };
      problem.flows.push_back({.element = element(function, field),
                               .field = static_cast<FlowField>(field - 1),
                               .from = host.integer("JQ", field, function, pair) - 1,
                               .to = host.integer("IQ", field, function, pair) - 1,
                               .factor = factor * host.finite("BQ", fraction, field, function, pair)});
    }
  }
}

void read_exchange_field(Host& host, std::int32_t field, std::int32_t functions, Problem& problem) {
  const double factor = read_factor(host, "SCALER", "scale factor of exchange field", field) *
                        read_factor(host, "CONVR", "conversion factor of exchange field", field);
  for (std::int32_t function = 1; function <= functions; ++function) {
    host.stop_if_cancelled();
    const std::int32_t pairs = host.count("NORS", field, function);
    for (std::int32_t pair = 1; pair <= pairs; ++pair) {
      const auto where = [&] { return text(pair, " of exchange function ", function, " in field ", field); };
      const auto read = [&](const char* keyword, const char* what) {
        return host.finite(
            keyword, [&] { return text("The ", what, " of pair ", where()); }, field, function, pair);
      };
      const double area = read("XAREA", "area"), length = read("LENGTH", "mixing length");
      if (!(length > 0)) throw InputError(text("Pair ", where(), " has no mixing length."));
      problem.exchanges.push_back({.element = element(function, field),
                                   .field = static_cast<ExchangeField>(field - 1),
                                   .one = host.integer("JRSEG", field, function, pair) - 1,
                                   .two = host.integer("IRSEG", field, function, pair) - 1,
                                   .factor = factor * area / length});
    }
  }
}

} // namespace

std::pair<double, double> read_point(Host& host, std::string_view keyword, std::int32_t point) {
  float days = 0, value = 0;
  host.get(keyword, {&point, &days, &value});
  return {days, value};
}

void register_forcing(Host& host, const ModelInfo& model, const Problem& problem, Forcing& forcing) {
  constexpr int room = 256; // so that a catalogue with functions of later models can't write past the end
  const int largest = model.time_functions.empty() ? 0 : std::ranges::max(model.time_functions);
  const std::size_t cells = problem.segments.size() * problem.systems.size();
  forcing.time_functions.assign(static_cast<std::size_t>(std::max(largest, room)), 0.0f);
  forcing.loads.assign(cells, 0.0f);
  forcing.boundaries.assign(cells, 0.0f);
  forcing.flows = make_functions(host, "NINQ", flow_fields);
  forcing.exchanges = make_functions(host, "NTEX", exchange_fields);
  const auto put_array = [&host](const char* keyword, std::vector<float>& values) {
    host.put(keyword, Host::Arguments{values.data()});
  };
  put_array("ALLTFDATA", forcing.time_functions);
  put_array("ALLLOADDATA", forcing.loads);
  put_array("ALLBCDATA", forcing.boundaries);
  put_array("ALLFLOWDATA", forcing.flows);
  put_array("ALLEXCHANGEDATA", forcing.exchanges);
  host.put("PRINTTIMEFUNC", Host::Arguments{&forcing.print_interval});
  set_days(host, 0);
}

double set_days(Host& host, double days) {
  auto narrowed = static_cast<float>(days);
  host.put("DAYS", Host::Arguments{&narrowed});
  return static_cast<double>(narrowed);
}

void read_pairs(Host& host, bool surface_flows, Forcing& forcing, Problem& problem) {
  const FieldsInUse in_use(host, forcing);
  for (std::int32_t field = surface_flows ? 1 : 2; field <= flow_fields; ++field) {
    const std::int32_t functions = host.count("NINQ", field);
    if (in_use.flows(field, functions)) read_flow_field(host, field, functions, problem);
  }
  for (std::int32_t field = 1; field <= exchange_fields; ++field) {
    const std::int32_t functions = host.count("NTEX", field);
    if (in_use.exchanges(field, functions)) read_exchange_field(host, field, functions, problem);
  }
}

void read_loads(Host& host, Problem& problem) {
  for (std::size_t s = 1; s <= problem.systems.size(); ++s) {
    std::set<int> segments; // if two loads are on one segment, the array holds the later one
    const std::int32_t loads = host.count("NOWK", s);
    for (std::int32_t load = 1; load <= loads; ++load) {
      const int segment = host.integer("IWK", s, load) - 1;
      if (segment < 0 || segment >= static_cast<int>(problem.segments.size()))
        throw InputError(text("Load ", load, " of ", problem.systems[s - 1].name, " names segment ", segment + 1,
                              ", but the model has ", problem.segments.size(), " segments."));
      segments.insert(segment);
    }
    for (const int segment : segments) problem.loads.push_back({static_cast<int>(s - 1), segment});
  }
}

} // namespace reference_engine
