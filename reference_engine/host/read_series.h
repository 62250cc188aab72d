// The part of the data set that is driven by values over time: the forcing arrays, and the pairs and loads that use
// them.
#ifndef REFERENCE_ENGINE_HOST_READ_SERIES_H
#define REFERENCE_ENGINE_HOST_READ_SERIES_H

#include "core/forcing.h"
#include "core/kinetics.h"
#include "core/problem.h"
#include "host/host.h"

#include <utility>

namespace reference_engine {

constexpr std::int32_t flow_fields = 6, exchange_fields = 2;

// One point of a series without parent records, DTFUNC or PRINTFUNC: days since the start, and value.
std::pair<double, double> read_point(Host& host, std::string_view keyword, std::int32_t point);

// Sizes the forcing's arrays by the problem's segments and systems, registers them, and fills them for day 0.
void register_forcing(Host& host, const ModelInfo& model, const Problem& problem, Forcing& forcing);

// Sets the forcing's values for a time, in days since the start. Returns that time in the single precision of the
// interface.
double set_days(Host& host, double days);

// Reads the pairs of the fields in use. surface_flows: false skips surface flows.
void read_pairs(Host& host, bool surface_flows, Forcing& forcing, Problem& problem);

void read_loads(Host& host, Problem& problem);

} // namespace reference_engine

#endif
