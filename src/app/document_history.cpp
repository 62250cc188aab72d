// How the current data set is replaced, and how Undo restores it.
#include "app/document_control.h"
#include "app/file_names.h"

#include <utility>

namespace vesk {

document document_control::present() const {
  return {*current_data_set, file_name, import_file_name, document_number_, saved_};
}

std::filesystem::path document_control::folder() const {
  if (file_name.empty()) return {};
  const std::string named = split_file_name(file_name).folder;
  return named.empty() ? "." : named;
}

std::string document_control::name_of_document() const {
  return file_name.empty() ? "the unnamed data set" : leaf_of(file_name);
}

void document_control::replace(document next, bool with_caption) {
  if (current_data_set) {
    *current_data_set = std::move(next.data_set);
  } else {
    current_data_set = std::make_unique<prevesk_dataset_data_type>(std::move(next.data_set));
    backup_data_set = std::make_unique<prevesk_dataset_data_type>(*current_data_set);
  }
  file_name = std::move(next.file_name);
  import_file_name = std::move(next.import_file_name);
  document_number_ = next.number;
  saved_ = std::move(next.saved);
  ++generation_;
  current_data_set->apply_thread_defaults();
  ui_.data_set_replaced();
  if (with_caption) form_.update_caption();
}

void document_control::take_content(const prevesk_dataset_data_type& content) {
  document next = present();
  next.data_set = content;
  replace(std::move(next));
}

void document_control::as_step(const std::string& label, const std::function<void()>& work) {
  if (!keeps_history_ || !current_data_set) return work();
  document before = present();
  const std::uint64_t generation = generation_;
  work();
  if (generation_ != generation) add_step(std::move(before), label);
}

void document_control::add_step(document before, const std::string& label, const std::string& merge_key) {
  if (!keeps_history_) return;
  steps_.add(std::move(before), label, *current_data_set, merge_key);
  form_.update_menus();
}

void document_control::begin_step(const std::string& label, const std::string& merge_key) {
  if (current_data_set) open_step_ = {present(), label, merge_key};
}

void document_control::end_step(bool completed) {
  if (!open_step_) return;
  open_step step = std::move(*open_step_);
  open_step_.reset();
  if (completed)
    add_step(std::move(step.before), step.label, step.merge_key);
  else
    replace(std::move(step.before));
}

void document_control::undo() {
  const std::string label = undo_label();
  if (!label.empty()) go_to(steps_.undo(present()), "Undone: " + label);
}

void document_control::redo() {
  const std::string label = redo_label();
  if (!label.empty()) go_to(steps_.redo(present()), "Redone: " + label);
}

void document_control::go_to(document step, const std::string& line) {
  const bool is_another = step.number != document_number_;
  replace(std::move(step));
  form_.update_menus();
  if (steps_.is_editing()) return; // the dialog says it, and the results of runs stay in sight
  ui_.add_info_line(line + (is_another ? ". Open again: " + name_of_document() : std::string()) + ".", icon_plain);
}

bool document_control::is_replaced_since(std::uint64_t generation, const std::string& what_was_left) {
  if (generation == generation_) return false;
  ui_.add_info_line("The data set was replaced while the question was open. " + what_was_left, icon_note);
  return true;
}

} // namespace vesk
