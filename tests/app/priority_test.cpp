#include "app/priority_control.h"

#include <gtest/gtest.h>

#include <string>

namespace vesk {
namespace {

// Notes the calls, one letter each, and refuses those at the given positions: s suspend, r resume, H high, N normal,
// and the thread priority.
struct noting_platform final : priority_platform {
  explicit noting_platform(std::string refused_calls) : refused(std::move(refused_calls)) {}
  bool suspend() override { return answer("s"); }
  bool resume() override { return answer("r"); }
  bool set_process_class(process_class wanted) override { return answer(wanted == process_class::high ? "H" : "N"); }
  bool set_thread_priority(int value) override { return answer(std::to_string(value)); }

  bool answer(const std::string& call) {
    calls += call;
    const auto at = static_cast<std::size_t>(count++);
    return at >= refused.size() || refused[at] != '-';
  }
  std::string refused, calls;
  int count = 0;
};

TEST(Priority, EveryWayAndEveryRefusal) {
  struct {
    int from, to;
    const char* answers; // '-' where the platform refuses, in the order of the calls
    const char* calls;
    bool result;
    int after;
  } const cases[] = {
      // To a stop.
      {0, 0, "", "", true, 0},
      {3, 0, "", "s", true, 0},
      {3, 0, "-", "s", false, 3},
      {6, 0, "", "Ns", true, 0},
      {6, 0, "-", "N", false, 6},
      {6, 0, "+-", "NsH", false, 6},
      {6, 0, "+--", "NsH", false, 6},
      // To the top.
      {6, 6, "", "", true, 6},
      {3, 6, "", "H-2", true, 6},
      {0, 6, "", "rH-2", true, 6},
      {0, 6, "-", "r", false, 0},
      {0, 6, "+-", "rHs", false, 0}, // it was resumed, so it is stopped again
      {0, 6, "++-", "rH-2Ns", false, 0},
      {0, 6, "++--", "rH-2N", false, 6},
      {3, 6, "-", "H", false, 3},
      {3, 6, "+-", "H-2N", false, 3},
      {3, 6, "+--", "H-2N", false, 6},
      // Between.
      {3, 1, "", "-2", true, 1},
      {3, 2, "", "-1", true, 2},
      {1, 3, "", "0", true, 3},
      {3, 4, "", "1", true, 4},
      {3, 5, "", "2", true, 5},
      {5, 5, "", "2", true, 5},
      {3, 5, "-", "2", false, 3},
      {0, 5, "", "r2", true, 5},
      {0, 5, "-", "r", false, 0},
      {0, 5, "+-", "r2s", false, 0},
      {6, 2, "", "N-1", true, 2},
      {6, 2, "-", "N", false, 6},
      {6, 2, "+-", "N-1", false, 6},
  };
  for (const auto& c : cases) {
    noting_platform platform(c.answers);
    int position = c.from;
    EXPECT_EQ(change_priority(c.to, position, platform), c.result) << c.from << c.to << c.answers;
    EXPECT_EQ(platform.calls, c.calls) << c.from << c.to << c.answers;
    EXPECT_EQ(position, c.after) << c.from << c.to << c.answers;
  }
}

} // namespace
} // namespace vesk
