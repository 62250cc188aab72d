#include "charts/pasted_text.h"

#include <algorithm>
#include <optional>

namespace vesk {

namespace {

// Inline, since it is called for each character.
inline bool ends_field(std::string_view text, std::size_t i) {
  if (i == text.size() || text[i] == '\t' || text[i] == '\n') return true;
  return text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n';
}

// Reads a quoted field at `i` and moves `i` past it. Nothing, with `i` unchanged, if the quotes do not enclose a whole
// field; they are then part of an unquoted one.
std::optional<std::string> quoted_field(std::string_view text, std::size_t& i) {
  if (i == text.size() || text[i] != '"') return std::nullopt;
  std::string field;
  for (std::size_t k = i + 1; k < text.size(); ++k) {
    if (text[k] != '"') {
      field += text[k];
    } else if (k + 1 < text.size() && text[k + 1] == '"') {
      field += text[k++];
    } else if (ends_field(text, k + 1)) {
      i = k + 1;
      return field;
    } else {
      break;
    }
  }
  return std::nullopt;
}

} // namespace

pasted_text::pasted_text(std::string_view text) {
  // Counted first: growing the lists of a million fields costs as much as finding the fields.
  const auto lines = static_cast<std::size_t>(std::ranges::count(text, '\n')) + 1;
  ends_.reserve(lines);
  fields_.reserve(static_cast<std::size_t>(std::ranges::count(text, '\t')) + lines);
  for (std::size_t i = 0; i < text.size();) {
    if (auto quoted = quoted_field(text, i)) {
      unquoted_.push_back(std::make_unique<std::string>(std::move(*quoted)));
      fields_.push_back(*unquoted_.back());
    } else {
      const std::size_t begin = i;
      while (!ends_field(text, i)) ++i;
      fields_.push_back(text.substr(begin, i - begin));
    }
    if (i < text.size() && text[i] == '\t') {
      ++i;
      if (i < text.size()) continue;
      fields_.emplace_back(); // a tab at the very end is followed by an empty field
    }
    if (i < text.size() && text[i] == '\r') ++i;
    if (i < text.size()) ++i;
    ends_.push_back(fields_.size());
  }
}

} // namespace vesk
