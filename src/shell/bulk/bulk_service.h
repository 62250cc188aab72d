// The bulk time-series service: at each step of the engine, the values of all time functions, loads, boundary
// conditions, flows, exchanges and of the print interval at one moment, written into the engine's own arrays.
//
// One object serves one job, on the thread that calls the callback. At a job's first step the series that are asked
// for go into a separate table, whose rows hold only what a step needs; points stay where they are, shared with
// the data set. What the table yields is, bit for bit, what the algorithm in bulk_reference.h yields.
#pragma once

#include "dataset/series.h"
#include "shell/job.h"

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>

namespace vesk {

// The stages of an update, in the order in which they are worked off, counted and reported.
enum class bulk_stage { time_functions, loads, boundary_conditions, flows, exchanges, print_interval };
inline constexpr std::size_t bulk_stage_count = 6;

class bulk_service {
public:
  using log_function = std::function<void(std::string_view)>;

  // `log` takes a line for the job's log, without time stamp; may be empty. It is called on the job's thread.
  explicit bulk_service(log_function log = {});
  ~bulk_service();
  bulk_service(const bulk_service&) = delete;
  bulk_service& operator=(const bulk_service&) = delete;

  // PUT `DAYS`: gives the job the simulation time, `days` after the start of its data set, and fills the arrays that
  // are registered by then. Arrays may be registered, moved and taken back between updates.
  void update(engine_job& job, float days);

  // To be called before a PUT that changes, in the job's data set, points or interpolation of a series, the number of
  // series, segments or systems, a segment or system number, a used flag, the start or the model. Leaves the cursors
  // in the records as the plain algorithm would have left them, which then serves the rest of the job. Costs nothing
  // before the first update and after the first call.
  void series_changing(prevesk_dataset_data_type& data);

  // Milliseconds spent in each stage so far, indexed by bulk_stage. Counted while the job has a log.
  const std::array<std::uint32_t, bulk_stage_count>& milliseconds() const { return milliseconds_; }

  // Logs the counters: a title line, then a line for each stage.
  void log_metrics() const;

private:
  class fast_tables;

  void update_one(prevesk_dataset_data_type& data, bulk_stage stage, double t, float* array);
  void warn_once(const prevesk_dataset_data_type& data, bulk_stage stage, const series_ref& left_out);

  log_function log_;
  std::array<std::uint32_t, bulk_stage_count> milliseconds_{};
  std::unique_ptr<fast_tables> fast_; // null before the first update and once the plain algorithm has taken over
  bool plain_ = false;                // the plain algorithm has taken over
  std::array<bool, bulk_stage_count> warned_{}; // the log has a line about series without an element
};

} // namespace vesk
