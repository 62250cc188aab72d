#include "console/interrupts.h"

#include <atomic>
#include <csignal>
#include <unistd.h>

namespace vesk {

namespace {

std::atomic<int> signals_seen{0};
static_assert(std::atomic<int>::is_always_lock_free); // so it may be used in a handler

extern "C" void note_signal(int) {
  constexpr int cancelled = 130;
  if (signals_seen.fetch_add(1) + 1 >= 3) _exit(cancelled);
}

void watch(int signal) {
  struct sigaction action = {};
  sigaction(signal, nullptr, &action);
  if (action.sa_handler == SIG_IGN) return; // as a shell sets it for a job in the background
  action = {};
  action.sa_handler = note_signal;
  action.sa_flags = SA_RESTART;
  sigemptyset(&action.sa_mask);
  sigaddset(&action.sa_mask, SIGINT);
  sigaddset(&action.sa_mask, SIGTERM);
  sigaction(signal, &action, nullptr);
}

} // namespace

void watch_interrupts() {
  watch(SIGINT);
  watch(SIGTERM);
}

bool interrupted() {
  return signals_seen.load() != 0;
}

} // namespace vesk
