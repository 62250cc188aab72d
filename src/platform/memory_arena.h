// One large block of memory for many arrays that are read together and mostly live together.
//
// Address space for the whole block is reserved at once. The system provides pages only when they are first written,
// large ones if it has them. The arena is created with `create` in its own system memory, outside the program's heap;
// it counts its users and frees itself with the last one.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <mutex>

namespace vesk {

class memory_arena {
public:
  static constexpr std::size_t page_size = 4096;

  // Reserves `bytes` and returns an arena with one user, the caller. If the reservation fails the arena has no room;
  // the heap may still provide the memory that is really needed. Throws std::bad_alloc when not even one page is
  // available.
  static memory_arena* create(std::size_t bytes);

  memory_arena(const memory_arena&) = delete;
  memory_arena& operator=(const memory_arena&) = delete;

  // The next `bytes` bytes, aligned to 16; nullptr when the reservation is used up. Adds one user. Only on the thread
  // that created the arena.
  void* allocate(std::size_t bytes);

  // Bytes of the whole reservation, freed by the last user.
  std::size_t size() const { return bytes_; }

  // Removes a user; the last one frees the arena. Any thread.
  void release();

  // Removes a user whose memory is [begin, begin + bytes). It is returned to the system together with adjacent free
  // memory: when 4 MiB in one piece are free, or memory elsewhere is freed. Any thread.
  void release(void* begin, std::size_t bytes);

private:
  struct range {
    std::size_t first = 0, last = 0; // byte offsets in the arena; last is excluded
  };

  void note_released(range memory);
  bool give_back(range memory, std::size_t least);

  explicit memory_arena(std::size_t bytes) : bytes_(bytes) {}
  ~memory_arena() = default;

  std::atomic<std::uint64_t> users_{1};
  const std::size_t bytes_; // of the whole reservation, including the page of this header
  std::size_t next_ = page_size;
  std::mutex mutex_;
  range released_; // guarded by mutex_; not yet returned to the system
};

} // namespace vesk
