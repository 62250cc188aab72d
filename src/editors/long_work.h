// Long work, such as reading a table of a million rows: it can report its progress, and it can be cancelled.
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

// What long work sees of the one who waits for it. Any thread.
class work_progress {
public:
  virtual ~work_progress() = default;
  virtual bool is_cancelled() const = 0;
  virtual void percent_done(int percent) = 0;
  // Calls on the main thread, in the order of the requests and before the work counts as ended. Calls of work that has
  // been given up are dropped.
  virtual void on_main_thread(std::function<void()> call) = 0;
};

// The progress of work that nobody sees: it is done in the caller's thread, and not cancelled.
class unseen_progress : public work_progress {
public:
  bool is_cancelled() const override { return false; }
  void percent_done(int) override {}
  void on_main_thread(std::function<void()> call) override { call(); }
};

// Does work(data, progress) on a data set of its own, in another thread where the front end has one for it, and returns
// its value; nothing when it was cancelled. What the work throws comes back to the caller. Everything that reads tables
// within the work notices Cancel. Work that does not notice it is given up after a while and then runs on unseen, so it
// must own what it uses.
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
    } catch (const query_cancelled&) { // no result says so
    }
  });
  return done ? std::exchange(all->result, std::nullopt) : std::optional<value>();
}

} // namespace vesk
