// The results of a run: what they contain, and a writer for each format.
#ifndef REFERENCE_ENGINE_OUTPUT_RESULTS_H
#define REFERENCE_ENGINE_OUTPUT_RESULTS_H

#include "output/moment.h"

#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace reference_engine {

struct OutputVariable {
  int isc = 0;
  std::string name;        // short
  std::string description; // for people to read
  std::string units;       // UDUNITS, if the catalogue follows it
  std::string csv_file;    // appended to the base of the results
};

struct RunDescription {
  std::string title, source; // free text
  Moment start;
  std::vector<std::string> segments; // names
  std::vector<double> lengths;       // of the segments, m; 0 or less where it is not known
};

// Takes one variable after the other at each print time. Nothing appears under the final names before `publish`. All
// functions throw WriteError when a file can't be written.
class ResultWriter {
public:
  virtual ~ResultWriter() = default;
  virtual void begin_time(double days) = 0;
  // values: one per segment; not-a-number if there is none.
  virtual void write(std::size_t variable, std::span<const double> values) = 0;
  // Adds a text about the whole run, if the format supports it. At most `notes_size` bytes in all, names included.
  virtual void annotate(const std::string& /*name*/, const std::string& /*text*/) {}
  virtual void publish() = 0;
  // In place of `publish`, after a cancel: under a name that replaces no good results. Returns that name; empty if the
  // format does not support it, and then nothing is kept.
  virtual std::filesystem::path publish_cancelled() { return {}; }

  static constexpr std::size_t notes_size = std::size_t{1} << 16;
};

// The variables' names in the NetCDF file, each once.
std::vector<std::string> netcdf_names(const std::vector<OutputVariable>& variables);

// `base` with ".nc" added; of a cancelled run with ".cancelled.nc".
std::unique_ptr<ResultWriter> make_netcdf_writer(const std::filesystem::path& base, const RunDescription& run,
                                                 const std::vector<OutputVariable>& variables);
// For each variable `base`, "_" and the variable's own name.
std::unique_ptr<ResultWriter> make_csv_writer(const std::filesystem::path& base, const RunDescription& run,
                                              const std::vector<OutputVariable>& variables);

} // namespace reference_engine

#endif
