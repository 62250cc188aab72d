#include "query/cancellation.h"

namespace vesk {

namespace {

thread_local const cancellation_scope* innermost = nullptr;

} // namespace

cancellation_scope::cancellation_scope(std::function<bool()> is_cancelled)
    : is_cancelled_(std::move(is_cancelled)), outer_(innermost) {
  innermost = this;
}

cancellation_scope::~cancellation_scope() {
  innermost = outer_;
}

bool is_query_cancelled() {
  return innermost && innermost->is_cancelled_();
}

} // namespace vesk
