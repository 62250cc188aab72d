// The main window's state and logic, without a window.
//
// TPreveskMainForm owns what lasts: the data set being edited, its snapshot and the one job that may run. It decides;
// what is shown and asked goes through user_interface. All members belong to the main thread but those of
// job_front_end that are marked otherwise.
#pragma once

#include "app/catalogue_source.h"
#include "app/configuration.h"
#include "app/history.h"
#include "app/priority_control.h"
#include "app/user_interface.h"
#include "dataset/dataset.h"
#include "editors/editor_host.h"
#include "engine/job_front_end.h"
#include "engine/model_thread.h"
#include "platform/output_lock.h"
#include "platform/processes.h"
#include "query/deferred_queries.h"

#include <atomic>
#include <chrono>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <span>
#include <string>
#include <vector>

namespace vesk {

struct program_forms;

// What the command line asks for besides the files that it opens.
struct command_line_requests {
  bool run = false;
  bool quit = false;
  bool import_requested = false;
  std::string import_name; // as it stands in the argument
};

// How the last job ended.
struct job_outcome {
  job_code code = job_code::run;
  bool cancelled = false; // somebody asked it to stop
  bool checked = true;    // of a validity check: it was made, and nothing of severity 2 was found
  int return_code = 0;    // as the engine has put it; 0 when it has put none
  std::string failure;    // of an exception in the engine or a keyword; empty: none
  std::string log_loss;   // why lines of its log were lost, one sentence; empty: none was
  bool failed() const { return !failure.empty(); }
};

class TPreveskMainForm final : public editor_host, private job_front_end {
public:
  // The interval of UIUpdateTimer, in milliseconds.
  static constexpr int ui_update_interval = 500;
  // How long the splash picture stands before the main window is shown, in milliseconds.
  static constexpr int splash_time = 5000;
  static constexpr std::string_view application_title = "ORL VESK";

  // Reads the settings from `settings_file`. `ui` must outlive the form and is not spoken to yet.
  TPreveskMainForm(user_interface& ui, const std::filesystem::path& settings_file,
                   configuration::access settings_access = configuration::access::read_and_save);
  ~TPreveskMainForm() override; // saves the settings

  // State.
  configuration settings;
  bool quit_after_run = false; // asked for on the command line, and used up by the first run; so is the next
  bool run_on_start = false;
  model_thread* active_thread = nullptr; // the one job; null when idle. It frees itself.
  std::string base_caption;              // the title without the data set
  std::string file_name;                 // of the data set; empty for a new one
  std::string import_file_name;          // of the last import or export
  std::filesystem::path log_file_name;   // the template for the jobs' logs
  std::filesystem::path engine_path;     // of the engine library
  catalogue_source catalogue;            // of the folder DatabaseDir; see set_database_folder
  query_executor execute_query;          // how a stored query is run
  bool skip_deferred_queries = false;    // run on the stored points
  std::unique_ptr<prevesk_dataset_data_type> current_data_set;
  std::unique_ptr<prevesk_dataset_data_type> backup_data_set; // the snapshot; null exactly when the other is
  // Folders, each ending in a separator. The first two are the program's own where the user has none.
  std::string application_data_directory;
  std::string documents_directory;
  std::string program_directory;
  std::string documentation_directory;                    // of the index and its documents
  std::map<std::string, std::string> documentation_links; // by menu caption: a file in that folder, or a link
  std::unique_ptr<priority_platform> priorities;          // of the job that goes
  std::string_view priority_word;                         // of the last change of priority
  // How programs outside are started and documents opened; arguments, or file or link, and the working folder.
  std::function<bool(const std::vector<std::string>&, const std::filesystem::path&)> start_outside_program =
      start_program;
  std::function<void(const std::string&, const std::filesystem::path&)> open_outside = open_with_desktop;

  // The main window's life: when it has been made, when it is shown for the first time, when it closes.
  void FormCreate();
  void FormShow(std::span<const std::string> arguments);
  void FormClose();
  void save_settings() { settings.save_all(); }

  // Start.
  // Looks at the arguments in order: opens files at once, notes options. Options are recognised in any case.
  command_line_requests walk_command_line(std::span<const std::string> arguments);
  // Tells whether the catalogue can be opened, asks once for another folder when it cannot.
  void check_database();
  void select_database_folder();                       // asks for DatabaseDir
  void set_database_folder(const std::string& folder); // takes it, with a separator at its end

  // Captions, commands, snapshots.
  void update_caption();
  void update_menus();
  command_conditions conditions() const;
  void commit_snapshot();
  void restore_snapshot();

