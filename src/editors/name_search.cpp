#include "editors/name_search.h"

#include "platform/letter_case.h"

#include <algorithm>

namespace vesk {

bool contains_in_any_case(std::string_view name, std::string_view wanted) {
  const auto same = [](char a, char b) { return upper_case(a) == upper_case(b); };
  return std::ranges::search(name, wanted, same).begin() != name.end() || wanted.empty();
}

std::optional<std::size_t> find_name(std::size_t count, std::size_t from,
                                     const std::function<std::string(std::size_t)>& name, std::string_view wanted) {
  if (wanted.empty()) return std::nullopt;
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t at = (from + i) % count;
    if (contains_in_any_case(name(at), wanted)) return at;
  }
  return std::nullopt;
}

} // namespace vesk
