// The peer of the update: the same series, interpolated by GSL with one accelerator each.
#pragma once

#include "dataset/dataset.h"

#include <gsl/gsl_interp.h>
#include <memory>
#include <vector>

namespace vesk::bench {

class gsl_series {
public:
  // Loads and boundary conditions of `data`, in the order in which an update processes them.
  explicit gsl_series(const prevesk_dataset_data_type& data);

  // Resets the accelerators.
  void reset();

  // Fills the two arrays at the date-time number `t`. A series keeps its first and last value beyond its ends.
  void update(double t, float* loads, float* boundary_conditions);

private:
  struct free_interp {
    void operator()(gsl_interp* p) const { gsl_interp_free(p); }
  };
  struct free_accel {
    void operator()(gsl_interp_accel* p) const { gsl_interp_accel_free(p); }
  };
  struct series {
    std::size_t element;
    bool step;
    std::vector<double> times;
    std::vector<double> values;
    std::unique_ptr<gsl_interp, free_interp> linear = {};
    std::unique_ptr<gsl_interp_accel, free_accel> accelerator = {};
  };

  static series make(const time_series_block& record, std::size_t element);
  static double value(const series& s, double t);

  std::vector<series> loads_;
  std::vector<series> boundaries_;
};

} // namespace vesk::bench
