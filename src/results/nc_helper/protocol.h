// What vesk-nc and the program that looks at results say to each other over a socket. Both come from one build, so
// numbers are in the machine's own form; a number takes 8 bytes, a text its size and its bytes, a list its size and its
// elements.
//
// vesk-nc gets the socket and the file as open descriptors, no arguments and no environment. It sends `content` at
// once, then one answer for each question, and ends when the socket is closed. Positions count from 0.
#pragma once

#include <cstdint>

namespace vesk::nc {

// Its descriptors.
constexpr int channel = 0;  // the socket: both ways
constexpr int the_file = 3; // open for reading

enum class kind : std::uint64_t {
  // A list of doubles: the times; their units and calendar, texts; the number of segments; a list of their names, empty
  // where the file has none; a list of doubles: their lengths in m, as well; the file's title and source, texts; a list
  // of variables, each five texts: name, long name, standard name, units, cell methods.
  content,
  values, // doubles, segments of the first time first; not-a-number where there is none
  bands,  // doubles of all segments: the least value, then the mean, the greatest, and of how many
  refusal // letters: why the file cannot serve, to continue a sentence that begins with its name; no full stop
};

struct answer {
  kind what;
  std::uint64_t size; // of what follows, in bytes
};

struct question {
  kind wanted; // values or bands
  std::uint64_t variable;
  std::uint64_t first_time, times;
  std::uint64_t first_segment, segments; // of values
};

constexpr std::uint64_t most_positions = 10'000'000; // times, and segments

} // namespace vesk::nc
