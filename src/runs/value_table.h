// Tables of the values and series of a data set that have a path. Shared by lookup, listing and setting.
#pragma once

#include "dataset/dataset.h"
#include "dataset/series.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace vesk {

enum class path_kind { number, date, series };

// Positions in the lists along the path, outermost first.
using value_positions = std::array<std::size_t, 3>;

// One list that a path numbers. `pattern`: the path up to and including the number, written as "#".
struct numbered_list {
  std::string_view pattern;
  std::string_view noun; // "constant"
  std::size_t (*size)(const prevesk_dataset_data_type&, const value_positions&);
  std::string (*name)(const prevesk_dataset_data_type&, const value_positions&, std::size_t) = nullptr; // null: none
  std::int64_t (*number)(const prevesk_dataset_data_type&, const value_positions&,
                         std::size_t) = nullptr; // null: position
};

// One kind of value.
struct value_row {
  std::string_view pattern; // as in "segment.#.volume"
  path_kind kind = path_kind::number;
  double (*read)(const prevesk_dataset_data_type&, const value_positions&) = nullptr; // of numbers and dates
  void (*write)(prevesk_dataset_data_type&, const value_positions&, double) = nullptr;
  series_ref (*series)(const value_positions&) = nullptr;
  // Whether a run uses the value; null: always.
  bool (*in_use)(const prevesk_dataset_data_type&, const value_positions&) = nullptr;
  // The catalogue's range, valid only if the first number is below the second; null: none.
  std::array<double, 2> (*range)(const prevesk_dataset_data_type&, const value_positions&) = nullptr;
};

std::span<const value_row> value_rows();

// The list with this pattern. There is one for each "#" of each row.
const numbered_list& list_of(std::string_view pattern);

} // namespace vesk
