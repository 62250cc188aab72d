#include "app/history.h"

#include "dataset/unshared_bytes.h"
#include "platform/memory_size.h"

#include <algorithm>
#include <cassert>
#include <utility>

namespace vesk {

std::size_t history::default_limit() {
  constexpr std::uint64_t most = 1'000'000'000;
  const std::uint64_t memory = physical_memory();
  return static_cast<std::size_t>(memory == 0 ? most : std::min(most, memory / 8));
}

// The present may have been edited since the step before was added, so that step is measured anew.
void history::add(document before, std::string label, const prevesk_dataset_data_type& now) {
  redo_.clear();
  if (!undo_.empty()) undo_.back().bytes = unshared_bytes(undo_.back().content.data_set, before.data_set);
  const std::size_t bytes = unshared_bytes(before.data_set, now);
  undo_.push_back({std::move(before), std::move(label), bytes});
  drop_beyond_limit();
}

document history::move_step(std::vector<step>& from, std::vector<step>& to, document now) {
  assert(!from.empty());
  step taken = std::move(from.back());
  from.pop_back();
  const std::size_t bytes = unshared_bytes(now.data_set, taken.content.data_set);
  to.push_back({std::move(now), std::move(taken.label), bytes});
  return std::move(taken.content);
}

std::size_t history::bytes() const {
  std::size_t sum = 0;
  for (const std::vector<step>* steps : {&undo_, &redo_})
    for (const step& each : *steps) sum += each.bytes;
  return sum;
}

void history::drop_beyond_limit() {
  while (undo_.size() > 1 && bytes() > limit_) undo_.erase(undo_.begin());
}

} // namespace vesk
