// The main window's start and end.
#include "app/file_names.h"
#include "app/main_form.h"
#include "platform/letter_case.h"

namespace vesk {

void TPreveskMainForm::FormCreate() {
  restore_geometry();
  ui_.show_administration_menu(settings.administration_mode());
}

// A value that was never stored is 0 and leaves the window's own value, as does a negative one, which is off the
// screen.
void TPreveskMainForm::restore_geometry() {
  window_geometry now = ui_.geometry();
  struct {
    int stored;
    int& measure;
  } const measures[] = {{settings.ResultsTableHeight, now.results_table_height},
                        {settings.MainFormLeft, now.left},
                        {settings.MainFormTop, now.top},
                        {settings.MainFormWidth, now.width},
                        {settings.MainFormHeight, now.height}};
  for (const auto& [stored, measure] : measures)
    if (stored > 0) measure = stored;
  now.state = settings.MainFormWindowState;
  ui_.set_geometry(now);
}

void TPreveskMainForm::FormShow(std::span<const std::string> arguments) {
  if (document_index) document_index->initialize(); // if this fails, reading the index for the menu reports it
  populate_documentation_menu();
  ui_.hide_splash();
  update_caption();
  update_menus();
  if (settings.RunTimeGridAlwaysVisible) ui_.show_results_grid(true);
  check_database();
  documents_.report_left_work();
  const command_line_requests requests = walk_command_line(arguments);
  run_on_start = requests.run;
  if (requests.quit) quit_after_run = true;
  if (requests.import_requested) {
    import_file(requests.import_name); // its end starts the run
    if (!active_thread && run_on_start) run_on_start = quit_after_run = false;
  } else if (run_on_start) {
    RunModelButtonClick();
  }
}

// A running job is neither cancelled nor awaited.
void TPreveskMainForm::FormClose() {
  if (document_index) document_index->terminate();
  const window_geometry now = ui_.geometry();
  settings.ResultsTableHeight = now.results_table_height;
  settings.MainFormLeft = now.left;
  settings.MainFormTop = now.top;
  settings.MainFormWidth = now.width;
  settings.MainFormHeight = now.height;
  // The window of a batch run is minimised; the next start must not be.
  if (!minimised_by_request_ || now.state != window_geometry::window_minimised)
    settings.MainFormWindowState = now.state;
  documents_.leave_unsaved_work();
}

command_line_requests TPreveskMainForm::walk_command_line(std::span<const std::string> arguments) {
  command_line_requests requests;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const std::string option = upper_case(arguments[i]);
    if (option == "-RUN") {
      requests.run = true;
      minimised_by_request_ = true;
      ui_.minimise_main_window();
    } else if (option == "-EXPERT") {
      // Recognised, without effect.
    } else if (option == "-QUIT") {
      requests.quit = true;
    } else if (option == "-IMPORT") {
      requests.import_requested = true;
      requests.import_name = i + 1 < arguments.size() ? arguments[++i] : std::string();
    } else {
      open_file(arguments[i]);
    }
  }
  return requests;
}

} // namespace vesk
