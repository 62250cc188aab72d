// The main window: PreveskMainForm's controls, and the main form's user interface.
#pragma once

#include "app/main_form.h"
#include "app/user_interface.h"
#include "ui/command_controls.h"

#include <QMainWindow>
#include <QTimer>
#include <functional>
#include <map>
#include <memory>
#include <string>

class QSplitter;

namespace vesk {

class form_windows;
class front_page;
class info_list;
class progress_panel;
class results_table;
class results_window;
class splash_form;

class main_window final : public QMainWindow, public user_interface {
public:
  explicit main_window(const std::filesystem::path& settings_file);
  ~main_window() override;

  TPreveskMainForm& form() { return *form_; }

  // The arguments for the first showing, which hides `splash`. Call it before.
  void set_start(std::vector<std::string> arguments, splash_form* splash);

  // user_interface
  box_answer message_box(const std::string& title, const std::string& text, box_buttons buttons) override;
  std::optional<std::string> ask_file(const file_dialog& dialog) override;
  std::optional<std::string> ask_folder(const std::string& title, const std::string& start) override;
  bool run_long_work(const std::string& what, const std::function<void(work_progress&)>& work) override;
  void set_busy(bool busy) override;
  bool show_form(vesk::form& shown) override;
  void show_graph(std::shared_ptr<TGraphForm> graph, const vesk::form& owner) override;
  void show_network() override;
  std::string clipboard_text() override;
  void set_clipboard_text(const std::string& text) override;
  void set_caption(const std::string& caption) override;
  void set_commands(const command_conditions& conditions) override;
  void close_main_window() override;
  window_geometry geometry() override;
  void set_geometry(const window_geometry& geometry) override;
  void minimise_main_window() override;
  void hide_splash() override;
  void show_administration_menu(bool visible) override { controls_->show_administration_menu(visible); }
  void add_documentation_item(const std::string& caption) override { controls_->add_document(caption); }
  void data_set_replaced() override;
  bool show_results(const std::string& file, bool after_run) override;
  void recent_files_changed() override;
  void query_executed(const std::string& series, const import_query_descriptor& query,
                      const query_report& report) override;
  void set_priority_position(int position) override;
  void add_info_line(const std::string& text, int icon) override;
  void select_last_info_line() override;
  void clear_info_lines() override;
  void begin_job_messages(const std::string& heading) override;
  void end_job_messages(const std::string& outcome) override;
  bool show_page(const std::string& file) override;
  void set_progress(int percent) override;
  void set_info_label(const std::string& text) override;
  void set_time_remaining_label(const std::string& text) override;
  void show_run_controls(bool running) override;
  void initialize_grid(const std::vector<std::string>& column_labels, int rows) override;
  void show_results_grid(bool visible) override;
  void repaint_results_grid() override;

protected:
  void showEvent(QShowEvent* event) override;
  void closeEvent(QCloseEvent* event) override;
  void moveEvent(QMoveEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dropEvent(QDropEvent* event) override;

private:
  void lay_out();
  void refresh_front_page();
  void keep_on_screen();
  void share_the_height(); // between page, messages and grid
  void save_messages(const std::string& text);
  void set_results_height(int height);
  void note_normal_place();
  void sample_results_grid(); // for the results window
  void show_results_window(); // once no dialog is open

  std::unique_ptr<TPreveskMainForm> form_;
  std::unique_ptr<form_windows> forms_;
  std::unique_ptr<command_controls> controls_;
  std::unique_ptr<results_window> results_; // null until first used
  front_page* front_page_ = nullptr;
  info_list* InfoListView = nullptr;
  results_table* ResultsTable = nullptr;
  QSplitter* splitter_ = nullptr; // between page, messages and grid
  QTimer refresh_soon_;           // for the page
  progress_panel* InfoPanel = nullptr;
  QTimer UIUpdateTimer;
  std::vector<std::string> arguments_;
  splash_form* splash_ = nullptr;
  bool has_been_shown_ = false;
  bool has_closed_ = false;
  int results_height_ = 0; // as last seen or set
  int page_height_ = 0;    // set by the user; 0: automatic
  QRect normal_place_;     // of the content, when last neither minimised nor maximised
};

} // namespace vesk
