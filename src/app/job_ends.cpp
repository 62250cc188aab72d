// What happens in the main window when a job ends, and which part of its data set is accepted.
#include "app/file_names.h"
#include "app/job_heading.h"
#include "app/run_control.h"
#include "dataset/findings_list.h"
#include "dataset/network.h"
#include "dataset/same_content.h"
#include "platform/counted.h"
#include "platform/file_io.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace vesk {

namespace {

std::string size_in_words(std::uint64_t bytes) {
  constexpr std::uint64_t thousand = 1000;
  const char* const units[] = {"bytes", "kB", "MB", "GB", "TB"};
  std::size_t unit = 0;
  std::uint64_t tenths = bytes * 10;
  for (; tenths >= thousand * 10 && unit + 1 < std::size(units); ++unit) tenths /= thousand;
  const bool whole = unit == 0 || tenths >= 100;
  return std::to_string(tenths / 10) + (whole ? "" : "." + std::to_string(tenths % 10)) + " " + units[unit];
}

// "Results written: river.nc (12 MB), 24 CSV files and river.rst, in /rivers." The folder of the data file is not
// spelled out where the line would not fit into a window. Empty: nothing was written.
std::string written_in_words(const std::vector<recorded_file>& files, const std::filesystem::path& data_folder) {
  constexpr std::size_t fits = 100; // characters
  std::vector<std::string> parts;
  std::uint64_t tables = 0;
  std::string table;
  for (const recorded_file& it : files) {
    const std::string name = leaf_of(it.file);
    if (upper_extension(name) != ".CSV")
      parts.push_back(name + " (" + size_in_words(it.bytes) + ")");
    else if (table = name; ++tables == 1)
      parts.emplace_back();
  }
  if (parts.empty()) return {};
  if (tables > 0) *std::ranges::find(parts, std::string()) = tables == 1 ? table : counted(tables, "CSV file");
  std::string text = "Results written: ";
  for (std::size_t i = 0; i < parts.size(); ++i)
    text += (i == 0 ? "" : i + 1 == parts.size() ? " and " : ", ") + parts[i];
  const std::filesystem::path folder = std::filesystem::path(files.front().file).parent_path();
  std::error_code ignored;
  const bool is_data_folder = folder == std::filesystem::absolute(data_folder, ignored).lexically_normal() ||
                              std::filesystem::equivalent(folder, data_folder, ignored);
  const bool spelled_out = !is_data_folder || text.size() + folder.native().size() <= fits;
  return text + (spelled_out ? ", in " + folder.native() : ", in the folder of the data file") + ".";
}

// Empty: no segment went.
std::string removed_segments_in_words(const prevesk_dataset_data_type& before, const prevesk_dataset_data_type& after) {
  const std::size_t had = before.segments.size(), left = after.segments.size();
  if (left >= had) return {};
  std::string text = counted(had - left, "segment was", "segments were") + " removed with all data: the data set had " +
                     std::to_string(had) + ", the file has " + std::to_string(left) + ".";
  const segment_references lost = references_from(after, left);
  if (lost.total() > 0)
    text += " " + in_words(lost) + (lost.total() == 1 ? " still names one" : " still name some") +
            " of them: correct or delete " + (lost.total() == 1 ? "it." : "them.");
  return text;
}

} // namespace

// Afterwards the thread frees itself, even if the end handler fails; the handler may have started another job.
void run_control::end_job(end_handler end) {
  const model_thread* const ended = active_thread;
  try {
    note_end_of_job();
    if (last_job_.code == job_code::run) note_results();
    output_lock_.reset(); // a run's results are complete, their record included
    priorities.reset();
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - job_began_;
    ui_.end_job_messages(outcome_in_words(last_job_, took.count())); // before the end starts another job
    (this->*end)();
  } catch (const std::exception& error) {
    if (active_thread == ended) {
      active_thread = nullptr;
      output_lock_.reset();
    }
    ui_.show_run_controls(false);
    clear_progress();
    form_.update_menus();
    form_.report_failure(error.what(), failure_kind::software);
  }
}

