// Thrown when a file is unusable.
#ifndef REFERENCE_ENGINE_HYD_HELPER_REFUSAL_H
#define REFERENCE_ENGINE_HYD_HELPER_REFUSAL_H

#include <string>

namespace reference_engine::hyd {

struct Refusal {
  std::string cause; // continues a sentence that begins with the file name; no full stop
};

[[noreturn]] inline void refuse(std::string cause) {
  throw Refusal{std::move(cause)};
}

} // namespace reference_engine::hyd

#endif
