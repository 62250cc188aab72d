// NAME.measured.json is refused in one sentence, or is the same after writing and reading it.
#include "results/measured_series.h"
#include "support/scratch.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  using namespace vesk;
  static const fuzz::scratch_folder folder;
  const std::string name = folder.write("river.measured.json", fuzz::as_text(bytes, size));
  std::vector<measured_series> series;
  try {
    series = read_measured_file(name);
  } catch (const measured_file_exception& refusal) {
    fuzz::demand_sentence(refusal.what(), name);
    return 0;
  }
  write_measured_file(name, series);
  const std::string written = folder.read("river.measured.json");
  write_measured_file(name, read_measured_file(name));
  fuzz::demand(folder.read("river.measured.json") == written, "what is written is not read back equal");
  return 0;
}