void run_control::note_end_of_job() {
  last_job_.cancelled = active_thread->Terminated();
  last_job_.failure = active_thread->failure();
  last_job_.return_code = job_return_code_;
  if (const int error = active_thread->log_error())
    last_job_.log_loss = file_failure("write", active_thread->log_path().native(), error);
  if (!active_thread->FatalException || last_job_.failed()) return;
  try {
    std::rethrow_exception(active_thread->FatalException);
  } catch (const std::exception& error) {
    last_job_.failure = std::string("The job failed: ") + error.what();
  } catch (...) {
    last_job_.failure = "The job failed with an exception of unknown type.";
  }
  ui_.add_info_line(last_job_.failure, icon_failure);
}

void run_control::note_results() {
  run_record record = recorder_.end(last_job_, library_->bundled);
  written_ = record.outputs;
  take_record(std::move(record));
  if (!last_job_.is_good()) return previous_.drop();
  previous_.keep();
  remove_cancelled_results(recorder_.base());
}

void run_control::run_end() {
  active_thread = nullptr;
  ui_.show_run_controls(false);
  if (!settings_.RunTimeGridAlwaysVisible) ui_.show_results_grid(false);
  clear_progress();
  form_.update_menus();
  const std::vector<recorded_file> written = last_job_.is_good() ? written_ : std::vector<recorded_file>();
  if (const std::string line = written_in_words(written, documents_.folder()); !line.empty())
    add_info_line(line, icon_plain);
  if (std::exchange(quit_after_run, false)) return ui_.close_main_window();
  const std::string usual = recorder_.base().native() + ".nc";
  std::string results; // another engine may name its file otherwise
  for (const recorded_file& one : written)
    if (one.file.ends_with(".nc") && (results.empty() || one.file == usual)) results = one.file;
  if (!results.empty()) ui_.show_results(results, true);
}

void run_control::import_export_end() {
  clear_progress();
  const bool imported = active_thread->code() == job_code::import_file;
  if (imported) take_back(*active_thread);
  active_thread = nullptr;
  form_.update_menus();
  const std::string fault =
      imported && !last_job_.cancelled ? documents_.current_data_set->period_fault() : std::string();
  if (!fault.empty()) form_.report_failure(fault + ".", failure_kind::data);
  if (!run_on_start) return;
  if (last_job_.cancelled || last_job_.failed() || !fault.empty()) // the import is incomplete
    run_on_start = quit_after_run = false;
  else
    run_or_cancel();
}

void run_control::validity_end() {
  clear_progress();
  take_back(*active_thread);
  if (last_job_.cancelled || last_job_.failed()) { // the engine's limits are unknown
    last_job_.checked = false;
    active_thread = nullptr;
    return form_.update_menus();
  }
  prevesk_dataset_data_type& data_set = *documents_.current_data_set;
  last_job_.checked = data_set.check_limits(split_file_name(documents_.file_name).folder);
  if (last_job_.checked)
    ui_.message_box("Validity check passed", "No problems were detected", box_buttons::ok);
  else
    ui_.message_box("Validity check failed", "Problems were detected", box_buttons::ok);
  for (const validation_information& finding : documents_.current_data_set->validation_results)
    ui_.add_info_line(finding.message, finding.severity);
  // Without a period every series is outside it. Printed lines are for programs, which expect only the limits.
  if (documents_.current_data_set->period_fault().empty() && !ui_.boxes_stay_in_sight()) list_marks();
  active_thread = nullptr;
  form_.update_menus();
}

void run_control::list_marks() {
  constexpr std::size_t most = 50;
  const std::vector<std::string> marks = list_findings(*documents_.current_data_set);
  if (marks.empty()) return;
  ui_.add_info_line("Not limits of the engine, but worth a look; their cells are marked in the windows of Data:",
                    icon_plain);
  for (std::size_t i = 0; i < std::min(marks.size(), most); ++i) ui_.add_info_line(marks[i], icon_note);
  if (marks.size() > most) ui_.add_info_line("And " + std::to_string(marks.size() - most) + " more.", icon_plain);
}

void run_control::copy_back_end() {
  clear_progress();
  take_back(*std::exchange(active_thread, nullptr)); // notified dialogs check whether it still runs
  form_.update_menus();
}

