// Copies share content, and no change of one side ever shows on the other.
#include "dataset/segment_items.h"
#include "dataset/shared_array.h"
#include "dataset/shared_list.h"

#include <algorithm>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <new>
#include <sys/mman.h>
#include <thread>
#include <vector>

namespace vesk {
namespace {

template <class Container>
std::string print(const Container& content) {
  std::string text;
  for (const int value : content) text += (text.empty() ? "" : " ") + std::to_string(value);
  return text;
}

template <class Container>
struct change {
  const char* name;
  std::function<void(Container&)> apply;
  const char* result; // of {1, 2, 3}
};

// What both containers can do.
template <class Container>
std::vector<change<Container>> changes() {
  return {{"edit", [](auto& c) { c.edit(1) = 9; }, "1 9 3"},
          {"push_back", [](auto& c) { c.push_back(4); }, "1 2 3 4"},
          {"push_back of an own element", [](auto& c) { c.push_back(c[0]); }, "1 2 3 1"},
          {"insert of an own element", [](auto& c) { c.insert(0, c[2]); }, "3 1 2 3"},
          {"grow with an own element", [](auto& c) { c.resize(9, c[1]); }, "1 2 3 2 2 2 2 2 2"},
          {"moved away", [](auto& c) { const auto taken = std::move(c); }, ""},
          {"moved away and refilled", [](auto& c) { (void)Container(std::move(c)), c.push_back(5); }, "5"},
          {"insert in front", [](auto& c) { c.insert(0, 9); }, "9 1 2 3"},
          {"insert at the end", [](auto& c) { c.insert(3, 9); }, "1 2 3 9"},
          {"erase", [](auto& c) { c.erase(1); }, "1 3"},
          {"erase several", [](auto& c) { c.erase(0, 2); }, "3"},
          {"erase all", [](auto& c) { c.erase(0, 3); }, ""},
          {"shrink", [](auto& c) { c.resize(1, 0); }, "1"},
          {"grow", [](auto& c) { c.resize(5, 7); }, "1 2 3 7 7"},
          {"clear", [](auto& c) { c.clear(); }, ""},
          {"clear and refill", [](auto& c) { c.clear(), c.push_back(5); }, "5"}};
}

template <class Container>
struct SharedContent : ::testing::Test {};
using containers = ::testing::Types<shared_array<int>, shared_list<int, 2>, shared_list<int, 32>>;
TYPED_TEST_SUITE(SharedContent, containers);

TYPED_TEST(SharedContent, ChangesStayOnTheirOwnSideWhicheverSideChanges) {
  for (const auto& c : changes<TypeParam>())
    for (const bool change_the_copy : {false, true}) {
      TypeParam original{1, 2, 3};
      TypeParam copy = original;
      EXPECT_TRUE(copy.shares_with(original));
      c.apply(change_the_copy ? copy : original);
      EXPECT_EQ(print(change_the_copy ? copy : original), c.result) << c.name;
      EXPECT_EQ(print(change_the_copy ? original : copy), "1 2 3") << c.name;
    }
}

TYPED_TEST(SharedContent, EqualContentIsEqualSharedOrNot) {
  TypeParam a{1, 2, 3}, b{1, 2};
  EXPECT_NE(a, b);
  b.push_back(3);
  EXPECT_EQ(a, b);
  EXPECT_FALSE(a.shares_with(b));
  b.edit(2) = 4;
  EXPECT_NE(a, b);
}

TYPED_TEST(SharedContent, CopiesInTwoThreadsDoNotMeet) {
  TypeParam original;
  for (int i = 0; i < 100; ++i) original.push_back(i);
  const auto work = [](TypeParam mine, int step, int* sum) {
    for (int round = 0; round < 200; ++round) {
      TypeParam snapshot = mine;
      mine.edit(static_cast<std::size_t>(round % 100)) += step;
      *sum += snapshot[99];
    }
  };
  int one = 0, two = 0;
  std::thread other(work, original, 1, &one);
  work(original, 2, &two);
  other.join();
  // Element 99 changes after 100 of the 200 snapshots and after the last one.
  EXPECT_EQ(one, 100 * 99 + 100 * 100);
  EXPECT_EQ(two, 100 * 99 + 100 * 101);
  EXPECT_EQ(original[99], 99);
}

TEST(SharedList, OnlyTheChangedBlockIsCopied) {
  shared_list<shared_array<int>, 2> list;
  for (int i = 0; i < 6; ++i) list.push_back({i});
  const shared_list<shared_array<int>, 2> copy = list;
  list.edit(5).set(0, 9);
  EXPECT_EQ(&list[0], &copy[0]);
  EXPECT_NE(&list[4], &copy[4]);
  EXPECT_EQ(copy[5][0], 5);
}

// A record that cannot be copied while `copies` is 0. It notes who reads what has been freed, too: it owns memory.
struct fragile {
  static inline int copies = 1000;
  std::unique_ptr<int> value;

