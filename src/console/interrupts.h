// Ctrl+C, SIGTERM and SIGHUP: a request that is polled, or the immediate end.
#pragma once

namespace vesk {

// Handles the three signals. The third signal ends the process at once with status 130, for engines that never check
// for a cancel.
void watch_interrupts();

// True after a signal.
bool interrupted();
bool interrupted_by_keyboard(); // one of the signals was Ctrl+C
bool interrupted_by_request();  // and one of them was SIGTERM

// While it exists, the first signal ends the process at once, even if it arrived before. For work on the main thread
// that does not poll and leaves nothing half-written: reading files, executing queries.
class ends_at_once {
public:
  ends_at_once();
  ~ends_at_once();
  ends_at_once(const ends_at_once&) = delete;
  ends_at_once& operator=(const ends_at_once&) = delete;
};

} // namespace vesk
