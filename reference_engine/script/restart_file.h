// The .rst file that a run leaves: initial concentrations and volumes for a run that goes on from its end.
#ifndef REFERENCE_ENGINE_SCRIPT_RESTART_FILE_H
#define REFERENCE_ENGINE_SCRIPT_RESTART_FILE_H

#include "core/state.h"
#include "output/output_file.h"

#include <filesystem>

namespace reference_engine {

class RestartFile {
public:
  // Writes `base` with ".rst" added, under a temporary name. volume_factor: between the data set's volumes and m3.
  // Throws RunError when it can't be written.
  RestartFile(const std::filesystem::path& base, const State& state, double volume_factor);
  void publish() { file_.publish(); }

private:
  OutputFile file_;
};

} // namespace reference_engine

#endif
