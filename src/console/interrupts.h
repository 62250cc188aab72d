// Ctrl+C and SIGTERM as a request that is looked at when there is time.
#pragma once

namespace vesk {

// Takes both signals over. The third ends the process at once, for an engine that never looks at a cancel.
void watch_interrupts();

// True once a signal has come.
bool interrupted();

} // namespace vesk
