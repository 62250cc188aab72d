// The heading of a job's messages: "Run of river.vki, 04:30:12: finished, 12 s".
#pragma once

#include "app/job_outcome.h"
#include "engine/model_thread.h"

#include <string>

namespace vesk {

// `file`: the job's, as in the command; empty: an unnamed data set. The time is the present one.
std::string heading_of_job(job_code code, const std::string& file);

// The same for "Execute all deferred queries".
std::string heading_of_queries(const std::string& file);

// "finished, 12 s", "finished with 2 warnings, 12 s", "cancelled, 3 s", "failed with return code 4, 0.1 s".
std::string outcome_in_words(const job_outcome& job, double seconds);

} // namespace vesk
