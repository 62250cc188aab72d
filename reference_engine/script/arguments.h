// The argument values of one call, for each kind of keyword.
#ifndef REFERENCE_ENGINE_SCRIPT_ARGUMENTS_H
#define REFERENCE_ENGINE_SCRIPT_ARGUMENTS_H

#include "host/host.h"
#include "script/keywords.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace reference_engine {

using Indices = std::array<std::int32_t, 3>;

constexpr std::size_t index_count(const Keyword& row) {
  std::size_t count = 0;
  while (count < row.indices.size() && row.indices[count] != nullptr) ++count;
  return count;
}

// The number of words in a value of this kind.
constexpr std::size_t word_count(ValueKind kind) {
  switch (kind) {
  case ValueKind::point: return 2;
  case ValueKind::triple: return 3;
  default: return 1;
  }
}

struct Value {
  std::array<std::int32_t, 3> integers{};
  std::array<float, 2> reals{};
  std::string text;

  // The addresses of indices and value, as the callback expects them. For a GET, `text` must be large enough.
  Host::Arguments arguments(const Keyword& row, Indices& indices) {
    Host::Arguments result{};
    std::size_t next = 0;
    for (; next < index_count(row); ++next) result[next] = &indices[next];
    for (std::size_t k = 0; k < word_count(row.value); ++k) {
      switch (row.value) {
      case ValueKind::integer:
      case ValueKind::triple: result[next++] = &integers[k]; break;
      case ValueKind::real:
      case ValueKind::point: result[next++] = &reals[k]; break;
      case ValueKind::text: result[next++] = text.data(); break;
      }
    }
    return result;
  }
};

// How many items index `k` of a row has, below the indices before it. `indices`: as for a GET.
inline std::int32_t items(Host& host, const Keyword& row, std::size_t k, Indices indices) {
  const Index& index = *row.indices[k];
  if (index.count.empty()) return index.fixed;
  std::int32_t any_segment = 1, count = 0;
  Host::Arguments arguments{};
  std::size_t next = 0;
  if (index.segment_before) arguments[next++] = &any_segment;
  for (std::size_t parent = k - static_cast<std::size_t>(index.parents); index.parents > 0 && parent < k; ++parent)
    arguments[next++] = &indices[parent];
  arguments[next] = &count;
  host.get(index.count, arguments);
  return count;
}

} // namespace reference_engine

#endif
