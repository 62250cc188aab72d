// Ctrl+C, SIGTERM and SIGHUP: a request that is polled, or the end at once.
#pragma once

namespace vesk {

// Takes over the three signals. The third one ends the process at once with status 130, for an engine that never
// checks for a cancel.
void watch_interrupts();

// True once a signal has come.
bool interrupted();
bool interrupted_by_keyboard(); // and one of them was Ctrl+C

// While it exists, the first signal ends the process at once, also one that arrived before. For work on the main thread
// that does not poll and leaves nothing half-written: reading files, executing queries.
class ends_at_once {
public:
  ends_at_once();
  ~ends_at_once();
  ends_at_once(const ends_at_once&) = delete;
  ends_at_once& operator=(const ends_at_once&) = delete;
};

} // namespace vesk
