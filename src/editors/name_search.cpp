#include "editors/name_search.h"

#include "dataset/any_case.h"

namespace vesk {

bool contains_in_any_case(std::string_view name, std::string_view wanted) {
  return in_capitals(name).find(in_capitals(wanted)) != std::string::npos;
}

std::optional<std::size_t> find_name(std::size_t count, std::size_t from,
                                     const std::function<std::string(std::size_t)>& name, std::string_view wanted) {
  if (wanted.empty()) return std::nullopt;
  const std::string capitals = in_capitals(wanted); // converted once, for a million names
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t at = (from + i) % count;
    if (in_capitals(name(at)).find(capitals) != std::string::npos) return at;
  }
  return std::nullopt;
}

} // namespace vesk
