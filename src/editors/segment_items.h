// The data set's segments as items of a combo cell: "5: Halifax", and a last item for no segment.
#pragma once

#include "charts/grid.h"
#include "editors/editor_host.h"

#include <cstdint>
#include <string>
#include <unordered_map>

namespace vesk {

// An entry may also be the segment's number from 1, 0 for the last item, or the bare name if it is unique. Texts are
// made on demand; the index of names on the first bare name.
class segment_items final : public item_list {
public:
  // `last`: the item after the segments, "Boundary" or "None". `none`: the only item of an empty network; if it is
  // empty, `last` is used.
  segment_items(editor_host& host, std::string last, std::string none = {})
      : host_(host), last_(std::move(last)), none_(none.empty() ? last_ : std::move(none)) {}

  std::size_t size() const override { return count() + 1; }
  std::string text(std::size_t item) const override;
  std::string text_beyond(std::size_t item) const override { return std::to_string(item); }
  std::optional<std::size_t> find(std::string_view text) const override;
  std::string ambiguity(std::string_view name) const override;
  bool has_short_texts() const override { return true; }
  double number_of(std::size_t item) const override;
  std::optional<std::size_t> item_of(double number) const override;

  // During a paste into the segments the items are the future rows, with their new names, which are in the grid's first
  // column. Null: back to the data set's segments.
  void expect(const coming_rows* rows);

  // Drops the index of names, which would keep a closed network in memory.
  void forget() { expect(nullptr); }

  // Converts between references of records and items. A reference past the end is an item beyond the last; a negative
  // one is the last item.
  double item_of_reference(std::int32_t reference) const;
  std::int32_t reference_of_item(double item) const;

private:
  std::size_t present() const { return host_.data_set() ? host_.data_set()->segments.size() : 0; }
  std::size_t count() const { return coming_ ? coming_->row_count() : present(); }
  std::string name(std::size_t segment) const;
  const std::unordered_map<std::string, std::size_t>& names() const; // in upper case; count() for duplicates

  editor_host& host_;
  std::string last_, none_;
  const coming_rows* coming_ = nullptr;
  // Index of the segments in `named_`, valid while the data set shares them; or of the future rows.
  mutable bool coming_are_named_ = false;
  mutable shared_list<segment_data_type> named_;
  mutable std::unordered_map<std::string, std::size_t> names_;
};

} // namespace vesk
