#include "editors/segment_items.h"

#include "dataset/any_case.h"
#include "dataset/text_encoding.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <vector>

namespace vesk {

namespace {

std::string_view without_blanks(std::string_view text) {
  while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
  while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
  return text;
}

} // namespace

std::string segment_items::text(std::size_t item) const {
  if (item >= count()) return count() == 0 ? none_ : last_;
  return std::to_string(item + 1) + ": " + name(item);
}

std::string segment_items::name(std::size_t segment) const {
  if (coming_)
    if (const auto pasted = coming_->field(segment, 0)) return std::string(*pasted);
  return segment < present() ? shown_text(host_.data_set()->segments[segment].name) : segment_data_type{}.name.str();
}

void segment_items::expect(const coming_rows* rows) {
  coming_ = rows;
  coming_are_named_ = false;
  named_ = {};
  names_.clear();
}

// A whole item identifies its segment by the leading number. In a pasted item, the name has lost leading and trailing
// blanks.
std::optional<std::size_t> segment_items::find(std::string_view text) const {
  const std::size_t n = count();
  std::size_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  const std::string_view rest(end, static_cast<std::size_t>(text.data() + text.size() - end));
  const bool has_number = error == std::errc() && end != text.data() && number <= n;
  if (has_number && rest.empty()) return number == 0 ? n : number - 1;
  if (has_number && number >= 1 && rest.starts_with(':') &&
      equal_names(without_blanks(rest.substr(1)), without_blanks(name(number - 1))))
    return number - 1;
  if (equal_names(text, last_)) return n;
  if (text.empty()) return std::nullopt; // a blank field is not the name of a segment without a name
  const auto found = names().find(in_capitals(text));
  return found != names().end() && found->second < n ? std::optional(found->second) : std::nullopt;
}

std::string segment_items::ambiguity(std::string_view text) const {
  if (text.empty()) return {};    // a blank field names none of the segments without a name
  constexpr std::size_t most = 3; // that are listed
  const std::string wanted = in_capitals(text);
  const auto found = names().find(wanted);
  if (found == names().end() || found->second < count()) return {};
  std::vector<std::size_t> numbers;
  for (std::size_t i = 0; i < count(); ++i)
    if (in_capitals(without_blanks(name(i))) == wanted) numbers.push_back(i + 1);
  std::string list;
  for (std::size_t i = 0; i < std::min(numbers.size(), most); ++i)
    list += (i == 0 ? "" : i + 1 == numbers.size() ? " and " : ", ") + std::to_string(numbers[i]);
  if (numbers.size() > most) list += " and " + std::to_string(numbers.size() - most) + " more";
  return " is the name of segments " + list + "; write the number, or \"" + this->text(numbers[0] - 1) + "\"";
}

const std::unordered_map<std::string, std::size_t>& segment_items::names() const {
  const std::size_t n = count();
  const bool are_made =
      coming_ ? coming_are_named_ : named_.size() == n && named_.shares_with(host_.data_set()->segments);
  if (are_made) return names_;
  names_.clear();
  for (std::size_t i = 0; i < n; ++i) {
    const auto [place, is_new] = names_.emplace(in_capitals(without_blanks(name(i))), i);
    if (!is_new) place->second = n;
  }
  if (coming_)
    coming_are_named_ = true;
  else
    named_ = host_.data_set()->segments;
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
