// A hydrodynamic file is refused in one sentence, or its segments and links get into the data set, and its flows and
// volumes can be held at any day of it. It goes through the helper program, which may fail as it likes.
#include "core/errors.h"
#include "host/hydro_file.h"
#include "support/import_job.h"
#include "support/scratch.h"
#include "vesk_engine.h"

#include <cmath>

namespace {

void hold_days(const std::string& name) {
  reference_engine::HydroFile file(name);
  reference_engine::Moment begin;
  begin.year = 2000, begin.month = 1, begin.day = 11;
  file.take_up_nearest(begin);
  std::vector<double> flows, change;
  double day = 0;
  for (int changes = 0; changes < 10 && std::isfinite(day); ++changes, day = file.next_change(day)) {
    file.hold(day, flows, change);
    vesk::fuzz::demand(flows.size() == file.links().size() && change.size() == file.segments().size(),
                       "a row has another size than the file");
    for (const double volume : file.volumes(day)) vesk::fuzz::demand(volume > 0, "a volume is not above 0");
  }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  using namespace vesk;
  static const fuzz::scratch_folder folder;
  const std::string file = folder.write("river.hyd", fuzz::as_text(bytes, size));
  fuzz::import_job job((folder.path / "river.vki").string());
  job.data.hydrodynamic_file = "river.hyd";
  job.run([] { read_hyd_file(&data_callback); });
  if (job.refusal().ends_with("fails on it.")) return 0; // it would again, and may take seconds
  try {
    hold_days(file);
  } catch (const reference_engine::InputError& refusal) {
    fuzz::demand_sentence(refusal.what(), file);
  }
  return 0;
}
