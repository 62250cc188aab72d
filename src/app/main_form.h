// The main window's state and logic, without a window.
//
// TPreveskMainForm owns the settings, the catalogue and three parts: document_control (the data set, its file, its
// history), run_control (the engine's jobs) and outside_programs. It binds its handlers to their commands, and shows
// dialogs. All output and questions go through user_interface. Main thread only, except for the diagnostics.
#pragma once

#include "app/catalogue_source.h"
#include "app/configuration.h"
#include "app/document_control.h"
#include "app/main_form_services.h"
#include "app/outside_programs.h"
#include "app/run_control.h"
#include "app/user_interface.h"
#include "editors/editor_host.h"
#include "platform/open_mark.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vesk {

struct program_forms;

// What the command line requests besides opening files.
struct command_line_requests {
  bool run = false;
  bool quit = false;
  bool import_requested = false;
  std::string import_name; // as in the argument
};

struct reported_failure {
  std::string text;
  failure_kind kind = failure_kind::data;
};

class TPreveskMainForm final : public editor_host, private main_form_services {
public:
  // The interval of UIUpdateTimer, in milliseconds.
  static constexpr int ui_update_interval = 500;
  // How long the splash screen is shown before the main window, in milliseconds.
  static constexpr int splash_time = 5000;
  static constexpr std::string_view application_title = "ORL VESK";

  // Reads the settings from `settings_file`. `ui` must outlive the form and is not called yet.
  TPreveskMainForm(user_interface& ui, const std::filesystem::path& settings_file,
                   configuration::access settings_access = configuration::access::read_and_save);
  ~TPreveskMainForm() override; // saves the settings

private:
  user_interface& ui_;

public:
  configuration settings;
  catalogue_source catalogue; // of the folder DatabaseDir; see set_database_folder

private:
  document_control documents_;
  run_control runs_;
  outside_programs outside_;

public:
  // State of the parts; their headers describe each member.
  std::unique_ptr<prevesk_dataset_data_type>& current_data_set = documents_.current_data_set;
  std::unique_ptr<prevesk_dataset_data_type>& backup_data_set = documents_.backup_data_set;
  std::string& file_name = documents_.file_name;
  std::string& import_file_name = documents_.import_file_name;
  model_thread*& active_thread = runs_.active_thread;
  bool& quit_after_run = runs_.quit_after_run;
  bool& run_on_start = runs_.run_on_start;
  std::filesystem::path& log_file_name = runs_.log_file_name;
  std::filesystem::path& engine_path = runs_.engine_path;
  query_executor& execute_query = runs_.execute_query;
  bool& skip_deferred_queries = runs_.skip_deferred_queries;
  std::filesystem::path& output_folder = runs_.output_folder;
  bool& keeps_previous_results = runs_.keeps_previous_results;
  run_record& record_head = runs_.record_head;
  std::optional<prevesk_dataset_data_type>& recorded_data_set = runs_.recorded_data_set;
  std::function<void(const run_record&)>& note_start_of_run = runs_.note_start_of_run;
  std::function<void(run_record)>& take_record = runs_.take_record;
  std::unique_ptr<priority_platform>& priorities = runs_.priorities;
  std::string_view& priority_word = runs_.priority_word;
  std::string& program_directory = outside_.program_directory;
  std::string& documentation_directory = outside_.documentation_directory;
  std::unique_ptr<documentation_index>& document_index = outside_.document_index;
  std::map<std::string, std::string>& documentation_links = outside_.documentation_links;
  decltype(outside_programs::start_outside_program)& start_outside_program = outside_.start_outside_program;
  decltype(outside_programs::open_outside)& open_outside = outside_.open_outside;
  decltype(outside_programs::has_browser)& has_browser = outside_.has_browser;

  // The form's own state.
  std::string base_caption; // the title without the data set
  // The user's folders, each ending in a separator; the program's folder if the user has none.
  std::string application_data_directory;
  std::string documents_directory;

  // Events of the main window: creation, first display, close.
  void FormCreate();
  void FormShow(std::span<const std::string> arguments);
  void FormClose();
  void save_settings() { settings.save_all(); }

  // For a front end with a window; call it before the window is shown. Runs then keep the results of the run before,
  // unsaved work and earlier versions of data files are kept, and a file that is open in another window is reported.
  void serve_a_window();

  // Start.
  // Processes the arguments in order: opens files at once, notes options. Options are recognised in any letter case.
  command_line_requests walk_command_line(std::span<const std::string> arguments);
  void check_database() override;
  void select_database_folder();                       // asks for DatabaseDir
  void set_database_folder(const std::string& folder); // stores it, ending in a separator

