// The time that a run covers.
#ifndef REFERENCE_ENGINE_HOST_READ_PERIOD_H
#define REFERENCE_ENGINE_HOST_READ_PERIOD_H

#include "host/host.h"
#include "output/moment.h"

namespace reference_engine {

struct Period {
  Moment start;
  double days = 0; // until the end
};

// The start of the simulation, as the data set has it.
Moment read_start(Host& host);

// Throws InputError where start or end is not a date of the calendar. The end may still lie before the start.
Period read_period(Host& host);

} // namespace reference_engine

#endif
