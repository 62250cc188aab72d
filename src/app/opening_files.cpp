// Files that are opened without the File menu: dropped on the window, used recently, or the sample.
#include "app/failure_kinds.h"
#include "app/file_names.h"
#include "app/main_form.h"
#include "app/sample_river.h"

namespace vesk {

void TPreveskMainForm::open_dropped(const std::string& name) {
  if (upper_extension(name) != ".INP") {
    open_file(name);
  } else if (active_thread) { // File > Import is disabled then
    ui_.add_info_line(leaf_of(name) + " was not imported: wait for the end of the running job, or cancel it.",
                      icon_note);
  } else {
    import_file(name);
  }
}

void TPreveskMainForm::open_recent(const std::string& name) {
  std::error_code ignored;
  if (std::filesystem::exists(name, ignored)) return open_file(name);
  settings.remove_recent_file(name);
  ui_.add_info_line(name + " does not exist any more. It was removed from the recent files.", icon_note);
  ui_.recent_files_changed();
}

void TPreveskMainForm::open_sample() {
  const std::filesystem::path from = sample_folder();
  if (from.empty())
    return ui_.add_info_line("The sample river is not installed. In the source folder, ./run makes it.", icon_note);
  try {
    open_file(copy_sample(from, documents_directory).native());
  } catch (const std::exception& error) {
    report_failure(error.what(), kind_of_writing_failure(error));
  }
}

} // namespace vesk
