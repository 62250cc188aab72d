// A call of vesk-run whose end other programs read: the work is done in a child process, and however it ends
// there is a record and an exit status that says it.
#pragma once

#include "console/console_interface.h"
#include "console/options.h"
#include "console/session.h"
#include "runs/run_record.h"

#include <functional>

namespace vesk {

// What the child does: a session with this taker of its record. Returns the exit status.
using supervised_work = std::function<int(const record_taker& take_record)>;

// Returns the exit status, one of those that are documented for --record.
int run_supervised(const console_options& options, console_interface& ui, const run_record& head,
                   const supervised_work& work);

} // namespace vesk
