// The bulk time-series service: at each step of the engine it writes the values of all time functions, loads, boundary
// conditions, flows, exchanges and of the print interval at one time into the engine's own arrays.
//
// One object serves one job, on the thread that calls the callback. At the job's first step the requested series are
// put into a table whose rows contain only what a step needs; points are shared with the data set. The table's results
// are bit for bit those of the algorithm in bulk_reference.h.
#pragma once

#include "dataset/series.h"
#include "shell/job.h"

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>

namespace vesk {

// The stages of an update, in the order in which they are processed, counted and reported.
enum class bulk_stage { time_functions, loads, boundary_conditions, flows, exchanges, print_interval };
inline constexpr std::size_t bulk_stage_count = 6;

class bulk_service {
public:
  using log_function = std::function<void(std::string_view)>;

  // `log` gets lines for the job's log, without time stamp; may be empty. Called on the job's thread.
  explicit bulk_service(log_function log = {});
  ~bulk_service();
  bulk_service(const bulk_service&) = delete;
  bulk_service& operator=(const bulk_service&) = delete;

  // PUT `DAYS`: passes the simulation time, `days` after the data set's start, to the job, and fills the arrays
  // currently registered. Arrays may be registered, replaced and removed between updates.
  void update(engine_job& job, float days);

  // Call before a PUT that changes, in the job's data set, points or interpolation of a series, the number of series,
  // segments or systems, a segment or system number, a used flag, the start or the model. Leaves the cursors in the
  // records as the plain algorithm would have left them; that algorithm serves the rest of the job. Does nothing before
  // the first update and after the first call.
  void series_changing(prevesk_dataset_data_type& data);

  // Milliseconds spent in each stage so far, indexed by bulk_stage. Counted while the job has a log.
  const std::array<std::uint32_t, bulk_stage_count>& milliseconds() const { return milliseconds_; }

  // Logs the counters: a title line, then one line per stage.
  void log_metrics() const;

private:
  class fast_tables;

  void update_one(prevesk_dataset_data_type& data, bulk_stage stage, double t, float* array);
  void warn_once(const prevesk_dataset_data_type& data, bulk_stage stage, const series_ref& left_out);

  log_function log_;
  std::array<std::uint32_t, bulk_stage_count> milliseconds_{};
  std::unique_ptr<fast_tables> fast_; // null before the first update and after the plain algorithm has taken over
  bool plain_ = false;                // the plain algorithm has taken over
  std::array<bool, bulk_stage_count> warned_{}; // the log already has a line about series without an element
};

} // namespace vesk
