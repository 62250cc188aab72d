// A list of records shared by copies until one of them is changed.
//
// Records are stored in reference-counted blocks: a copy of the list costs one counter; the first change after it
// copies the handles and the one block that is changed. Records are read by position or iterator and changed through
// `edit`; a reference is valid only until the list is next copied or changed. Counts are atomic: two copies may be in
// two threads; one object belongs to one thread at a time.
//
// Arguments may be the list's own records. If a change fails for lack of memory the list is unchanged, except that
// `resize` may have appended some of its records. Records must not throw when moved.
#pragma once

#include "dataset/shared_value.h"

#include <cassert>
#include <compare>
#include <cstddef>
#include <initializer_list>
#include <iterator>
#include <utility>
#include <vector>

namespace vesk {

template <class T, std::size_t BlockSize = 32>
class shared_list {
public:
  using value_type = T;
  using block = shared_value<std::vector<T>>;
  class const_iterator;

  shared_list() = default;
  shared_list(std::initializer_list<T> values) {
    for (const T& value : values) push_back(value);
  }
  shared_list(const shared_list&) = default;
  shared_list(shared_list&& other) noexcept : blocks_(std::move(other.blocks_)), size_(std::exchange(other.size_, 0)) {}
  shared_list& operator=(const shared_list&) = default;
  shared_list& operator=(shared_list&& other) noexcept {
    blocks_ = std::move(other.blocks_);
    size_ = std::exchange(other.size_, 0);
    return *this;
  }
  ~shared_list() = default;

  std::size_t size() const noexcept { return size_; }
  bool empty() const noexcept { return size_ == 0; }

  const T& operator[](std::size_t i) const noexcept {
    assert(i < size_);
    return (*(*blocks_)[i / BlockSize])[i % BlockSize];
  }
  const T& front() const noexcept { return (*this)[0]; }
  const T& back() const noexcept { return (*this)[size_ - 1]; }
  const_iterator begin() const noexcept { return {this, 0}; }
  const_iterator end() const noexcept { return {this, size_}; }

  // Record i for changing, no longer shared with copies.
  T& edit(std::size_t i) {
    assert(i < size_);
    return blocks_.edit()[i / BlockSize].edit()[i % BlockSize];
  }
  T& edit_back() { return edit(size_ - 1); }

  void push_back(T value) {
    auto& blocks = blocks_.edit();
    if (size_ % BlockSize == 0) {
      block fresh;
      if (size_ != 0) fresh.edit().reserve(BlockSize); // a list longer than one block will keep growing
      fresh.edit().push_back(std::move(value));
      blocks.push_back(std::move(fresh));
    } else {
      blocks.back().edit().push_back(std::move(value));
    }
    ++size_;
  }
  void resize(std::size_t count, const T value = T{}) {
    if (count < size_) erase(count, size_ - count);
    while (size_ < count) push_back(value);
  }
  void insert(std::size_t position, T value) {
    assert(position <= size_);
    own(position, size_);
    push_back(std::move(value));
    T inserted = std::move(edit_back());
    for (std::size_t i = size_ - 1; i > position; --i) edit(i) = std::move(edit(i - 1));
    edit(position) = std::move(inserted);
  }
  void erase(std::size_t position, std::size_t count = 1) {
    assert(position + count <= size_);
    if (count == 0) return;
    const std::size_t rest = size_ - count;
    own(position, position == rest ? position + 1 : size_);
    for (std::size_t i = position; i < rest; ++i) edit(i) = std::move(edit(i + count));
    auto& blocks = blocks_.edit();
    blocks.resize((rest + BlockSize - 1) / BlockSize);
    if (rest % BlockSize != 0) {
      auto& last = blocks.back().edit();
      last.erase(last.begin() + static_cast<std::ptrdiff_t>(rest % BlockSize), last.end());
    }
    size_ = rest;
  }
  void clear() noexcept {
    blocks_.reset();
    size_ = 0;
  }

  // True if both read the same memory, so that a change of either makes a copy.
  bool shares_with(const shared_list& other) const noexcept { return blocks_.shares_with(other.blocks_); }

  friend bool operator==(const shared_list& a, const shared_list& b) {
    if (a.size_ != b.size_) return false;
    if (a.blocks_.shares_with(b.blocks_)) return true;
    for (std::size_t i = 0; i < a.size_; ++i)
      if (!(a[i] == b[i])) return false;
    return true;
  }

  // The shared blocks, for code that counts memory.
  const shared_value<std::vector<block>>& blocks() const { return blocks_; }

private:
  // Makes the blocks of the records [first, last) unshared, so that editing them cannot fail.
  void own(std::size_t first, std::size_t last) {
    auto& blocks = blocks_.edit();
    for (std::size_t i = first / BlockSize; i * BlockSize < last; ++i) blocks[i].edit();
  }

  shared_value<std::vector<block>> blocks_; // all full except the last
  std::size_t size_ = 0;
};

template <class T, std::size_t BlockSize>
class shared_list<T, BlockSize>::const_iterator {
public:
  using iterator_category = std::random_access_iterator_tag;
  using value_type = T;
  using difference_type = std::ptrdiff_t;
  using pointer = const T*;
  using reference = const T&;

  const_iterator() = default;
  const_iterator(const shared_list* list, std::size_t position) : list_(list), position_(position) {}

  reference operator*() const { return (*list_)[position_]; }
  pointer operator->() const { return &**this; }
  reference operator[](difference_type n) const { return *(*this + n); }
  const_iterator& operator++() { return *this += 1; }
  const_iterator operator++(int) { return std::exchange(*this, *this + 1); }
  const_iterator& operator--() { return *this -= 1; }
  const_iterator operator--(int) { return std::exchange(*this, *this - 1); }
  const_iterator& operator+=(difference_type n) {
    position_ = static_cast<std::size_t>(static_cast<difference_type>(position_) + n);
    return *this;
  }
  const_iterator& operator-=(difference_type n) { return *this += -n; }
  friend const_iterator operator+(const_iterator i, difference_type n) { return i += n; }
  friend const_iterator operator+(difference_type n, const_iterator i) { return i += n; }
  friend const_iterator operator-(const_iterator i, difference_type n) { return i -= n; }
  friend difference_type operator-(const_iterator a, const_iterator b) {
    return static_cast<difference_type>(a.position_) - static_cast<difference_type>(b.position_);
  }
  friend bool operator==(const const_iterator& a, const const_iterator& b) { return a.position_ == b.position_; }
  friend auto operator<=>(const const_iterator& a, const const_iterator& b) { return a.position_ <=> b.position_; }

private:
  const shared_list* list_ = nullptr;
  std::size_t position_ = 0;
};

} // namespace vesk
