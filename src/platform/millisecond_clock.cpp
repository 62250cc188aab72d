#include "platform/millisecond_clock.h"

#include <chrono>
#include <mutex>
#include <thread>

namespace vesk {

std::atomic<std::uint32_t> millisecond_clock::ticks_{0};

namespace {

struct ticker {
  std::mutex mutex;
  std::jthread thread; // guarded by mutex
  int users = 0;       // guarded by mutex
};

ticker& the_ticker() {
  static ticker instance;
  return instance;
}

std::uint32_t steady_milliseconds() {
  using namespace std::chrono;
  return static_cast<std::uint32_t>(duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count());
}

} // namespace

millisecond_clock::millisecond_clock() {
  ticker& t = the_ticker();
  const std::lock_guard lock(t.mutex);
  if (t.users++ != 0) return;
  ticks_.store(steady_milliseconds(), std::memory_order_relaxed);
  t.thread = std::jthread([](const std::stop_token& stop) {
    while (!stop.stop_requested()) {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
      ticks_.store(steady_milliseconds(), std::memory_order_relaxed);
    }
  });
}

millisecond_clock::~millisecond_clock() {
  ticker& t = the_ticker();
  std::jthread finished; // joined after the lock is left
  const std::lock_guard lock(t.mutex);
  if (--t.users == 0) finished = std::move(t.thread);
}

} // namespace vesk
