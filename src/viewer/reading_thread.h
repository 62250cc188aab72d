// The thread that opens results and reads their values, so that a window never waits for a disk.
//
// Results become unusable when the thread that opened them ends, because it owns their helper program.
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

// All members are called on the owner's thread.
class reading_thread {
public:
  // Queues a call for the owner's thread, in order. Called on the reading thread.
  using poster = std::function<void(std::function<void()>)>;
  explicit reading_thread(poster post);
  ~reading_thread(); // cancels the current work and waits for its end
  reading_thread(const reading_thread&) = delete;
  reading_thread& operator=(const reading_thread&) = delete;

  // Runs on the thread, within a cancellation_scope; returns a call that hands the values over on the owner's thread.
  using work = std::function<std::function<void()>()>;

  // Queues work for `who` and abandons earlier work for it. `failed` gets an exception's sentence. Neither is called
  // after `forget`.
  void ask(const void* who, work wanted, std::function<void(const std::string&)> failed);
  // Queues work for `who` after its earlier work, which is kept.
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
  const std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);         // false: drop posted calls
  std::mutex lock_;                                                          // guards jobs_ and ends_
  std::deque<job> jobs_;
  bool ends_ = false;
  std::condition_variable changed_;
  std::thread thread_; // last member: it uses the others
};

} // namespace vesk
