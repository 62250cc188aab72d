// The days on which series have their points. Only the times are kept: values always come from DAYS.
#ifndef REFERENCE_ENGINE_HOST_READ_POINTS_H
#define REFERENCE_ENGINE_HOST_READ_POINTS_H

#include "core/forcing.h"
#include "core/problem.h"
#include "host/host.h"

#include <vector>

namespace reference_engine {

// The days of all points within the run, ascending, of the series that the problem uses: time functions, flow and
// exchange functions that drive a pair, loads, and boundaries of segments that touch the outside, both of simulated
// systems. days: length of the run. Throws InputError for a point that is not finite, and Cancelled.
std::vector<double> read_point_days(Host& host, const Problem& problem, const Forcing& forcing, double days);

} // namespace reference_engine

#endif
