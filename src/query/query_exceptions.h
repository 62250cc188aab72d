// How a stored query fails.
#pragma once

#include <stdexcept>

namespace vesk {

// What the user can mend: a query that does not fit its source, or a source that cannot be read.
class query_exception : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

// A query that could not be executed.
class query_engine_exception : public query_exception {
  using query_exception::query_exception;
};

// A query that is not complete, or names what its source does not have.
class query_validation_exception : public query_exception {
  using query_exception::query_exception;
};

} // namespace vesk
