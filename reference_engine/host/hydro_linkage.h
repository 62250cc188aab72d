// Connects a data set with its hydrodynamic file.
#ifndef REFERENCE_ENGINE_HOST_HYDRO_LINKAGE_H
#define REFERENCE_ENGINE_HOST_HYDRO_LINKAGE_H

#include "core/forcing.h"
#include "core/problem.h"
#include "host/host.h"
#include "host/hydro_file.h"

#include <memory>

namespace reference_engine {

// Opens the file named in the data set. A relative name is looked for in the data file's folder, then in the current
// one; backslashes count as separators. Throws InputError.
std::unique_ptr<HydroFile> open_hydro_file(Host& host);

// Puts the file's segments, a surface flow function with one pair for each link, and boundaries into the data set.
void build_from_hydro_file(Host& host);

// Opens the file for a run over `days`, replaces surface flows by its links, and the segments' volumes by its volumes.
// Afterwards the links' flows are elements of Forcing::linked.
std::unique_ptr<HydroFile> link_hydro_file(Host& host, double days, Forcing& forcing, Problem& problem);

} // namespace reference_engine

#endif
