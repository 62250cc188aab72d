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

void history::set_limit(std::size_t limit) {
  limit_ = limit;
  drop_beyond_limit();
}

void history::add(document before, std::string label, const prevesk_dataset_data_type& now,
                  const std::string& merge_key, clock::time_point when) {
  redo_.clear();
  redo_floor_ = 0;
  if (has_edits() && !merge_key.empty() && undo_.back().merge_key == merge_key &&
      when - undo_.back().when <= std::chrono::seconds(2)) {
    undo_.back().when = when;
    return;
  }
  // The data set may have changed without a step since the last one was added; its size is then too low.
  if (!undo_.empty()) undo_.back().bytes = unshared_bytes(undo_.back().content.data_set, before.data_set);
  const std::size_t bytes = unshared_bytes(before.data_set, now);
  undo_.push_back({std::move(before), std::move(label), bytes, merge_key, when});
  drop_beyond_limit();
}

void history::set_file(std::uint64_t document_number, const std::string& file_name, const file_origin& origin) {
  for (std::deque<step>* steps : {&undo_, &redo_}) {
    for (step& each : *steps) {
      if (each.content.number != document_number) continue;
      each.content.file_name = file_name;
      each.content.data_set.origin = origin;
    }
  }
}

void history::begin_editing() {
  is_editing_ = true;
  undo_floor_ = undo_.size();
  redo_floor_ = redo_.size();
}

void history::end_editing() {
  is_editing_ = false;
  undo_floor_ = redo_floor_ = 0;
}

document history::move_step(std::deque<step>& from, std::deque<step>& to, document now) {
  assert(!from.empty());
  step taken = std::move(from.back());
  from.pop_back();
  if (!from.empty()) from.back().merge_key.clear(); // further typing begins a new step
  const std::size_t bytes = unshared_bytes(now.data_set, taken.content.data_set);
  to.push_back({std::move(now), std::move(taken.label), bytes, {}, {}});
  return std::move(taken.content);
}

std::size_t history::bytes() const {
  std::size_t sum = 0;
  for (const std::deque<step>* steps : {&undo_, &redo_})
    for (const step& each : *steps) sum += each.bytes;
  return sum;
}

void history::drop_beyond_limit() {
  while (undo_.size() > 1 && bytes() > limit_) {
    undo_.pop_front();
    if (undo_floor_ > 0) --undo_floor_;
  }
}

} // namespace vesk
