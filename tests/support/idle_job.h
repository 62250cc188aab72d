// A job with a data set and the engine's arrays that does nothing else. Override the functions that a test checks.
#pragma once

#include "shell/job.h"

#include <stdexcept>

namespace vesk {

class idle_job : public engine_job {
public:
  prevesk_dataset_data_type data;
  registered_arrays registered;

  // Tests that use the callback give their job its own shell.
  shell_interface& shell() override { throw std::logic_error("a job without a shell"); }
  prevesk_dataset_data_type& data_set() override { return data; }
  registered_arrays& arrays() override { return registered; }
  bool is_import() const override { return false; }
  bool cancel_requested() const override { return false; }
  std::int32_t elapsed_seconds() const override { return 0; }
  std::string input_file_name() const override { return {}; }
  void set_file_name(std::string_view) override {}
  void add_info_line(std::string_view, std::int32_t) override {}
  void clear_info_lines() override {}
  void set_progress(std::int32_t) override {}
  void set_simulation_time(double) override {}
  void mark_grid_changed() override {}
  void set_status(std::string_view, std::int32_t) override {}
  void initialize_grid(std::vector<std::string>, std::int32_t) override {}
  void set_grid_data(const float*, std::int32_t, std::int32_t, bool) override {}
  void clear_grid_data() override {}
  std::int32_t diagnostic_level() const override { return 0; }
  void set_diagnostic_level(std::int32_t) override {}
  std::int32_t window_handle() const override { return 0; }
  void set_return_code(std::int32_t) override {}
  void request_read_hyd_file() override {}
  bool logging_enabled() const override { return false; }
  void log_line(std::string_view) override {}
  bool has_log() const override { return false; }
  void fail(std::string_view) override {}
};

} // namespace vesk
