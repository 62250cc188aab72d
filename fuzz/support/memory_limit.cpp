// Replaces the program's operator new: all of its memory together stays below the limit, with any sanitizer.
#include "memory_limit.h"

#include <atomic>
#include <cstdlib>
#include <malloc.h>
#include <new>
#include <sys/resource.h>

namespace {

std::atomic<std::size_t> in_use{0};

void* take(std::size_t size) noexcept {
  if (size > vesk::fuzz::most_memory || in_use.load(std::memory_order_relaxed) + size > vesk::fuzz::most_memory)
    return nullptr;
  void* const memory = std::malloc(size ? size : 1);
  if (memory) in_use.fetch_add(malloc_usable_size(memory), std::memory_order_relaxed);
  return memory;
}

void* take_or_throw(std::size_t size) {
  if (void* const memory = take(size)) return memory;
  throw std::bad_alloc();
}

void give_back(void* memory) noexcept {
  if (!memory) return;
  in_use.fetch_sub(malloc_usable_size(memory), std::memory_order_relaxed);
  std::free(memory);
}

} // namespace

void* operator new(std::size_t size) {
  return take_or_throw(size);
}
void* operator new[](std::size_t size) {
  return take_or_throw(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return take(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return take(size);
}
void operator delete(void* memory) noexcept {
  give_back(memory);
}
void operator delete[](void* memory) noexcept {
  give_back(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  give_back(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
  give_back(memory);
}
void operator delete(void* memory, const std::nothrow_t&) noexcept {
  give_back(memory);
}
void operator delete[](void* memory, const std::nothrow_t&) noexcept {
  give_back(memory);
}

extern "C" const char* __asan_default_options() {
  return "handle_abort=1:allocator_may_return_null=1:max_allocation_size_mb=1024:malloc_context_size=12";
}
// Libraries that lose what they had taken when a file turns out to be damaged.
extern "C" const char* __lsan_default_suppressions() {
  return "leak:libhdf5\nleak:libnetcdf\nleak:libxerces-c\n";
}
extern "C" const char* __ubsan_default_options() {
  return "print_stacktrace=1";
}

namespace vesk::fuzz {

void limit_memory() {
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
  constexpr rlim_t limit = 3 * rlim_t{most_memory} / 2; // with the program itself and its stacks
  const rlimit both{limit, limit};
  setrlimit(RLIMIT_AS, &both);
#endif
  const rlimit none{0, 0};
  setrlimit(RLIMIT_CORE, &none);
}

} // namespace vesk::fuzz
