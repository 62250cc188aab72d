// The socket protocol between vesk-nc and the programs that show results. Both come from one build, so numbers are in
// native format; a number takes 8 bytes, a text its size and its bytes, a list its size and its elements.
//
// vesk-nc gets the socket and the file as open descriptors, no arguments and no environment. It sends `content`
// immediately, then one answer per question, and exits when the socket is closed. Positions count from 0.
#pragma once

#include <cstdint>

namespace vesk::nc {

// Its descriptors.
constexpr int channel = 0;  // the socket, in both directions
constexpr int the_file = 3; // open for reading

enum class kind : std::uint64_t {
  // A list of doubles: the times; their units and calendar, texts; the number of segments; a list of their names, empty
  // if the file has none; a list of doubles: their lengths in m, likewise; the file's title and source, texts; a list
  // of variables, each five texts: name, long name, standard name, units, cell methods.
  content,
  values, // doubles, time by time, all segments of a time together; not-a-number if there is none
  bands,  // doubles for all segments: minima, then means, maxima, and numbers of values
  refusal // a text: why the file is unusable, continuing a sentence that starts with its name; no full stop
};

struct answer {
  kind what;
  std::uint64_t size; // of the body, in bytes
};

struct question {
  kind wanted; // values or bands
  std::uint64_t variable;
  std::uint64_t first_time, times;
  std::uint64_t first_segment, segments; // for values
};

constexpr std::uint64_t most_positions = 10'000'000; // for times, and for segments

} // namespace vesk::nc
