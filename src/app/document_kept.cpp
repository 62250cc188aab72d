// Unsaved work and earlier versions of the data set being edited.
#include "app/busy_cursor.h"
#include "app/document_control.h"
#include "app/file_names.h"
#include "dataset/same_content.h"

#include <utility>

namespace vesk {

void document_control::keep_work_in(const std::filesystem::path& folder) {
  kept_ = std::make_unique<kept_work>(folder);
}

void document_control::note_saved() {
  if (!kept_ || !current_data_set) return;
  if (!saved_) saved_ = std::make_shared<prevesk_dataset_data_type>(*current_data_set);
  *saved_ = *current_data_set;
  kept_->drop();
}

std::string document_control::original() const {
  std::error_code error;
  const auto whole = std::filesystem::absolute(file_name, error);
  return file_name.empty() || error ? file_name : whole.lexically_normal().native();
}

bool document_control::has_unsaved_changes() const {
  return kept_ && current_data_set && (!saved_ || !same_input(*current_data_set, *saved_));
}

void document_control::replace_by_another(document next, bool with_caption) {
  keep_unsaved_changes(false);
  next.number = ++last_document_;
  next.saved.reset();
  replace(std::move(next), with_caption);
}

void document_control::leave_unsaved_work() {
  keep_unsaved_changes(true);
  kept_.reset(); // waits for its thread
}

void document_control::keep_unsaved_changes(bool for_next_start) {
  if (!kept_) return;
  if (!has_unsaved_changes()) return kept_->drop();
  const std::string changes = "Unsaved changes to " + name_of_document();
  try {
    const busy_cursor busy(ui_);
    const std::filesystem::path file = kept_->keep(*current_data_set, original(), for_next_start);
    ui_.add_info_line(changes + " are kept in " + file.native() + ".", icon_plain);
  } catch (const std::exception& error) {
    ui_.add_info_line(changes + " could not be kept. " + error.what(), icon_note);
  }
}

void document_control::renew_unsaved_copy() {
  if (!kept_ || !current_data_set) return;
  const std::string failure = kept_->renew(*current_data_set, saved_.get(), original());
  if (!failure.empty())
    ui_.add_info_line("Unsaved changes would be lost in a crash: they could not be kept. " + failure, icon_note);
}

void document_control::report_left_work() {
  if (!kept_) return;
  try {
    kept_->prepare();
  } catch (const std::exception& error) {
    ui_.add_info_line("Unsaved changes cannot be kept: save them before you close the window. " +
                          std::string(error.what()),
                      icon_note);
  }
  for (const kept_file& left : kept_->take_over())
    ui_.add_info_line("Vesk ended with " + in_words(left) + " (" + time_in_words(left.time) +
                          "). File > Unsaved work and earlier versions opens them.",
                      icon_note);
}

std::unique_ptr<earlier_version> document_control::hold_earlier_version() {
  if (!kept_) return {};
  const file_origin& origin = current_data_set->origin;
  const bool is_as_saved = origin.is_set() && identity_of(std::filesystem::path(file_name)) == origin.identity &&
                           current_data_set->file_version == prevesk_dataset_data_type::current_file_version() &&
                           saved_ && same_content(*current_data_set, *saved_);
  if (is_as_saved) return {};
  try {
    return std::make_unique<earlier_version>(kept_->earlier(), file_name);
  } catch (const std::exception& error) {
    ui_.add_info_line("The earlier version of " + leaf_of(file_name) + " could not be kept. " + error.what(),
                      icon_note);
    return {};
  }
}

std::vector<kept_file> document_control::kept_files() const {
  return kept_ ? kept_->list() : std::vector<kept_file>();
}

void document_control::open_kept(const kept_file& kept) {
  std::error_code ignored;
  if (!std::filesystem::exists(kept.file, ignored))
    return form_.report_failure(kept.file.native() + " does not exist any more.", failure_kind::missing_input);
  const std::string words = in_words(kept);
  as_step("Open " + words, [&] {
    if (load(kept.file, load_kind::not_named) == load_result::refused) return;
    file_name = kept.original;
    current_data_set->origin = {};
    if (!std::filesystem::exists(kept.file, ignored)) saved_.reset(); // to make room for what it has replaced
    form_.update_caption();
    ui_.add_info_line("Opened: " + words + ", kept at " + time_in_words(kept.time) +
                          ". The data file itself is unchanged until you save.",
                      icon_plain);
  });
}

} // namespace vesk