  // Captions, commands, snapshots.
  void update_caption() override;
  void update_menus() override;
  command_conditions conditions() const override;
  void commit_snapshot() { documents_.commit_snapshot(); }
  void restore_snapshot() { documents_.restore_snapshot(); }
  void add_info_line(const std::string& text, int icon) { ui_.add_info_line(text, icon); }

  // Undo and Redo restore data set, names and origin, then update the caption.
  void UndoItemClick() { documents_.undo(); }
  void RedoItemClick() { documents_.redo(); }
  void keep_no_history() { documents_.keep_no_history(); } // for a front end without Undo; call before opening files

  // editor_host
  prevesk_dataset_data_type* data_set() override { return current_data_set.get(); }
  std::uint64_t generation() const override { return documents_.generation(); }
  std::filesystem::path data_folder() const override { return documents_.folder(); }
  user_questions& questions() override { return ui_; }
  std::string number_format(std::string_view setting) const override { return settings.number_format(setting); }
  void begin_step(const std::string& label, const std::string& merge_key) override {
    documents_.begin_step(label, merge_key);
  }
  void end_step(bool completed) override { documents_.end_step(completed); }
  std::string undo_label() const override { return documents_.undo_label(); }
  std::string redo_label() const override { return documents_.redo_label(); }
  void undo() override { UndoItemClick(); }
  void redo() override { RedoItemClick(); }
  TFillCalculateForm& fill_calculate_form() override;
  TImportTimeSeriesForm& import_form() override;
  bool restart_file_is_loading() const override {
    return active_thread && active_thread->code() == job_code::load_restart_file;
  }
  program_forms& forms() { return *forms_; }

  // Editors: take a snapshot, show the form, and restore the snapshot unless it was closed with OK. Without a data set
  // they do nothing.
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
  void NetworkItemClick();
  void EditProjectItemClick();
  void PreferencesItemClick();
  void AboutItemClick();
  void ExitItemClick();
  void FennExitItemClick();
  void FennPreveskItemClick() {}        // intentionally empty
  void PreProcessorToolButtonClick() {} // intentionally empty

  // Files.
  void new_data_set() { documents_.new_data_set(); }
  void NewItemClick() { new_data_set(); }
  void OpenItemClick() { documents_.ask_and_open(); }
  void OpenProjectItemClick() { documents_.ask_and_open_project(); }
  void take_content(const prevesk_dataset_data_type& content) { documents_.take_content(content); }
  void open_file(const std::string& name); // a data file, a project, or results
  bool open_project_file(const std::string& name) { return documents_.open_project_file(name); }
  void SaveItemClick() { save(); }
  void SaveasItemClick() { documents_.ask_name_and_save(); }
  void KeptWorkItemClick(); // lists unsaved work and earlier versions, and opens the chosen file
  bool save() { return documents_.save(); }
  bool save_as(const std::string& name) { return documents_.save_as(name); }
  void ImportItemClick() { runs_.ask_and_import(); }
  void ExportItemClick() { runs_.ask_and_export(); }
  void import_file(const std::string& name) { runs_.import_file(name); }
  void export_file(const std::string& name) { runs_.export_file(name); }
  int failures() const { return failures_; } // reported ones: of files, queries, jobs and the engine library
  const std::optional<reported_failure>& first_failure() const { return first_failure_; }
  int files_partly_read() const { return documents_.files_partly_read(); }
  // For a file that is dropped on the window: a text is imported, any other file opened.
  void open_dropped(const std::string& name);
  // One of the settings' recent files. If it is gone, an info line says so, and the list loses it.
  void open_recent(const std::string& name);
  void recent_files_changed() { ui_.recent_files_changed(); }
  void open_sample(); // a copy of the sample river, in the user's documents

  // Results.
  void OpenResultsItemClick();
  void ResultsItemClick(); // of the last run of the open data set
  // Lists a file that belongs to the open data set, such as its measured series, among its related project files.
  void list_related_file(const std::filesystem::path& file);
  bool show_results_after_run() const override { return settings.ShowResultsAfterRun; }
  void set_show_results_after_run(bool wanted) override { settings.ShowResultsAfterRun = wanted; }

