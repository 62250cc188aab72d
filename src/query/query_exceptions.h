// How a stored query fails.
#pragma once

#include <stdexcept>
#include <string>

namespace vesk {

// Why a query failed, for those who decide whether to try again.
enum class query_fault {
  unfit,   // the query or its source has to be changed
  missing, // the source is not there
  busy,    // another program keeps the source locked
};

// What the user can mend: a query that does not fit its source, or a source that cannot be read.
class query_exception : public std::runtime_error {
public:
  explicit query_exception(const std::string& sentence, query_fault fault = query_fault::unfit)
      : std::runtime_error(sentence), fault_(fault) {}

  query_fault fault() const { return fault_; }

private:
  query_fault fault_;
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
