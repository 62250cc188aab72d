#include "shell/bulk/bulk_service.h"

#include "platform/millisecond_timer.h"
#include "shell/bulk/bulk_reference.h"
#include "shell/bulk/bulk_series.h"
#include "shell/bulk/bulk_table.h"

#include <utility>

namespace vesk {

namespace {

// Everything about a stage except its arithmetic.
struct stage_description {
  float* registered_arrays::*array;
  const char* label; // of its line in the report
};
constexpr stage_description stages[bulk_stage_count] = {
    {.array = &registered_arrays::time_functions, .label = "time function interpolation: "},
    {.array = &registered_arrays::loads, .label = "loads interpolation: "},
    {.array = &registered_arrays::boundary_conditions, .label = "boundary conditions interpolation: "},
    {.array = &registered_arrays::flows, .label = "flows interpolation: "},
    {.array = &registered_arrays::exchanges, .label = "exchanges interpolation: "},
    {.array = &registered_arrays::print_interval, .label = "print interval interpolation: "},
};

} // namespace

// A table for each stage whose array was registered at an earlier update.
class bulk_service::fast_tables {
public:
  // True if the tables can serve an update at `t`; `t` is then noted as the latest time.
  bool reach(double t) {
    if (!(t >= latest_ && t < bulk_time_limit)) return false;
    latest_ = t;
    return true;
  }

  template <class LeftOut>
  void update(const prevesk_dataset_data_type& data, bulk_stage stage, double t, float* array,
              const LeftOut& left_out) {
    auto& table = tables_[static_cast<std::size_t>(stage)];
    if (!table) table = build(data, stage, left_out);
    table->update(t, array);
  }

  // Sets the cursors of all series evaluated so far.
  void write_back(prevesk_dataset_data_type& data) const {
    for (std::size_t s = 0; s < bulk_stage_count; ++s) {
      if (!tables_[s]) continue;
      std::size_t position = 0;
      visit_series(
          data, static_cast<bulk_stage>(s),
          [&](const bulk_element& element) {
            const series_cursors cursors = tables_[s]->cursors(position++);
            if (cursors.cursor_index != 0) edit_cursors(data, element.series) = cursors; // 0: never set
          },
          [](const series_ref&) {});
    }
  }

private:
  template <class LeftOut>
  static std::unique_ptr<bulk_table> build(const prevesk_dataset_data_type& data, bulk_stage stage,
                                           const LeftOut& left_out) {
    auto table = std::make_unique<bulk_table>();
    visit_series(
        data, stage,
        [&](const bulk_element& element) {
          if (element.used)
            table->add(element.index, find_series(data, element.series)->points, element.step,
                       *find_cursors(data, element.series));
          else
            table->add_zero(element.index);
        },
        left_out);
    table->finish();
    return table;
  }

  std::array<std::unique_ptr<bulk_table>, bulk_stage_count> tables_; // indexed by bulk_stage
  double latest_ = -bulk_time_limit;
};

bulk_service::bulk_service(log_function log) : log_(std::move(log)) {}
bulk_service::~bulk_service() = default;

void bulk_service::update(engine_job& job, float days) {
  prevesk_dataset_data_type& data = job.data_set();
  const double t = data.start_date_time() + static_cast<double>(days);
  job.set_simulation_time(t);
  if (!fast_ && !plain_) fast_ = std::make_unique<fast_tables>();
  if (fast_ && !fast_->reach(t)) series_changing(data);

  const registered_arrays& arrays = job.arrays();
  const bool timed = job.has_log();
  for (std::size_t s = 0; s < bulk_stage_count; ++s) {
    float* const array = arrays.*stages[s].array;
    if (!array) continue;
    const millisecond_timer timer(timed ? &milliseconds_[s] : nullptr);
    update_one(data, static_cast<bulk_stage>(s), t, array);
  }
}

void bulk_service::update_one(prevesk_dataset_data_type& data, bulk_stage stage, double t, float* array) {
  const auto left_out = [&](const series_ref& series) { warn_once(data, stage, series); };
  if (fast_)
    fast_->update(data, stage, t, array, left_out);
  else
    update_stage(data, stage, t, array, left_out);
}

void bulk_service::warn_once(const prevesk_dataset_data_type& data, bulk_stage stage, const series_ref& left_out) {
  if (std::exchange(warned_[static_cast<std::size_t>(stage)], true) || !log_) return;
  log_(left_out_warning(data, left_out));
}

void bulk_service::series_changing(prevesk_dataset_data_type& data) {
  if (!fast_) return;
  plain_ = true;
  fast_->write_back(data);
  fast_.reset();
}

void bulk_service::log_metrics() const {
  if (!log_) return;
  log_("RUNTIME PERFORMANCE METRICS FOLLOW:");
  for (std::size_t s = 0; s < bulk_stage_count; ++s) log_(stages[s].label + std::to_string(milliseconds_[s]) + " ms");
}

} // namespace vesk
