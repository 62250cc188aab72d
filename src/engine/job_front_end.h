// What a job needs from the front end that started it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vesk {

class job_front_end {
public:
  virtual ~job_front_end() = default;

  // On the main thread, while the worker waits.
  virtual void add_info_line(const std::string& text, int icon) = 0; // icon 0 plain, 1 note, 2 failure
  virtual void clear_info_lines() = 0;
  virtual void set_file_name(const std::string& name) = 0;
  virtual void initialize_grid(const std::vector<std::string>& column_labels, int rows) = 0;
  virtual void clear_grid_data() = 0;
  virtual void hydrodynamic_file_put() = 0; // HYDROFILE has a new name

  // From the worker, at any time.
  virtual void set_grid_data(const float* data, int actual_columns, int actual_rows, bool invert) = 0; // borrowed
  virtual int diagnostic_level() const = 0;                                                            // 0 to 2
  virtual void set_diagnostic_level(int level) = 0;
  virtual bool logging_enabled() const = 0;
  virtual std::int32_t window_handle() const = 0; // 0 without a window
  virtual void set_return_code(int code) = 0;     // process exit code
};

} // namespace vesk
