// A run of the model, from the data set to its results.
#ifndef REFERENCE_ENGINE_HOST_RUN_H
#define REFERENCE_ENGINE_HOST_RUN_H

#include "host/host.h"

#include <string_view>

namespace reference_engine {

// Throws InputError, RunError and Cancelled; then no result appears under its final name. What a cancelled run has
// computed after its start is kept as `base` with ".cancelled.nc".
void run_model(Host& host, std::string_view library);

} // namespace reference_engine

#endif
