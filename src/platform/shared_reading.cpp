#include "platform/shared_reading.h"

#include "platform/file_io.h"

#include <algorithm>
#include <system_error>

namespace vesk {

namespace {
constexpr std::size_t most_waiting = 64;
constexpr std::size_t worth_waking = 8;                     // waking a thread costs as much as reading a short piece
constexpr std::size_t longest_piece = std::size_t{2} << 20; // so that a single long array is shared by both threads
} // namespace

shared_reading::shared_reading(int descriptor, std::string name) : descriptor_(descriptor), name_(std::move(name)) {
  if (std::thread::hardware_concurrency() < 2) return;
  try {
    thread_ = std::jthread([this](const std::stop_token& stopped) { work(stopped); });
  } catch (const std::system_error&) {
    // no thread available
  }
}

void shared_reading::read(void* to, std::size_t size, std::uint64_t offset) {
  for (std::size_t done = 0; done < size; done += longest_piece) {
    const piece next{static_cast<char*>(to) + done, std::min(size - done, longest_piece), offset + done};
    if (!thread_.joinable() || !hand_over(next)) read_whole(next);
  }
}

bool shared_reading::hand_over(const piece& next) {
  const std::lock_guard lock(mutex_);
  if (waiting_.size() >= most_waiting) return false;
  waiting_.push_back(next);
  if (!at_work_ && waiting_.size() >= worth_waking) changed_.notify_all();
  return true;
}

void shared_reading::read_whole(piece rest) const {
  while (rest.size > 0) {
    const std::size_t got = read_at(descriptor_, rest.offset, rest.to, rest.size, nullptr, 0, name_);
    if (got == 0) throw file_exception("Cannot read " + name_ + ": it became shorter while it was read.");
    rest.to += got;
    rest.size -= got;
    rest.offset += got;
  }
}

void shared_reading::finish() {
  std::unique_lock lock(mutex_);
  while (!waiting_.empty() && !failure_) {
    const piece next = waiting_.back(); // the other thread takes from the front
    waiting_.pop_back();
    lock.unlock();
    read_whole(next);
    lock.lock();
  }
  changed_.wait(lock, [this] { return !at_work_; });
  if (failure_) std::rethrow_exception(failure_);
}

void shared_reading::drop() {
  std::unique_lock lock(mutex_);
  waiting_.clear();
  changed_.wait(lock, [this] { return !at_work_; });
}

void shared_reading::work(const std::stop_token& stopped) {
  std::unique_lock lock(mutex_);
  while (changed_.wait(lock, stopped, [this] { return !waiting_.empty(); })) {
    const piece next = waiting_.front();
    waiting_.pop_front();
    at_work_ = true;
    lock.unlock();
    std::exception_ptr failure;
    try {
      read_whole(next);
    } catch (...) {
      failure = std::current_exception();
    }
    lock.lock();
    at_work_ = false;
    if (failure && !failure_) failure_ = failure;
    if (waiting_.empty()) changed_.notify_all();
  }
}

} // namespace vesk
