#include "platform/millisecond_clock.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace vesk {

std::atomic<std::uint32_t> millisecond_clock::ticks_{0};

namespace {

struct ticker {
  std::mutex mutex;
  std::condition_variable stopping;
  std::thread thread; // guarded by mutex
  int users = 0;      // guarded by mutex
  bool stop = false;  // guarded by mutex
};

ticker& the_ticker() {
  static ticker instance;
  return instance;
}

std::uint32_t steady_milliseconds() {
  using namespace std::chrono;
  return static_cast<std::uint32_t>(duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count());
}

void run(std::atomic<std::uint32_t>& ticks) {
  ticker& t = the_ticker();
  std::unique_lock lock(t.mutex);
  while (!t.stop) {
    ticks.store(steady_milliseconds(), std::memory_order_relaxed);
    t.stopping.wait_for(lock, std::chrono::milliseconds(1));
  }
}

} // namespace

millisecond_clock::millisecond_clock() {
  ticker& t = the_ticker();
  const std::lock_guard lock(t.mutex);
  if (t.users++ != 0) return;
  t.stop = false;
  ticks_.store(steady_milliseconds(), std::memory_order_relaxed);
  t.thread = std::thread([] { run(ticks_); });
}

millisecond_clock::~millisecond_clock() {
  ticker& t = the_ticker();
  std::thread finished;
  {
    const std::lock_guard lock(t.mutex);
    if (--t.users != 0) return;
    t.stop = true;
    finished = std::move(t.thread);
  }
  t.stopping.notify_all();
  finished.join();
}

} // namespace vesk
