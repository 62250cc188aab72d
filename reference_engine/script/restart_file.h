// The .rst file that a run leaves: initial concentrations and volumes for a run that goes on from its end. Its first
// line is a comment that says what state it holds.
#ifndef REFERENCE_ENGINE_SCRIPT_RESTART_FILE_H
#define REFERENCE_ENGINE_SCRIPT_RESTART_FILE_H

#include "core/state.h"
#include "output/moment.h"
#include "output/output_file.h"

#include <filesystem>
#include <optional>
#include <string_view>

namespace reference_engine {

// Of what moment the state is, and of how large a model.
struct RestartLabel {
  Moment moment;
  std::size_t segments = 0, systems = 0;
};

// The label in the first line of a file; none for a file that has no such line. Throws InputError, with the cause
// alone, for one that is damaged.
std::optional<RestartLabel> read_restart_label(std::string_view file_content);

class RestartFile {
public:
  // Writes `base` with ".rst" added, under a temporary name. volume_factor: between the data set's volumes and m3.
  // Throws WriteError when it can't be written.
  RestartFile(const std::filesystem::path& base, const State& state, double volume_factor, const Moment& moment);
  void publish() { file_.publish(); }

private:
  OutputFile file_;
};

} // namespace reference_engine

#endif
