// The signals that ask the program to end: SIGTERM, SIGHUP and SIGINT, as events of the main loop.
#pragma once

#include <QSocketNotifier>
#include <functional>
#include <memory>

namespace vesk {

// At most one at a time. Main thread.
class end_signals final {
public:
  // Calls `end` from the event loop after one of the signals. A signal that was ignored at program start stays ignored.
  // The same signal again ends the process at once, in case the main thread is busy for long.
  explicit end_signals(std::function<void()> end);
  ~end_signals(); // restores the previous handlers
  end_signals(const end_signals&) = delete;
  end_signals& operator=(const end_signals&) = delete;

private:
  std::unique_ptr<QSocketNotifier> notifier_; // null if the system could not create a pipe
};

} // namespace vesk
