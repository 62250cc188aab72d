// What a trial in a copy of the process finds out, and that the process itself sees nothing of it.
#include "host/trial.h"

#include <gtest/gtest.h>

#include <atomic>
#include <csignal>
#include <memory>
#include <new>
#include <stdexcept>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

using reference_engine::survives;

void take(std::size_t bytes) {
  const std::vector<char> block(bytes);
  [[maybe_unused]] const volatile char last = block.back();
}

// As in the program: other threads work, and this one takes no signals.
class TrialTest : public testing::Test {
protected:
  TrialTest()
      : other_([this] {
          while (!done_) std::vector<char>(100'000).swap(taken_);
        }) {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_BLOCK, &all, &before_);
  }
  ~TrialTest() override {
    done_ = true;
    other_.join();
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
  }

private:
  std::atomic<bool> done_ = false;
  std::vector<char> taken_;
  std::thread other_;
  sigset_t before_;
};

TEST_F(TrialTest, WorkThatEndsSurvivesAndLeavesNothingBehind) {
  int count = 0, pipe_ends[2];
  ASSERT_EQ(pipe(pipe_ends), 0);
  EXPECT_TRUE(survives([&] { ++count, take(100'000'000); }));
  EXPECT_TRUE(survives([&] { throw std::runtime_error("is told by the process itself"); }));
  EXPECT_TRUE(survives([&] { close(pipe_ends[1]); }));
  EXPECT_EQ(count, 0);
  EXPECT_EQ(write(pipe_ends[1], "x", 1), 1);
  close(pipe_ends[0]), close(pipe_ends[1]);
}

TEST_F(TrialTest, CrashesAndWorkWithoutEndDoNot) {
  for (const int number : {SIGSEGV, SIGBUS, SIGFPE, SIGABRT, SIGKILL})
    EXPECT_FALSE(survives([&] { std::raise(number); })) << "signal " << number;
  EXPECT_FALSE(survives([] { throw std::bad_alloc(); }));
  EXPECT_FALSE(survives([] { take(std::size_t{3} << 29); }));
  const auto work = [count = std::make_shared<std::atomic<int>>()] {
    for (;;) ++*count;
  };
  EXPECT_FALSE(survives(work, {.work = 1}));
  const auto wait = [] {
    for (;;) pause();
  };
  EXPECT_FALSE(survives(wait, {.wait = 1}));
}

} // namespace
