// A job: one call of one function of the engine library, on its own thread, with a private copy of the data set.
#pragma once

#include "dataset/dataset.h"
#include "engine/engine_library.h"
#include "engine/winvesk_thread.h"
#include "shell/shell_interface.h"

#include <cstdint>
#include <memory>
#include <string>

namespace vesk {

enum class job_code : std::uint8_t {
  import_file = 0,
  export_file = 1,
  run = 2,
  get_maximum_parameters = 3,
  read_hyd_file = 4,
  import_network = 5,
  load_restart_file = 6,
};

class model_thread final : public winvesk_thread {
public:
  // Created suspended. The data set is copied here, on the caller's thread. `file_name`: the data file, or the file to
  // import, export or load.
  model_thread(job_front_end& front_end, std::shared_ptr<const engine_library> library,
               const prevesk_dataset_data_type& data_set, job_code code, const std::string& file_name,
               const std::filesystem::path& log_name);

  job_code code() const { return code_; }

  // In the end handler it belongs to the main thread.
  prevesk_dataset_data_type& data_set() override { return data_set_; }
  registered_arrays& arrays() override { return arrays_; }
  shell_interface& shell() override { return shell_; }
  bool is_import() const override { return code_ == job_code::import_file; }
  std::string input_file_name() const override { return input_file_name_; }
  void set_file_name(std::string_view name) override;

protected:
  void Execute() override;

private:
  void call_engine();
  void call_function();
  void take_back_arrays(); // those registered by the engine

  const std::shared_ptr<const engine_library> library_;
  prevesk_dataset_data_type data_set_; // the worker's while it runs, the main thread's in the end handler
  std::string input_file_name_;
  shell_interface shell_;
  const job_code code_;
  registered_arrays arrays_;
  bool grid_was_taken_back_ = false; // the engine ended without taking its grid back
};

} // namespace vesk
