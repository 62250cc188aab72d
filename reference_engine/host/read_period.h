// The simulated period.
#ifndef REFERENCE_ENGINE_HOST_READ_PERIOD_H
#define REFERENCE_ENGINE_HOST_READ_PERIOD_H

#include "host/host.h"
#include "output/moment.h"

namespace reference_engine {

struct Period {
  Moment start;
  double days = 0; // from start to end
};

// The start of the simulation, from the data set.
Moment read_start(Host& host);

// Throws InputError if start or end is not a calendar date. The end may still be before the start.
Period read_period(Host& host);

} // namespace reference_engine

#endif
