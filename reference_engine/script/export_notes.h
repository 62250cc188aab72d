// What a data set holds that an .inp file can't carry.
#ifndef REFERENCE_ENGINE_SCRIPT_EXPORT_NOTES_H
#define REFERENCE_ENGINE_SCRIPT_EXPORT_NOTES_H

#include "host/host.h"

namespace reference_engine {

// One info line for each kind of thing that is lost.
void tell_what_is_left_out(Host& host);

} // namespace reference_engine

#endif
