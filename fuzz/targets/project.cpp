// A project is opened, or its user is told why not; its members are lines of it.
#include "app/main_form.h"
#include "behaviour_catalogue.h"
#include "dataset/vki_file.h"
#include "noting_interface.h"
#include "support/scratch.h"

namespace {

using namespace vesk;

struct main_form {
  main_form() {
    write_behaviour_catalogue(folder.path);
    form.set_database_folder(folder.path);
    save_data_file(folder.path / "river.vki", prevesk_dataset_data_type(form.catalogue.get()));
    folder.write("damaged.vki", "x");
  }

  fuzz::scratch_folder folder;
  noting_interface ui;
  TPreveskMainForm form{ui, folder.path / "settings.ini", configuration::access::read_only};
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  static main_form window;
  const std::string content(fuzz::as_text(bytes, size));
  window.ui.boxes.clear();
  const bool opened = window.form.open_project_file(window.folder.write("river.vkp", content));
  fuzz::demand(opened || !window.ui.boxes.empty(), "a failure is not told");
  if (opened && window.form.current_data_set)
    for (const project_component& member : window.form.current_data_set->project_files)
      fuzz::demand(content.find(member.str()) != content.npos, "a member is no line of the project");
  return 0;
}
