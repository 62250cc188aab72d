#include "engine/stack_thread.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <thread>

namespace vesk {
namespace {

using std::chrono::milliseconds;

// A thread that runs a function given to it.
class function_thread : public ResizableThread {
public:
  explicit function_thread(std::function<void(function_thread&)> work, bool create_suspended = false)
      : ResizableThread(create_suspended), work_(std::move(work)) {}
  ~function_thread() override { WaitFor_if_running(); }

protected:
  void Execute() override { work_(*this); }

private:
  void WaitFor_if_running() {
    if (!Suspended() && !Finished()) WaitFor();
  }
  std::function<void(function_thread&)> work_;
};

std::unique_ptr<function_thread> started_thread(std::function<void(function_thread&)> work) {
  auto thread = std::make_unique<function_thread>(std::move(work));
  thread->AfterConstruction();
  return thread;
}

TEST(StackThread, RunsOnlyOnceResumed) {
  std::atomic<bool> ran = false;
  function_thread thread([&](function_thread&) { ran = true; }, true);
  thread.AfterConstruction();
  std::this_thread::sleep_for(milliseconds(20));
  EXPECT_TRUE(thread.Suspended());
  EXPECT_FALSE(ran);
  thread.SetSuspended(true); // the present value: does not count
  thread.Resume();
  EXPECT_FALSE(thread.Suspended());
  thread.WaitFor();
  EXPECT_TRUE(ran);
}

TEST(StackThread, ReturnsItsValueAndHasALargeStack) {
  const auto thread = started_thread([](function_thread& self) {
    volatile char deep[18'000'000]; // more than the usual 8 MB
    deep[0] = 1;
    deep[sizeof deep - 1] = 41;
    self.ReturnValue = deep[0] + deep[sizeof deep - 1];
  });
  EXPECT_EQ(thread->WaitFor(), 42);
  EXPECT_EQ(thread->WaitFor(), 42);
}

TEST(StackThread, DestroyingASuspendedThreadEndsItWithoutRunningIt) {
  bool ran = false;
  const int before = live_thread_count();
  {
    function_thread thread([&](function_thread&) { ran = true; }, true);
  }
  EXPECT_FALSE(ran);
  EXPECT_EQ(live_thread_count(), before);
}

TEST(StackThread, SynchronizedMethodsRunInOrderOnTheMainThread) {
  std::vector<std::string> steps;
  const auto main_thread = std::this_thread::get_id();
  const auto note = [&](const std::string& what) {
    steps.push_back(std::this_thread::get_id() == main_thread ? what : "on the wrong thread");
  };
  function_thread thread([&](function_thread& self) {
    self.Synchronize([&] { note("first"); });
    try {
      self.Synchronize([] { throw std::runtime_error("thrown on the main thread"); });
    } catch (const std::runtime_error& error) {
      const std::string text = error.what();
      self.Synchronize([&] { note(text); });
    }
  });
  thread.OnTerminate = [&](ResizableThread* sender) { note(sender == &thread ? "end" : "wrong sender"); };
  thread.Synchronize([&] { note("in line"); });
  thread.Resume();
  thread.WaitFor();
  EXPECT_EQ(steps, (std::vector<std::string>{"in line", "first", "thrown on the main thread", "end"}));
}

TEST(StackThread, ASynchronizedMethodMayMakeAThread) {
  bool inner_ran = false;
  std::unique_ptr<function_thread> inner;
  function_thread outer([&](function_thread& self) {
    self.Synchronize([&] { inner = started_thread([&](function_thread&) { inner_ran = true; }); });
  });
  outer.Resume();
  outer.WaitFor();
  inner->WaitFor();
  EXPECT_TRUE(inner_ran);
}

TEST(StackThread, WakesTheMainThreadForEachPost) {
  std::atomic<int> woken = 0;
  WakeMainThread = [&] { ++woken; };
  function_thread thread([](function_thread& self) { self.Synchronize([] {}); });
  thread.Resume();
  thread.WaitFor();
  WakeMainThread = nullptr;
  EXPECT_EQ(woken, 1);
  EXPECT_FALSE(CheckSynchronize());
}

TEST(StackThread, OnlyTheMainThreadChecks) {
  std::string message;
  std::thread([&] {
    try {
      CheckSynchronize();
    } catch (const EThread& error) {
      message = error.what();
    }
  }).join();
  EXPECT_TRUE(message.starts_with("CheckSynchronize was called by thread ")) << message;
}

TEST(StackThread, KeepsWhatLeavesExecute) {
  function_thread thread([](function_thread&) { throw std::runtime_error("lost"); });
  thread.Resume();
  thread.WaitFor();
  EXPECT_THROW(std::rethrow_exception(thread.FatalException), std::runtime_error);
}

// What a library does as a thread of its callers ends.
std::atomic<bool> left = false;
struct leaving_slowly {
  ~leaving_slowly() {
    std::this_thread::sleep_for(milliseconds(50));
    left = true;
  }
};

TEST(StackThread, FreesItselfAndCountsUntilItIsGone) {
  const int before = live_thread_count();
  bool ended = false;
  auto* thread = new function_thread(
      [](function_thread&) {
        thread_local const leaving_slowly library;
        left = false;
      },
      true);
  thread->FreeOnTerminate = true;
  thread->OnTerminate = [&](ResizableThread*) { ended = true; };
  thread->Resume();
  while (live_thread_count() > before) wait_and_synchronize(milliseconds(1));
  EXPECT_TRUE(ended);
  EXPECT_TRUE(left);
}

// How far a loop that passes the gate gets in a while.
int progress_within(const std::atomic<int>& rounds, milliseconds time) {
  const int before = rounds;
  std::this_thread::sleep_for(time);
  return rounds - before;
}

TEST(StackThread, IsHeldAtTheGateWhileSuspendedAndSlowedDownByItsPriority) {
  std::atomic<int> rounds = 0;
  function_thread thread([&](function_thread& self) {
    while (!self.Terminated()) {
      self.pass_gate();
      ++rounds;
    }
  });
  thread.Resume();
  EXPECT_GT(progress_within(rounds, milliseconds(50)), 0);
  thread.Suspend();
  std::this_thread::sleep_for(milliseconds(20));
  EXPECT_EQ(progress_within(rounds, milliseconds(50)), 0);
  thread.Suspend();
  thread.Resume();
  EXPECT_EQ(progress_within(rounds, milliseconds(50)), 0); // two counts, one taken back
  thread.SetPriority(tpIdle);
  EXPECT_EQ(thread.GetPriority(), tpIdle);
  thread.Resume();
  EXPECT_GT(progress_within(rounds, milliseconds(300)), 0);
  thread.SetPriority(tpNormal);
  thread.Terminate();
  thread.WaitFor();
}

TEST(StackThread, PrioritiesHaveThePlatformsValues) {
  EXPECT_EQ(platform_priority(tpIdle), -15);
  EXPECT_EQ(platform_priority(tpLowest), -2);
  EXPECT_EQ(platform_priority(tpNormal), 0);
  EXPECT_EQ(platform_priority(tpTimeCritical), 15);
}

} // namespace
} // namespace vesk
