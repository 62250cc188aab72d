// A value whose copies share one object until one of them is changed.
//
// Reading never copies. `edit` first makes the object unshared. A default-constructed holder has no object and reads as
// T{}. Two holders of one object may be in two threads; one holder belongs to one thread at a time.
#pragma once

#include "dataset/sharing_check.h"

#include <atomic>
#include <cstdint>
#include <utility>

namespace vesk {

template <class T>
class shared_value {
public:
  shared_value() = default;
  explicit shared_value(T value) : node_(new node(std::move(value))) {}
  shared_value(const shared_value& other) noexcept : node_(other.node_) { retain(); }
  shared_value(shared_value&& other) noexcept : node_(std::exchange(other.node_, nullptr)) {}
  shared_value& operator=(const shared_value& other) noexcept {
    shared_value(other).swap(*this);
    return *this;
  }
  shared_value& operator=(shared_value&& other) noexcept {
    shared_value(std::move(other)).swap(*this);
    return *this;
  }
  ~shared_value() { drop(); }

  void swap(shared_value& other) noexcept { std::swap(node_, other.node_); }

  const T& operator*() const noexcept { return node_ ? node_->value : empty(); }
  const T* operator->() const noexcept { return &**this; }

  // The value for changing, no longer shared with copies. The reference is valid until the holder is copied or changed.
  T& edit() {
    if (!node_)
      node_ = new node(T{});
    else if (holders() != 1)
      shared_value(new node(node_->value)).swap(*this);
    return node_->value;
  }

  void reset() noexcept { shared_value().swap(*this); }

  // The address of the shared object; null if there is none.
  const void* address() const noexcept { return node_; }

  // True if both hold the same object; equal values in two objects do not count.
  bool shares_with(const shared_value& other) const noexcept { return node_ == other.node_; }

  friend bool operator==(const shared_value& a, const shared_value& b) { return a.node_ == b.node_ || *a == *b; }

private:
  struct node {
    explicit node(T v) : value(std::move(v)) {}
    std::atomic<std::uint32_t> users{1};
    T value;
  };
  explicit shared_value(node* owned) noexcept : node_(owned) {}

  static const T& empty() noexcept {
    static const T value{};
    return value;
  }
  void retain() noexcept {
    if (!node_) return;
    if constexpr (detail::checks_sharing) detail::check_copy(node_, holders(), node_->value);
    node_->users.fetch_add(1, std::memory_order_relaxed);
  }
  void drop() noexcept {
    if constexpr (detail::checks_sharing)
      if (node_) detail::check_leave(node_, holders(), node_->value);
    if (node_ && node_->users.fetch_sub(1, std::memory_order_acq_rel) == 1) delete node_;
  }

  std::uint32_t holders() const noexcept { return node_->users.load(std::memory_order_acquire); }

  node* node_ = nullptr;
};

} // namespace vesk
