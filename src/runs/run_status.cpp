#include "runs/run_status.h"

#include <array>
#include <sysexits.h>

namespace vesk {

int status_of(failure_kind kind) {
  switch (kind) {
  case failure_kind::usage: return EX_USAGE;
  case failure_kind::data: return EX_DATAERR;
  case failure_kind::missing_input: return EX_NOINPUT;
  case failure_kind::unavailable: return EX_UNAVAILABLE;
  case failure_kind::software: return EX_SOFTWARE;
  case failure_kind::cannot_create: return EX_CANTCREAT;
  case failure_kind::cannot_write: return EX_IOERR;
  case failure_kind::temporary: return EX_TEMPFAIL;
  }
  return EX_SOFTWARE;
}

int status_of_return_code(int code, bool bundled) {
  constexpr int last_of_engines = 63, bundled_not_written = 6, bundled_disk_full = 7;
  if (bundled && code == bundled_not_written) return EX_IOERR;
  if (bundled && code == bundled_disk_full) return EX_TEMPFAIL;
  return code < 0 || code > last_of_engines ? last_of_engines : code;
}

std::string_view name_of(run_class which) {
  constexpr std::array<std::string_view, 5> names{"good", "warnings", "permanent", "temporary", "cancelled"};
  return names[static_cast<std::size_t>(which)];
}

run_class class_of(int status, bool warned) {
  if (status == 0) return warned ? run_class::warnings : run_class::good;
  if (status == EX_TEMPFAIL) return run_class::temporary;
  if (status == status_interrupted || status == status_terminated) return run_class::cancelled;
  return run_class::permanent;
}

} // namespace vesk
