// One step of the history while it is made. If it is not ended, because of an exception, the data set is restored.
#pragma once

#include "charts/fill_calc_table.h"
#include "editors/editor_host.h"

#include <functional>
#include <string>
#include <utility>

namespace vesk {

class history_step {
public:
  // `end` takes the place of the host's end_step.
  history_step(editor_host& host, const std::string& label, std::function<void(bool completed)> end = {})
      : end_(end ? std::move(end) : [&host](bool completed) { host.end_step(completed); }) {
    host.begin_step(label, {});
  }
  // As if the table itself changed its cells.
  history_step(TFillCalcTable& table, const std::string& label)
      : end_([&table](bool completed) { table.OnEndChange(completed); }) {
    table.OnBeginChange(label);
  }
  ~history_step() {
    if (is_ended_) return;
    try {
      end_(false);
    } catch (...) { // the first failure is already on its way to the user
    }
  }
  history_step(const history_step&) = delete;
  history_step& operator=(const history_step&) = delete;

  void end(bool completed = true) { // false: adds no step and restores the data set
    is_ended_ = true;
    end_(completed);
  }

private:
  std::function<void(bool)> end_;
  bool is_ended_ = false;
};

} // namespace vesk
