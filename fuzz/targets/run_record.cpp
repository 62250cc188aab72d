// The record of a run is refused in one sentence, or its hashes can be compared with others.
#include "runs/run_record.h"
#include "runs/value_path.h"
#include "support/scratch.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  using namespace vesk;
  static const fuzz::scratch_folder folder;
  const std::string name = folder.write("river.run.json", fuzz::as_text(bytes, size));
  try {
    const past_run run = read_run_record(name);
    fuzz::demand(changes_in_words(run.data_set, run.data_set).empty(), "a data set differs from itself");
    changes_in_words(run.data_set, {});
    fuzz::demand(read_data_set_hashes(name) == run.data_set, "the hashes differ");
  } catch (const value_error& refusal) {
    fuzz::demand_sentence(refusal.what(), name);
  }
  return 0;
}