  // Undo and Redo: back to what was there before the last operation, and forth again. Data set, names and origin are
  // put back, then the caption.
  void UndoItemClick();
  void RedoItemClick();
  void keep_no_history() { keeps_history_ = false; } // for a front end without Undo; before any file is opened
  // editor_host
  prevesk_dataset_data_type* data_set() override { return current_data_set.get(); }
  std::uint64_t generation() const override { return generation_; }
  user_questions& questions() override { return ui_; }
  std::string number_format(std::string_view setting) const override { return settings.number_format(setting); }
  void begin_step(const std::string& label, const std::string& merge_key) override;
  void end_step(bool completed) override;
  std::string undo_label() const override { return steps_.undo_label(); }
  std::string redo_label() const override { return steps_.redo_label(); }
  void undo() override { UndoItemClick(); }
  void redo() override { RedoItemClick(); }
  TFillCalculateForm& fill_calculate_form() override;
  bool job_is_running() const override { return active_thread != nullptr; }
  program_forms& forms() { return *forms_; }

  // Editors: a snapshot, the form, and the snapshot back on anything but OK. Without a data set they do nothing.
  void ParameterizationItemClick(); // the "Data set" dialog
  void SystemsItemClick();
  void SegmentsItemClick();
  void ParametersItemClick(); // of the segments
  void ConstantsItemClick();
  void ExchangesItemClick();
  void FlowsItemClick();
  void LoadsItemClick();
  void BoundariesItemClick();
  void TimeFunctionsItemClick();
  void PrintIntervalItemClick();
  void TimestepItemClick();
  void OutputcontrolItemClick();

  // Other dialogs.
  void EditProjectItemClick();
  void PreferencesItemClick();
  void AboutItemClick();
  void ExitItemClick();
  void FennExitItemClick();
  void FennPreveskItemClick() {}        // on purpose
  void PreProcessorToolButtonClick() {} // on purpose

  // Diagnostics. Both only switch on; the preferences switch off too.
  void EnableloggingItemClick() { set_logging_enabled(true); }
  void EnabledebugmodeItemClick() { set_diagnostic_level(2); }
  void DictionaryItemClick();

  // Outside.
  void populate_documentation_menu();
  void DocumentationItemClick(const std::string& caption);
  void ContentsItemClick();
  void LoadPostProcessorItemClick();
  void HAVLEPostProcessorToolButtonClick();
  void Checkforupdates1Click();
  void Setdatabasefolder1Click();
  bool launch_process(const std::vector<std::string>& arguments); // the program first; not waited for

  // Files. A failure is told in a box and counted in `failures`.
  void new_data_set();
  void NewItemClick() { new_data_set(); }
  void open_file(const std::string& name);
  bool load_data_file(const std::string& name); // true also when the failure has been told already
  bool open_project_file(const std::string& name);
  void SaveItemClick() { save(); }
  void SaveasItemClick() { ask_name_and_save(); }
  void OpenItemClick();
  void OpenProjectItemClick();
  void ImportItemClick();
  void ExportItemClick();
  void import_file(const std::string& name); // the command line's import: only .INP
  void export_file(const std::string& name);
  // Saves to file_name; without one the user is asked for it, and where this would replace a file that is not the data
  // set's origin, whether to. True when it was saved.
  bool save();
  // Saves to `name`, with ".vki" appended to a name without it, and replaces what is there. True when it was saved.
  bool save_as(const std::string& name);
  int failures() const { return failures_; } // of opening, importing, exporting and saving files
  // Files that were opened without a part of their content: of a newer version, or of a model that the catalogue lacks.
  int files_partly_read() const { return files_partly_read_; }

  // Run control.
  void RunModelButtonClick(); // starts a run, or cancels the job that goes
  void cancel_job() override; // asks the job that goes, if any, to stop
  // The launchers; without a data set they do nothing.
  void ImportNetworkButtonClick() { start_import_network(); }
  void ValidateInputItemClick() { start_validity_check(); }
  void start_import_export(bool import);
  void start_validity_check();
  void start_read_hyd_file();
  void start_import_network();
  void start_import_network(const std::string& name);
  void start_load_restart_file() override;
  void start_load_restart_file(const std::string& name);
  // Executes the deferred queries of the data set itself, so that they become plain series. False: failed, and told;
  // the data set is as before.
  bool execute_all_deferred_queries();
  void ExectutealldeferredqueriesItemClick(); // the same, once the user agrees
  bool change_priority(int position);         // of the job that goes, 0 to 6; false: refused
  void PriorityTrackBarChange(int position);
  void UpdateTimerTimer();
  const job_outcome& last_job() const { return last_job_; }

  // Diagnostics. Any thread.
  bool logging_enabled() const override { return logging_enabled_; }
  void set_logging_enabled(bool enabled) override { logging_enabled_ = enabled; }
  int diagnostic_level() const override { return diagnostic_level_; }
  void set_diagnostic_level(int level) override { diagnostic_level_ = level; }
  int return_code() const { return return_code_; } // the process's exit code as the engine has put it
  void set_window_handle(std::int32_t handle) { window_handle_ = handle; } // what engines are told; 0 without a window

