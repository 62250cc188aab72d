#include "platform/memory_arena.h"

#include <new>
#include <sys/mman.h>

namespace vesk {

namespace {
constexpr std::size_t large_page = std::size_t{2} << 20;
constexpr std::size_t smallest_returned = std::size_t{64} << 10; // below this a system call costs more than it saves
// One call per array would break up large pages, and cost a seventh of the time to read a data file and drop it.
constexpr std::size_t returned_at_once = 2 * large_page;

std::size_t round_up(std::size_t n, std::size_t unit) {
  return (n + unit - 1) / unit * unit;
}

void* reserve(std::size_t bytes) {
  return mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
}
} // namespace

memory_arena* memory_arena::create(std::size_t bytes) {
  std::size_t whole = round_up(bytes + page_size, page_size);
  void* memory = reserve(whole);
  if (memory == MAP_FAILED) memory = reserve(whole = page_size); // only the header
  if (memory == MAP_FAILED) throw std::bad_alloc();
  if (whole >= 4 * large_page) madvise(memory, whole, MADV_HUGEPAGE); // only a hint
  return new (memory) memory_arena(whole);
}

void* memory_arena::allocate(std::size_t bytes) {
  const std::size_t size = round_up(bytes, 16);
  if (size > bytes_ - next_) return nullptr;
  void* begin = reinterpret_cast<char*>(this) + next_;
  next_ += size;
  users_.fetch_add(1, std::memory_order_relaxed);
  return begin;
}

void memory_arena::release() {
  if (users_.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
  const std::size_t whole = bytes_;
  this->~memory_arena();
  munmap(static_cast<void*>(this), whole);
}

void memory_arena::release(void* begin, std::size_t bytes) {
  const auto first = static_cast<std::size_t>(static_cast<char*>(begin) - reinterpret_cast<char*>(this));
  if (users_.load(std::memory_order_relaxed) > 1) note_released({first, first + round_up(bytes, 16)});
  release();
}

void memory_arena::note_released(range memory) {
  const std::lock_guard lock(mutex_);
  if (memory.first == released_.last) {
    released_.last = memory.last;
  } else if (memory.last == released_.first) {
    released_.first = memory.first;
  } else {
    give_back(released_, smallest_returned);
    released_ = memory;
  }
  if (give_back(released_, returned_at_once)) released_.first = released_.last;
}

bool memory_arena::give_back(range memory, std::size_t least) {
  const std::size_t first = round_up(memory.first, page_size), last = memory.last / page_size * page_size;
  if (last < first + least) return false;
  madvise(reinterpret_cast<char*>(this) + first, last - first, MADV_DONTNEED);
  return true;
}

} // namespace vesk