void run_control::note_start_of_job(job_code code, const std::string& name) {
  job_start_.reset();
  const std::string label = step_label(code, name);
  if (!label.empty()) job_start_ = {label, *documents_.current_data_set, documents_.document_number(), {}};
}

// A failed job's data set is accepted as far as it got; a cancelled job's is dropped. An import added its step when it
// began, unless its document has been edited or replaced since.
void run_control::take_back(model_thread& ended) {
  if (last_job_.cancelled) return drop_result();
  document before = documents_.present();
  const bool same_document = job_start_->document == documents_.document_number();
  const bool edited = same_document && !same_content(job_start_->data_set, *documents_.current_data_set);
  if (same_document && job_start_->file_name) before.file_name = *job_start_->file_name;
  document next = documents_.present();
  next.data_set = ended.data_set();
  next.data_set.origin = same_document ? before.data_set.origin : file_origin();
  if (same_document)
    documents_.replace(std::move(next));
  else
    documents_.replace_by_another(std::move(next));
  // Cancel in an open dialog now returns to the result. The settings dialog, which has loaded a restart file, cancels
  // that too.
  if (last_job_.code != job_code::load_restart_file) *documents_.backup_data_set = *documents_.current_data_set;
  report_what_was_replaced(before, same_document, edited);
  report_removed_segments(before.data_set);
  const bool had_step = last_job_.code == job_code::import_file && same_document && !edited;
  if (had_step) documents_.note_saved(); // as its text file has it
  if (!had_step && !same_input(before.data_set, *documents_.current_data_set))
    documents_.add_step(std::move(before), job_start_->label);
  job_start_.reset();
}

// If the job was cancelled, even a file name that it has put is dropped.
void run_control::drop_result() {
  const bool same_document = job_start_->document == documents_.document_number();
  if (same_document && job_start_->file_name) set_file_name(std::string(*job_start_->file_name));
  const bool left_empty = last_job_.code == job_code::import_file && documents_.keeps_history() && same_document &&
                          !replaced_by_import_.empty();
  ui_.add_info_line("\"" + job_start_->label + "\" was cancelled, and its data set was dropped." +
                        (left_empty ? " Undo brings " + replaced_by_import_ + " back." : ""),
                    icon_note);
  job_start_.reset();
}

void run_control::report_removed_segments(const prevesk_dataset_data_type& before) {
  const bool is_network = last_job_.code == job_code::read_hyd_file || last_job_.code == job_code::import_network;
  const std::string text = is_network ? removed_segments_in_words(before, *documents_.current_data_set) : std::string();
  if (!text.empty())
    ui_.add_info_line(text + (documents_.keeps_history() ? " Undo restores the segments." : ""), icon_note);
}

// What the user would miss, and how to restore it. Without a history it cannot be restored, so there is no line.
void run_control::report_what_was_replaced(const document& before, bool same_document, bool edited) {
  if (!documents_.keeps_history()) return;
  const std::string job = "\"" + job_start_->label + "\"";
  const prevesk_dataset_data_type& result = *documents_.current_data_set;
  const bool is_import = last_job_.code == job_code::import_file;
  const bool failed = last_job_.failed() || last_job_.return_code != 0 || (is_import && !result.period_fault().empty());
  if (!same_document)
    ui_.add_info_line(job + " has ended after another data set was opened, and has replaced that one (" +
                          (before.file_name.empty() ? "unnamed" : leaf_of(before.file_name)) +
                          "). Undo brings it back.",
                      icon_note);
  else if (edited)
    ui_.add_info_line(
        job + " has replaced the data set, which had been edited in the meantime. Undo brings the edits back.",
        icon_note);
  else if (failed && is_import && !replaced_by_import_.empty())
    ui_.add_info_line(job + " failed, and its partial result has replaced " + replaced_by_import_ +
                          ". Undo brings it back.",
                      icon_note);
  else if (failed && !is_import && !same_input(before.data_set, result))
    ui_.add_info_line(job + " failed, and its partial result has replaced the data set. Undo brings the data set back.",
                      icon_note);
}

} // namespace vesk
