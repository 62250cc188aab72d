// A session without a window: the test serves the calls from the reading thread while it waits.
#pragma once

#include "temporary_folder.h"
#include "viewer/results_session.h"
#include "written_results.h"

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

namespace vesk {

class posted_calls {
public:
  void post(std::function<void()> call) {
    const std::lock_guard guard(lock_);
    calls_.push_back(std::move(call));
    came_.notify_one();
  }
  // Runs one call; false: none arrived within five seconds.
  bool serve() {
    std::function<void()> next;
    {
      std::unique_lock guard(lock_);
      if (!came_.wait_for(guard, std::chrono::seconds(5), [this] { return !calls_.empty(); })) return false;
      next = std::move(calls_.front());
      calls_.pop_front();
    }
    next();
    return true;
  }

private:
  std::mutex lock_;
  std::condition_variable came_;
  std::deque<std::function<void()>> calls_;
};

class OpenSession : public testing::Test {
protected:
  OpenSession() {
    session.OnMessage = [this](const std::string& text) { messages.push_back(text); };
  }
  // Until the reading thread is idle.
  void settle() {
    while (!session.reader().is_idle()) ASSERT_TRUE(calls.serve());
  }
  std::string written(const std::string& name, const written_results& results = {}) {
    results.write(folder.file(name));
    return folder.file(name);
  }
  void open(const std::string& name, const written_results& results = {}) {
    session.open(written(name, results));
    settle();
  }
  std::vector<std::string> chosen(const results_session::choices& from) const {
    std::vector<std::string> names;
    for (const std::size_t i : from.positions()) names.push_back(from.names[i].name);
    return names;
  }

  temporary_folder folder;
  posted_calls calls;
  results_session session{[this](std::function<void()> call) { calls.post(std::move(call)); }};
  std::vector<std::string> messages;
};

} // namespace vesk
