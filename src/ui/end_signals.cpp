#include "ui/end_signals.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <iterator>
#include <unistd.h>
#include <utility>

namespace vesk {

namespace {

constexpr int watched[] = {SIGTERM, SIGHUP, SIGINT};

// A signal handler may do almost nothing, so it writes a byte that wakes the event loop.
int ends[2] = {-1, -1};
struct sigaction before[std::size(watched)];

extern "C" void note_end_signal(int) {
  const int kept = errno;
  [[maybe_unused]] const auto written = ::write(ends[1], "", 1);
  errno = kept;
}

void watch(std::size_t i) {
  sigaction(watched[i], nullptr, &before[i]);
  if (before[i].sa_handler == SIG_IGN) return; // nohup does this
  struct sigaction action = {};
  action.sa_handler = note_end_signal;
  action.sa_flags = SA_RESTART | static_cast<int>(SA_RESETHAND);
  sigemptyset(&action.sa_mask);
  sigaction(watched[i], &action, nullptr);
}

} // namespace

end_signals::end_signals(std::function<void()> end) {
  if (::pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0) return;
  notifier_ = std::make_unique<QSocketNotifier>(ends[0], QSocketNotifier::Read);
  QObject::connect(notifier_.get(), &QSocketNotifier::activated, [end = std::move(end)] {
    char bytes[8];
    if (::read(ends[0], bytes, sizeof bytes) > 0) end();
  });
  for (std::size_t i = 0; i < std::size(watched); ++i) watch(i);
}

end_signals::~end_signals() {
  if (!notifier_) return;
  for (std::size_t i = 0; i < std::size(watched); ++i) sigaction(watched[i], &before[i], nullptr);
  notifier_.reset();
  for (int& end : ends) ::close(std::exchange(end, -1));
}

} // namespace vesk