  // Jobs.
  void RunModelButtonClick() { runs_.run_or_cancel(); }
  void cancel_job() override { runs_.cancel_job(); }
  void ImportNetworkButtonClick() { start_import_network(); }
  void ValidateInputItemClick() { start_validity_check(); }
  void start_import_export(bool import) { runs_.launch(import ? job_code::import_file : job_code::export_file); }
  void start_validity_check() { runs_.launch(job_code::get_maximum_parameters); }
  void start_read_hyd_file() { runs_.launch(job_code::read_hyd_file); }
  void start_import_network() { runs_.launch(job_code::import_network); }
  void start_import_network(const std::string& name) { runs_.launch(job_code::import_network, name); }
  void start_load_restart_file() override { runs_.launch(job_code::load_restart_file); }
  void start_load_restart_file(const std::string& name) { runs_.launch(job_code::load_restart_file, name); }
  bool execute_deferred_queries_of(prevesk_dataset_data_type& data, std::span<const series_ref> series) {
    return runs_.execute_deferred_queries_of(data, series);
  }
  bool prepare_many_runs() { return runs_.prepare_many_runs(); }
  bool execute_all_deferred_queries() { return runs_.execute_all_deferred_queries(); }
  void ExectutealldeferredqueriesItemClick() { runs_.ask_and_execute_all_deferred_queries(); }
  bool change_priority(int position) { return runs_.change_priority(position); }
  void PriorityTrackBarChange(int position) { runs_.move_priority_track_bar(position); }
  void UpdateTimerTimer() {
    runs_.show_news();
    documents_.renew_unsaved_copy();
  }
  std::optional<double> ResultsTableGetCellData(int row, int column) const { return runs_.results_cell(row, column); }
  double simulation_time() const { return runs_.simulation_time(); }
  std::filesystem::path results_base() const { return std::filesystem::path(runs_.results_name()).replace_extension(); }
  const std::filesystem::path& recorded_base() const { return runs_.recorded_base(); }
  bool engine_is_bundled() const { return runs_.engine_is_bundled(); }
  const job_outcome& last_job() const { return runs_.last_job(); }
  int return_code() const { return runs_.return_code(); }
  void set_window_handle(std::int32_t handle) { runs_.set_window_handle(handle); }

  // Diagnostics. Any thread. The two commands only switch on; the preferences also switch off.
  bool logging_enabled() const override { return runs_.logging_enabled(); }
  void set_logging_enabled(bool enabled) override { runs_.set_logging_enabled(enabled); }
  int diagnostic_level() const override { return runs_.diagnostic_level(); }
  void set_diagnostic_level(int level) override { runs_.set_diagnostic_level(level); }
  int undo_megabytes() const override { return settings.UndoMegabytes; } // main thread, like the next one
  void set_undo_megabytes(int megabytes) override;
  void EnableloggingItemClick() { set_logging_enabled(true); }
  void EnabledebugmodeItemClick() { set_diagnostic_level(2); }
  void DictionaryItemClick(); // main thread

  // Outside programs.
  void populate_documentation_menu() { outside_.populate_documentation_menu(); }
  void DocumentationItemClick(const std::string& caption) { outside_.open_document(caption); }
  void ContentsItemClick() { outside_.open_user_guide(); }
  void LoadPostProcessorItemClick() { start_post_processor(settings.PostProcessor, "PostProcessor"); }
  void HAVLEPostProcessorToolButtonClick() { start_post_processor(settings.HavlePostProcessor, "HavlePostProcessor"); }
  bool launch_process(const std::vector<std::string>& arguments) { return outside_.launch_process(arguments); }
  void Checkforupdates1Click() { outside_.check_for_updates(); }
  void Setdatabasefolder1Click();

private:
  void edit(form& editor, void (TPreveskMainForm::*on_ok)() = nullptr, void (TPreveskMainForm::*on_close)() = nullptr);
  void give_default_points();
  void update_menus_and_caption();
  void find_boundaries();
  void mark_open_file();
  void start_post_processor(const std::string& command_line, const char* setting) {
    outside_.start_post_processor(command_line, file_name, std::string(setting) + " in " + settings.file());
  }
  void restore_geometry();

  // main_form_services
  void note_used_file(const std::string& name) override;
  void report_failure(const std::string& text, failure_kind kind) override;
  void note_failure(const std::string& text, failure_kind kind) override;

  std::unique_ptr<program_forms> forms_;
  int failures_ = 0;
  std::optional<reported_failure> first_failure_;
  bool minimised_by_request_ = false;  // from the command line
  std::filesystem::path marks_folder_; // empty: files are not marked as open
  std::string marked_file_;
  open_mark mark_;
};

} // namespace vesk
