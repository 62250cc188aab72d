// Contiguous bulk content (points, pairs, values) shared by copies until one of them is changed.
//
// A copy of any size costs one counter. The first change after a copy costs one memcpy of the array. Counts are
// atomic: two copies may be in two threads; one object belongs to one thread at a time. A pointer or reference into the
// content is valid only until the next change of the array.
#pragma once

#include "dataset/sharing_check.h"
#include "platform/memory_arena.h"

#include <atomic>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>
#include <utility>

namespace vesk {

namespace detail {

// The header before the elements in memory.
struct array_block {
  std::atomic<std::uint32_t> users;
  std::uint32_t size;
  std::uint32_t capacity;
  std::uint32_t arena_pages; // pages from the arena's start to this block's page; 0 for a heap block

  void* elements() { return this + 1; }
};
static_assert(sizeof(array_block) == 16);

// A block with one user, size 0 and room for `capacity` elements. Throws std::bad_alloc or std::length_error.
array_block* make_array_block(std::size_t capacity, std::size_t element_size);

// The same block, with one user, resized to at least its own elements. It may have moved; if the system can move pages,
// no element is copied. Throws std::bad_alloc or std::length_error; the block is then unchanged.
array_block* resize_array_block(array_block* block, std::size_t capacity, std::size_t element_size);

// Like the first function, but in `arena`; uses the heap if the arena has no room.
array_block* make_array_block(memory_arena& arena, std::size_t capacity, std::size_t element_size);

void free_array_block(array_block* block, std::size_t element_size) noexcept;

// The arena that contains the block; null for a heap block.
memory_arena* arena_of(const array_block* block);

} // namespace detail

template <class T>
class shared_array {
  static_assert(std::is_trivially_copyable_v<T> && alignof(T) <= 16);

public:
  using value_type = T;
  using const_iterator = const T*;

  shared_array() = default;
  shared_array(std::size_t count, const T& value) { resize(count, value); }
  shared_array(std::initializer_list<T> values) {
    reserve(values.size());
    for (const T& value : values) push_back(value);
  }
  shared_array(const shared_array& other) noexcept : block_(other.block_) {
    if constexpr (detail::checks_sharing)
      if (block_) detail::check_copy(block_, holders(), content());
    if (block_) block_->users.fetch_add(1, std::memory_order_relaxed);
  }
  shared_array(shared_array&& other) noexcept : block_(std::exchange(other.block_, nullptr)) {}
  shared_array& operator=(const shared_array& other) noexcept {
    shared_array(other).swap(*this);
    return *this;
  }
  shared_array& operator=(shared_array&& other) noexcept {
    shared_array(std::move(other)).swap(*this);
    return *this;
  }
  ~shared_array() {
    if constexpr (detail::checks_sharing)
      if (block_) detail::check_leave(block_, holders(), content());
    if (block_ && block_->users.fetch_sub(1, std::memory_order_acq_rel) == 1)
      detail::free_array_block(block_, sizeof(T));
  }

  // `count` elements in `arena`; the caller fills them through `edit_data` of the result before making a copy.
  static shared_array uninitialized(memory_arena& arena, std::size_t count) {
    shared_array result;
    if (count == 0) return result;
    result.block_ = detail::make_array_block(arena, count, sizeof(T));
    result.block_->size = static_cast<std::uint32_t>(count);
    return result;
  }

  void swap(shared_array& other) noexcept { std::swap(block_, other.block_); }

  std::size_t size() const noexcept { return block_ ? block_->size : 0; }
  bool empty() const noexcept { return size() == 0; }
  const T* data() const noexcept { return block_ ? static_cast<const T*>(block_->elements()) : nullptr; }
  const T* begin() const noexcept { return data(); }
  const T* end() const noexcept { return data() + size(); }
  const T& operator[](std::size_t i) const noexcept {
    assert(i < size());
    return data()[i];
  }
  const T& front() const noexcept { return (*this)[0]; }
  const T& back() const noexcept { return (*this)[size() - 1]; }

  // The elements for changing, no longer shared with copies.
  T* edit_data() {
    if (!block_) return nullptr;
    own(block_->size);
    return elements();
  }
  T& edit(std::size_t i) {
    assert(i < size());
    return edit_data()[i];
  }
  void set(std::size_t i, const T& value) { edit(i) = value; }

  void reserve(std::size_t capacity) {
    if (capacity > size()) own(capacity);
  }
  void shrink_to_fit() {
    if (block_ && is_own() && block_->capacity > block_->size)
      block_ = detail::resize_array_block(block_, block_->size, sizeof(T));
  }
  void push_back(const T& value) {
    const T copy = value; // may be an element of this array
    const std::size_t n = size();
    own(n < room() ? n + 1 : n + n / 2 + 4);
    new (elements() + n) T(copy);
    ++block_->size;
  }
  void resize(std::size_t count, const T& value) {
    const T copy = value;
    const std::size_t n = size();
    if (count == n) return;
    if (count == 0) return clear();
    own(count);
    for (std::size_t i = n; i < count; ++i) new (elements() + i) T(copy);
    block_->size = static_cast<std::uint32_t>(count);
  }
  void insert(std::size_t position, const T& value) {
    assert(position <= size());
    push_back(value);
    T* all = elements();
    const T copy = all[size() - 1];
    std::memmove(static_cast<void*>(all + position + 1), all + position, (size() - 1 - position) * sizeof(T));
    all[position] = copy;
  }
  void erase(std::size_t position, std::size_t count = 1) {
    assert(position + count <= size());
    const std::size_t rest = size() - count;
    if (rest == 0) return clear();
    own(size());
    std::memmove(static_cast<void*>(elements() + position), elements() + position + count,
                 (rest - position) * sizeof(T));
    block_->size = static_cast<std::uint32_t>(rest);
  }
  void clear() noexcept { shared_array().swap(*this); }

  // The memory shared by copies, for code that counts memory; null if there is none.
  const detail::array_block* block() const noexcept { return block_; }

  // True if both read the same memory, so that a change of either makes a copy.
  bool shares_with(const shared_array& other) const noexcept { return block_ == other.block_; }

  friend bool operator==(const shared_array& a, const shared_array& b) {
    if (a.block_ == b.block_) return true;
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i)
      if (!(a[i] == b[i])) return false;
    return true;
  }

private:
  T* elements() noexcept { return static_cast<T*>(block_->elements()); }
  std::size_t room() const noexcept { return block_ ? block_->capacity : 0; }

  std::uint32_t holders() const noexcept { return block_->users.load(std::memory_order_acquire); }
  bool is_own() const noexcept { return holders() == 1; }
  std::span<const T> content() const noexcept { return {data(), size()}; }

  // Makes the block unshared, with room for at least `capacity` elements.
  void own(std::size_t capacity) {
    if (block_ && is_own()) {
      if (block_->capacity < capacity) block_ = detail::resize_array_block(block_, capacity, sizeof(T));
      return;
    }
    shared_array fresh;
    fresh.block_ = detail::make_array_block(capacity, sizeof(T));
    if (block_) {
      const std::size_t kept = size() < capacity ? size() : capacity;
      std::memcpy(fresh.block_->elements(), block_->elements(), kept * sizeof(T));
      fresh.block_->size = static_cast<std::uint32_t>(kept);
    }
    fresh.swap(*this);
  }

  detail::array_block* block_ = nullptr;
};

} // namespace vesk
