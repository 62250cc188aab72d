// The items of a combo cell.
//
// Texts are made on demand: a list of 1e5 segments builds none before its popup is opened.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vesk {

class item_list {
public:
  virtual ~item_list() = default;

  virtual std::size_t size() const = 0;
  virtual std::string text(std::size_t item) const = 0; // item: below size()

  // The text shown for a stored position without an item.
  virtual std::string text_beyond(std::size_t) const { return {}; }

  // The item meant by a typed or pasted text; nothing if none or several match.
  virtual std::optional<std::size_t> find(std::string_view text) const;

  // For a text that means more than one item: which ones, and how to write them, as the end of a sentence that begins
  // with the text. Empty for all others.
  virtual std::string ambiguity(std::string_view) const { return {}; }

  // Whether an entry may also be a text that is not among the items; `find` then interprets it.
  virtual bool takes_other_texts() const { return false; }

  // Whether `find` also accepts shorter texts, such as numbers, that a user types instead of choosing.
  virtual bool has_short_texts() const { return false; }

  // The numbers of the items in expressions: their positions from 0, unless a list overrides this. `item_of` gives
  // nothing for a number without an item.
  virtual double number_of(std::size_t item) const { return static_cast<double>(item); }
  virtual std::optional<std::size_t> item_of(double number) const;
};

// A list that never changes.
class fixed_items final : public item_list {
public:
  // `stand_in`: the item shown for a position without one.
  explicit fixed_items(std::vector<std::string> texts, std::optional<std::size_t> stand_in = std::nullopt)
      : texts_(std::move(texts)), stand_in_(stand_in) {}

  std::size_t size() const override { return texts_.size(); }
  std::string text(std::size_t item) const override { return texts_[item]; }
  std::string text_beyond(std::size_t) const override {
    return stand_in_ && *stand_in_ < size() ? texts_[*stand_in_] : std::string();
  }

private:
  std::vector<std::string> texts_;
  std::optional<std::size_t> stand_in_;
};

} // namespace vesk
