#include "console/supervised_run.h"

#include "app/failure_kinds.h"
#include "console/run_report.h"
#include "console/supervisor.h"
#include "platform/file_io.h"

#include <csignal>
#include <cstring>
#include <sysexits.h>

namespace vesk {

namespace {

// The end of a child that did not bring its record to an end itself, or that was stopped for the time.
run_end end_of(const child_end& child, const console_options& options) {
  run_end end{.ended = utc_now(),
              .processor_seconds = child.use.processor_seconds,
              .peak_memory_bytes = child.use.peak_memory_bytes,
              .status = status_of(failure_kind::software),
              .cause_by = "system"};
  const bool cancelled = child.signal == 0 && child.status == status_interrupted; // while it could not be polled
  if (child.timed_out) {
    end.status = status_timed_out;
    end.cause_by = "vesk";
    end.cause = "The run was ended after its time limit of " + options.time_limit_text + " s.";
  } else if (cancelled || child.signal == SIGTERM || child.signal == SIGINT || child.signal == SIGHUP) {
    end.status = child.terminated || child.signal == SIGTERM ? status_terminated : status_interrupted;
    end.cause = "The work was cancelled.";
  } else if (child.signal != 0) {
    end.cause_by = child.signal == SIGKILL ? "system" : "engine";
    end.cause = std::string("The run was ended by signal ") + sigabbrev_np(child.signal) + " (" +
                sigdescr_np(child.signal) + ").";
  } else {
    end.cause_by = "engine";
    end.cause = "The run ended with status " + std::to_string(child.status) + " before its work was done.";
  }
  end.outcome = class_of(end.status, false);
  return end;
}

// The exit status when the record cannot be written. An unusable output folder has already been reported.
int status_without_record(int status, console_interface& ui, const file_exception& error) {
  const int its_status = status_of(kind_of_writing_failure(error));
  if (status != EX_CANTCREAT || its_status != status) ui.say_failure(error.what());
  return status != 0 ? status : its_status;
}

} // namespace

int run_supervised(const console_options& options, console_interface& ui, const run_record& head,
                   const supervised_work& work) {
  const auto began = std::chrono::steady_clock::now();
  run_report report;
  const auto take_record = [&report](const std::filesystem::path& file, const run_record& record, bool whole) {
    report.put(file, to_json(record), whole);
  };
  take_record(record_file_of(options, {}), head, false);
  const child_end child = supervise([&] { return work(take_record); }, options.time_limit);
  run_report::content record = report.get();
  int status = child.status;
  if (!record.whole || child.timed_out || child.signal != 0) {
    run_end end = end_of(child, options);
    end.wall_seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - began).count();
    status = end.status;
    ui.say_failure(end.cause);
    record.json = with_end(record.json, end);
  }
  try {
    write_record(record.record_file, record.json);
  } catch (const file_exception& error) {
    return status_without_record(status, ui, error);
  }
  return status;
}

} // namespace vesk
