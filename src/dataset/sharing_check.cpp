#include "dataset/sharing_check.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>

namespace vesk::detail {

namespace {

// Not beside the content: a debug build must not have other sizes. Without allocations, which fail on purpose in tests;
// memory that shares a slot with later memory is no longer compared.
struct slot {
  const void* memory;
  std::uint64_t sum;
};
constexpr std::size_t slots = 1 << 18;

std::mutex mutex;
slot known[slots];

slot& slot_of(const void* memory) {
  return known[reinterpret_cast<std::uintptr_t>(memory) / alignof(std::max_align_t) % slots];
}

} // namespace

std::uint64_t sum_of_bytes(byte_span content, std::uint64_t before) {
  constexpr std::uint64_t odd = 0x9E3779B97F4A7C15;
  std::uint64_t sum = before ^ content.size(), word = 0;
  while (content.size() >= sizeof word) {
    std::memcpy(&word, content.data(), sizeof word);
    sum = (sum ^ word) * odd;
    content = content.subspan(sizeof word);
  }
  for (const std::byte byte : content) sum = (sum ^ static_cast<std::uint64_t>(byte)) * odd;
  return sum;
}

void note_sum(const void* memory, std::uint64_t sum) {
  const std::lock_guard lock(mutex);
  slot_of(memory) = {memory, sum};
}

void compare_sum(const void* memory, std::uint64_t sum) {
  {
    const std::lock_guard lock(mutex);
    const slot& noted = slot_of(memory);
    if (noted.memory != memory || noted.sum == sum) return;
  }
  std::fputs("vesk: shared data was changed through a reference that was kept too long.\n", stderr);
  std::abort();
}

} // namespace vesk::detail
