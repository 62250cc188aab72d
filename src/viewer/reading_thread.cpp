#include "viewer/reading_thread.h"

#include "query/cancellation.h"

#include <exception>

namespace vesk {

reading_thread::reading_thread(poster post) : post_(std::move(post)), thread_([this] { serve(); }) {}

reading_thread::~reading_thread() {
  *alive_ = false;
  for (const auto& [who, given_up] : under_way_) *given_up = true;
  {
    const std::lock_guard guard(lock_);
    ends_ = true;
  }
  changed_.notify_one();
  thread_.join();
}

void reading_thread::ask(const void* who, work wanted, std::function<void(const std::string&)> failed) {
  forget(who);
  add(who, std::move(wanted), std::move(failed));
}

void reading_thread::add(const void* who, work wanted, std::function<void(const std::string&)> failed) {
  auto given_up = std::make_shared<std::atomic<bool>>(false);
  under_way_.emplace(who, given_up);
  ++unfinished_;
  {
    const std::lock_guard guard(lock_);
    jobs_.push_back({std::move(given_up), std::move(wanted), std::move(failed)});
  }
  changed_.notify_one();
}

void reading_thread::forget(const void* who) {
  const auto [begin, end] = under_way_.equal_range(who);
  for (auto it = begin; it != end; ++it) *it->second = true;
  under_way_.erase(begin, end);
}

void reading_thread::serve() {
  for (;;) {
    job next;
    {
      std::unique_lock guard(lock_);
      changed_.wait(guard, [this] { return ends_ || !jobs_.empty(); });
      if (ends_) return;
      next = std::move(jobs_.front());
      jobs_.pop_front();
    }
    do_job(next);
  }
}

// Runs on the reading thread. Abandoned work is reported as finished too, so that the count is right.
void reading_thread::do_job(const job& next) {
  std::function<void()> then;
  if (!*next.given_up) {
    const cancellation_scope scope([&next] { return next.given_up->load(); });
    try {
      then = next.wanted();
    } catch (const query_cancelled&) {
    } catch (const std::exception& error) {
      then = [failed = next.failed, text = std::string(error.what())] { failed(text); };
    }
  }
  post_([this, alive = alive_, given_up = next.given_up, then = std::move(then)] {
    if (*alive) finish(given_up, then);
  });
}

void reading_thread::finish(const std::shared_ptr<std::atomic<bool>>& given_up, const std::function<void()>& call) {
  --unfinished_;
  std::erase_if(under_way_, [&](const auto& entry) { return entry.second == given_up; });
  if (!*given_up && call) call();
}

} // namespace vesk
