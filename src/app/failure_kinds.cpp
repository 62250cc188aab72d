#include "app/failure_kinds.h"

#include "dataset/binary_reader.h"
#include "dataset/catalogue.h"
#include "engine/engine_library.h"
#include "platform/file_io.h"
#include "platform/output_lock.h"
#include "query/query_exceptions.h"
#include "runs/value_path.h"

#include <cerrno>

namespace vesk {

namespace {

failure_kind kind_of(query_fault fault) {
  switch (fault) {
  case query_fault::missing: return failure_kind::missing_input;
  case query_fault::busy: return failure_kind::temporary;
  default: return failure_kind::data;
  }
}

template <class Exception>
bool is(const std::exception& error) {
  return dynamic_cast<const Exception*>(&error) != nullptr;
}

} // namespace

failure_kind kind_of_failure(const std::exception& error) {
  if (const auto* query = dynamic_cast<const query_exception*>(&error)) return kind_of(query->fault());
  if (is<data_file_exception>(error)) return failure_kind::data;
  if (is<file_exception>(error)) return failure_kind::missing_input;
  if (is<catalogue_exception>(error) || is<engine_library_exception>(error)) return failure_kind::unavailable;
  if (is<output_lock_refused>(error)) return failure_kind::temporary;
  if (is<value_error>(error)) return failure_kind::usage;
  return failure_kind::software;
}

failure_kind kind_of_writing_failure(const std::exception& error) {
  const auto* file = dynamic_cast<const file_exception*>(&error);
  if (!file) return failure_kind::software;
  const int cause = file->error();
  if (cause == ENOSPC || cause == EDQUOT || cause == EFBIG) return failure_kind::temporary;
  return is<file_open_exception>(error) ? failure_kind::cannot_create : failure_kind::cannot_write;
}

} // namespace vesk
