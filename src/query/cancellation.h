// Cancel for the readers of tables, which ask often whether to stop.
#pragma once

#include <exception>
#include <functional>

namespace vesk {

// Not a query_exception: nothing has failed, so nothing is reported as a failure.
class query_cancelled : public std::exception {
public:
  const char* what() const noexcept override { return "Cancelled."; }
};

// While it lives, everything that reads tables in this thread asks `is_cancelled`, several times a second. The
// innermost scope of the thread counts. A scope is more than one more argument would be: the readers are called through
// SQLite, minizip and expat.
class cancellation_scope {
public:
  explicit cancellation_scope(std::function<bool()> is_cancelled);
  ~cancellation_scope();
  cancellation_scope(const cancellation_scope&) = delete;
  cancellation_scope& operator=(const cancellation_scope&) = delete;

private:
  friend bool is_query_cancelled();
  const std::function<bool()> is_cancelled_;
  const cancellation_scope* const outer_;
};

// False outside of a scope.
bool is_query_cancelled();

// Throws query_cancelled.
inline void stop_if_cancelled() {
  if (is_query_cancelled()) throw query_cancelled();
}

} // namespace vesk
