// One large block of memory for many arrays that are read together and mostly live together.
//
// Address space for the whole block is reserved at once; pages are taken from the system only when they are first
// written, in large pages where the system has them. The arena lives on the heap of the system, not of the program:
// it is created with `create`, counts its users itself and goes when the last one has left.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <mutex>

namespace vesk {

class memory_arena {
public:
  static constexpr std::size_t page_size = 4096;

  // Reserves `bytes` and returns an arena with one user, the caller. One that cannot be reserved is an arena without
  // room, for the heap may still serve what is really needed. Throws std::bad_alloc when not even a page is available.
  static memory_arena* create(std::size_t bytes);

  memory_arena(const memory_arena&) = delete;
  memory_arena& operator=(const memory_arena&) = delete;

  // The next `bytes` bytes, aligned to 16; nullptr when the reservation is used up. Adds one user. The thread that
  // created the arena only.
  void* allocate(std::size_t bytes);

  // Bytes of the whole reservation, which the last user gives back.
  std::size_t size() const { return bytes_; }

  // One user less; the last one frees the arena. Any thread.
  void release();

  // One user less, whose memory is [begin, begin + bytes). It goes back to the system together with its neighbours:
  // when 4 MiB in one piece are free, or memory elsewhere becomes free. Any thread.
  void release(void* begin, std::size_t bytes);

private:
  struct range {
    std::size_t first = 0, last = 0; // bytes from the arena's begin, the last one excluded
  };

  void note_released(range memory);
  bool give_back(range memory, std::size_t least);

  explicit memory_arena(std::size_t bytes) : bytes_(bytes) {}
  ~memory_arena() = default;

  std::atomic<std::uint64_t> users_{1};
  const std::size_t bytes_; // of the whole reservation, this header's page included
  std::size_t next_ = page_size;
  std::mutex mutex_;
  range released_; // guarded by mutex_; not yet given back
};

} // namespace vesk
