#include "platform/nearest_name.h"

#include <algorithm>
#include <numeric>
#include <utility>
#include <vector>

namespace vesk {

namespace {

std::size_t edits_between(std::string_view a, std::string_view b) {
  std::vector<std::size_t> row(b.size() + 1); // edits from the part of a read so far to each prefix of b
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 0; i < a.size(); ++i) {
    std::size_t diagonal = std::exchange(row[0], i + 1);
    for (std::size_t j = 0; j < b.size(); ++j) {
      const std::size_t replaced = diagonal + (a[i] != b[j]);
      diagonal = std::exchange(row[j + 1], std::min({replaced, row[j] + 1, row[j + 1] + 1}));
    }
  }
  return row.back();
}

} // namespace

std::string_view nearest_name(std::string_view name, std::span<const std::string_view> names) {
  return *std::min_element(names.begin(), names.end(), [name](std::string_view a, std::string_view b) {
    return edits_between(name, a) < edits_between(name, b);
  });
}

std::string nearest_hint(std::string_view name, std::span<const std::string_view> names) {
  const std::string_view nearest = nearest_name(name, names);
  return 2 * edits_between(name, nearest) > name.size() + 1 ? std::string()
                                                            : "; the nearest is " + std::string(nearest);
}

} // namespace vesk
