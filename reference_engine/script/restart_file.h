// The .rst file written by a run: initial concentrations and volumes for a run that continues from its end. The first
// line is a comment that identifies the state.
#ifndef REFERENCE_ENGINE_SCRIPT_RESTART_FILE_H
#define REFERENCE_ENGINE_SCRIPT_RESTART_FILE_H

#include "core/state.h"
#include "output/moment.h"
#include "output/output_file.h"

#include <filesystem>
#include <optional>
#include <string_view>

namespace reference_engine {

// The time of a state, and the size of its model.
struct RestartLabel {
  Moment moment;
  std::size_t segments = 0, systems = 0;
};

// The label in the first line of a file; nothing if that line is not a label. Throws InputError, with only the cause,
// if it is damaged.
std::optional<RestartLabel> read_restart_label(std::string_view file_content);

class RestartFile {
public:
  // Writes `base` with ".rst" added, under a temporary name. volume_factor: from the data set's volumes to m3. Throws
  // WriteError when it can't be written.
  RestartFile(const std::filesystem::path& base, const State& state, double volume_factor, const Moment& moment);
  void publish() { file_.publish(); }

private:
  OutputFile file_;
};

} // namespace reference_engine

#endif