  fragile(int v = 0) : value(std::make_unique<int>(v)) {}
  fragile(const fragile& other) : value(std::make_unique<int>(*other.value)) {
    if (copies-- == 0) throw std::bad_alloc();
  }
  fragile(fragile&&) = default;
  fragile& operator=(const fragile&) = delete;
  fragile& operator=(fragile&&) = default;
  operator int() const { return *value; }
};

TEST(SharedList, AChangeThatFailsLeavesTheListAsItWas) {
  using list_type = shared_list<fragile, 2>;
  const struct {
    const char* name;
    std::function<void(list_type&)> apply;
    const char* result; // of {1, 2, 3, 4}
  } cases[] = {{"push_back", [](auto& l) { l.push_back(l[0]); }, "1 2 3 4 1"},
               {"insert", [](auto& l) { l.insert(1, fragile(9)); }, "1 9 2 3 4"},
               {"erase", [](auto& l) { l.erase(0, 1); }, "2 3 4"},
               {"grow", [](auto& l) { l.resize(5, l[1]); }, "1 2 3 4 2"}};
  for (const auto& c : cases) {
    int failures = 0;
    for (bool done = false; !done; failures += !done) {
      fragile::copies = 1000;
      const list_type original{1, 2, 3, 4};
      list_type list = original;
      fragile::copies = failures;
      try {
        c.apply(list);
        done = true;
      } catch (const std::bad_alloc&) {
      }
      EXPECT_EQ(print(list), done ? c.result : "1 2 3 4") << c.name << failures;
      EXPECT_EQ(print(original), "1 2 3 4") << c.name;
    }
    EXPECT_GT(failures, 0) << c.name;
  }
}

TEST(SharedContent, AChangeThroughAReferenceKeptTooLongEndsADebugBuild) {
  if (!detail::checks_sharing) GTEST_SKIP() << "only debug builds check";
  shared_array<int> numbers{1, 2, 3};
  int* kept = numbers.edit_data();
  EXPECT_DEATH(
      {
        const auto copy = numbers;
        kept[1] = 9;
      },
      "reference that was kept too long");
  shared_list<shared_array<int>, 2> records{{1}, {2}, {3}};
  EXPECT_DEATH(
      {
        shared_array<int>& record = records.edit(2);
        const auto copy = records;
        record = {4};
        auto changed = records;
        changed.edit(2);
      },
      "reference that was kept too long");
}

TEST(SharedArray, LivesInItsArenaUntilItGrowsOutOfIt) {
  memory_arena* arena = memory_arena::create(100);
  auto small = shared_array<int>::uninitialized(*arena, 3);
  std::fill_n(small.edit_data(), 3, 1);
  auto too_large = shared_array<int>::uninitialized(*arena, 100000); // falls back on the heap
  std::fill_n(too_large.edit_data(), 100000, 2);
  arena->release();
  const auto copy = small;
  small.push_back(4);
  EXPECT_EQ(print(small), "1 1 1 4");
  EXPECT_EQ(print(copy), "1 1 1");
  EXPECT_EQ(too_large.back(), 2);
}

// In which order arrays go, and whether their neighbours stay: their pages do not.
TEST(SharedArray, MemoryOfAnArenaGoesBackWithItsArrays) {
  constexpr std::size_t count = 200, numbers = 50000; // 200 kB each
  memory_arena* arena = memory_arena::create(count * numbers * sizeof(int) + (1 << 20));
  const auto resident_megabytes = [&] {
    std::vector<unsigned char> pages(count * numbers * sizeof(int) / memory_arena::page_size);
    EXPECT_EQ(mincore(static_cast<void*>(arena), pages.size() * memory_arena::page_size, pages.data()), 0);
    const auto resident = std::count_if(pages.begin(), pages.end(), [](unsigned char page) { return (page & 1) != 0; });
    return static_cast<std::size_t>(resident) * memory_arena::page_size / 1000000;
  };
  std::vector<shared_array<int>> arrays;
  for (std::size_t i = 0; i < count; ++i) {
    arrays.push_back(shared_array<int>::uninitialized(*arena, numbers));
    std::fill_n(arrays.back().edit_data(), numbers, static_cast<int>(i));
  }
  EXPECT_GE(resident_megabytes(), 39u);
  for (std::size_t i = 0; i < count / 2; i += 2) arrays[i].clear(); // every second one of the first half
  EXPECT_LE(resident_megabytes(), 31u);
  for (std::size_t i = count; i-- > count / 2;) arrays[i].clear(); // the second half, backwards
  EXPECT_LE(resident_megabytes(), 15u);
  for (std::size_t i = 1; i < count / 2; i += 2) {
    EXPECT_EQ(arrays[i].front(), static_cast<int>(i));
    EXPECT_EQ(arrays[i].back(), static_cast<int>(i));
  }
  arena->release();
}

TEST(SegmentItems, NumbersStaySharedWhileOnlyValuesChange) {
  segment_parameter_list one;
  one.push_back({11, 0.5});
  one.push_back({12, 0.25});
  segment_parameter_list two = one;
  two.set(1, {12, 8.0});
  EXPECT_TRUE(two.isc_numbers().shares_with(one.isc_numbers()));
  two.set(0, {13, 0.5});
  EXPECT_EQ(one[0], segment_parameter_data_record_type(11, 0.5));
  EXPECT_EQ(one[1], segment_parameter_data_record_type(12, 0.25));
  EXPECT_EQ(two[0], segment_parameter_data_record_type(13, 0.5));
  EXPECT_EQ(two[1], segment_parameter_data_record_type(12, 8.0));
  segment_system_list systems;
  systems.resize(1);
  EXPECT_EQ(systems[0], segment_system_data_record_type(0, 0.0, 1.0));
}

} // namespace
} // namespace vesk
