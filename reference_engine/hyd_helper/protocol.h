// What vesk-hyd and the engine say to each other over a socket. Both come from one build, so numbers are in the
// machine's own form; a number of rows or of bytes takes 8 bytes.
//
// vesk-hyd gets the socket and the file as open descriptors, no arguments and no environment. It sends `content` at
// once, then a `row` for each Request, and ends when the socket is closed.
//
// An Answer goes before what is sent. `refusal`, the cause why the file can't serve, may come in any other's place.
#ifndef REFERENCE_ENGINE_HYD_HELPER_PROTOCOL_H
#define REFERENCE_ENGINE_HYD_HELPER_PROTOCOL_H

#include <cstdint>

namespace reference_engine::hyd {

// Its descriptors.
constexpr int channel = 0;  // the socket: both ways
constexpr int the_file = 3; // the hydrodynamic file, open for reading

enum class Kind : std::uint64_t {
  // The numbers of times, segments and links. Then doubles: for each time its value; for each segment its length, for
  // each its width (m), for each link where it begins, for each where it ends (segments from 1, 0 for outside).
  // Missing values are not-a-number. Then texts, each a size and its bytes: the unit of time, each segment's name.
  content,
  row,    // doubles: the flow of each link (m3/s) or the volume of each segment (m3); not-a-number where missing
  refusal // letters
};

struct Answer {
  Kind kind;
  std::uint64_t size; // of what follows, in bytes
};

enum class Quantity : std::uint64_t { flow, volume };

struct Request {
  Quantity quantity;
  std::uint64_t time; // from 0
};

} // namespace reference_engine::hyd

#endif
