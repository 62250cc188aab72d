#include "console/interrupts.h"

#include <csignal>
#include <unistd.h>

namespace vesk {

namespace {

volatile std::sig_atomic_t signals_seen = 0;

extern "C" void note_signal(int) {
  constexpr int cancelled = 130;
  const std::sig_atomic_t seen = signals_seen + 1;
  signals_seen = seen;
  if (seen >= 3) _exit(cancelled);
}

} // namespace

void watch_interrupts() {
  struct sigaction action {};
  action.sa_handler = note_signal;
  sigemptyset(&action.sa_mask);
  sigaction(SIGINT, &action, nullptr);
  sigaction(SIGTERM, &action, nullptr);
}

bool interrupted() {
  return signals_seen != 0;
}

} // namespace vesk