  // The results grid's element at a row and column of the grid, both from 0; nothing without an array. Main thread;
  // reads the engine's array as it is being written.
  std::optional<double> ResultsTableGetCellData(int row, int column) const;

private:
  void edit(form& editor, void (TPreveskMainForm::*on_ok)() = nullptr, void (TPreveskMainForm::*on_close)() = nullptr);
  void give_default_points();
  void update_menus_and_caption();
  void find_boundaries();
  void restore_geometry();
  void start_post_processor(const std::string& program);
  void report_failure(const std::string& text);
  document present() const; // there must be a data set
  void replace(document next, bool with_caption = true);
  void as_step(const std::string& label, const std::function<void()>& work);
  void add_step(document before, const std::string& label, const std::string& merge_key = {});
  void go_to(document step, const std::string& line);
  bool is_replaced_since(std::uint64_t generation, const std::string& what_was_left);
  std::string name_of_document() const; // for messages
  void begin_document(const std::string& its_file_name, const std::string& its_import_file_name);
  void take_present_catalogue();                               // for the data set that is open
  void take_content(const prevesk_dataset_data_type& content); // into the current data set
  void note_start_of_job(job_code code, const std::string& name);
  void take_back(); // the data set of the job that ends
  void tell_what_was_replaced(const document& before, bool same_document, bool edited);
  enum class load_result { loaded, cannot_open, refused }; // refused: data set and name are as they were
  // A member of a project that cannot be opened is refused, and nothing is said.
  enum class load_kind { data_file, project_member };
  load_result load(const std::string& name, load_kind kind = load_kind::data_file);
  bool read_project(const std::string& name);
  bool read_into_new_data_sets(const std::string& name, load_kind kind, reading_losses& losses);
  void tell_losses(const std::string& name, const reading_losses& losses);
  bool ask_name_and_save();
  bool may_replace(const std::string& name);
  bool save_to_file_name();
  void prepare_import(const std::string& name);
  bool load_engine(); // false: cannot be loaded, and reported
  bool refuse_when_busy(job_code code);
  bool start_job(const prevesk_dataset_data_type& data_set, job_code code, const std::string& name,
                 void (TPreveskMainForm::*end_handler)());
  bool start_run();
  void resume_other_job();                                                 // one that is not a run
  bool run_queries(prevesk_dataset_data_type& data_set, bool clear_flags); // false: failed, and reported
  bool lock_outputs(std::unique_ptr<output_lock>& lock);                   // of a run; false: refused, and reported
  void run_end();
  void import_export_end();
  void validity_end();
  void copy_back_end();
  void end_job(void (TPreveskMainForm::*end_handler)());
  void clear_progress();
  void note_end_of_job();

  // job_front_end
  void add_info_line(const std::string& text, int icon) override; // and selects it
  void clear_info_lines() override;
  void set_file_name(const std::string& name) override;
  void initialize_grid(const std::vector<std::string>& column_labels, int rows) override;
  void clear_grid_data() override;
  void hydrodynamic_file_put() override;
  void set_grid_data(const float* data, int actual_columns, int actual_rows, bool invert) override; // worker
  std::int32_t window_handle() const override { return window_handle_; }                            // any thread
  void set_return_code(int code) override { return_code_ = job_return_code_ = code; }               // any thread

  user_interface& ui_;
  std::unique_ptr<program_forms> forms_;
  std::shared_ptr<const engine_library> library_;
  int failures_ = 0;
  int files_partly_read_ = 0;
  bool minimised_by_request_ = false; // of the command line

  history steps_;
  bool keeps_history_ = true;
  std::uint64_t generation_ = 0;
  std::uint64_t document_number_ = 0; // of the current data set
  std::uint64_t last_document_ = 0;   // the highest number given
  struct open_step {                  // of begin_step
    document before;
    std::string label, merge_key;
  };
  std::optional<open_step> open_step_;
  struct job_start {                      // what the job that goes has begun with, unless it gives nothing back
    std::string label;                    // of the step that its end makes
    prevesk_dataset_data_type data_set;   // as it was taken
    std::uint64_t document = 0;           // its number
    std::optional<std::string> file_name; // before the job has put another
  };
  std::optional<job_start> job_start_;
  std::string replaced_by_import_; // what the last import has replaced at its start; empty: nothing
  job_outcome last_job_;
  std::chrono::steady_clock::time_point priority_refused_; // last, since the job began
  std::unique_ptr<output_lock> output_lock_;               // of the run that goes
  std::atomic<bool> logging_enabled_{false};
  std::atomic<int> diagnostic_level_{0};
  std::atomic<int> return_code_{0};
  std::atomic<int> job_return_code_{0}; // of the job that goes
  std::atomic<std::int32_t> window_handle_{0};
  mutable std::mutex grid_lock_;
  const float* grid_data = nullptr; // the engine's; this and the next three are guarded by grid_lock_
  int grid_actual_columns = 0;
  int grid_actual_rows = 0;
  bool grid_invert = false;
  int grid_rows_ = 0; // as the engine has set the grid up; main thread
};

} // namespace vesk
