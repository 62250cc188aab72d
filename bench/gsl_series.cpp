#include "gsl_series.h"

namespace vesk::bench {

namespace {
template <class Record>
std::size_t element_of(const prevesk_dataset_data_type& data, const system_data_type& system, const Record& record) {
  return static_cast<std::size_t>(record.segment) * data.systems.size() + system.isc - 1;
}
} // namespace

gsl_series::gsl_series(const prevesk_dataset_data_type& data) {
  for (const system_data_type& system : data.systems) {
    for (const loads_data_type& load : system.loads) loads_.push_back(make(load, element_of(data, system, load)));
    for (const boundary_data_type& boundary : system.boundaries)
      boundaries_.push_back(make(boundary, element_of(data, system, boundary)));
  }
}

gsl_series::series gsl_series::make(const time_series_block& record, std::size_t element) {
  series result{
      .element = element, .step = record.interpolation_type != interpolation_linear, .times = {}, .values = {}};
  result.times.reserve(record.points.size());
  result.values.reserve(record.points.size());
  for (const moment_value_pair_type& point : record.points) {
    result.times.push_back(point.date_time());
    result.values.push_back(point.value);
  }
  result.linear.reset(gsl_interp_alloc(gsl_interp_linear, result.times.size()));
  gsl_interp_init(result.linear.get(), result.times.data(), result.values.data(), result.times.size());
  result.accelerator.reset(gsl_interp_accel_alloc());
  return result;
}

void gsl_series::reset() {
  for (auto* list : {&loads_, &boundaries_})
    for (series& s : *list) gsl_interp_accel_reset(s.accelerator.get());
}

void gsl_series::update(double t, float* loads, float* boundary_conditions) {
  for (const series& s : loads_) loads[s.element] = static_cast<float>(value(s, t));
  for (const series& s : boundaries_) boundary_conditions[s.element] = static_cast<float>(value(s, t));
}

double gsl_series::value(const series& s, double t) {
  if (!(t >= s.times.front())) return s.values.front();
  if (t >= s.times.back()) return s.values.back();
  if (s.step) return s.values[gsl_interp_accel_find(s.accelerator.get(), s.times.data(), s.times.size(), t)];
  return gsl_interp_eval(s.linear.get(), s.times.data(), s.values.data(), t, s.accelerator.get());
}

} // namespace vesk::bench
