// How a call of vesk-run ended, for the programs that called it.
#include "app/kept_results.h"
#include "console/interrupts.h"
#include "console/session.h"
#include "platform/file_io.h"

namespace vesk {

namespace {

namespace fs = std::filesystem;

// What the results would be named after, of a file that may not be open.
fs::path first_name(const console_options& options) {
  for (auto it = options.walk.rbegin(); it != options.walk.rend(); ++it)
    if (!it->starts_with('-')) return fs::path(*it).replace_extension();
  return "vesk-run";
}

} // namespace

// The failure that came first decides, an engine's by its return code.
int session::reported_status_of(step result) const {
  if (result == step::cancelled) return interrupted_by_request() ? status_terminated : status_interrupted;
  if (result != step::done) {
    if (const auto& first = form_.first_failure()) return vesk::status_of(first->kind);
    if (failure_) return vesk::status_of(failure_->kind);
    if (failed_job_.failed()) return vesk::status_of(failure_kind::software);
    return status_of_return_code(failed_job_.return_code, form_.engine_is_bundled());
  }
  return ui_.lost_output() ? vesk::status_of(failure_kind::cannot_write) : 0;
}

fs::path session::record_file() const {
  if (!form_.recorded_base().empty()) return record_file_of(options_, form_.recorded_base()); // a run has begun
  return record_file_of(options_, form_.file_name.empty() ? fs::path() : form_.results_base());
}

// A run that failed and wrote nothing leaves the older results, and so their record, unless it was asked for.
void session::end_record(step result, int status) {
  if (!options_.reports() && (!ended_run_ || (status != 0 && ended_run_->outputs.empty()))) return;
  run_record record = ended_run_ ? std::move(*ended_run_) : form_.record_head;
  run_end& end = record.end;
  const process_use used = use_of_this_process();
  end.processor_seconds = used.processor_seconds;
  end.peak_memory_bytes = used.peak_memory_bytes;
  if (end.ended.empty()) end.ended = utc_now();
  end.status = status;
  end.outcome = class_of(options_.reports() ? status : reported_status_of(result), !record.warnings.empty());
  if (end.cause_by.empty() && status != 0) note_cause(end);
  const fs::path& base = form_.recorded_base();
  const fs::path file =
      options_.reports() || base.empty() ? record_file() : record_file_of(base_of_record(base, record));
  if (take_record_) return take_record_(file, record, true);
  try {
    vesk::write_record(file, to_json(record));
  } catch (const file_exception& error) {
    ui_.say_failure(error.what());
  }
}

void session::note_cause(run_end& end) const {
  const auto& first = form_.first_failure();
  end.cause_by = "vesk";
  if (first || failure_) {
    end.cause = first ? first->text : failure_->text;
  } else if (interrupted()) {
    end.cause = "The work was cancelled.";
  } else if (failed_job_.failed() || failed_job_.return_code != 0) {
    end.cause_by = "engine";
    end.cause = failed_job_.failed() ? failed_job_.failure
                : !failed_job_.engine_failure.empty()
                    ? failed_job_.engine_failure
                    : "The engine set the return code " + std::to_string(failed_job_.return_code) + ".";
  } else {
    end.cause = "Standard output cannot be written.";
  }
}

// The output folder holds the record as well, under any name.
fs::path record_file_of(const console_options& options, const fs::path& base) {
  fs::path file =
      options.record ? fs::path(*options.record) : record_file_of(base.empty() ? first_name(options) : base);
  if (options.output_dir) file = fs::path(*options.output_dir) / (options.record ? file : file.filename());
  return file;
}

} // namespace vesk
