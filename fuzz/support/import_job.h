// A job of the front end, as the engine's import and export see it.
#pragma once

#include "dataset/dataset.h"
#include "demand.h"
#include "idle_job.h"
#include "memory_catalogue_store.h"
#include "shell/callback.h"
#include "shell/shell_interface.h"

#include <string>
#include <utility>

namespace vesk::fuzz {

class import_job final : public idle_job {
public:
  explicit import_job(std::string file) : file_(std::move(file)) {
    static const auto catalogue = [] {
      auto store = small_catalogue();
      return read_catalogue(store);
    }();
    data = prevesk_dataset_data_type(catalogue);
    data.seed_date = data.skip_date = 36526;
    data.end_date = 36556;
    data.seed_time = data.end_time = data.skip_time = 0;
    data.apply_thread_defaults();
  }

  // Lets the engine do its work. True when it was done; otherwise the engine has told why, or memory has run out.
  bool run(const auto& engine_function) {
    {
      const engine_job_scope serving(*this);
      engine_function();
    }
    is_short_of_memory_ = failure_.find("bad_alloc") != failure_.npos;
    if (is_short_of_memory_) return false;
    if (!failure_.empty()) fuzz::fail("thrown in the callback: " + failure_);
    demand(return_code_ >= 0, "the engine gives no return code");
    demand(return_code_ == 0 || !refusal_.empty(), "the engine does not tell why it fails");
    return return_code_ == 0;
  }

  const std::string& refusal() const { return refusal_; }
  bool is_short_of_memory() const { return is_short_of_memory_; }

  shell_interface& shell() override { return shell_; }
  std::string input_file_name() const override { return file_; }
  void add_info_line(std::string_view text, std::int32_t) override { refusal_ = text; }
  bool cancel_requested() const override { return !failure_.empty(); }
  void set_return_code(std::int32_t code) override { return_code_ = code; }
  void fail(std::string_view cause) override { failure_ = cause; }

private:
  shell_interface shell_;
  std::string file_, refusal_, failure_;
  std::int32_t return_code_ = -1;
  bool is_short_of_memory_ = false;
};

} // namespace vesk::fuzz
