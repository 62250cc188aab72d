// The keyword table: the vocabulary between engine and data set.
#pragma once

#include "shell/keywords/function_description.h"
#include "shell/keywords/keyword_index.h"

#include <array>

namespace vesk {

inline constexpr std::size_t keyword_count = 157;

// All rows, ordered by the bytes of their keywords.
extern const std::array<keyword_row, keyword_count> keyword_table;

// Finds positions in `keyword_table`.
extern const keyword_index<keyword_count> keyword_positions;

} // namespace vesk
