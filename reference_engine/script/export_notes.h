// Lists the parts of a data set that an .inp file can't contain.
#ifndef REFERENCE_ENGINE_SCRIPT_EXPORT_NOTES_H
#define REFERENCE_ENGINE_SCRIPT_EXPORT_NOTES_H

#include "host/host.h"

namespace reference_engine {

// One info line for each kind of loss.
void report_what_is_left_out(Host& host);

} // namespace reference_engine

#endif
