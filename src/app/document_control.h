// The data set being edited: its snapshot, its file, and its Undo history.
//
// There is no dirty flag: New, Open and Import replace the data set without asking. Only two actions ask first: opening
// a project, and saving over a file that is not the data set's origin. With kept work, unsaved changes are kept in a
// file instead.
#pragma once

#include "app/catalogue_source.h"
#include "app/history.h"
#include "app/kept_work.h"
#include "app/main_form_services.h"
#include "app/user_interface.h"
#include "dataset/dataset.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace vesk {

// Main thread only.
class document_control {
public:
  // All three must outlive it. `history_limit`: bytes for all steps together.
  document_control(user_interface& ui, main_form_services& form, catalogue_source& catalogue,
                   std::size_t history_limit);

  std::unique_ptr<prevesk_dataset_data_type> current_data_set;
  std::unique_ptr<prevesk_dataset_data_type> backup_data_set; // the snapshot; null exactly if the other one is
  std::string file_name;                                      // of the data set; empty for a new one
  std::string import_file_name;                               // of the last import or export
  std::filesystem::path folder() const;                       // of file_name; empty without one

  void commit_snapshot();
  void restore_snapshot();

  // Files. A failure is shown in a box and counted.
  void new_data_set();
  void ask_and_open();
  void open_file(const std::string& name); // a data file or a project, depending on its extension
  void ask_and_open_project();
  bool open_project_file(const std::string& name);
  // Saves to file_name. Asks for a name if there is none, and before replacing a file that is not the data set's
  // origin. True if saved.
  bool save();
  bool ask_name_and_save();
  // Saves to `name`, with ".vki" appended if missing; replaces an existing file. True if saved.
  bool save_as(const std::string& name);
  // Number of opened files that were only partly read: of a newer version, or of a model that the catalogue lacks.
  int files_partly_read() const { return files_partly_read_; }

  // Replaces the data set by an empty one for the catalogue's first model. Throws catalogue_exception; then nothing
  // changes.
  void begin_document(const std::string& its_file_name, const std::string& its_import_file_name);
  // Gives the open data set the catalogue of the current database folder, if it can be read.
  void take_present_catalogue();

  // Replacement. Every change to another current data set goes through `replace`.
  document present() const; // there must be a data set
  // `with_caption`: also updates the title, which is not wanted after a failed Open.
  void replace(document next, bool with_caption = true);
  // The same for another document, which gets a new number; unsaved changes of the present one are kept.
  void replace_by_another(document next, bool with_caption = true);
  void take_content(const prevesk_dataset_data_type& content); // keeps names and number
  std::uint64_t generation() const { return generation_; }     // raised by each replacement
  // After a question to the user: true if the end of a job has replaced the data set in the meantime. An info line then
  // says so, and what was not done.
  bool is_replaced_since(std::uint64_t generation, const std::string& what_was_left);
  std::uint64_t document_number() const { return document_number_; }
  std::string name_of_document() const; // for messages

  // Kept work; see kept_work. Without a folder nothing is kept. Failures give a line in the info list.
  void keep_work_in(const std::filesystem::path& folder);
  void report_left_work();   // by programs that have ended
  void renew_unsaved_copy(); // to be called often
  void note_saved();         // the data set is as last opened or saved
  void leave_unsaved_work(); // at the end of the program
  std::vector<kept_file> kept_files() const;
  void open_kept(const kept_file& kept); // under the name of its original, without an origin

  // History.
  void keep_no_history() { keeps_history_ = false; }
  bool keeps_history() const { return keeps_history_; }
  history& steps() { return steps_; }
  std::string undo_label() const { return steps_.undo_label(); }
  std::string redo_label() const { return steps_.redo_label(); }
  void undo();
  void redo();
  // Performs `work` as one step. Adds no step if `work` replaced nothing, or if there was no data set before.
  void as_step(const std::string& label, const std::function<void()>& work);
  void add_step(document before, const std::string& label, const std::string& merge_key = {});
  // One operation of an editor; see editor_host.
  void begin_step(const std::string& label, const std::string& merge_key);
  void end_step(bool completed);

private:
  enum class load_result { loaded, cannot_open, refused }; // refused: data set and name are unchanged
  // If a file that the user has not named cannot be opened, it is refused without a message.
  enum class load_kind { data_file, not_named };
  load_result load(const std::string& name, load_kind kind = load_kind::data_file);
  bool read_into_new_data_sets(const std::string& name, load_kind kind, reading_losses& losses);
  void report_losses(const std::string& name, const reading_losses& losses);
  void report_file_failure(const std::string& file, const std::string& sentence, failure_kind kind);
  bool read_project(const std::string& name);
  void report_project_without_data(const std::string& name, bool has_count, std::size_t members);
  bool may_replace(const std::string& name);
  bool save_to_file_name();
  void go_to(document step, const std::string& line);
  bool has_unsaved_changes() const;
  std::string original() const; // absolute path of the data file; empty without one
  void keep_unsaved_changes(bool for_next_start);
  std::unique_ptr<earlier_version> hold_earlier_version(); // of the file to be saved; null: there is nothing to keep

  user_interface& ui_;
  main_form_services& form_;
  catalogue_source& catalogue_;
  int files_partly_read_ = 0;

  history steps_;
  bool keeps_history_ = true;
  std::uint64_t generation_ = 0;
  std::uint64_t document_number_ = 0; // of the current data set
  std::uint64_t last_document_ = 0;   // the highest number used
  struct open_step {
    document before;
    std::string label, merge_key;
  };
  std::optional<open_step> open_step_; // between begin_step and end_step

  std::unique_ptr<kept_work> kept_;                  // null: nothing is kept
  std::shared_ptr<prevesk_dataset_data_type> saved_; // as in `document`
};

} // namespace vesk
