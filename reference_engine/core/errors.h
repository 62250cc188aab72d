// How a run ends early. Each carries one sentence for the modeller.
#ifndef REFERENCE_ENGINE_CORE_ERRORS_H
#define REFERENCE_ENGINE_CORE_ERRORS_H

#include <stdexcept>

namespace reference_engine {

// The input can't be run, or a file can't be read.
struct InputError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// The input was good, but the run could not go on.
struct RunError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

} // namespace reference_engine

#endif
