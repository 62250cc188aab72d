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

std::uint64_t sum_of(byte_span content) {
  constexpr std::uint64_t odd = 0x9E3779B97F4A7C15;
  std::uint64_t sum = content.size(), word = 0;
  while (content.size() >= sizeof word) {
    std::memcpy(&word, content.data(), sizeof word);
    sum = (sum ^ word) * odd;
    content = content.subspan(sizeof word);
  }
  for (const std::byte byte : content) sum = (sum ^ static_cast<std::uint64_t>(byte)) * odd;
  return sum;
}

void compare(const void* memory, byte_span content) {
  const std::uint64_t sum = sum_of(content);
  {
    const std::lock_guard lock(mutex);
    const slot& noted = slot_of(memory);
    if (noted.memory != memory || noted.sum == sum) return;
  }
  std::fputs("vesk: shared data was changed through a reference that was kept too long.\n", stderr);
  std::abort();
}

} // namespace

void check_copy(const void* memory, std::uint32_t holders, byte_span content) {
  if (holders > 1) return compare(memory, content);
  const std::uint64_t sum = sum_of(content);
  const std::lock_guard lock(mutex);
  slot_of(memory) = {memory, sum};
}

void check_leave(const void* memory, std::uint32_t holders, byte_span content) {
  if (holders > 1) compare(memory, content);
}

} // namespace vesk::detail
