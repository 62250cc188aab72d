// How executing a stored query fails.
#pragma once

#include <stdexcept>

namespace vesk {

// A query that could not be executed.
class query_engine_exception : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

} // namespace vesk
