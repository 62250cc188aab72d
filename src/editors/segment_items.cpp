#include "editors/segment_items.h"

#include "platform/letter_case.h"

#include <charconv>
#include <cmath>

namespace vesk {

std::string segment_items::text(std::size_t item) const {
  if (item >= count()) return count() == 0 ? none_ : last_;
  return std::to_string(item + 1) + ": " + host_.data_set()->segments[item].name.str();
}

std::optional<std::size_t> segment_items::find(std::string_view text) const {
  const std::size_t n = count();
  std::size_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  const bool is_number = error == std::errc() && end == text.data() + text.size();
  if (is_number && number <= n) return number == 0 ? n : number - 1;
  const std::string wanted = upper_case(text);
  if (wanted == upper_case(last_)) return n;
  // A whole item names its segment by the number in front of it.
  if (error == std::errc() && end != text.data() && number >= 1 && number <= n &&
      wanted == upper_case(this->text(number - 1)))
    return number - 1;
  const auto found = names().find(wanted);
  return found != names().end() && found->second < n ? std::optional(found->second) : std::nullopt;
}

const std::unordered_map<std::string, std::size_t>& segment_items::names() const {
  const auto& segments = host_.data_set()->segments;
  if (named_.size() == segments.size() && named_.shares_with(segments)) return names_;
  names_.clear();
  for (std::size_t i = 0; i < segments.size(); ++i) {
    const auto [place, is_new] = names_.emplace(upper_case(segments[i].name.str()), i);
    if (!is_new) place->second = segments.size();
  }
  named_ = segments;
  return names_;
}

double segment_items::number_of(std::size_t item) const {
  return item == count() ? 0 : static_cast<double>(item < count() ? item + 1 : item);
}

std::optional<std::size_t> segment_items::item_of(double number) const {
  if (std::floor(number) != number || number < 0 || number > static_cast<double>(count())) return std::nullopt;
  return number == 0 ? count() : static_cast<std::size_t>(number) - 1;
}

double segment_items::item_of_reference(std::int32_t reference) const {
  const auto n = static_cast<double>(count());
  if (reference < 0) return n;
  return reference < n ? reference : reference + 1.0;
}

std::int32_t segment_items::reference_of_item(double item) const {
  const auto n = static_cast<double>(count());
  if (item == n) return no_segment;
  return static_cast<std::int32_t>(item < n ? item : item - 1);
}

} // namespace vesk
