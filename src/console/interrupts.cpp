#include "console/interrupts.h"

#include <atomic>
#include <csignal>
#include <unistd.h>

namespace vesk {

namespace {

constexpr int cancelled = 130;

std::atomic<int> signals_seen{0};
std::atomic<bool> keyboard{false};
std::atomic<bool> request{false};
std::atomic<bool> at_once{false};
static_assert(std::atomic<int>::is_always_lock_free && std::atomic<bool>::is_always_lock_free); // required in a handler

extern "C" void note_signal(int signal) {
  if (signal == SIGINT) keyboard = true;
  if (signal == SIGTERM) request = true;
  if (signals_seen.fetch_add(1) + 1 >= 3 || at_once) _exit(cancelled);
}

void watch(int signal) {
  struct sigaction action = {};
  sigaction(signal, nullptr, &action);
  if (action.sa_handler == SIG_IGN) return; // set by a shell for a background job, and by nohup
  action = {};
  action.sa_handler = note_signal;
  action.sa_flags = SA_RESTART;
  sigemptyset(&action.sa_mask);
  for (const int other : {SIGINT, SIGTERM, SIGHUP}) sigaddset(&action.sa_mask, other);
  sigaction(signal, &action, nullptr);
}

} // namespace

void watch_interrupts() {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) watch(signal);
}

bool interrupted() {
  return signals_seen.load() != 0;
}

bool interrupted_by_keyboard() {
  return keyboard;
}

bool interrupted_by_request() {
  return request;
}

ends_at_once::ends_at_once() {
  at_once = true;
  if (interrupted()) _exit(cancelled); // arrived before the handler could see it
}

ends_at_once::~ends_at_once() {
  at_once = false;
}

} // namespace vesk
