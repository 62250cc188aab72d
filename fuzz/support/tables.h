// What every reader of tables has to keep.
#pragma once

#include "query/sources/table_source.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace vesk::fuzz {

// The name that the inputs of readers in memory get.
inline constexpr const char* input_name = "input";

using table_opener = std::function<std::unique_ptr<table_source>()>;

// Opens the source and reads all of it. A refusal has to be one sentence that begins with `name`. Of what is read:
// names and texts are UTF-8, names are distinct, numbers of date-times are finite; SQLite counts as many rows; and a
// filter on a value leaves out no row that has it.
void read_tables(const table_opener& open, const std::string& name = input_name);

// An input that is a table with its memo file behind it, or a table alone: "MEMO", the table's size in 4 bytes,
// the table, and the memo file. Each gets a place of its own, so that reading behind it shows.
struct table_and_memo {
  table_and_memo(const std::uint8_t* bytes, std::size_t size);
  std::span<const std::byte> table_bytes() const { return std::as_bytes(std::span(table)); }
  std::optional<std::span<const std::byte>> memo_bytes() const;

  std::vector<char> table;
  std::optional<std::vector<char>> memo;
};

// A workbook out of an input: a zip archive as it stands; anything else is a text of parts, each behind a line "== "
// and its name, and is packed without compression, so that changes reach what is inside.
std::vector<char> zipped_workbook(const std::uint8_t* bytes, std::size_t size);

} // namespace vesk::fuzz
