// What comes of a job's data set at its end. A run and an export give nothing back.
#include "app/file_names.h"
#include "app/main_form.h"

#include <utility>

namespace vesk {

namespace {

std::string label_of(job_code code, const std::string& name) {
  switch (code) {
  case job_code::import_file: return "Import " + leaf_of(name);
  case job_code::import_network: return "Import network " + leaf_of(name);
  case job_code::load_restart_file: return "Load restart file " + leaf_of(name);
  case job_code::read_hyd_file: return "Read hydrodynamic file";
  case job_code::get_maximum_parameters: return "Validity check";
  case job_code::run:
  case job_code::export_file: break;
  }
  return {};
}

// Whether two data sets differ in nothing but what a validity check finds.
bool same_input(prevesk_dataset_data_type a, const prevesk_dataset_data_type& b) {
  a.max_num_segments = b.max_num_segments;
  a.max_num_ef_functions = b.max_num_ef_functions;
  a.max_num_time_breaks = b.max_num_time_breaks;
  a.max_num_boundaries = b.max_num_boundaries;
  a.max_num_loads = b.max_num_loads;
  a.validation_results = b.validation_results;
  return a == b;
}

} // namespace

void TPreveskMainForm::note_start_of_job(job_code code, const std::string& name) {
  job_start_.reset();
  if (code == job_code::run || code == job_code::export_file) return;
  job_start_ = {label_of(code, name), *current_data_set, document_number_, {}};
}

// Of a cancelled job nothing is taken, not even the file name that it has put. The data set of one that failed is, as
// far as it came. An import whose document nobody has touched since its start has had its step then.
void TPreveskMainForm::take_back() {
  if (last_job_.cancelled) {
    const bool same_document = job_start_->document == document_number_;
    if (same_document && job_start_->file_name) set_file_name(std::string(*job_start_->file_name));
    const bool left_empty =
        last_job_.code == job_code::import_file && keeps_history_ && same_document && !replaced_by_import_.empty();
    ui_.add_info_line("\"" + job_start_->label + "\" was cancelled, and its data set was dropped." +
                          (left_empty ? " Undo brings " + replaced_by_import_ + " back." : ""),
                      icon_note);
    return job_start_.reset();
  }
  document before = present();
  const bool same_document = job_start_->document == document_number_;
  const bool edited = same_document && !(job_start_->data_set == *current_data_set);
  if (same_document && job_start_->file_name) before.file_name = *job_start_->file_name;
  document next = present();
  next.data_set = active_thread->data_set();
  next.data_set.origin = same_document ? before.data_set.origin : file_origin();
  if (!same_document) next.number = ++last_document_;
  replace(std::move(next));
  *backup_data_set = *current_data_set; // a dialog that is open cancels to the result
  tell_what_was_replaced(before, same_document, edited);
  const bool had_step = last_job_.code == job_code::import_file && same_document && !edited;
  if (!had_step && !same_input(before.data_set, *current_data_set)) add_step(std::move(before), job_start_->label);
  job_start_.reset();
}

// What the user would miss, with the way to it. Without a history there is none.
void TPreveskMainForm::tell_what_was_replaced(const document& before, bool same_document, bool edited) {
  if (!keeps_history_) return;
  const std::string job = "\"" + job_start_->label + "\"";
  const bool is_import = last_job_.code == job_code::import_file;
  const bool failed =
      last_job_.failed() || last_job_.return_code != 0 || (is_import && !current_data_set->period_fault().empty());
  if (!same_document)
    ui_.add_info_line(job + " has ended after another data set was opened, and has replaced that one (" +
                          (before.file_name.empty() ? "unnamed" : leaf_of(before.file_name)) +
                          "). Undo brings it back.",
                      icon_note);
  else if (edited)
    ui_.add_info_line(job + " has replaced the data set, which was edited meanwhile. Undo brings the edits back.",
                      icon_note);
  else if (failed && is_import && !replaced_by_import_.empty())
    ui_.add_info_line(job + " failed, and what it has read has replaced " + replaced_by_import_ +
                          ". Undo brings it back.",
                      icon_note);
  else if (failed && !is_import && !same_input(before.data_set, *current_data_set))
    ui_.add_info_line(job + " failed, and what it has done has replaced the data set. Undo brings it back as it was.",
                      icon_note);
}

} // namespace vesk
