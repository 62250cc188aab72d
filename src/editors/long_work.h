// Long work, such as reading a table of a million rows, that can report progress and be cancelled.
#pragma once

#include "dataset/dataset.h"
#include "editors/user_questions.h"
#include "query/cancellation.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>

namespace vesk {

// Long work's link to the waiting caller. Any thread.
class work_progress {
public:
  virtual ~work_progress() = default;
  virtual bool is_cancelled() const = 0;
  virtual void percent_done(int percent) = 0;
  // Calls on the main thread, in the order of the requests and before the work counts as ended. Calls from abandoned
  // work are dropped.
  virtual void on_main_thread(std::function<void()> call) = 0;
};

// For work without a progress display: runs in the caller's thread and cannot be cancelled.
class unseen_progress : public work_progress {
public:
  bool is_cancelled() const override { return false; }
  void percent_done(int) override {}
  void on_main_thread(std::function<void()> call) override { call(); }
};

// Runs work(data, progress) on a private data set, in another thread if the front end provides one, and returns its
// value; nothing if it was cancelled. Rethrows exceptions from the work. Everything in it that reads tables notices
// Cancel. Work that does not is abandoned after a while and keeps running in the background, so it must own what it
// uses.
template <class Work>
auto with_progress(user_questions& user, const std::string& what, prevesk_dataset_data_type data, Work work) {
  using value = std::invoke_result_t<Work&, prevesk_dataset_data_type&, work_progress&>;
  struct owned {
    prevesk_dataset_data_type data;
    Work work;
    std::optional<value> result;
  };
  const auto all = std::make_shared<owned>(owned{std::move(data), std::move(work), std::nullopt});
  const bool done = user.run_long_work(what, [all](work_progress& progress) {
    all->data.apply_thread_defaults();
    const cancellation_scope scope([&progress] { return progress.is_cancelled(); });
    try {
      all->result.emplace(all->work(all->data, progress));
    } catch (const query_cancelled&) { // an empty result means cancelled
    }
  });
  return done ? std::exchange(all->result, std::nullopt) : std::optional<value>();
}

} // namespace vesk
