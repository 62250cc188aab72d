// How the current data set is replaced, and how Undo brings it back.
#include "app/file_names.h"
#include "app/main_form.h"

#include <utility>

namespace vesk {

document TPreveskMainForm::present() const {
  return {*current_data_set, file_name, import_file_name, document_number_};
}

std::string TPreveskMainForm::name_of_document() const {
  return file_name.empty() ? "the unnamed data set" : leaf_of(file_name);
}

// The one way in which the current data set is replaced, whoever asks. The title follows, but for a failed Open.
void TPreveskMainForm::replace(document next, bool with_caption) {
  if (current_data_set) {
    *current_data_set = std::move(next.data_set);
  } else {
    current_data_set = std::make_unique<prevesk_dataset_data_type>(std::move(next.data_set));
    backup_data_set = std::make_unique<prevesk_dataset_data_type>(*current_data_set);
  }
  file_name = std::move(next.file_name);
  import_file_name = std::move(next.import_file_name);
  document_number_ = next.number;
  ++generation_;
  current_data_set->apply_thread_defaults();
  ui_.data_set_replaced();
  if (with_caption) update_caption();
}

void TPreveskMainForm::take_content(const prevesk_dataset_data_type& content) {
  document next = present();
  next.data_set = content;
  replace(std::move(next));
}

// Does `work` as one step. When it has replaced nothing, or there was nothing before, none is added.
void TPreveskMainForm::as_step(const std::string& label, const std::function<void()>& work) {
  if (!keeps_history_ || !current_data_set) return work();
  document before = present();
  const std::uint64_t generation = generation_;
  work();
  if (generation_ != generation) add_step(std::move(before), label);
}

void TPreveskMainForm::add_step(document before, const std::string& label, const std::string& merge_key) {
  if (!keeps_history_) return;
  steps_.add(std::move(before), label, *current_data_set, merge_key);
  update_menus();
}

void TPreveskMainForm::begin_step(const std::string& label, const std::string& merge_key) {
  if (current_data_set) open_step_ = {present(), label, merge_key};
}

void TPreveskMainForm::end_step(bool completed) {
  if (!open_step_) return;
  open_step step = std::move(*open_step_);
  open_step_.reset();
  if (completed)
    add_step(std::move(step.before), step.label, step.merge_key);
  else
    replace(std::move(step.before));
}

void TPreveskMainForm::UndoItemClick() {
  const std::string label = undo_label();
  if (!label.empty()) go_to(steps_.undo(present()), "Undone: " + label);
}

void TPreveskMainForm::RedoItemClick() {
  const std::string label = redo_label();
  if (!label.empty()) go_to(steps_.redo(present()), "Redone: " + label);
}

void TPreveskMainForm::go_to(document step, const std::string& line) {
  const bool is_another = step.number != document_number_;
  replace(std::move(step));
  update_menus();
  ui_.add_info_line(line + (is_another ? ". Open again: " + name_of_document() : std::string()) + ".", icon_plain);
}

// After a question to the user: true when a job's end has replaced the data set meanwhile. Says what was not done.
bool TPreveskMainForm::is_replaced_since(std::uint64_t generation, const std::string& what_was_left) {
  if (generation == generation_) return false;
  ui_.add_info_line("The data set was replaced while the question was open. " + what_was_left, icon_note);
  return true;
}

} // namespace vesk
