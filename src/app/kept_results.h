// Results beside those of the last good run: NAME.previous.nc is that of the run before, NAME.cancelled.nc what a
// cancelled run computed. Each has the record of its run beside it.
//
// Only while the lock on the results is held. `base`: of the results' names, as for the record. Main thread only.
#pragma once

#include "runs/run_record.h"

#include <filesystem>
#include <functional>

namespace vesk {

std::filesystem::path results_file_of(const std::filesystem::path& base);          // NAME.nc
std::filesystem::path previous_results_file_of(const std::filesystem::path& base); // NAME.previous.nc
std::filesystem::path cancelled_results_of(const std::filesystem::path& base);     // the base NAME.cancelled

// What the record of a run is named after: the cancelled results, if it has written them, otherwise the results.
std::filesystem::path base_of_record(const std::filesystem::path& base, const run_record& record);

// After a good run.
void remove_cancelled_results(const std::filesystem::path& base);

// The present results, held under a hidden name during a run: a hard link, which costs nothing and outlives the
// replacement of NAME.nc.
class previous_results {
public:
  // Copies a file where links are refused. Throws file_exception; false: cancelled.
  using copy_function = std::function<bool(const std::filesystem::path& from, const std::filesystem::path& to)>;

  previous_results() = default;
  ~previous_results() { drop(); }
  previous_results(const previous_results&) = delete;
  previous_results& operator=(const previous_results&) = delete;

  // Before a run. Without results nothing is held. Throws file_exception; then nothing is held either.
  void hold(const std::filesystem::path& base, const copy_function& copy);

  // After a good run: they become NAME.previous.nc, with their record, in place of older ones. Not if the run has left
  // NAME.nc as it was, or has written into that very file.
  void keep();

  void drop(); // after any other run

private:
  bool take(const std::filesystem::path& file, const std::filesystem::path& hidden, const copy_function& copy);

  std::filesystem::path base_; // empty: nothing is held
};

// Copies in pieces; false, without a copy, once `goes_on` returns false. Any thread. Throws file_exception.
bool copy_file_in_pieces(const std::filesystem::path& from, const std::filesystem::path& to,
                         const std::function<bool(int percent)>& goes_on);

} // namespace vesk
