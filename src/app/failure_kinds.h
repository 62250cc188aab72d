// Which kind of failure an exception is.
#pragma once

#include "runs/run_status.h"

#include <exception>

namespace vesk {

// Of reading files, catalogues, engines and queries, and of starting a run.
failure_kind kind_of_failure(const std::exception& error);

// Of writing a file.
failure_kind kind_of_writing_failure(const std::exception& error);

} // namespace vesk
