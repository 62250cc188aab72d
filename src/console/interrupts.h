// Ctrl+C, SIGTERM and SIGHUP: a request that is looked at when there is time, or the end at once.
#pragma once

namespace vesk {

// Takes the three signals over. The third that comes ends the process at once, with status 130, for an engine that
// never looks at a cancel.
void watch_interrupts();

// True once a signal has come.
bool interrupted();
bool interrupted_by_keyboard(); // and one of them was Ctrl+C

// While it lives the first signal ends the process at once, also one that has come before. For work on the main thread
// that looks at nothing and leaves nothing half-written: reading files, executing queries.
class ends_at_once {
public:
  ends_at_once();
  ~ends_at_once();
  ends_at_once(const ends_at_once&) = delete;
  ends_at_once& operator=(const ends_at_once&) = delete;
};

} // namespace vesk
