// The signals that ask the program to end: SIGTERM, SIGHUP and SIGINT, as events of the main loop.
#pragma once

#include <QSocketNotifier>
#include <functional>
#include <memory>

namespace vesk {

// At most one at a time. Main thread.
class end_signals final {
public:
  // Calls `end` from the event loop once one of the signals has come. A signal that was ignored at the program's start
  // stays ignored. The same signal again ends the process at once, for a main thread that is busy for long.
  explicit end_signals(std::function<void()> end);
  ~end_signals(); // the signals do what they did before
  end_signals(const end_signals&) = delete;
  end_signals& operator=(const end_signals&) = delete;

private:
  std::unique_ptr<QSocketNotifier> notifier_; // null where the system has no pipe left
};

} // namespace vesk
