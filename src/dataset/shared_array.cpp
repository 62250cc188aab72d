#include "dataset/shared_array.h"

#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
#include <stdexcept>

namespace vesk::detail {

namespace {
std::size_t block_bytes(std::size_t capacity, std::size_t element_size) {
  if (capacity > std::numeric_limits<std::uint32_t>::max())
    throw std::length_error("array of more than 2^32-1 elements");
  return sizeof(array_block) + capacity * element_size;
}

array_block* place(void* memory, std::size_t capacity, std::uint32_t arena_pages) {
  return new (memory) array_block{1, 0, static_cast<std::uint32_t>(capacity), arena_pages};
}
} // namespace

memory_arena* arena_of(const array_block* block) {
  if (block->arena_pages == 0) return nullptr;
  const std::size_t in_page = reinterpret_cast<std::uintptr_t>(block) % memory_arena::page_size;
  std::byte* const begin = reinterpret_cast<std::byte*>(const_cast<array_block*>(block));
  return reinterpret_cast<memory_arena*>(begin - in_page - block->arena_pages * memory_arena::page_size);
}

array_block* make_array_block(std::size_t capacity, std::size_t element_size) {
  void* memory = std::malloc(block_bytes(capacity, element_size));
  if (!memory) throw std::bad_alloc();
  return place(memory, capacity, 0);
}

array_block* resize_array_block(array_block* block, std::size_t capacity, std::size_t element_size) {
  const std::uint32_t size = block->size;
  if (block->arena_pages != 0) {
    array_block* const moved = make_array_block(capacity, element_size);
    std::memcpy(moved->elements(), block->elements(), std::size_t{size} * element_size);
    moved->size = size;
    free_array_block(block, element_size);
    return moved;
  }
  void* const memory = std::realloc(static_cast<void*>(block), block_bytes(capacity, element_size));
  if (!memory) throw std::bad_alloc();
  array_block* const resized = place(memory, capacity, 0);
  resized->size = size;
  return resized;
}

array_block* make_array_block(memory_arena& arena, std::size_t capacity, std::size_t element_size) {
  void* memory = arena.allocate(block_bytes(capacity, element_size));
  if (!memory) return make_array_block(capacity, element_size);
  const auto pages = reinterpret_cast<std::uintptr_t>(memory) / memory_arena::page_size -
                     reinterpret_cast<std::uintptr_t>(&arena) / memory_arena::page_size;
  return place(memory, capacity, static_cast<std::uint32_t>(pages));
}

void free_array_block(array_block* block, std::size_t element_size) noexcept {
  if (block->arena_pages == 0) return std::free(block);
  arena_of(block)->release(block, sizeof(array_block) + std::size_t{block->capacity} * element_size);
}

} // namespace vesk::detail
