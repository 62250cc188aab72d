#include "engine/model_thread.h"

#include "engine/engine_watch.h"
#include "shell/callback.h"

#include <cxxabi.h>
#include <functional>

namespace vesk {

namespace {

// Runs a function when a block is left, however that happens.
struct at_end {
  std::function<void()> work;
  ~at_end() { work(); }
};

} // namespace

model_thread::model_thread(job_front_end& front_end, std::shared_ptr<const engine_library> library,
                           const prevesk_dataset_data_type& data_set, job_code code, const std::string& file_name,
                           const std::filesystem::path& log_name)
    : winvesk_thread(front_end, log_name), library_(std::move(library)), data_set_(data_set),
      input_file_name_(file_name), shell_(*this), code_(code) {}

void model_thread::set_file_name(std::string_view name) {
  input_file_name_ = name;
  Synchronize([this] { front_end().set_file_name(input_file_name_); });
}

void model_thread::Execute() {
  winvesk_thread::Execute();
  const engine_job_scope serving(*this);
  data_set_.apply_thread_defaults();
  try {
    call_engine();
  } catch (const std::exception& error) {
    fail(std::string("The engine failed: ") + error.what());
  } catch (...) {
    fail("The engine failed with an exception of unknown type.");
  }
  shell_.log_metrics();
  if (grid_was_taken_back_) clear_grid_data(); // repaints it
}

// A forced unwind is caught without an object, which a sanitizer reports as a null reference.
[[gnu::no_sanitize("null")]] void model_thread::call_engine() {
  // Here and not in Execute: arrays registered by the engine may be gone once its function has returned, and the window
  // repaints while it shows a failure.
  const at_end left{[this] { take_back_arrays(); }};
  const engine_at_work at_work(library_->path);
  try {
    call_function();
  } catch (const abi::__forced_unwind&) {
    at_work.end_without_thread();
  }
}

void model_thread::call_function() {
  const std::string library_text = data_set_.library;
  switch (code_) {
  case job_code::run: return library_->execute_model(library_text.c_str(), &data_callback);
  case job_code::get_maximum_parameters: return library_->get_maximum_parameters(library_text.c_str(), &data_callback);
  case job_code::read_hyd_file: return library_->read_hyd_file(&data_callback);
  case job_code::import_network: return library_->import_network(&data_callback);
  case job_code::load_restart_file: return library_->load_restart_file(&data_callback);
  case job_code::import_file: return library_->import_export(&data_callback, 1);
  case job_code::export_file: return library_->import_export(&data_callback, 0);
  }
}

void model_thread::take_back_arrays() {
  arrays_ = {};
  grid_was_taken_back_ = grid_data_is_set();
  if (grid_was_taken_back_) set_grid_data(nullptr, 0, 0, false);
}

} // namespace vesk
