// The results of a run: what they are, and the writers of their forms.
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
  std::string description; // for people
  std::string units;       // UDUNITS where the catalogue is careful
  std::string csv_file;    // name to add to the results' base
};

struct RunDescription {
  std::string title, source; // free texts
  Moment start;
  std::vector<std::string> segments; // names
};

// Takes one variable after the other at each print time. Nothing appears under the final names before `publish`.
// All throw WriteError when a file can't be written.
class ResultWriter {
public:
  virtual ~ResultWriter() = default;
  virtual void begin_time(double days) = 0;
  // values: one a segment; not-a-number where there is none.
  virtual void write(std::size_t variable, std::span<const double> values) = 0;
  // Adds a text about the whole run, where the form has a place for it. At most `notes_size` bytes with the names.
  virtual void annotate(const std::string& /*name*/, const std::string& /*text*/) {}
  virtual void publish() = 0;

  static constexpr std::size_t notes_size = std::size_t{1} << 16;
};

// `base` with ".nc" added.
std::unique_ptr<ResultWriter> make_netcdf_writer(const std::filesystem::path& base, const RunDescription& run,
                                                 const std::vector<OutputVariable>& variables);
// `base`, "_" and the variable's own name for each.
std::unique_ptr<ResultWriter> make_csv_writer(const std::filesystem::path& base, const RunDescription& run,
                                              const std::vector<OutputVariable>& variables);

} // namespace reference_engine

#endif
