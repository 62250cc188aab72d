// The messages that vesk-mdb writes to its standard output: a size in 4 bytes, a kind in 1, and content of that size.
// Both programs come from one build, so numbers are in native form. The database is an open descriptor; the environment
// is empty.
//
//     vesk-mdb tables          `table` for each, then `end`
//     vesk-mdb rows TABLE      `field` for each, `rows` for some rows at a time, then `end`
//
// `failure`, with a sentence, may be sent instead of any message and is the last one.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vesk::mdb {

enum class message : std::uint8_t {
  table = 'T',   // the name
  field = 'F',   // the type code in one byte, then the name
  rows = 'R',    // the values of each row's fields, one after the other
  failure = 'E', // a sentence
  end = '.'
};

// A value in `rows` begins with its kind in one byte.
enum class value : std::uint8_t {
  null = 0,
  integer = 1,   // 8 bytes
  number = 2,    // a double
  date_time = 3, // a double: days since 30 December 1899
  text = 4       // a size in 4 bytes and UTF-8
};

constexpr int the_file = 3; // the descriptor of the database, open for reading

constexpr std::size_t header_size = 5;
constexpr std::size_t largest_message = std::size_t{64} << 20;

} // namespace vesk::mdb
