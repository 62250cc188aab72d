// The data set being edited: its snapshot, its file, and the history that Undo goes back through.
//
// There is no dirty flag: New, Open and Import replace the data set without asking. There are two questions: the one
// before a project is opened, and the one before saving replaces a file that is not the data set's origin.
#pragma once

#include "app/catalogue_source.h"
#include "app/history.h"
#include "app/main_form_services.h"
#include "app/user_interface.h"
#include "dataset/dataset.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace vesk {

// Main thread only.
class document_control {
public:
  // All three must outlive it. `history_limit`: bytes of all steps together.
  document_control(user_interface& ui, main_form_services& form, catalogue_source& catalogue,
                   std::size_t history_limit);

  std::unique_ptr<prevesk_dataset_data_type> current_data_set;
  std::unique_ptr<prevesk_dataset_data_type> backup_data_set; // the snapshot; null exactly when the other is
  std::string file_name;                                      // of the data set; empty for a new one
  std::string import_file_name;                               // of the last import or export

  void commit_snapshot();
  void restore_snapshot();

  // Files. A failure is reported in a box and counted.
  void new_data_set();
  void ask_and_open();
  void open_file(const std::string& name); // a data file or a project, by its extension
  void ask_and_open_project();
  bool open_project_file(const std::string& name);
  // Saves to file_name. Asks for a name if there is none, and before it replaces a file that is not the data set's
  // origin. True when it was saved.
  bool save();
  bool ask_name_and_save();
  // Saves to `name`, with ".vki" appended to a name without it, and replaces an existing file. True when it was saved.
  bool save_as(const std::string& name);
  // Files that were opened without a part of their content: of a newer version, or of a model that the catalogue lacks.
  int files_partly_read() const { return files_partly_read_; }

  // Replaces the data set by an empty one of the catalogue's first model. Throws catalogue_exception and then leaves
  // everything as it was.
  void begin_document(const std::string& its_file_name, const std::string& its_import_file_name);
  // Gives the open data set the catalogue of the present folder, if that can be read.
  void take_present_catalogue();

  // Replacing. Everything that exchanges the current data set goes through `replace`.
  document present() const; // there must be a data set
  // `with_caption`: the title follows. It does not after a failed Open.
  void replace(document next, bool with_caption = true);
  void take_content(const prevesk_dataset_data_type& content); // names and number stay
  std::uint64_t generation() const { return generation_; }     // raised by each replacement
  // After a question to the user: true when a job's end has replaced the data set meanwhile. An info line then says so,
  // and what was not done.
  bool is_replaced_since(std::uint64_t generation, const std::string& what_was_left);
  std::uint64_t document_number() const { return document_number_; }
  std::uint64_t new_document_number() { return ++last_document_; }
  std::string name_of_document() const; // for messages

  // History.
  void keep_no_history() { keeps_history_ = false; }
  bool keeps_history() const { return keeps_history_; }
  history& steps() { return steps_; }
  std::string undo_label() const { return steps_.undo_label(); }
  std::string redo_label() const { return steps_.redo_label(); }
  void undo();
  void redo();
  // Does `work` as one step. Adds none if `work` replaced nothing, or if there was no data set before.
  void as_step(const std::string& label, const std::function<void()>& work);
  void add_step(document before, const std::string& label, const std::string& merge_key = {});
  // One operation of an editor; see editor_host.
  void begin_step(const std::string& label, const std::string& merge_key);
  void end_step(bool completed);

private:
  enum class load_result { loaded, cannot_open, refused }; // refused: data set and name are as they were
  // A member of a project that cannot be opened is refused without a message.
  enum class load_kind { data_file, project_member };
  load_result load(const std::string& name, load_kind kind = load_kind::data_file);
  bool read_into_new_data_sets(const std::string& name, load_kind kind, reading_losses& losses);
  void report_losses(const std::string& name, const reading_losses& losses);
  bool read_project(const std::string& name);
  bool may_replace(const std::string& name);
  bool save_to_file_name();
  void go_to(document step, const std::string& line);

  user_interface& ui_;
  main_form_services& form_;
  catalogue_source& catalogue_;
  int files_partly_read_ = 0;

  history steps_;
  bool keeps_history_ = true;
  std::uint64_t generation_ = 0;
  std::uint64_t document_number_ = 0; // of the current data set
  std::uint64_t last_document_ = 0;   // the highest number given
  struct open_step {
    document before;
    std::string label, merge_key;
  };
  std::optional<open_step> open_step_; // between begin_step and end_step
};

} // namespace vesk
