// A script that is imported is exported, imported and exported again: the same text. The import goes through the real
// front end, which does not look at what the engine puts but for the names of results: with any of them, results lie
// beside the script and begin with its name. Input: an .inp file, or "vkn" or "rst", a line end, and such
// a file.
#include "output/csv_name.h"
#include "support/import_job.h"
#include "support/scratch.h"
#include "vesk_engine.h"

namespace {

using namespace vesk;
using fuzz::demand;

struct form {
  const char* name;
  void (*load)(vesk_data_callback);
};
void import_input(vesk_data_callback callback) {
  import_export(callback, 1);
}
void export_any(vesk_data_callback callback) {
  import_export(callback, 0);
}

void check_segments(const prevesk_dataset_data_type& data) {
  for (const segment_data_type& segment : data.segments)
    demand(segment.parameters.size() == data.parameters.size() && segment.systems.size() == data.systems.size(),
           "a segment's lists do not fit the model");
}

void check_names_of_results(const prevesk_dataset_data_type& data, const std::filesystem::path& script) {
  const std::filesystem::path base = script.parent_path() / script.stem();
  for (const output_control_type& output : data.output_controls) {
    reference_engine::OutputVariable variable;
    variable.csv_file = output.csv_filename.str();
    const std::filesystem::path result = reference_engine::csv_result_name(base, variable); // throws
    const std::string name = result.filename().string();
    const auto is_control = [](unsigned char c) { return c < 0x20 || c == 0x7f; };
    demand(result.parent_path() == script.parent_path() && name.starts_with(base.filename().string() + "_") &&
               std::none_of(name.begin(), name.end(), is_control) && name.find("\xc2\x9b") == name.npos,
           "a result leaves its folder");
  }
}

// The text of an export of what has been imported, if there is enough memory for it.
std::string exported(const fuzz::scratch_folder& folder, const char* name, prevesk_dataset_data_type&& data) {
  fuzz::import_job job((folder.path / name).string());
  job.data = std::move(data);
  demand(job.run([] { export_any(&data_callback); }), "what was imported is not exported");
  return folder.read(name);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  static const fuzz::scratch_folder folder;
  std::string_view text = fuzz::as_text(bytes, size);
  form chosen{"in.inp", import_input};
  for (const auto& [head, other] :
       {std::pair("vkn\n", form{"in.vkn", import_network}), std::pair("rst\n", form{"in.rst", load_restart_file})})
    if (text.starts_with(head)) {
      chosen = other;
      text.remove_prefix(4);
    }
  const bool is_whole = chosen.load == &import_input;

  const std::string file = folder.write(chosen.name, text);
  fuzz::import_job first(file);
  const bool imported = first.run([&] { chosen.load(&data_callback); });
  if (!first.is_short_of_memory()) { // a job that failed so is given up
    check_segments(first.data);
    check_names_of_results(first.data, file);
  }
  constexpr std::size_t most_exported = 2000; // segments: the text would be long, and nothing else
  if (!imported || first.data.segments.size() > most_exported) return 0;

  const std::string once = exported(folder, "once.inp", std::move(first.data));
  if (!is_whole) return 0;
  fuzz::import_job second(folder.write("again.inp", once));
  if (!second.run([] { import_input(&data_callback); })) fuzz::fail("an exported file is refused: " + second.refusal());
  demand(exported(folder, "twice.inp", std::move(second.data)) == once, "the second export differs from the first");
  return 0;
}
