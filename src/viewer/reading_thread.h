// The thread that opens results and reads their values, so that a window never waits for a disk.
//
// Results live as long as the thread that opened them, because their helper program does.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

namespace vesk {

// All members are called on one thread, the owner's.
class reading_thread {
public:
  // Brings a call to the owner's thread, after the calls before it. It is called on the reading thread.
  using poster = std::function<void(std::function<void()>)>;
  explicit reading_thread(poster post);
  ~reading_thread(); // cancels what it does, and waits for the end of that
  reading_thread(const reading_thread&) = delete;
  reading_thread& operator=(const reading_thread&) = delete;

  // Reads on the thread, within a cancellation_scope; returns what the owner's thread then does with the values.
  using work = std::function<std::function<void()>()>;

  // Work for `who`, which gives up the earlier work of the same one. `failed` gets the sentence of an exception.
  // Neither is called after `forget`.
  void ask(const void* who, work wanted, std::function<void(const std::string&)> failed);
  // In line after the work of the same one, which is not given up.
  void add(const void* who, work wanted, std::function<void(const std::string&)> failed);
  void forget(const void* who);
  bool is_idle() const { return unfinished_ == 0; }

private:
  struct job {
    std::shared_ptr<std::atomic<bool>> given_up;
    work wanted;
    std::function<void(const std::string&)> failed;
  };
  void serve();
  void do_job(const job& next);
  void finish(const std::shared_ptr<std::atomic<bool>>& given_up, const std::function<void()>& call);

  const poster post_;
  std::multimap<const void*, std::shared_ptr<std::atomic<bool>>> under_way_; // owner's thread
  std::size_t unfinished_ = 0;                                               // owner's thread
  const std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);         // false: posted calls come too late
  std::mutex lock_;                                                          // guards the next two
  std::deque<job> jobs_;
  bool ends_ = false;
  std::condition_variable changed_;
  std::thread thread_; // the last member: it uses the others
};

} // namespace vesk
