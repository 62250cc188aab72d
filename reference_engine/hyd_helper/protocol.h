// The protocol between vesk-hyd and the engine, over a socket. Both come from one build, so numbers are in native form;
// a count of rows or bytes takes 8 bytes.
//
// vesk-hyd gets the socket and the file as open descriptors, no arguments and no environment. It immediately sends
// `content`, then a `row` for each Request, and ends when the socket is closed.
//
// Everything sent is preceded by an Answer. A `refusal`, the reason why the file is unusable, may be sent instead of
// any other kind.
#ifndef REFERENCE_ENGINE_HYD_HELPER_PROTOCOL_H
#define REFERENCE_ENGINE_HYD_HELPER_PROTOCOL_H

#include <cstdint>

namespace reference_engine::hyd {

// File descriptors of vesk-hyd.
constexpr int channel = 0;  // the socket, both directions
constexpr int the_file = 3; // the hydrodynamic file, open for reading

enum class Kind : std::uint64_t {
  // The numbers of times, segments and links. Then doubles: the value of each time; the length of each segment, the
  // width of each (m); the segment where each link begins, and where each ends (from 1; 0 is outside). Missing values
  // are not-a-number. Then texts, each a size and its bytes: the unit of time, the name of each segment.
  content,
  row,    // doubles: the flow of each link (m3/s) or the volume of each segment (m3); not-a-number where missing
  refusal // text
};

struct Answer {
  Kind kind;
  std::uint64_t size; // of the data after it, in bytes
};

enum class Quantity : std::uint64_t { flow, volume };

struct Request {
  Quantity quantity;
  std::uint64_t time; // from 0
};

} // namespace reference_engine::hyd

#endif
